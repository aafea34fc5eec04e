// The device-independent bitmap both DIB classes hold: a DIB section of 24 or
// 32 bits per pixel, bottom-up, selected into a memory DC of its own. The
// classes are thin fronts over this.
#pragma once

#include "../frame/library_frame.h"

#include <cstdint>

namespace tova {

class Dib {
public:
    explicit Dib(int bitsPerPixel) : bitsPerPixel_(bitsPerPixel) {}
    ~Dib() { clearUp(); }
    Dib(const Dib&) = delete;
    Dib& operator=(const Dib&) = delete;

    // Fills the header for width x height and creates a DIB section on `dc`;
    // remembers its pixel address. Does not free or select anything.
    HBITMAP createDib(HDC dc, long width, long height);
    // A new DIB of width x height selected into a new DC of its own.
    bool create(long width, long height);
    void clearUp();
    // Gives the DIB to the caller; the object is left without one.
    HBITMAP extract();

    long width() const { return header_.biWidth; }
    long height() const { return header_.biHeight; }
    long bytesPerScanLine() const;
    HDC dc() const { return dc_; }
    HBITMAP dib() const { return dib_; }
    void* bitsPointer() const { return bits_; }
    const BITMAPINFOHEADER& header() const { return header_; }
    int bitsPerPixel() const { return bitsPerPixel_; }

    // The pixels of the DIB this object owns, read from the DIB itself:
    // address of the top row and the (negative) step between rows.
    struct Pixels {
        uint8_t* top = nullptr;
        ptrdiff_t stride = 0;
        int width = 0, height = 0;
        explicit operator bool() const { return top != nullptr; }
    };
    Pixels pixels() const;

    void loadPictureBlt(HDC source, long left, long top, long width, long height, DWORD rop);
    void paintPicture(HDC dest, long left, long top, long width, long height, long srcLeft, long srcTop,
                      DWORD rop);
    // Builds the DIB from a bitmap handle: its size, its pixels converted by the platform.
    void createFromBitmap(HBITMAP bitmap);
    void randomise(bool grey);
    // Fills `target` (already created) with this image, copied or scaled.
    void resampleInto(Dib& target) const;

private:
    int bitsPerPixel_;
    HDC dc_ = nullptr;
    HBITMAP dib_ = nullptr;
    HGDIOBJ previous_ = nullptr;
    void* bits_ = nullptr;  // as CreateDIBSection last reported it
    BITMAPINFOHEADER header_{};
};

}  // namespace tova
