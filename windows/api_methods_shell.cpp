// APIMethods: programs and documents, server registration, dialogs.
#include "api_methods.h"

namespace tova {

STDMETHODIMP APIMethods::ShellExecute(BSTR, BSTR, BSTR, BSTR, ShowWindowConstants, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::RunAndWait(BSTR, LONG*, LONG, ShowWindowConstants, BSTR, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::RunProcess(BSTR, ShowWindowConstants, BSTR, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::WaitForProcess(LONG, LONG, LONG*, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::OpenURL(BSTR, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::OpenDocument(BSTR, BSTR, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::FindExecutable(BSTR, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::RegisterServer(BSTR, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::UnregisterServer(BSTR, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::IsClassRegistered(BSTR, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::ProgIDToCLSID(BSTR, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::CLSIDToProgID(BSTR, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetServerPath(BSTR, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::BrowseForFolder(BSTR, BSTR, LONG, BrowseFolderConstants, BSTR, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetOpenFileName(BSTR, BSTR, BSTR, LONG, BSTR, BSTR, FileDialogConstants, LONG*, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetOpenFileNames(BSTR, BSTR, BSTR, LONG, BSTR, BSTR, FileDialogConstants, LONG*, VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetSaveFileName(BSTR, BSTR, BSTR, LONG, BSTR, BSTR, FileDialogConstants, LONG*, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::ChooseColor(LONG, LONG, VARIANT_BOOL, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::ChooseFont(IFontDisp*, LONG, LONG*, VARIANT_BOOL*) { return E_NOTIMPL; }

}  // namespace tova
