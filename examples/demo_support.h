// What the demo programs share: stopping with a message when a call fails,
// and creating objects by ProgID as any client does.
#pragma once

#include "frame/typelib.h"
#include "frame/values.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace demo {

// The program's name for its messages: its file name without folder and ".exe".
inline const std::string& name() {
    static const std::string n = [] {
        char path[MAX_PATH] = "";
        GetModuleFileNameA(nullptr, path, MAX_PATH);
        std::string s(path);
        size_t slash = s.find_last_of("\\/");
        if (slash != std::string::npos) s.erase(0, slash + 1);
        size_t dot = s.rfind('.');
        if (dot != std::string::npos) s.erase(dot);
        return s;
    }();
    return n;
}

// Stops the demo with a message when a call fails; the library describes its
// errors through the error object.
inline void check(HRESULT hr, const char* what) {
    if (SUCCEEDED(hr)) return;
    std::fprintf(stderr, "%s: %s failed (HRESULT 0x%08lX)", name().c_str(), what, static_cast<unsigned long>(hr));
    IErrorInfo* info = nullptr;
    if (GetErrorInfo(0, &info) == S_OK && info) {
        BSTR source = nullptr, description = nullptr;
        info->GetSource(&source);
        info->GetDescription(&description);
        std::fprintf(stderr, ": %ls: %ls", source ? source : L"", description ? description : L"");
        SysFreeString(source);
        SysFreeString(description);
        info->Release();
    }
    std::fprintf(stderr, "\n");
    std::exit(1);
}

template <class T>
tova::ComPtr<T> create(const wchar_t* progId, REFIID iid) {
    CLSID clsid;
    if (FAILED(CLSIDFromProgID(progId, &clsid))) {
        std::fprintf(stderr, "%s: %ls is not registered (regsvr32 TOVA200.DLL first)\n", name().c_str(), progId);
        std::exit(1);
    }
    tova::ComPtr<T> object;
    check(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object.putVoid()), "CoCreateInstance");
    return object;
}

}  // namespace demo
