#include "common_dialogs.h"

#include "fonts_text.h"
#include "last_error.h"
#include "window_placement.h"
#include "screen_colours.h"
#include "../frame/errors.h"
#include "../frame/values.h"

#include <commdlg.h>
#include <objbase.h>
#include <shlobj.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>

namespace tova::dialogs {

namespace {

// Paths and selections up to the longest path the system takes.
constexpr DWORD kPathBuffer = 32768;

// Cancel leaves 0, which the member has already set.
void dialogFailed() { lastError::set(CommDlgExtendedError()); }

// "Text|*.txt|All|*.*" as the dialog wants it: pairs ended by NULs, then one more.
std::wstring filterList(const std::wstring& filter) {
    if (filter.empty()) return {};
    std::wstring list = filter;
    if (std::count(list.begin(), list.end(), L'|') % 2 == 0) raise(kInvalidArgument);
    std::replace(list.begin(), list.end(), L'|', L'\0');
    list.append(2, L'\0');
    return list;
}

// The hook and template flags need what the caller cannot give; help has no
// one to answer it; the two selection flags are the member's choice.
constexpr DWORD kFileFlagsIgnored = OFN_SHOWHELP | OFN_ENABLEHOOK | OFN_ENABLETEMPLATE | OFN_ENABLETEMPLATEHANDLE |
                                    OFN_ALLOWMULTISELECT | OFN_ENABLEINCLUDENOTIFY;

// Runs the Open or Save As dialog; the buffer holds the answer on true.
bool runFileDialog(FileOptions& o, bool save, bool multiple, std::vector<wchar_t>& buffer) {
    if (o.filterIndex < 0) raise(kInvalidArgument);
    const std::wstring filters = filterList(o.filter);
    std::wstring extension = o.defaultExtension;
    if (!extension.empty() && extension[0] == L'.') extension.erase(0, 1);
    if (!placement::isWindowOrNone(o.owner)) return false;
    buffer.assign(kPathBuffer, L'\0');
    std::copy_n(o.fileName.begin(), std::min<size_t>(o.fileName.size(), kPathBuffer - 1), buffer.begin());

    OPENFILENAMEW ofn{};
    ofn.lStructSize = sizeof ofn;
    ofn.hwndOwner = o.owner;
    ofn.lpstrFilter = filters.empty() ? nullptr : filters.c_str();
    ofn.nFilterIndex = static_cast<DWORD>(o.filterIndex);
    ofn.lpstrFile = buffer.data();
    ofn.nMaxFile = kPathBuffer;
    ofn.lpstrInitialDir = o.initialFolder.empty() ? nullptr : o.initialFolder.c_str();
    ofn.lpstrTitle = o.title.empty() ? nullptr : o.title.c_str();
    ofn.lpstrDefExt = extension.empty() ? nullptr : extension.c_str();
    ofn.Flags = (static_cast<DWORD>(o.flags) & ~kFileFlagsIgnored) | OFN_EXPLORER |
                (multiple ? OFN_ALLOWMULTISELECT : 0);
    if (!(save ? GetSaveFileNameW(&ofn) : GetOpenFileNameW(&ofn))) {
        dialogFailed();
        return false;
    }
    o.filterIndex = static_cast<long>(ofn.nFilterIndex);
    return true;
}

using ItemList = std::unique_ptr<ITEMIDLIST, decltype(&CoTaskMemFree)>;

// COM for the call, in a single-threaded apartment when the thread has none
// yet; the new-style folder picker needs one.
class Apartment {
public:
    Apartment() : hr_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() { if (SUCCEEDED(hr_)) CoUninitialize(); }
    bool singleThreaded() const { return SUCCEEDED(hr_); }

private:
    HRESULT hr_;
};

struct BrowseStart {
    const std::wstring& folder;
    const std::wstring& caption;
};

int CALLBACK browseEvents(HWND dialog, UINT message, LPARAM, LPARAM data) {
    const auto* start = reinterpret_cast<const BrowseStart*>(data);
    if (message == BFFM_INITIALIZED) {
        if (!start->folder.empty())
            SendMessageW(dialog, BFFM_SETSELECTIONW, TRUE, reinterpret_cast<LPARAM>(start->folder.c_str()));
        if (!start->caption.empty()) SetWindowTextW(dialog, start->caption.c_str());
    }
    // A name typed that is no folder keeps the dialog open.
    return message == BFFM_VALIDATEFAILEDW ? 1 : 0;
}

long rgbOf(long oleColor) {
    const long rgb = colours::translate(oleColor);
    if (rgb < 0) raise(kInvalidArgument);
    return rgb;
}

// The custom colours of the colour dialog, one set for the process.
std::mutex customLock;
COLORREF customColours[16] = {0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF,
                              0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF};

// A font object's description as a LOGFONT for the screen.
LOGFONTW logFontOf(IFont* font) {
    LOGFONTW lf{};
    Bstr name;
    CY size{};
    SHORT weight = FW_NORMAL, charset = DEFAULT_CHARSET;
    BOOL italic = FALSE, underline = FALSE, strike = FALSE;
    font->get_Name(name.put());
    font->get_Size(&size);
    font->get_Weight(&weight);
    font->get_Charset(&charset);
    font->get_Italic(&italic);
    font->get_Underline(&underline);
    font->get_Strikethrough(&strike);
    if (name.get()) lstrcpynW(lf.lfFaceName, name.get(), LF_FACESIZE);
    const long dpi = fonts::screenDpi();
    lf.lfHeight = -static_cast<LONG>(std::lround(static_cast<double>(size.int64) / 10000.0 * dpi / 72.0));
    lf.lfWeight = weight;
    lf.lfCharSet = static_cast<BYTE>(charset);
    lf.lfItalic = italic ? 1 : 0;
    lf.lfUnderline = underline ? 1 : 0;
    lf.lfStrikeOut = strike ? 1 : 0;
    return lf;
}

}  // namespace

std::vector<std::wstring> fileDialog(FileOptions& options, FileDialog kind) {
    std::vector<wchar_t> buffer;
    if (!runFileDialog(options, kind == FileDialog::save, kind == FileDialog::openMany, buffer)) return {};
    // One file: its full path. Several: the folder, then the names.
    std::vector<std::wstring> parts;
    for (const wchar_t* p = buffer.data(); *p; p += wcslen(p) + 1) parts.emplace_back(p);
    if (parts.size() <= 1) return parts;
    std::wstring folder = parts[0];
    if (folder.back() != L'\\') folder += L'\\';
    std::vector<std::wstring> paths;
    for (size_t i = 1; i < parts.size(); ++i) paths.push_back(folder + parts[i]);
    return paths;
}

std::wstring browseForFolder(const std::wstring& title, const std::wstring& initialFolder, HWND owner, long flags,
                             const std::wstring& caption) {
    if (!placement::isWindowOrNone(owner)) return {};
    Apartment com;
    BrowseStart start{initialFolder, caption};
    wchar_t display[MAX_PATH] = {};
    BROWSEINFOW info{};
    info.hwndOwner = owner;
    info.pszDisplayName = display;
    info.lpszTitle = title.empty() ? nullptr : title.c_str();
    info.ulFlags = static_cast<UINT>(flags);
    if (!com.singleThreaded()) info.ulFlags &= ~static_cast<UINT>(BIF_NEWDIALOGSTYLE);
    info.lpfn = browseEvents;
    info.lParam = reinterpret_cast<LPARAM>(&start);
    ItemList item(SHBrowseForFolderW(&info), &CoTaskMemFree);
    if (!item) return {};
    wchar_t path[MAX_PATH] = {};
    if (!SHGetPathFromIDListW(item.get(), path)) {
        lastError::set(ERROR_PATH_NOT_FOUND);
        return {};
    }
    return path;
}

long chooseColor(long initial, HWND owner, bool fullOpen) {
    CHOOSECOLORW cc{};
    cc.lStructSize = sizeof cc;
    cc.rgbResult = static_cast<COLORREF>(rgbOf(initial));
    if (!placement::isWindowOrNone(owner)) return -1;
    COLORREF custom[16];
    {
        std::lock_guard<std::mutex> hold(customLock);
        std::copy(std::begin(customColours), std::end(customColours), custom);
    }
    cc.hwndOwner = owner;
    cc.lpCustColors = custom;
    cc.Flags = CC_RGBINIT | CC_ANYCOLOR | (fullOpen ? CC_FULLOPEN : 0);
    const BOOL ok = ChooseColorW(&cc);
    {
        std::lock_guard<std::mutex> hold(customLock);
        std::copy(std::begin(custom), std::end(custom), customColours);
    }
    if (!ok) {
        dialogFailed();
        return -1;
    }
    return static_cast<long>(cc.rgbResult);
}

bool chooseFont(IFont* font, HWND owner, long* color) {
    LOGFONTW lf = logFontOf(font);
    CHOOSEFONTW cf{};
    cf.lStructSize = sizeof cf;
    cf.rgbColors = color ? static_cast<COLORREF>(rgbOf(*color)) : 0;
    if (!placement::isWindowOrNone(owner)) return false;
    cf.hwndOwner = owner;
    cf.lpLogFont = &lf;
    cf.Flags = CF_SCREENFONTS | CF_INITTOLOGFONTSTRUCT | CF_EFFECTS;
    if (!ChooseFontW(&cf)) {
        dialogFailed();
        return false;
    }
    CY size;
    size.int64 = static_cast<LONGLONG>(cf.iPointSize) * 1000;   // tenths of a point to 1/10,000
    font->put_Name(Bstr(lf.lfFaceName).get());
    font->put_Size(size);
    font->put_Weight(static_cast<SHORT>(lf.lfWeight));
    font->put_Italic(lf.lfItalic != 0);
    font->put_Underline(lf.lfUnderline != 0);
    font->put_Strikethrough(lf.lfStrikeOut != 0);
    font->put_Charset(lf.lfCharSet);
    if (color) *color = static_cast<long>(cf.rgbColors);
    return true;
}

}  // namespace tova::dialogs
