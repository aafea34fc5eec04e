// APIMethods: programs and documents, server registration, dialogs.
#include "api_methods.h"

#include "api_values.h"
#include "common_dialogs.h"
#include "processes.h"
#include "server_registration.h"
#include "shell_open.h"

namespace tova {

using apiValues::answer;
using apiValues::text;

namespace {

processes::WaitOptions waiting(LONG timeout, VARIANT_BOOL pump) { return {timeout, fromVB(pump)}; }

// A file dialog member: its options, the dialog, FilterIndex back on OK.
std::vector<std::wstring> fileDialog(dialogs::FileDialog kind, BSTR filter, BSTR folder, BSTR title, LONG owner,
                                     BSTR fileName, BSTR extension, FileDialogConstants flags, LONG* filterIndex) {
    dialogs::FileOptions o;
    o.filter = text(filter), o.initialFolder = text(folder), o.title = text(title);
    o.fileName = text(fileName), o.defaultExtension = text(extension);
    o.owner = toHandle<HWND>(owner);
    o.flags = flags;
    o.filterIndex = filterIndex ? *filterIndex : 1;
    auto paths = dialogs::fileDialog(o, kind);
    if (filterIndex && !paths.empty()) *filterIndex = o.filterIndex;
    return paths;
}

std::wstring first(const std::vector<std::wstring>& paths) { return paths.empty() ? std::wstring() : paths.front(); }

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

// -------------------------------------------------------------------- dialogs

STDMETHODIMP APIMethods::BrowseForFolder(BSTR Title, BSTR InitialFolder, LONG hWndOwner, BrowseFolderConstants Flags,
                                         BSTR Caption, BSTR* pRet) {
    return api([&] {
        required(pRet);
        answer(pRet, dialogs::browseForFolder(text(Title), text(InitialFolder), toHandle<HWND>(hWndOwner), Flags,
                                              text(Caption)));
    });
}
STDMETHODIMP APIMethods::GetOpenFileName(BSTR Filter, BSTR InitialFolder, BSTR Title, LONG hWndOwner, BSTR FileName,
                                         BSTR DefaultExtension, FileDialogConstants Flags, LONG* FilterIndex,
                                         BSTR* pRet) {
    return api([&] {
        required(pRet);
        answer(pRet, first(fileDialog(dialogs::FileDialog::open, Filter, InitialFolder, Title, hWndOwner, FileName,
                                      DefaultExtension, Flags, FilterIndex)));
    });
}
STDMETHODIMP APIMethods::GetOpenFileNames(BSTR Filter, BSTR InitialFolder, BSTR Title, LONG hWndOwner, BSTR FileName,
                                          BSTR DefaultExtension, FileDialogConstants Flags, LONG* FilterIndex,
                                          VARIANT* pRet) {
    return api([&] {
        VariantInit(required(pRet));
        const auto paths = fileDialog(dialogs::FileDialog::openMany, Filter, InitialFolder, Title, hWndOwner,
                                      FileName, DefaultExtension, Flags, FilterIndex);
        if (!paths.empty()) toVariantArray(paths, pRet);   // Empty on Cancel
    });
}
STDMETHODIMP APIMethods::GetSaveFileName(BSTR Filter, BSTR InitialFolder, BSTR Title, LONG hWndOwner, BSTR FileName,
                                         BSTR DefaultExtension, FileDialogConstants Flags, LONG* FilterIndex,
                                         BSTR* pRet) {
    return api([&] {
        required(pRet);
        answer(pRet, first(fileDialog(dialogs::FileDialog::save, Filter, InitialFolder, Title, hWndOwner, FileName,
                                      DefaultExtension, Flags, FilterIndex)));
    });
}
STDMETHODIMP APIMethods::ChooseColor(LONG InitialColor, LONG hWndOwner, VARIANT_BOOL FullOpen, LONG* pRet) {
    return api([&] {
        required(pRet);
        *pRet = dialogs::chooseColor(InitialColor, toHandle<HWND>(hWndOwner), fromVB(FullOpen));
    });
}
STDMETHODIMP APIMethods::ChooseFont(IFontDisp* Font, LONG hWndOwner, LONG* Color, VARIANT_BOOL* pRet) {
    return api([&] {
        required(pRet);
        if (!Font) raise(kObjectNotSet);
        ComPtr<IFont> font;
        if (FAILED(Font->QueryInterface(IID_IFont, font.putVoid())) || !font) raise(kTypeMismatch);
        long color = Color ? *Color : 0;
        const bool chosen = dialogs::chooseFont(font.get(), toHandle<HWND>(hWndOwner), Color ? &color : nullptr);
        if (chosen && Color) *Color = color;
        answer(pRet, chosen);
    });
}

}  // namespace tova
