#include "thread_slot.h"

namespace tova {

namespace {

// The slots, linked at static initialisation (under the loader's lock, before
// any thread can end in this module); constant-initialised, so any order of
// construction finds it ready.
ThreadSlotBase* slots = nullptr;

// Called by the loader for every thread that ends while the module is loaded
// (and for the unloading thread when the module is freed): the values are
// still intact here, whatever the runtime has done with its own.
void NTAPI threadEnd(PVOID, DWORD reason, PVOID reserved) {
    if (reason == DLL_THREAD_DETACH || (reason == DLL_PROCESS_DETACH && !reserved)) ThreadSlotBase::endThread();
}

}  // namespace

ThreadSlotBase::ThreadSlotBase(void (*destroy)(void*)) : index_(TlsAlloc()), destroy_(destroy), next_(slots) {
    slots = this;
}

ThreadSlotBase::~ThreadSlotBase() {
    for (ThreadSlotBase** p = &slots; *p; p = &(*p)->next_)
        if (*p == this) {
            *p = next_;
            break;
        }
    if (index_ != TLS_OUT_OF_INDEXES) TlsFree(index_);
}

void ThreadSlotBase::endThread() {
    for (ThreadSlotBase* s = slots; s; s = s->next_) {
        void* p = s->value();
        if (!p) continue;
        s->store(nullptr);  // what the destructor calls finds the slot empty
        s->destroy_(p);
    }
}

}  // namespace tova

// The module's thread-end callback, in the loader's table of them.
extern "C" __attribute__((used, section(".CRT$XLT"))) const PIMAGE_TLS_CALLBACK tovaThreadEnd = tova::threadEnd;
