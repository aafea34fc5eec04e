#include "text_files.h"

#include "../frame/library_frame.h"
#include "long_paths.h"
#include "safe_write.h"
#include "text_encoding.h"

#include <wincrypt.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace tova {
namespace files {

namespace {

// Streaming members read this much at a time, whatever the file's size.
const DWORD kBlock = 64 * 1024;

// Only files on a disk: a device (NUL, CON) or a pipe could have no end or
// make a read wait for ever.
HANDLE diskFileOnly(HANDLE h) {
    if (h != INVALID_HANDLE_VALUE && GetFileType(h) != FILE_TYPE_DISK) {
        CloseHandle(h);
        return INVALID_HANDLE_VALUE;
    }
    return h;
}

// Readers let others read, write and delete meanwhile, as a text editor does.
HANDLE openForReading(const std::wstring& path) {
    const std::wstring api = apiPath(path);
    if (api.empty()) return INVALID_HANDLE_VALUE;
    return diskFileOnly(CreateFileW(api.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

bool readExactly(HANDLE h, char* to, size_t size) {
    while (size > 0) {
        const DWORD chunk = size > (1u << 30) ? (1u << 30) : static_cast<DWORD>(size);
        DWORD got = 0;
        if (!ReadFile(h, to, chunk, &got, nullptr) || got == 0) return false;
        to += got;
        size -= got;
    }
    return true;
}

// The whole file; false when it cannot be read. A file too big for one
// string raises 7.
bool readAll(const std::wstring& path, std::string& bytes) {
    FileHandle h(openForReading(path));
    LARGE_INTEGER size;
    if (!h.ok() || !GetFileSizeEx(h.get(), &size)) return false;
    if (size.QuadPart > INT_MAX) raise(kOutOfMemory);
    bytes.resize(static_cast<size_t>(size.QuadPart));
    return readExactly(h.get(), &bytes[0], bytes.size());
}

// Reads `h` from where it stands to the end in blocks: fn(data, size).
template <class F>
bool forEachBlock(HANDLE h, F&& fn) {
    std::string block(kBlock, '\0');
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(h, &block[0], kBlock, &got, nullptr)) return false;
        if (got == 0) return true;
        fn(block.data(), static_cast<size_t>(got));
    }
}

bool rewind(HANDLE h) {
    LARGE_INTEGER zero{};
    return SetFilePointerEx(h, zero, nullptr, FILE_BEGIN) != 0;
}

// The encoding Auto finds in an open file: its mark, else UTF-8 when the
// whole file is valid UTF-8 (an empty one is), else ANSI.
long encodingOf(HANDLE h) {
    if (!rewind(h)) return tovaEncodingUTF8;
    long found = tovaEncodingAuto;
    Utf8Check check;
    forEachBlock(h, [&](const char* data, size_t size) {
        if (found == tovaEncodingAuto) found = bomEncoding(data, size);
        if (found == tovaEncodingAuto) check.add(data, size);
    });
    if (found != tovaEncodingAuto) return found;
    return check.valid() ? tovaEncodingUTF8 : tovaEncodingANSI;
}

bool isUtf16(long encoding) { return encoding == tovaEncodingUTF16 || encoding == tovaEncodingUTF16BE; }

// True when the file's last line has no break, judged in `encoding`'s units.
bool lastLineOpen(HANDLE h, LONGLONG size, long encoding) {
    const int unit = isUtf16(encoding) ? 2 : 1;
    if (size < unit) return false;
    LARGE_INTEGER at;
    at.QuadPart = size - unit;
    unsigned char last[2] = {};
    DWORD got = 0;
    if (!SetFilePointerEx(h, at, nullptr, FILE_BEGIN) || !ReadFile(h, last, unit, &got, nullptr) || got != DWORD(unit))
        return true;
    const unsigned c = unit == 1 ? last[0] : encoding == tovaEncodingUTF16 ? last[0] | (last[1] << 8) : last[1] | (last[0] << 8);
    return c != L'\r' && c != L'\n';
}

// The owners of a CryptoAPI provider and hash.
class CryptProvider {
public:
    CryptProvider() {
        if (!CryptAcquireContextW(&h_, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT | CRYPT_SILENT)) h_ = 0;
    }
    ~CryptProvider() { if (h_) CryptReleaseContext(h_, 0); }
    CryptProvider(const CryptProvider&) = delete;
    CryptProvider& operator=(const CryptProvider&) = delete;
    HCRYPTPROV get() const { return h_; }

private:
    HCRYPTPROV h_ = 0;
};

class CryptHash {
public:
    CryptHash(HCRYPTPROV provider, ALG_ID algorithm) {
        if (!provider || !CryptCreateHash(provider, algorithm, 0, 0, &h_)) h_ = 0;
    }
    ~CryptHash() { if (h_) CryptDestroyHash(h_); }
    CryptHash(const CryptHash&) = delete;
    CryptHash& operator=(const CryptHash&) = delete;
    HCRYPTHASH get() const { return h_; }

private:
    HCRYPTHASH h_ = 0;
};

}  // namespace

bool readText(const std::wstring& path, long encoding, std::wstring& out) {
    std::string bytes;
    if (!readAll(path, bytes)) return false;
    out = decodeText(bytes.data(), bytes.size(), encoding);
    return true;
}

bool readLines(const std::wstring& path, long encoding, std::vector<std::wstring>& out) {
    std::wstring text;
    if (!readText(path, encoding, text)) return false;
    out = splitLines(text);
    return true;
}

bool writeText(const std::wstring& path, const std::wstring& text, long encoding, bool overwrite) {
    const std::wstring target = apiPath(path);
    if (target.empty()) return false;
    if (encoding == tovaEncodingAuto) {
        FileHandle old(openForReading(target));
        encoding = old.ok() ? encodingOf(old.get()) : long(tovaEncodingUTF8);
    }
    std::string bytes;
    return encodeText(text, encoding, true, bytes) && writeWholeFile(target, bytes.data(), bytes.size(), overwrite);
}

bool appendLine(const std::wstring& path, const std::wstring& text, long encoding) {
    const std::wstring target = apiPath(path);
    if (target.empty()) return false;
    // Checked first: root and administrators could open a read-only file for writing.
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)))
        return false;
    // Append access without write access: every write lands at the end, even
    // when another writer has just extended the file.
    bool created = false;
    const bool ok = [&] {
        HANDLE opened = CreateFileW(target.c_str(), GENERIC_READ | FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
        FileHandle h(diskFileOnly(opened));
        created = h.ok() && !existed;
        LARGE_INTEGER size;
        if (!h.ok() || !GetFileSizeEx(h.get(), &size)) return false;
        if (encoding == tovaEncodingAuto) encoding = size.QuadPart ? encodingOf(h.get()) : long(tovaEncodingUTF8);
        std::wstring line;
        if (lastLineOpen(h.get(), size.QuadPart, encoding)) line = L"\r\n";
        line += text;
        line += L"\r\n";
        std::string bytes;
        if (!encodeText(line, encoding, size.QuadPart == 0, bytes) || bytes.size() > UINT_MAX) return false;
        DWORD written = 0;
        return WriteFile(h.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
               written == bytes.size();
    }();
    // A file made for a line that could not be written goes again.
    if (!ok && created) DeleteFileW(target.c_str());
    return ok;
}

long countLines(const std::wstring& path) {
    FileHandle h(openForReading(path));
    if (!h.ok()) return -1;
    LineCounter counter;
    long encoding = tovaEncodingAuto;
    bool first = true;
    int pending = -1;   // a UTF-16 byte waiting for its partner
    const bool ok = forEachBlock(h.get(), [&](const char* data, size_t size) {
        const unsigned char* p = reinterpret_cast<const unsigned char*>(data);
        if (first) {
            first = false;
            encoding = bomEncoding(data, size);
            const size_t skip = bomLength(data, size, encoding);
            p += skip;
            size -= skip;
        }
        if (!isUtf16(encoding)) {
            for (size_t i = 0; i < size; ++i) counter.add(p[i]);
            return;
        }
        const bool little = encoding == tovaEncodingUTF16;
        for (size_t i = 0; i < size; ++i) {
            if (pending < 0) {
                pending = p[i];
                continue;
            }
            counter.add(little ? pending | (p[i] << 8) : (pending << 8) | p[i]);
            pending = -1;
        }
    });
    if (!ok) return -1;
    if (pending >= 0) counter.add(0xFFFD);
    return static_cast<long>(std::min<long long>(counter.lines(), LONG_MAX));
}

void readBinary(const std::wstring& path, double offset, long length, VARIANT* out) {
    FileHandle h(openForReading(path));
    LARGE_INTEGER size;
    if (!h.ok() || !GetFileSizeEx(h.get(), &size)) return;
    LONGLONG count = 0;
    LARGE_INTEGER start{};
    if (offset < static_cast<double>(size.QuadPart)) {
        start.QuadPart = static_cast<LONGLONG>(offset);
        count = size.QuadPart - start.QuadPart;
        if (length >= 0 && length < count) count = length;
    }
    if (count > INT_MAX) raise(kOutOfMemory);
    SafeArray bytes(SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(count)));
    if (!bytes.get()) raise(kOutOfMemory);
    if (count > 0) {
        ArrayData data(bytes.get());
        if (!data.locked() || !SetFilePointerEx(h.get(), start, nullptr, FILE_BEGIN) ||
            !readExactly(h.get(), static_cast<char*>(data.data()), static_cast<size_t>(count)))
            return;
    }
    V_VT(out) = VT_ARRAY | VT_UI1;
    V_ARRAY(out) = bytes.detach();
}

bool writeBinary(const std::wstring& path, SAFEARRAY* data, bool overwrite) {
    const std::wstring target = apiPath(path);
    if (target.empty()) return false;
    ArrayData bytes(data);
    if (!bytes.locked()) return false;
    return writeWholeFile(target, bytes.data(), data->rgsabound[0].cElements, overwrite);
}

bool compareFiles(const std::wstring& a, const std::wstring& b) {
    FileHandle ha(openForReading(a)), hb(openForReading(b));
    BY_HANDLE_FILE_INFORMATION ia, ib;
    if (!ha.ok() || !hb.ok() || !GetFileInformationByHandle(ha.get(), &ia) || !GetFileInformationByHandle(hb.get(), &ib))
        return false;
    if (ia.dwVolumeSerialNumber == ib.dwVolumeSerialNumber && ia.nFileIndexHigh == ib.nFileIndexHigh &&
        ia.nFileIndexLow == ib.nFileIndexLow)
        return true;   // one file under two names
    if (ia.nFileSizeHigh != ib.nFileSizeHigh || ia.nFileSizeLow != ib.nFileSizeLow) return false;
    std::string other(kBlock, '\0');
    bool same = true;
    const bool ok = forEachBlock(ha.get(), [&](const char* data, size_t size) {
        if (same) same = readExactly(hb.get(), &other[0], size) && std::memcmp(data, other.data(), size) == 0;
    });
    return ok && same;
}

std::wstring fileHash(const std::wstring& path, long algorithm) {
    static const ALG_ID kAlgorithms[] = {CALG_MD5, CALG_SHA1, CALG_SHA_256, CALG_SHA_384, CALG_SHA_512};
    FileHandle h(openForReading(path));
    if (!h.ok()) return {};
    CryptProvider provider;
    CryptHash hash(provider.get(), kAlgorithms[algorithm - tovaHashMD5]);
    if (!hash.get()) return {};
    bool hashed = true;
    if (!forEachBlock(h.get(), [&](const char* data, size_t size) {
            hashed = hashed && CryptHashData(hash.get(), reinterpret_cast<const BYTE*>(data), static_cast<DWORD>(size), 0);
        }) || !hashed)
        return {};
    BYTE digest[64];
    DWORD n = sizeof digest;
    if (!CryptGetHashParam(hash.get(), HP_HASHVAL, digest, &n, 0)) return {};
    static const wchar_t kHex[] = L"0123456789ABCDEF";
    std::wstring out;
    for (DWORD i = 0; i < n; ++i) {
        out += kHex[digest[i] >> 4];
        out += kHex[digest[i] & 15];
    }
    return out;
}

}  // namespace files
}  // namespace tova
