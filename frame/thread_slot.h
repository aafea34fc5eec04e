// Per-thread state that must be cleaned up when its thread ends.
//
// The compiler's thread_local cannot hold it: in the 32-bit runtime a module's
// thread_local object is destroyed after its storage has been freed, so its
// destructor reads and writes freed memory (and corrupts the heap). Values of
// a ThreadSlot live in a slot of the platform's own thread storage and are
// destroyed from the module's thread-end callback, where they are still intact.
// Trivially destructible thread_local values are unaffected and stay as they are.
#pragma once

#include <windows.h>

#include <new>

namespace tova {

class ThreadSlotBase {
public:
    ThreadSlotBase(const ThreadSlotBase&) = delete;
    ThreadSlotBase& operator=(const ThreadSlotBase&) = delete;

    // Destroys the calling thread's values of every slot.
    static void endThread();

protected:
    explicit ThreadSlotBase(void (*destroy)(void*));
    ~ThreadSlotBase();
    void* value() const { return index_ == TLS_OUT_OF_INDEXES ? nullptr : TlsGetValue(index_); }
    bool store(void* p) { return index_ != TLS_OUT_OF_INDEXES && TlsSetValue(index_, p); }

private:
    DWORD index_;
    void (*destroy_)(void*);
    ThreadSlotBase* next_;
};

// One T per thread, made on first use. Slots are objects of static duration.
template <class T>
class ThreadSlot : private ThreadSlotBase {
public:
    ThreadSlot() : ThreadSlotBase(&destroy) {}

    // The calling thread's value, or nullptr when it has none yet.
    T* find() const { return static_cast<T*>(value()); }

    // The calling thread's value, made now if needed.
    T& get() {
        if (T* p = find()) return *p;
        T* made = new T();
        if (!store(made)) {
            delete made;
            throw std::bad_alloc();
        }
        return *made;
    }

    // Ends the calling thread's value now; the slot reads empty while it goes.
    void drop() {
        T* p = find();
        store(nullptr);
        delete p;
    }

private:
    static void destroy(void* p) { delete static_cast<T*>(p); }
};

}  // namespace tova
