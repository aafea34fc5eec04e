#include "subclassing.h"

#include "subclass.h"

namespace tova {

const ClassIdentity SubclassRecord::kClass = {L"SubclassRecord", &CLSID_SubclassRecord, &IID__SubclassRecord,
                                              nullptr};
const ClassIdentity SubclassDatabase::kClass = {L"SubclassDatabase", &CLSID_SubclassDatabase,
                                                &IID__SubclassDatabase, nullptr};
const ClassIdentity SubclassingMethods::kClass = {L"SubclassingMethods", &CLSID_SubclassingMethods,
                                                  &IID__SubclassingMethods, nullptr};
const ClassIdentity SubclassClient::kClass = {L"ISubclass", &CLSID_ISubclass, &IID__ISubclass, nullptr};

HRESULT createSubclassingMethods(REFIID riid, void** ppv) { return SubclassingMethods::create(riid, ppv); }

// ------------------------------------------------------------------ SubclassRecord

STDMETHODIMP SubclassRecord::get_PtrIWP(LONG_PTR* pRet) { return guard([&] { *required(pRet) = client_; }); }
STDMETHODIMP SubclassRecord::get_hWnd(LONG* pRet) { return guard([&] { *required(pRet) = window_; }); }
STDMETHODIMP SubclassRecord::get_Msg(LONG* pRet) { return guard([&] { *required(pRet) = message_; }); }

// ---------------------------------------------------------------- SubclassDatabase

STDMETHODIMP SubclassDatabase::get_Item(LONG* Index, _SubclassRecord** pRet) {
    return guard([&] {
        required(pRet);
        long i = *required(Index);
        if (i < 1 || static_cast<size_t>(i) > records_.size()) raise(kSubscriptOutOfRange);
        ComPtr<SubclassRecord> r = records_[static_cast<size_t>(i - 1)];
        *pRet = r.detach();
    });
}

STDMETHODIMP SubclassDatabase::get_Count(LONG* pRet) {
    return guard([&] { *required(pRet) = static_cast<long>(records_.size()); });
}

SubclassRecord* SubclassDatabase::add(LONG_PTR client, long window, long message) {
    ComPtr<SubclassRecord> r = SubclassRecord::make();
    r->set(client, window, message);
    records_.push_back(r);
    return r.get();
}

SubclassRecord* SubclassDatabase::find(LONG_PTR client, long window, long message) const {
    for (const ComPtr<SubclassRecord>& r : records_)
        if (r->client() == client && r->window() == window && r->message() == message) return r.get();
    return nullptr;
}

void SubclassDatabase::removeAt(size_t index) {
    if (index < records_.size()) records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(index));
}

void SubclassDatabase::remove(SubclassRecord* record) {
    for (size_t i = records_.size(); i-- > 0;)
        if (records_[i].get() == record) {
            removeAt(i);
            return;
        }
}

// -------------------------------------------------------------- SubclassingMethods

STDMETHODIMP SubclassingMethods::AttachMessage(_ISubclass* IWP, LONG hWnd, LONG Message) {
    return guard([&] { subclass::attach(IWP, toHandle<HWND>(hWnd), Message); });
}

STDMETHODIMP SubclassingMethods::DetachMessage(_ISubclass* IWP, LONG hWnd, LONG Message) {
    return guard([&] { subclass::detach(IWP, toHandle<HWND>(hWnd), Message); });
}

STDMETHODIMP SubclassingMethods::get_CurrentMessage(LONG* pRet) {
    return guard([&] { *required(pRet) = subclass::currentMessage(); });
}

STDMETHODIMP SubclassingMethods::CallOldWindowProc(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam,
                                                   LONG_PTR* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = subclass::callOldWindowProc(toHandle<HWND>(hWnd), static_cast<UINT>(Message),
                                            static_cast<WPARAM>(wParam), lParam);
    });
}

STDMETHODIMP SubclassingMethods::IsWindowLocal(LONG hWnd, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(subclass::isWindowLocal(toHandle<HWND>(hWnd))); });
}

STDMETHODIMP SubclassingMethods::GetSubclassDatabase(_SubclassDatabase** pRet) {
    return guard([&] {
        required(pRet);
        ComPtr<SubclassDatabase> db(subclass::catalogue());
        *pRet = db.detach();
    });
}

// ------------------------------------------------------------------- ISubclass

STDMETHODIMP SubclassClient::get_MessageResponse(MessageResponseConstants* pRet) {
    return guard([&] { *required(pRet) = tovaMessageResponseConsume; });
}

STDMETHODIMP SubclassClient::WindowProc(LONG, LONG, LONG_PTR, LONG_PTR, LONG_PTR* pRet) {
    return guard([&] { *required(pRet) = 0; });
}

}  // namespace tova
