#include "jpeg_methods.h"

#include "jpeg_codec.h"

#include <algorithm>
#include <cstring>

namespace tova {

const ClassIdentity JPEGMethods::kClass = {L"JPEGMethods", &CLSID_JPEGMethods, &IID__JPEGMethods, nullptr};

HRESULT createJPEGMethods(REFIID riid, void** ppv) { return JPEGMethods::create(riid, ppv); }

namespace jpegio {

namespace {

// The 24-bit pixels of a section's DIB, read from the DIB itself so that a
// section in any state can never lead to a write outside its memory.
struct SectionPixels {
    uint8_t* top = nullptr;
    ptrdiff_t stride = 0;
    int width = 0, height = 0;
};

bool pixelsOf(_DIBSection* section, SectionPixels& p) {
    LONG handle = 0;
    if (!section || FAILED(section->get_hDib(&handle)) || !handle) return false;
    DIBSECTION ds{};
    if (GetObjectW(toHandle<HBITMAP>(handle), sizeof ds, &ds) != sizeof ds || !ds.dsBm.bmBits ||
        ds.dsBm.bmBitsPixel != 24)
        return false;
    GdiFlush();
    uint8_t* bits = static_cast<uint8_t*>(ds.dsBm.bmBits);
    p.width = ds.dsBm.bmWidth;
    p.height = ds.dsBm.bmHeight;
    if (ds.dsBmih.biHeight > 0) {  // bottom-up: the top row is the last in memory
        p.top = bits + static_cast<ptrdiff_t>(p.height - 1) * ds.dsBm.bmWidthBytes;
        p.stride = -static_cast<ptrdiff_t>(ds.dsBm.bmWidthBytes);
    } else {
        p.top = bits;
        p.stride = ds.dsBm.bmWidthBytes;
    }
    return p.width > 0 && p.height > 0;
}

constexpr long long kMaxFile = 1LL << 30;  // larger than any JPEG this library could decode

}  // namespace

bool decodeInto(_DIBSection* section, const uint8_t* data, size_t size) {
    jpeg::Info info;
    if (!section || !data || size == 0 || !jpeg::readInfo(data, size, info) || !jpeg::plausible(info, size)) return false;
    VARIANT_BOOL created = VARIANT_FALSE;
    if (FAILED(section->Create(info.width, info.height, &created)) || !created) return false;
    SectionPixels p;
    if (!pixelsOf(section, p) || p.width != info.width || p.height != info.height) return false;
    return jpeg::decode(data, size, p.top, p.stride, p.width, p.height);
}

bool encodeFrom(_DIBSection* section, long quality, std::vector<uint8_t>& out) {
    SectionPixels p;
    if (!pixelsOf(section, p)) return false;
    // The codec takes 1..100 and clamps the rest; the value is passed as given.
    int q = quality < -1000 ? -1000 : quality > 1000 ? 1000 : static_cast<int>(quality);
    out.clear();
    return jpeg::encode(p.top, p.stride, p.width, p.height, q, out) && !out.empty();
}

bool readFile(const wchar_t* path, std::vector<uint8_t>& out) {
    if (!path || !*path) return false;
    FileHandle f(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    LARGE_INTEGER size{};
    if (!f.ok() || !GetFileSizeEx(f.get(), &size) || size.QuadPart <= 0 || size.QuadPart > kMaxFile)
        return false;
    out.resize(static_cast<size_t>(size.QuadPart));
    size_t done = 0;
    while (done < out.size()) {
        DWORD chunk = static_cast<DWORD>(std::min<size_t>(out.size() - done, 1u << 24)), got = 0;
        if (!ReadFile(f.get(), out.data() + done, chunk, &got, nullptr) || got == 0) return false;
        done += got;
    }
    return true;
}

bool replaceFile(const wchar_t* path, const std::vector<uint8_t>& data) {
    if (!path || !*path) return false;
    WIN32_FILE_ATTRIBUTE_DATA before{};
    const bool existed = GetFileAttributesExW(path, GetFileExInfoStandard, &before) != 0;
    // A folder or a read-only file is not replaced.
    if (existed && (before.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY))) return false;

    wchar_t full[MAX_PATH * 4];
    wchar_t* name = nullptr;
    DWORD n = GetFullPathNameW(path, MAX_PATH * 4, full, &name);
    if (n == 0 || n >= MAX_PATH * 4 || !name) return false;
    std::wstring folder(full, static_cast<size_t>(name - full));
    wchar_t temp[MAX_PATH * 4];
    if (!GetTempFileNameW(folder.c_str(), L"jpg", 0, temp)) return false;

    bool written = false;
    {
        FileHandle f(CreateFileW(temp, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (f.ok()) {
            size_t done = 0;
            written = true;
            while (written && done < data.size()) {
                DWORD chunk = static_cast<DWORD>(std::min<size_t>(data.size() - done, 1u << 24)), put = 0;
                written = WriteFile(f.get(), data.data() + done, chunk, &put, nullptr) && put == chunk;
                done += put;
            }
        }
    }
    // Hidden and system files refuse to be replaced: their attributes are
    // cleared for the move and come back afterwards (or on failure).
    if (written && existed) SetFileAttributesW(full, FILE_ATTRIBUTE_NORMAL);
    if (!written || !MoveFileExW(temp, full, MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED)) {
        DeleteFileW(temp);
        if (written && existed) SetFileAttributesW(full, before.dwFileAttributes);
        return false;
    }
    if (existed) {
        {
            FileHandle f(CreateFileW(full, FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
            if (f.ok())
                SetFileTime(f.get(), &before.ftCreationTime, &before.ftLastAccessTime, &before.ftLastWriteTime);
        }
        SetFileAttributesW(full, before.dwFileAttributes);
    }
    return true;
}

}  // namespace jpegio

namespace {

_DIBSection* sectionOf(_DIBSection** Section) { return Section ? *Section : nullptr; }

}  // namespace

STDMETHODIMP JPEGMethods::LoadJPG(_DIBSection** Section, BSTR* Filename, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = VARIANT_FALSE;
        std::vector<uint8_t> data;
        _DIBSection* section = sectionOf(Section);
        if (!section || !Filename || !jpegio::readFile(*Filename, data)) return;
        *pRet = toVB(jpegio::decodeInto(section, data.data(), data.size()));
    });
}

STDMETHODIMP JPEGMethods::LoadJPGFromPtr(_DIBSection** Section, PtrLong pJPEG, LONG lSize, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = VARIANT_FALSE;
        _DIBSection* section = sectionOf(Section);
        const uint8_t* data = reinterpret_cast<const uint8_t*>(static_cast<LONG_PTR>(pJPEG));
        if (!section || !data || lSize <= 0) return;
        *pRet = toVB(jpegio::decodeInto(section, data, static_cast<size_t>(lSize)));
    });
}

STDMETHODIMP JPEGMethods::SaveJPG(_DIBSection** Section, BSTR* Filename, LONG Quality, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = VARIANT_FALSE;
        std::vector<uint8_t> data;
        _DIBSection* section = sectionOf(Section);
        // Encoded first: a failed encoding never touches an existing file.
        if (!section || !Filename || !*Filename || !jpegio::encodeFrom(section, Quality, data)) return;
        *pRet = toVB(jpegio::replaceFile(*Filename, data));
    });
}

STDMETHODIMP JPEGMethods::SaveJPGToPtr(_DIBSection** Section, PtrLong pJPEG, LONG* lBufSize, LONG Quality,
                                       VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        LONG capacity = *required(lBufSize);
        *pRet = VARIANT_FALSE;
        std::vector<uint8_t> data;
        uint8_t* out = reinterpret_cast<uint8_t*>(static_cast<LONG_PTR>(pJPEG));
        _DIBSection* section = sectionOf(Section);
        if (!section || !out || capacity <= 0 || !jpegio::encodeFrom(section, Quality, data)) return;
        // Never more than the buffer holds; lBufSize stays as it was on failure.
        if (data.size() > static_cast<size_t>(capacity)) return;
        std::memcpy(out, data.data(), data.size());
        *lBufSize = static_cast<LONG>(data.size());
        *pRet = VARIANT_TRUE;
    });
}

}  // namespace tova
