#include "fonts_text.h"

#include "last_error.h"
#include "../frame/errors.h"

#include <algorithm>
#include <cmath>

namespace tova::fonts {

namespace {

constexpr UINT kMeasure = DT_CALCRECT | DT_EXPANDTABS | DT_NOPREFIX | DT_LEFT | DT_TOP;

bool nonClientMetrics(NONCLIENTMETRICSW& m) {
    m = {};
    m.cbSize = sizeof m;
    if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, m.cbSize, &m, 0)) return true;
    // Before Vista the record ends before iPaddedBorderWidth.
    m.cbSize = offsetof(NONCLIENTMETRICSW, iPaddedBorderWidth);
    return SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, m.cbSize, &m, 0) != 0;
}

ComPtr<IFontDisp> newFont(FONTDESC& fd) {
    ComPtr<IFontDisp> out;
    const HRESULT hr = OleCreateFontIndirect(&fd, IID_IFontDisp, out.putVoid());
    if (FAILED(hr)) lastError::set(hr);
    return out;
}

ComPtr<IFontDisp> fromLogFont(const LOGFONTW& lf) {
    const long dpi = screenDpi();
    FONTDESC fd = {};
    fd.cbSizeofstruct = sizeof fd;
    fd.lpstrName = const_cast<LPOLESTR>(lf.lfFaceName);
    // A negative height is the character height, a positive one the cell's:
    // either way close to the size in points that made it.
    const double points = lf.lfHeight ? std::abs(lf.lfHeight) * 72.0 / dpi : 8.0;
    fd.cySize.int64 = static_cast<LONGLONG>(std::llround(points * 10000.0));
    fd.sWeight = static_cast<SHORT>(lf.lfWeight ? lf.lfWeight : FW_NORMAL);
    fd.sCharset = lf.lfCharSet;
    fd.fItalic = lf.lfItalic != 0;
    fd.fUnderline = lf.lfUnderline != 0;
    fd.fStrikethrough = lf.lfStrikeOut != 0;
    return newFont(fd);
}

int CALLBACK addFamily(const LOGFONTW* lf, const TEXTMETRICW*, DWORD, LPARAM p) {
    auto& c = *reinterpret_cast<std::pair<std::vector<std::wstring>*, bool>*>(p);
    if (lf->lfFaceName[0] == L'@') return 1;
    if (c.second && (lf->lfPitchAndFamily & 3) != FIXED_PITCH) return 1;
    c.first->push_back(lf->lfFaceName);
    return 1;
}

bool lessIgnoringCase(const std::wstring& a, const std::wstring& b) { return lstrcmpiW(a.c_str(), b.c_str()) < 0; }

}  // namespace

long screenDpi() {
    WindowDc screen(nullptr);
    return screen.get() ? GetDeviceCaps(screen.get(), LOGPIXELSY) : 96;
}

long measure(HDC dc, const std::wstring& text, bool height) {
    if (!dc) return lastError::set(ERROR_INVALID_HANDLE), 0;
    if (text.empty()) return 0;
    RECT r{0, 0, 0, 0};
    if (!DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &r, kMeasure)) return lastError::failed(), 0;
    return height ? r.bottom - r.top : r.right - r.left;
}

long measure(const std::wstring& text, IFont* font, bool height) {
    if (text.empty()) return 0;
    MemoryDc dc(nullptr);
    if (!dc.get()) return lastError::failed(), 0;
    GdiObject<HFONT> own;
    HFONT hf = nullptr;
    if (font) {
        if (FAILED(font->get_hFont(&hf))) hf = nullptr;   // the font object keeps it
    } else {
        NONCLIENTMETRICSW m;
        if (nonClientMetrics(m)) {
            own = GdiObject<HFONT>(CreateFontIndirectW(&m.lfMessageFont));
            hf = own.get();
        }
    }
    if (!hf) return lastError::set(ERROR_INVALID_HANDLE), 0;
    Selection chosen(dc.get(), hf);
    return measure(dc.get(), text, height);
}

std::vector<std::wstring> familyNames(bool fixedPitchOnly, long charset) {
    if (charset < 0 || charset > 255) raise(kInvalidArgument);
    std::vector<std::wstring> names;
    WindowDc screen(nullptr);
    if (!screen.get()) return lastError::failed(), names;
    LOGFONTW lf = {};
    lf.lfCharSet = static_cast<BYTE>(charset);
    std::pair<std::vector<std::wstring>*, bool> collect{&names, fixedPitchOnly};
    EnumFontFamiliesExW(screen.get(), &lf, addFamily, reinterpret_cast<LPARAM>(&collect), 0);
    std::sort(names.begin(), names.end(), lessIgnoringCase);
    // A family is listed once per character set.
    names.erase(std::unique(names.begin(), names.end(),
                            [](const std::wstring& a, const std::wstring& b) { return lstrcmpiW(a.c_str(), b.c_str()) == 0; }),
                names.end());
    return names;
}

bool exists(const std::wstring& family) {
    // The same list GetFontNames gives: substitutes such as MS Shell Dlg are not families.
    for (const std::wstring& n : familyNames(false, DEFAULT_CHARSET))
        if (lstrcmpiW(n.c_str(), family.c_str()) == 0) return true;
    lastError::set(ERROR_NOT_FOUND);
    return false;
}

HFONT createHandle(IFont* font, HDC dc) {
    long dpi = dc ? GetDeviceCaps(dc, LOGPIXELSY) : screenDpi();
    if (dpi <= 0) return lastError::set(ERROR_INVALID_HANDLE), nullptr;
    // The font object's own GDI font holds the size it was given; its Size
    // property may report the size the system realised instead (12 points
    // read back as 12.75), which would not make the same font again.
    HFONT own = nullptr;
    LOGFONTW lf = {};
    if (FAILED(font->get_hFont(&own)) || !own || !GetObjectW(own, sizeof lf, &lf)) return lastError::set(E_FAIL), nullptr;
    const long screen = screenDpi();
    if (dpi != screen) lf.lfHeight = MulDiv(lf.lfHeight, dpi, screen);
    HFONT h = CreateFontIndirectW(&lf);
    if (!h) lastError::failed();
    return h;
}

ComPtr<IFontDisp> create(const std::wstring& face, double points, bool bold, bool italic, bool underline,
                         bool strikethrough) {
    if (!(points > 0 && points < 16384) || face.empty() || face.size() >= LF_FACESIZE)
        return lastError::set(ERROR_INVALID_PARAMETER), ComPtr<IFontDisp>();
    FONTDESC fd = {};
    fd.cbSizeofstruct = sizeof fd;
    fd.lpstrName = const_cast<LPOLESTR>(face.c_str());
    fd.cySize.int64 = static_cast<LONGLONG>(std::llround(points * 10000.0));
    fd.sWeight = bold ? FW_BOLD : FW_NORMAL;
    fd.sCharset = DEFAULT_CHARSET;
    fd.fItalic = italic;
    fd.fUnderline = underline;
    fd.fStrikethrough = strikethrough;
    return newFont(fd);
}

ComPtr<IFontDisp> fromHandle(HFONT font) {
    LOGFONTW lf = {};
    if (!font || GetObjectType(font) != OBJ_FONT || !GetObjectW(font, sizeof lf, &lf))
        return lastError::set(ERROR_INVALID_HANDLE), ComPtr<IFontDisp>();
    return fromLogFont(lf);
}

ComPtr<IFontDisp> systemFont(long which) {
    if (which < 0 || which > 5) raise(kInvalidArgument);
    LOGFONTW lf = {};
    if (which == 5) {
        if (!SystemParametersInfoW(SPI_GETICONTITLELOGFONT, sizeof lf, &lf, 0)) return lastError::failed(), ComPtr<IFontDisp>();
    } else {
        NONCLIENTMETRICSW m;
        if (!nonClientMetrics(m)) return lastError::failed(), ComPtr<IFontDisp>();
        const LOGFONTW* fonts[] = {&m.lfCaptionFont, &m.lfSmCaptionFont, &m.lfMenuFont, &m.lfStatusFont, &m.lfMessageFont};
        lf = *fonts[which];
    }
    return fromLogFont(lf);
}

bool deleteObject(HGDIOBJ object) {
    if (!object || !GetObjectType(object)) return lastError::set(ERROR_INVALID_HANDLE), false;
    return DeleteObject(object) ? true : lastError::failed();
}

}  // namespace tova::fonts
