// APIMethods: programs and documents, server registration, dialogs.
#include "api_methods.h"

#include "processes.h"
#include "server_registration.h"
#include "shell_open.h"

namespace tova {

namespace {

std::wstring text(BSTR b) { return b ? std::wstring(b, SysStringLen(b)) : std::wstring(); }
void answer(BSTR* out, const std::wstring& s) { *required(out) = Bstr(s).detach(); }
void answer(VARIANT_BOOL* out, bool b) { *required(out) = toVB(b); }

processes::WaitOptions waiting(LONG timeout, VARIANT_BOOL pump) { return {timeout, fromVB(pump)}; }

}  // namespace

// ---------------------------------------------------- programs and documents

STDMETHODIMP APIMethods::ShellExecute(BSTR File, BSTR Parameters, BSTR Verb, BSTR Folder, ShowWindowConstants ShowCmd,
                                      LONG hWndOwner, VARIANT_BOOL* pRet) {
    return api([&] {
        required(pRet);
        shell::Open what;
        what.file = text(File), what.parameters = text(Parameters), what.verb = text(Verb);
        what.folder = text(Folder);
        what.showCmd = processes::checkedShowCommand(ShowCmd);
        what.owner = toHandle<HWND>(hWndOwner);
        answer(pRet, shell::execute(what));
    });
}
STDMETHODIMP APIMethods::RunAndWait(BSTR CommandLine, LONG* ExitCode, LONG Timeout, ShowWindowConstants ShowCmd,
                                    BSTR Folder, VARIANT_BOOL PumpMessages, VARIANT_BOOL* pRet) {
    return api([&] {
        required(pRet);
        const int show = processes::checkedShowCommand(ShowCmd);
        long code = ExitCode ? *ExitCode : 0;
        const bool ended =
            processes::runAndWait(text(CommandLine), show, text(Folder), waiting(Timeout, PumpMessages), code);
        if (ExitCode) *ExitCode = code;
        answer(pRet, ended);
    });
}
STDMETHODIMP APIMethods::RunProcess(BSTR CommandLine, ShowWindowConstants ShowCmd, BSTR Folder, LONG* pRet) {
    return api([&] {
        required(pRet);
        *pRet = static_cast<LONG>(processes::run(text(CommandLine), processes::checkedShowCommand(ShowCmd), text(Folder)));
    });
}
STDMETHODIMP APIMethods::WaitForProcess(LONG ProcessId, LONG Timeout, LONG* ExitCode, VARIANT_BOOL PumpMessages,
                                        VARIANT_BOOL* pRet) {
    return api([&] {
        required(pRet);
        long code = ExitCode ? *ExitCode : 0;
        const bool ended = processes::waitFor(static_cast<unsigned long>(ProcessId), waiting(Timeout, PumpMessages), code);
        if (ExitCode) *ExitCode = code;
        answer(pRet, ended);
    });
}
STDMETHODIMP APIMethods::OpenURL(BSTR URL, LONG hWndOwner, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, shell::openUrl(text(URL), toHandle<HWND>(hWndOwner))); });
}
STDMETHODIMP APIMethods::OpenDocument(BSTR Path, BSTR Verb, LONG hWndOwner, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, shell::openDocument(text(Path), text(Verb), toHandle<HWND>(hWndOwner))); });
}
STDMETHODIMP APIMethods::FindExecutable(BSTR DocumentPath, BSTR* pRet) {
    return api([&] { answer(pRet, shell::findExecutable(text(DocumentPath))); });
}

// ------------------------------------------------------- server registration

STDMETHODIMP APIMethods::RegisterServer(BSTR Path, VARIANT_BOOL PerUser, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, servers::registerServer(text(Path), true, fromVB(PerUser))); });
}
STDMETHODIMP APIMethods::UnregisterServer(BSTR Path, VARIANT_BOOL PerUser, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, servers::registerServer(text(Path), false, fromVB(PerUser))); });
}
STDMETHODIMP APIMethods::IsClassRegistered(BSTR ClassName, VARIANT_BOOL* pRet) {
    return api([&] {
        CLSID clsid;
        answer(pRet, servers::classOf(text(ClassName), clsid) && !servers::serverPath(clsid).empty());
    });
}
STDMETHODIMP APIMethods::ProgIDToCLSID(BSTR ProgID, BSTR* pRet) {
    return api([&] {
        CLSID clsid;
        answer(pRet, servers::classOf(text(ProgID), clsid) ? servers::clsidText(clsid) : std::wstring());
    });
}
STDMETHODIMP APIMethods::CLSIDToProgID(BSTR CLSID, BSTR* pRet) {
    return api([&] {
        ::CLSID clsid;
        const std::wstring name = text(CLSID);
        answer(pRet, !name.empty() && name[0] == L'{' && servers::classOf(name, clsid) ? servers::progIdOf(clsid)
                                                                                      : std::wstring());
    });
}
STDMETHODIMP APIMethods::GetServerPath(BSTR ClassName, BSTR* pRet) {
    return api([&] {
        CLSID clsid;
        answer(pRet, servers::classOf(text(ClassName), clsid) ? servers::serverPath(clsid) : std::wstring());
    });
}

STDMETHODIMP APIMethods::BrowseForFolder(BSTR, BSTR, LONG, BrowseFolderConstants, BSTR, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetOpenFileName(BSTR, BSTR, BSTR, LONG, BSTR, BSTR, FileDialogConstants, LONG*, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetOpenFileNames(BSTR, BSTR, BSTR, LONG, BSTR, BSTR, FileDialogConstants, LONG*, VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetSaveFileName(BSTR, BSTR, BSTR, LONG, BSTR, BSTR, FileDialogConstants, LONG*, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::ChooseColor(LONG, LONG, VARIANT_BOOL, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::ChooseFont(IFontDisp*, LONG, LONG*, VARIANT_BOOL*) { return E_NOTIMPL; }

}  // namespace tova
