// The public face of the subclassing engine: SubclassingMethods (global), the
// read-only catalogue SubclassDatabase of SubclassRecord entries, and the
// ISubclass class that clients implement (on its own it answers 0 and 0).
#pragma once

#include "../frame/library_frame.h"

#include <vector>

namespace tova {

class SubclassRecord final : public Object<SubclassRecord, _SubclassRecord> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP get_PtrIWP(LONG_PTR* pRet) override;
    STDMETHODIMP get_hWnd(LONG* pRet) override;
    STDMETHODIMP get_Msg(LONG* pRet) override;

    LONG_PTR client() const { return client_; }
    long window() const { return window_; }
    long message() const { return message_; }
    void set(LONG_PTR client, long window, long message) {
        client_ = client;
        window_ = window;
        message_ = message;
    }

private:
    friend class Object<SubclassRecord, _SubclassRecord>;
    SubclassRecord() = default;
    ~SubclassRecord() override { set(0, 0, 0); }

    LONG_PTR client_ = 0;
    long window_ = 0;
    long message_ = 0;
};

class SubclassDatabase final : public Object<SubclassDatabase, _SubclassDatabase> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP get_Item(LONG* Index, _SubclassRecord** pRet) override;
    STDMETHODIMP get_Count(LONG* pRet) override;

    // Library-internal bookkeeping.
    SubclassRecord* add(LONG_PTR client, long window, long message);
    // The first record, from the start, with all three fields equal; or nullptr.
    SubclassRecord* find(LONG_PTR client, long window, long message) const;
    void removeAt(size_t index);   // 0-based
    // Removes the last position holding this very record.
    void remove(SubclassRecord* record);
    void reset() { records_.clear(); }
    size_t size() const { return records_.size(); }

private:
    friend class Object<SubclassDatabase, _SubclassDatabase>;
    SubclassDatabase() = default;

    std::vector<ComPtr<SubclassRecord>> records_;
};

class SubclassingMethods final : public Object<SubclassingMethods, _SubclassingMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP AttachMessage(_ISubclass* IWP, LONG hWnd, LONG Message) override;
    STDMETHODIMP DetachMessage(_ISubclass* IWP, LONG hWnd, LONG Message) override;
    STDMETHODIMP get_CurrentMessage(LONG* pRet) override;
    STDMETHODIMP CallOldWindowProc(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam,
                                   LONG_PTR* pRet) override;
    STDMETHODIMP IsWindowLocal(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetSubclassDatabase(_SubclassDatabase** pRet) override;

private:
    friend class Object<SubclassingMethods, _SubclassingMethods>;
    SubclassingMethods() = default;
};

// The ISubclass class itself: a client that wants nothing and returns 0.
class SubclassClient final : public Object<SubclassClient, _ISubclass> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP get_MessageResponse(MessageResponseConstants* pRet) override;
    STDMETHODIMP WindowProc(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam, LONG_PTR* pRet) override;

private:
    friend class Object<SubclassClient, _ISubclass>;
    SubclassClient() = default;
};

}  // namespace tova
