#include "support.h"

#include <cstring>

namespace test {

HMODULE library() {
    static HMODULE module = LoadLibraryW(L"TOVA200.DLL");
    return module;
}

DISPID dispid(IDispatch* d, const wchar_t* name) {
    DISPID id = DISPID_UNKNOWN;
    LPOLESTR n = const_cast<LPOLESTR>(name);
    d->GetIDsOfNames(IID_NULL, &n, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

void call(CallResult& r, IDispatch* d, const wchar_t* name, WORD flags, std::vector<VARIANT> args,
          std::vector<const wchar_t*> named) {
    std::vector<LPOLESTR> names{const_cast<LPOLESTR>(name)};
    for (const wchar_t* n : named) names.push_back(const_cast<LPOLESTR>(n));
    std::vector<DISPID> ids(names.size(), DISPID_UNKNOWN);
    r.hr = d->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()), LOCALE_USER_DEFAULT, ids.data());
    if (FAILED(r.hr)) return;
    // rgvarg: named arguments first (in the order of their DISPIDs), then positional ones reversed.
    const size_t nNamed = named.size(), nPos = args.size() - nNamed;
    std::vector<VARIANT> rg;
    std::vector<DISPID> namedIds;
    for (size_t i = 0; i < nNamed; ++i) {
        rg.push_back(args[nPos + i]);
        namedIds.push_back(ids[1 + i]);
    }
    for (size_t i = nPos; i-- > 0;) rg.push_back(args[i]);
    DISPPARAMS dp{rg.empty() ? nullptr : rg.data(), namedIds.empty() ? nullptr : namedIds.data(),
                  static_cast<UINT>(rg.size()), static_cast<UINT>(nNamed)};
    r.hr = d->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, flags, &dp, &r.value, &r.excep, &r.argErr);
}

HRESULT put(IDispatch* d, const wchar_t* name, VARIANT value, WORD flags) {
    DISPID id = dispid(d, name);
    DISPID putId = DISPID_PROPERTYPUT;
    DISPPARAMS dp{&value, &putId, 1, 1};
    return d->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &dp, nullptr, nullptr, nullptr);
}

ErrorText lastError() {
    ErrorText e;
    ComPtr<IErrorInfo> info;
    if (GetErrorInfo(0, info.put()) != S_OK || !info) return e;
    Bstr source, description;
    info->GetSource(source.put());
    info->GetDescription(description.put());
    e.source = source.str();
    e.description = description.str();
    return e;
}

VARIANT vLong(long v) { VARIANT x; VariantInit(&x); V_VT(&x) = VT_I4; V_I4(&x) = v; return x; }
VARIANT vDouble(double v) { VARIANT x; VariantInit(&x); V_VT(&x) = VT_R8; V_R8(&x) = v; return x; }
VARIANT vRef(VARIANT* t) { VARIANT x; VariantInit(&x); V_VT(&x) = VT_BYREF | VT_VARIANT; V_VARIANTREF(&x) = t; return x; }
VARIANT vLongRef(long* t) { VARIANT x; VariantInit(&x); V_VT(&x) = VT_BYREF | VT_I4; V_I4REF(&x) = t; return x; }
VARIANT vMissing() { VARIANT x; VariantInit(&x); V_VT(&x) = VT_ERROR; V_ERROR(&x) = DISP_E_PARAMNOTFOUND; return x; }
VARIANT vObject(IDispatch* d) { VARIANT x; VariantInit(&x); V_VT(&x) = VT_DISPATCH; V_DISPATCH(&x) = d; return x; }

IRecordInfo* rectInfo() {
    static IRecordInfo* info = [] {
        IRecordInfo* r = nullptr;
        auto rect = newRectangle();
        ComPtr<IDispatch> d = rect.as<IDispatch>(IID_IDispatch);
        CallResult c;
        call(c, d.get(), L"RECT", DISPATCH_PROPERTYGET, {});
        if (V_VT(&c.value) == VT_RECORD) { r = V_RECORDINFO(&c.value); r->AddRef(); }
        return r;
    }();
    return info;
}

Variant longArray(std::initializer_list<long> values) {
    Variant v;
    SAFEARRAYBOUND b{static_cast<ULONG>(values.size()), 0};
    SAFEARRAY* sa = SafeArrayCreate(VT_VARIANT, 1, &b);
    LONG i = 0;
    for (long x : values) {
        Variant e(x);
        SafeArrayPutElement(sa, &i, &e);
        ++i;
    }
    V_VT(&v) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&v) = sa;
    return v;
}

std::vector<long> arrayLongs(const VARIANT& v) {
    std::vector<long> out;
    if (!(V_VT(&v) & VT_ARRAY)) return out;
    SAFEARRAY* sa = V_ARRAY(&v);
    LONG lb = 0, ub = -1;
    SafeArrayGetLBound(sa, 1, &lb);
    SafeArrayGetUBound(sa, 1, &ub);
    for (LONG i = lb; i <= ub; ++i) {
        Variant e, l;
        SafeArrayGetElement(sa, &i, &e);
        VariantChangeType(&l, &e, 0, VT_I4);
        out.push_back(V_I4(&l));
    }
    return out;
}

STDMETHODIMP Sink::QueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IUnknown || riid == IID_IDispatch) {
        *ppv = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) Sink::Release() { return --refs_; }  // lives on the test's stack

STDMETHODIMP Sink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) {
    Call c{id, {}};
    for (UINT i = p->cArgs; i-- > 0;) {
        Variant copy;
        VARIANT& a = p->rgvarg[i];
        if (V_VT(&a) == (VT_RECORD | VT_BYREF)) {
            // Keep a by-value copy of the record.
            V_VT(&copy) = VT_RECORD;
            V_RECORDINFO(&copy) = V_RECORDINFO(&a);
            V_RECORDINFO(&copy)->AddRef();
            V_RECORDINFO(&a)->RecordCreateCopy(V_RECORD(&a), &V_RECORD(&copy));
        } else {
            VariantCopyInd(&copy, &a);
        }
        c.args.push_back(std::move(copy));
    }
    calls.push_back(std::move(c));
    if (handler) handler(id, p);
    return S_OK;
}

void Sink::connect(IUnknown* source, REFIID iid) {
    ComPtr<IConnectionPointContainer> cpc;
    source->QueryInterface(IID_IConnectionPointContainer, cpc.putVoid());
    ASSERT_TRUE(cpc);
    ASSERT_EQ(S_OK, cpc->FindConnectionPoint(iid, point_.put()));
    ASSERT_EQ(S_OK, point_->Advise(static_cast<IDispatch*>(this), &cookie_));
}

void Sink::disconnect() {
    if (point_ && cookie_) point_->Unadvise(cookie_);
    point_.reset();
    cookie_ = 0;
}

std::wstring tempFolder() {
    wchar_t t[MAX_PATH + 1];
    DWORD n = GetTempPathW(MAX_PATH + 1, t);
    std::wstring s(t, n);
    if (!s.empty() && s.back() != L'\\') s += L'\\';
    return s;
}

void removeTree(const std::wstring& path) {
    const std::wstring base = path.size() > 240 && path.compare(0, 4, L"\\\\?\\") != 0 ? L"\\\\?\\" + path : path;
    WIN32_FIND_DATAW fd;
    HANDLE h = FindFirstFileW((base + L"\\*").c_str(), &fd);
    if (h != INVALID_HANDLE_VALUE) {
        do {
            std::wstring name = fd.cFileName;
            if (name == L"." || name == L"..") continue;
            std::wstring child = base + L"\\" + name;
            SetFileAttributesW(child.c_str(), FILE_ATTRIBUTE_NORMAL);
            if (!(fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) DeleteFileW(child.c_str());
            else if (fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) RemoveDirectoryW(child.c_str());
            else removeTree(child);
        } while (FindNextFileW(h, &fd));
        FindClose(h);
    }
    SetFileAttributesW(base.c_str(), FILE_ATTRIBUTE_NORMAL);
    RemoveDirectoryW(base.c_str());
}

Scratch::Scratch() {
    static int serial = 0;
    root_ = tempFolder() + L"tova_scratch_" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++serial);
    removeTree(root_);
    CreateDirectoryW(root_.c_str(), nullptr);
}

Canvas::Canvas(int width, int height, COLORREF background) : width_(width), height_(height) {
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = width;
    bi.bmiHeader.biHeight = -height;  // top-down
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    dc_ = CreateCompatibleDC(nullptr);
    bitmap_ = CreateDIBSection(dc_, &bi, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits_), nullptr, 0);
    old_ = SelectObject(dc_, bitmap_);
    for (int i = 0; i < width * height; ++i)
        bits_[i] = (GetRValue(background) << 16) | (GetGValue(background) << 8) | GetBValue(background);
}

Canvas::~Canvas() {
    SelectObject(dc_, old_);
    DeleteObject(bitmap_);
    DeleteDC(dc_);
}

COLORREF Canvas::pixel(int x, int y) const {
    GdiFlush();
    DWORD p = bits_[y * width_ + x];
    return RGB((p >> 16) & 0xFF, (p >> 8) & 0xFF, p & 0xFF);
}

Rerun rerunAsVersion(const char* version, const std::string& filter) {
    char exe[MAX_PATH];
    GetModuleFileNameA(nullptr, exe, MAX_PATH);
    const char* base = std::strrchr(exe, '\\');
    const std::string key = std::string("Software\\Wine\\AppDefaults\\") + (base ? base + 1 : exe);
    Rerun r;
    {
        tova::RegistryKey k;
        if (RegCreateKeyExA(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, k.put(), nullptr))
            return r;
        RegSetValueExA(k.get(), "Version", 0, REG_SZ, reinterpret_cast<const BYTE*>(version),
                       static_cast<DWORD>(std::strlen(version) + 1));
    }
    SetEnvironmentVariableA("TOVA_CONFIGURED_VERSION", version);
    std::string cmd = std::string("\"") + exe + "\" --gtest_filter=" + filter;
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    // Wine now and then fails to start a process configured as a 9x system
    // (seen once in many runs): a second attempt starts it.
    for (int attempt = 0; attempt < 3 && !r.started; ++attempt) {
        if (attempt) Sleep(200);
        r.started = CreateProcessA(nullptr, &cmd[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi) != 0;
        if (!r.started) r.error = GetLastError();
    }
    SetEnvironmentVariableA("TOVA_CONFIGURED_VERSION", nullptr);
    if (r.started) {
        const tova::ObjectHandle process(pi.hProcess), thread(pi.hThread);
        // A child that hangs must not outlive its configuration, nor the run.
        if (WaitForSingleObject(pi.hProcess, 60000) == WAIT_TIMEOUT) TerminateProcess(pi.hProcess, 1);
        GetExitCodeProcess(pi.hProcess, &r.code);
    }
    RegDeleteKeyA(HKEY_CURRENT_USER, key.c_str());
    return r;
}

}  // namespace test

int main(int argc, char** argv) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    testing::InitGoogleTest(&argc, argv);
    int rc = RUN_ALL_TESTS();
    CoUninitialize();
    return rc;
}
