#include "drives.h"

#include "../frame/library_frame.h"
#include "long_paths.h"

#include <shlwapi.h>
#include <winver.h>

namespace tova {
namespace files {

namespace {

bool isLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

// "C:\" for C, c:, C:\any\path and their \\?\ forms; "\\server\share\" for a
// UNC path; "" otherwise (relative paths name no drive).
std::wstring driveRoot(std::wstring d) {
    if (d.find_first_of(L"*?") != std::wstring::npos) return {};
    if (d.compare(0, 8, L"\\\\?\\UNC\\") == 0) d = L"\\\\" + d.substr(8);
    else if (d.compare(0, 4, L"\\\\?\\") == 0) d = d.substr(4);
    if (!d.empty() && isLetter(d[0]) && (d.size() == 1 || d[1] == L':'))
        return std::wstring(1, d[0] >= L'a' ? static_cast<wchar_t>(d[0] - 32) : d[0]) + L":\\";
    if (d.size() > 2 && (d[0] == L'\\' || d[0] == L'/') && (d[1] == L'\\' || d[1] == L'/')) {
        const size_t server = d.find_first_of(L"\\/", 2);
        if (server == std::wstring::npos || server == 2) return {};
        const size_t share = d.find_first_of(L"\\/", server + 1);
        std::wstring root = d.substr(0, share) + L"\\";
        if (root.size() <= server + 2) return {};
        root[0] = root[1] = L'\\';
        root[server] = L'\\';
        return root;
    }
    return {};
}

// The root of the volume holding `drive`: a letter's root, else what
// GetVolumePathNameW finds for the qualified path (a folder a volume is
// mounted on, too).
std::wstring volumeRoot(const std::wstring& drive) {
    if (drive.size() <= 2) return driveRoot(drive);
    const std::wstring api = apiPath(drive);
    if (api.empty() || isDevicePath(api)) return {};
    std::wstring root(api.size() + 2, L'\0');
    if (GetVolumePathNameW(api.c_str(), &root[0], static_cast<DWORD>(root.size()))) {
        root.resize(wcslen(root.c_str()));
        return callerPath(root, L"");
    }
    return driveRoot(api);
}

// No "insert a disk" box while a volume is asked about.
class QuietDrives {
public:
    QuietDrives() { ok_ = SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &old_) != 0; }
    QuietDrives(const QuietDrives&) = delete;
    QuietDrives& operator=(const QuietDrives&) = delete;
    ~QuietDrives() { if (ok_) SetThreadErrorMode(old_, nullptr); }

private:
    DWORD old_ = 0;
    bool ok_;
};

struct Volume {
    bool ready = false;
    wchar_t label[MAX_PATH + 1] = {};
    DWORD serial = 0;
};

Volume volume(const std::wstring& drive) {
    Volume v;
    const std::wstring root = volumeRoot(drive);
    QuietDrives quiet;
    v.ready = !root.empty() &&
              GetVolumeInformationW(root.c_str(), v.label, MAX_PATH + 1, &v.serial, nullptr, nullptr, nullptr, 0);
    if (!v.ready) v.label[0] = 0, v.serial = 0;
    return v;
}

// Bytes available to this user (quotas applied) and the volume's size; -1 when unknown.
void space(const std::wstring& drive, double& available, double& total) {
    available = total = -1;
    const std::wstring root = volumeRoot(drive);
    QuietDrives quiet;
    ULARGE_INTEGER a, t;
    if (root.empty() || !GetDiskFreeSpaceExW(root.c_str(), &a, &t, nullptr)) return;
    available = static_cast<double>(a.QuadPart);
    total = static_cast<double>(t.QuadPart);
}

}  // namespace

bool driveExists(const std::wstring& drive) {
    const std::wstring root = driveRoot(drive);
    if (root.empty()) return false;
    // A letter in use counts even when its reader is empty; a share must answer.
    if (root.size() == 3) return (GetLogicalDrives() >> (root[0] - L'A')) & 1;
    QuietDrives quiet;
    return GetFileAttributesW(root.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool isDriveReady(const std::wstring& drive) { return volume(drive).ready; }

std::vector<std::wstring> driveRoots() {
    std::vector<std::wstring> roots;
    DWORD n = GetLogicalDriveStringsW(0, nullptr);
    std::wstring all(n + 1, L'\0');
    n = GetLogicalDriveStringsW(static_cast<DWORD>(all.size()), &all[0]);
    if (n == 0 || n >= all.size()) return roots;
    for (const wchar_t* p = all.c_str(); *p; p += wcslen(p) + 1) roots.emplace_back(p);
    return roots;
}

long driveType(const std::wstring& drive) {
    const std::wstring root = volumeRoot(drive);
    return root.empty() ? DRIVE_NO_ROOT_DIR : static_cast<long>(GetDriveTypeW(root.c_str()));
}

double driveFreeSpace(const std::wstring& drive) {
    double available, total;
    space(drive, available, total);
    return available;
}

double driveTotalSpace(const std::wstring& drive) {
    double available, total;
    space(drive, available, total);
    return total;
}

std::wstring volumeLabel(const std::wstring& drive) { return volume(drive).label; }

long volumeSerialNumber(const std::wstring& drive) { return static_cast<long>(volume(drive).serial); }

std::wstring fileVersion(const std::wstring& path) {
    const std::wstring api = apiPath(path);
    if (api.empty() || isDevicePath(api)) return {};
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(api.c_str(), &ignored);
    if (size == 0) return {};
    std::vector<BYTE> info(size);
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    if (!GetFileVersionInfoW(api.c_str(), 0, size, info.data()) ||
        !VerQueryValueW(info.data(), L"\\", reinterpret_cast<void**>(&fixed), &length) || !fixed ||
        length < sizeof(VS_FIXEDFILEINFO) || fixed->dwSignature != 0xFEEF04BD)
        return {};
    const DWORD ms = fixed->dwFileVersionMS, ls = fixed->dwFileVersionLS;
    return std::to_wstring(HIWORD(ms)) + L"." + std::to_wstring(LOWORD(ms)) + L"." + std::to_wstring(HIWORD(ls)) +
           L"." + std::to_wstring(LOWORD(ls));
}

std::wstring associatedProgram(const std::wstring& pathOrExtension) {
    // Only the extension is looked up, so the path's length does not matter.
    // "txt" alone is taken as an extension as well as ".txt".
    const size_t sep = pathOrExtension.find_last_of(L"\\/:");
    const std::wstring name = sep == std::wstring::npos ? pathOrExtension : pathOrExtension.substr(sep + 1);
    const size_t dot = name.find_last_of(L'.');
    std::wstring extension;
    if (sep == std::wstring::npos) extension = dot == std::wstring::npos ? L"." + name : name.substr(dot);
    else if (dot != std::wstring::npos && dot > 0) extension = name.substr(dot);  // a leading dot starts none
    if (extension.size() < 2 || hasInvalidNameCharacter(extension)) return {};
    const ASSOCF flags = ASSOCF_INIT_IGNOREUNKNOWN | ASSOCF_NOTRUNCATE;
    DWORD n = 0;
    if (FAILED(AssocQueryStringW(flags, ASSOCSTR_EXECUTABLE, extension.c_str(), nullptr, nullptr, &n)) || n == 0)
        return {};
    std::wstring program(n, L'\0');
    if (AssocQueryStringW(flags, ASSOCSTR_EXECUTABLE, extension.c_str(), nullptr, &program[0], &n) != S_OK) return {};
    program.resize(wcslen(program.c_str()));
    // A bare program name (some registrations hold one) is found as the shell finds it.
    if (!program.empty() && program.find(L'\\') == std::wstring::npos) {
        wchar_t found[MAX_PATH];
        const DWORD m = SearchPathW(nullptr, program.c_str(), nullptr, MAX_PATH, found, nullptr);
        if (m > 0 && m < MAX_PATH) program = found;
    }
    return program;
}

}  // namespace files
}  // namespace tova
