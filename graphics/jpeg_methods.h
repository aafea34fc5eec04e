// JPEGMethods: loads JPEG files and memory buffers into a DIBSection and saves
// a DIBSection as JPEG, over the library's own codec (graphics/jpeg_codec.h).
// Every failure, malformed input included, is a False result.
#pragma once

#include "bitmaps.h"

#include <cstdint>
#include <vector>

namespace tova {

namespace jpegio {

// Decodes `size` bytes of JPEG into `section` (re-created at the image's size).
bool decodeInto(_DIBSection* section, const uint8_t* data, size_t size);
// Encodes the pixels of `section` at `quality`.
bool encodeFrom(_DIBSection* section, long quality, std::vector<uint8_t>& out);
// Reads a whole file; false when it cannot be read or is implausibly large.
bool readFile(const wchar_t* path, std::vector<uint8_t>& out);
// Writes `data` as the file `path`, through a temporary file in the same
// folder, so that a failure leaves an existing file as it was. A replaced
// file keeps its attributes and its creation, access and write times.
bool replaceFile(const wchar_t* path, const std::vector<uint8_t>& data);

}  // namespace jpegio

class JPEGMethods final : public Object<JPEGMethods, _JPEGMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP LoadJPG(_DIBSection** Section, BSTR* Filename, VARIANT_BOOL* pRet) override;
    STDMETHODIMP LoadJPGFromPtr(_DIBSection** Section, PtrLong pJPEG, LONG lSize, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SaveJPG(_DIBSection** Section, BSTR* Filename, LONG Quality, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SaveJPGToPtr(_DIBSection** Section, PtrLong pJPEG, LONG* lBufSize, LONG Quality,
                              VARIANT_BOOL* pRet) override;

private:
    friend class Object<JPEGMethods, _JPEGMethods>;
    JPEGMethods() = default;
};

}  // namespace tova
