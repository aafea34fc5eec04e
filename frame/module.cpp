// The four entry points of the in-process server, and DllInstall for
// per-user registration (regsvr32 /n /i:user TOVA200.DLL).
#include "catalogue.h"
#include "dispatch.h"
#include "registration.h"

extern "C" {

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
    // On FreeLibrary (not at process exit) the type library goes with the module.
    if (reason == DLL_PROCESS_DETACH && !reserved) tova::releaseTypeLibrary();
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, void** ppv) {
    return tova::classFactory(clsid, riid, ppv);
}

STDAPI DllCanUnloadNow() { return tova::moduleCount() == 0 ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() { return tova::registerServer(tova::RegistrationScope::Machine); }

STDAPI DllUnregisterServer() { return tova::unregisterServer(tova::RegistrationScope::Machine); }

STDAPI DllInstall(BOOL install, LPCWSTR command) {
    tova::RegistrationScope scope = tova::RegistrationScope::Machine;
    if (command && *command) {
        if (lstrcmpiW(command, L"user") != 0) return E_INVALIDARG;
        scope = tova::RegistrationScope::User;
    }
    return install ? tova::registerServer(scope) : tova::unregisterServer(scope);
}

}  // extern "C"
