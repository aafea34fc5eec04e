// What the client benchmarks share: an object of the DLL beside the program,
// created as a client creates it, through the DLL's class factory.
#pragma once

#include <windows.h>
#include <objbase.h>

#include <string>

// An object of `clsid` from TOVA200.DLL in the program's folder (not found
// through the registry); null when that fails. The DLL stays loaded.
template <class I>
I* createBeside(REFCLSID clsid, REFIID iid) {
    wchar_t exe[MAX_PATH * 2];
    const DWORD n = GetModuleFileNameW(nullptr, exe, MAX_PATH * 2);
    std::wstring path(exe, n);
    path = path.substr(0, path.rfind(L'\\') + 1) + L"TOVA200.DLL";
    HMODULE dll = LoadLibraryW(path.c_str());
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    auto get = dll ? reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(GetProcAddress(dll, "DllGetClassObject")))
                   : nullptr;
    IClassFactory* factory = nullptr;
    I* object = nullptr;
    if (get) get(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    if (factory) {
        factory->CreateInstance(nullptr, iid, reinterpret_cast<void**>(&object));
        factory->Release();
    }
    return object;
}
