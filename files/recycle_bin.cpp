#include "recycle_bin.h"

#include "../frame/values.h"
#include "long_paths.h"

#include <shellapi.h>
#include <shobjidl.h>

namespace tova {
namespace files {

namespace detail {

HRESULT preDeleteVerdict(DWORD flags) { return (flags & TSF_DELETE_RECYCLE_IF_POSSIBLE) ? S_OK : E_ABORT; }

}  // namespace detail

namespace {

// Sees each item before it goes; an item the shell would destroy stops the operation.
class RecycleOnlySink final : public IFileOperationProgressSink {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        if (riid == IID_IUnknown || riid == IID_IFileOperationProgressSink) {
            *ppv = static_cast<IFileOperationProgressSink*>(this);
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    // Lives on the caller's stack for the length of one operation.
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP PreDeleteItem(DWORD flags, IShellItem*) override {
        const HRESULT verdict = detail::preDeleteVerdict(flags);
        if (FAILED(verdict)) refused = true;
        return verdict;
    }
    STDMETHODIMP StartOperations() override { return S_OK; }
    STDMETHODIMP FinishOperations(HRESULT) override { return S_OK; }
    STDMETHODIMP PreRenameItem(DWORD, IShellItem*, LPCWSTR) override { return S_OK; }
    STDMETHODIMP PostRenameItem(DWORD, IShellItem*, LPCWSTR, HRESULT, IShellItem*) override { return S_OK; }
    STDMETHODIMP PreMoveItem(DWORD, IShellItem*, IShellItem*, LPCWSTR) override { return S_OK; }
    STDMETHODIMP PostMoveItem(DWORD, IShellItem*, IShellItem*, LPCWSTR, HRESULT, IShellItem*) override { return S_OK; }
    STDMETHODIMP PreCopyItem(DWORD, IShellItem*, IShellItem*, LPCWSTR) override { return S_OK; }
    STDMETHODIMP PostCopyItem(DWORD, IShellItem*, IShellItem*, LPCWSTR, HRESULT, IShellItem*) override { return S_OK; }
    STDMETHODIMP PostDeleteItem(DWORD, IShellItem*, HRESULT, IShellItem*) override { return S_OK; }
    STDMETHODIMP PreNewItem(DWORD, IShellItem*, LPCWSTR) override { return S_OK; }
    STDMETHODIMP PostNewItem(DWORD, IShellItem*, LPCWSTR, LPCWSTR, DWORD, HRESULT, IShellItem*) override { return S_OK; }
    STDMETHODIMP UpdateProgress(UINT, UINT) override { return S_OK; }
    STDMETHODIMP ResetTimer() override { return S_OK; }
    STDMETHODIMP PauseTimer() override { return S_OK; }
    STDMETHODIMP ResumeTimer() override { return S_OK; }

    bool refused = false;
};

bool isWindows8OrLater() {
    OSVERSIONINFOEXW v = {};
    v.dwOSVersionInfoSize = sizeof v;
    v.dwMajorVersion = 6;
    v.dwMinorVersion = 2;
    const DWORDLONG mask =
        VerSetConditionMask(VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL), VER_MINORVERSION, VER_GREATER_EQUAL);
    return VerifyVersionInfoW(&v, VER_MAJORVERSION | VER_MINORVERSION, mask) != 0;
}

// The shell's file operation: S_OK when done, S_FALSE when it refused or was
// cancelled, another failure when the operation itself does not work here.
HRESULT recycleWithFileOperation(const std::vector<std::wstring>& paths) {
    ComPtr<IFileOperation> op;
    HRESULT hr = CoCreateInstance(CLSID_FileOperation, nullptr, CLSCTX_ALL, IID_IFileOperation, op.putVoid());
    if (FAILED(hr)) return hr;
    DWORD flags = FOF_NO_UI | FOF_ALLOWUNDO;
    if (isWindows8OrLater()) flags |= FOFX_RECYCLEONDELETE;
    if (FAILED(hr = op->SetOperationFlags(flags))) return hr;
    RecycleOnlySink sink;
    DWORD cookie = 0;
    if (FAILED(hr = op->Advise(&sink, &cookie))) return hr;
    for (const std::wstring& p : paths) {
        ComPtr<IShellItem> item;
        if (FAILED(hr = SHCreateItemFromParsingName(p.c_str(), nullptr, IID_IShellItem, item.putVoid())) ||
            FAILED(hr = op->DeleteItem(item.get(), nullptr)))
            break;
    }
    if (SUCCEEDED(hr)) hr = op->PerformOperations();
    BOOL aborted = FALSE;
    if (SUCCEEDED(hr)) op->GetAnyOperationsAborted(&aborted);
    op->Unadvise(cookie);
    if (hr == E_NOTIMPL) return hr;
    return SUCCEEDED(hr) && !aborted && !sink.refused ? S_OK : S_FALSE;
}

// The older call, bound to the classic path limit; with FOF_WANTNUKEWARNING it
// asks before destroying anything rather than destroying silently.
bool recycleWithShellCall(const std::vector<std::wstring>& paths) {
    std::wstring from;
    for (const std::wstring& p : paths) {
        const std::wstring plain = callerPath(p, L"");
        if (plain.size() >= MAX_PATH) return false;
        from += plain;
        from += L'\0';
    }
    from += L'\0';
    SHFILEOPSTRUCTW op = {};
    op.wFunc = FO_DELETE;
    op.pFrom = from.c_str();
    op.fFlags = FOF_ALLOWUNDO | FOF_NO_UI | FOF_WANTNUKEWARNING;
    return SHFileOperationW(&op) == 0 && !op.fAnyOperationsAborted;
}

// The operation needs COM on this thread; a host thread without it gets it for the call.
class ComForCall {
public:
    ComForCall() : hr_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~ComForCall() { if (SUCCEEDED(hr_)) CoUninitialize(); }
    ComForCall(const ComForCall&) = delete;
    ComForCall& operator=(const ComForCall&) = delete;

private:
    HRESULT hr_;
};

}  // namespace

bool recycle(const std::vector<std::wstring>& paths) {
    if (paths.empty()) return true;
    ComForCall com;
    const HRESULT hr = recycleWithFileOperation(paths);
    if (hr == S_OK) return true;
    if (hr == S_FALSE) return false;
    // Only where the file operation does not work (Wine's methods answer E_NOTIMPL).
    return recycleWithShellCall(paths);
}

}  // namespace files
}  // namespace tova
