// PaintMethods: global helpers that paint pictures onto device contexts, and
// the painting routine behind them that MemoryDC.CopyPicture shares.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

// Where a picture goes and which part of it. Sizes of 0 mean the picture's own
// size: a 0 source width is the rest of the picture from SrcX, a 0 destination
// width the source width (likewise for heights).
struct PaintRequest {
    HDC dc = nullptr;
    long x = 0, y = 0, width = 0, height = 0;
    long srcX = 0, srcY = 0, srcWidth = 0, srcHeight = 0;
    bool transparent = false;
    COLORREF transparentColor = 0;  // left out when transparent is set
};

enum class PaintFailure { None, BadPicture, BadArgument, Platform };

// Paints `picture` (bitmap, icon or metafile). Returns what went wrong, if
// anything; never raises.
PaintFailure paintPicture(IPictureDisp* picture, const PaintRequest& request);

class PaintMethods final : public Object<PaintMethods, _PaintMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP StretchPaintNormalStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, IPictureDisp* Picture,
                                          LONG SrcX, LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                          VARIANT_BOOL* pRet) override;
    STDMETHODIMP StretchPaintTransparentStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                               IPictureDisp* Picture, LONG TransparentColor, LONG SrcX, LONG SrcY,
                                               LONG SrcWidth, LONG SrcHeight, VARIANT_BOOL* pRet) override;

private:
    friend class Object<PaintMethods, _PaintMethods>;
    PaintMethods() = default;
};

}  // namespace tova
