#include "bitmaps.h"

namespace tova {

ComPtr<IPictureDisp> pictureOf(HBITMAP bitmap) {
    ComPtr<IPictureDisp> picture;
    if (!bitmap) return picture;
    PICTDESC desc{};
    desc.cbSizeofstruct = sizeof desc;
    desc.picType = PICTYPE_BITMAP;
    desc.bmp.hbitmap = bitmap;
    desc.bmp.hpal = nullptr;
    if (FAILED(OleCreatePictureIndirect(&desc, IID_IPictureDisp, TRUE, picture.putVoid())) || !picture) {
        picture.reset();
        DeleteObject(bitmap);
    }
    return picture;
}

HBITMAP compatibleCopy(HDC dc, int width, int height, HDC format) {
    if (!dc || width < 1 || height < 1) return nullptr;
    ScreenDc screen(nullptr);
    if (!format) format = screen.get();
    HBITMAP bitmap = format ? CreateCompatibleBitmap(format, width, height) : nullptr;
    if (!bitmap) return nullptr;
    bool copied = false;
    {
        MemoryDc copy(format);
        if (copy.get()) {
            Selection in(copy.get(), bitmap);
            copied = in.ok() && BitBlt(copy.get(), 0, 0, width, height, dc, 0, 0, SRCCOPY);
        }
    }
    if (!copied) {
        DeleteObject(bitmap);
        return nullptr;
    }
    return bitmap;
}

std::wstring systemMessage(DWORD code) {
    wchar_t text[256] = {};
    DWORD n = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, text,
                             256, nullptr);
    std::wstring s(text, n < 256 ? n : 255);
    while (!s.empty() && (s.back() == L'\n' || s.back() == L'\r')) s.pop_back();
    return s;
}

}  // namespace tova
