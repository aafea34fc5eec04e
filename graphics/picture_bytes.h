// Pictures to and from byte arrays holding a BMP or JPEG file image, the JPEG
// through the library's own codec. Byte arrays are untrusted input: every
// header field is checked against the array before anything is read.
#pragma once

#include "../frame/library_frame.h"

#include <vector>

namespace tova {

enum class PictureFormat { Bmp, Jpeg };

// The picture (bitmap, icon or metafile, the latter two over white) as a file
// image. False when it cannot be read or encoded.
bool pictureToBytes(IPictureDisp* picture, PictureFormat format, int quality, std::vector<uint8_t>& out);

// A bitmap picture of a BMP (1, 4, 8, 16, 24 or 32 bits, uncompressed) or JPEG
// file image; empty when the bytes are neither.
ComPtr<IPictureDisp> pictureFromBytes(const uint8_t* data, size_t size);

}  // namespace tova
