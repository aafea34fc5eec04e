// The folder search behind FileSearch.

#include "folder_walk.h"

#include <algorithm>
#include <cstring>

namespace tova {
namespace folders {

bool isDots(const wchar_t* n) { return n[0] == L'.' && (n[1] == 0 || (n[1] == L'.' && n[2] == 0)); }
bool isDots(const wchar_t* n, size_t length) { return n[0] == L'.' && (length == 1 || (length == 2 && n[1] == L'.')); }

HANDLE findFirst(const std::wstring& pattern, WIN32_FIND_DATAW& fd) {
    // The basic form skips the short names; systems older than Windows 7 refuse it.
    HANDLE h = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &fd, FindExSearchNameMatch, nullptr,
                                FIND_FIRST_EX_LARGE_FETCH);
    if (h == INVALID_HANDLE_VALUE && GetLastError() == ERROR_INVALID_PARAMETER)
        h = FindFirstFileExW(pattern.c_str(), FindExInfoStandard, &fd, FindExSearchNameMatch, nullptr, 0);
    return h;
}

namespace {

// --------------------------------------------------------------- enumeration

bool endsWithBackslash(const std::wstring& s) { return !s.empty() && s.back() == L'\\'; }

bool isFolder(const std::wstring& path) {
    DWORD a = GetFileAttributesW(path.c_str());
    return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

// Lists `folder`: onFile(name, length) for each file, onFolder(name, length,
// data) for each sub-folder to descend into, in the platform's order. False
// when the folder does not exist; a folder that exists but cannot be listed
// (access denied) lists nothing.
template <class OnFile, class OnFolder>
bool listFolder(const std::wstring& folder, OnFile&& onFile, OnFolder&& onFolder) {
    if (folder.empty()) return false;
    WIN32_FIND_DATAW fd;
    FindHandle h(findFirst(folder + (endsWithBackslash(folder) ? L"*" : L"\\*"), fd));
    if (!h.ok()) return isFolder(folder);
    do {
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            if (!isDots(fd.cFileName) && !(fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
                onFolder(fd.cFileName, std::wcslen(fd.cFileName), fd);
        } else {
            onFile(fd.cFileName, std::wcslen(fd.cFileName));
        }
    } while (FindNextFileW(h.get(), &fd));
    return true;
}

// A folder's last-write time, the stamp that tells whether its entries changed.
bool folderStamp(const std::wstring& folder, FILETIME& stamp) {
    WIN32_FILE_ATTRIBUTE_DATA a;
    if (!GetFileAttributesExW(folder.c_str(), GetFileExInfoStandard, &a) || !(a.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
        return false;
    stamp = a.ftLastWriteTime;
    return true;
}

bool sameStamp(const FILETIME& a, const FILETIME& b) {
    return a.dwLowDateTime == b.dwLowDateTime && a.dwHighDateTime == b.dwHighDateTime;
}

// Percent of `done` out of `total`, computed in double and delivered in single precision.
float percent(size_t done, size_t total) {
    return static_cast<float>(static_cast<double>(done) / static_cast<double>(total) * 100.0);
}

// --------------------------------------------------------------- index file

std::string utf8(const std::wstring& s) {
    if (s.empty()) return std::string();
    int n = WideCharToMultiByte(CP_UTF8, 0, s.data(), static_cast<int>(s.size()), nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(n > 0 ? n : 0), '\0');
    if (n > 0) WideCharToMultiByte(CP_UTF8, 0, s.data(), static_cast<int>(s.size()), &out[0], n, nullptr, nullptr);
    return out;
}

std::wstring fromUtf8(const char* s, size_t n) {
    if (!n) return std::wstring();
    int w = MultiByteToWideChar(CP_UTF8, 0, s, static_cast<int>(n), nullptr, 0);
    std::wstring out(static_cast<size_t>(w > 0 ? w : 0), L'\0');
    if (w > 0) MultiByteToWideChar(CP_UTF8, 0, s, static_cast<int>(n), &out[0], w);
    return out;
}

// The folder index: a temporary text file, one folder path per line (UTF-8, so
// that every name survives), written once and then read back. It is deleted
// when this object goes, whatever happened in between; the handle asks the
// system to delete it on close as well, so that not even a crash leaves it.
class IndexFile {
public:
    explicit IndexFile(std::wstring name) : name_(std::move(name)) {
        DeleteFileW(name_.c_str());
        h_ = CreateFileW(name_.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        failed_ = h_ == INVALID_HANDLE_VALUE;
    }
    IndexFile(const IndexFile&) = delete;
    IndexFile& operator=(const IndexFile&) = delete;
    ~IndexFile() {
        if (h_ != INVALID_HANDLE_VALUE) CloseHandle(h_);
        if (GetFileAttributesW(name_.c_str()) != INVALID_FILE_ATTRIBUTES) DeleteFileW(name_.c_str());
    }

    bool ok() const { return !failed_; }

    void writeLine(const std::wstring& line) {
        buffer_ += utf8(line);
        buffer_ += "\r\n";
        if (buffer_.size() >= kChunk) flush();
    }

    // Ends writing; reading starts at the first line.
    void rewind() {
        flush();
        buffer_.clear();
        at_ = 0;
        if (!failed_ && SetFilePointer(h_, 0, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) failed_ = true;
    }

    // The next line without its line break; false at the end.
    bool readLine(std::wstring& line) {
        for (;;) {
            size_t nl = buffer_.find('\n', at_);
            if (nl != std::string::npos || end_) {
                if (at_ >= buffer_.size()) return false;
                size_t stop = nl == std::string::npos ? buffer_.size() : nl;
                size_t next = nl == std::string::npos ? buffer_.size() : nl + 1;
                if (stop > at_ && buffer_[stop - 1] == '\r') --stop;
                line = fromUtf8(buffer_.data() + at_, stop - at_);
                at_ = next;
                return true;
            }
            buffer_.erase(0, at_);
            at_ = 0;
            char chunk[kChunk];
            DWORD got = 0;
            if (failed_ || !ReadFile(h_, chunk, kChunk, &got, nullptr) || got == 0) end_ = true;
            else buffer_.append(chunk, got);
        }
    }

private:
    static constexpr size_t kChunk = 64 * 1024;

    void flush() {
        if (failed_ || buffer_.empty()) return;
        DWORD written = 0;
        if (!WriteFile(h_, buffer_.data(), static_cast<DWORD>(buffer_.size()), &written, nullptr) ||
            written != buffer_.size())
            failed_ = true;
        buffer_.clear();
    }

    std::wstring name_;
    HANDLE h_ = INVALID_HANDLE_VALUE;
    bool failed_ = false;
    bool end_ = false;
    std::string buffer_;
    size_t at_ = 0;
};

// --------------------------------------------------------------- the search

// The matching file names of one folder, as the index pass found them.
struct FolderEntry {
    std::wstring folder;
    FILETIME stamp{};
    bool cached = false;
    std::wstring names;             // each name followed by a NUL
};

// Names remembered by the index pass, in characters: beyond this the search
// pass lists the remaining folders again instead of holding more memory.
constexpr size_t kCacheLimit = 8u << 20;

class Search {
public:
    Search(const Criteria& criteria, SearchEvents& events) : criteria_(criteria), events_(events) {}

    std::vector<Bstr> results;

    void withIndex(const std::wstring& path);
    void withoutIndex(const std::wstring& path);

private:
    // Examines the matching files of `folder` given as NUL-terminated names.
    void examineNames(const std::wstring& folder, const std::wstring& names);
    void examine(const std::wstring& folder, const wchar_t* name, size_t length);
    // Lists the matching files of `folder` into `names`; false when it does not exist.
    bool matchingFiles(const std::wstring& folder, std::wstring& names, std::vector<std::wstring>* subfolders);

    const Criteria& criteria_;
    SearchEvents& events_;
    Yielder yield_;
    std::wstring path_;   // scratch for full paths
};

void Search::examine(const std::wstring& folder, const wchar_t* name, size_t length) {
    path_.assign(folder);
    if (!endsWithBackslash(folder)) path_ += L'\\';
    path_.append(name, length);
    Bstr full(path_);
    if (!full.get()) throw std::bad_alloc();
    if (!events_.examineFile(full.get())) results.push_back(std::move(full));
    yield_();
}

void Search::examineNames(const std::wstring& folder, const std::wstring& names) {
    for (size_t at = 0; at < names.size();) {
        size_t end = names.find(L'\0', at);
        examine(folder, names.data() + at, end - at);
        at = end + 1;
    }
}

bool Search::matchingFiles(const std::wstring& folder, std::wstring& names, std::vector<std::wstring>* subfolders) {
    names.clear();
    const bool wantFiles = !criteria_.none();
    return listFolder(
        folder,
        [&](const wchar_t* name, size_t n) {
            if (wantFiles && criteria_.matches(name, n)) names.append(name, n + 1);   // with its NUL
        },
        [&](const wchar_t* name, size_t n, const WIN32_FIND_DATAW&) {
            if (subfolders) subfolders->push_back(childPath(folder, name, n));
        });
}

void Search::withIndex(const std::wstring& path) {
    if (path.empty()) return;
    const std::wstring name = indexFileName();
    if (name.empty()) return;
    IndexFile index(name);
    if (!index.ok()) return;

    // Pass 1: every folder, depth-first in pre-order, with its matching files.
    std::vector<FolderEntry> folders;
    size_t cachedChars = 0;
    std::vector<std::wstring> stack{path};
    const bool wantFiles = !criteria_.none();
    while (!stack.empty()) {
        FolderEntry entry;
        entry.folder = std::move(stack.back());
        stack.pop_back();
        // The stamp is taken before the listing: a change after it shows as a new stamp.
        entry.cached = cachedChars < kCacheLimit && folderStamp(entry.folder, entry.stamp);
        const size_t firstChild = stack.size();
        const bool exists = listFolder(
            entry.folder,
            [&](const wchar_t* n, size_t len) {
                if (entry.cached && wantFiles && criteria_.matches(n, len)) entry.names.append(n, len + 1);
            },
            [&](const wchar_t* n, size_t len, const WIN32_FIND_DATAW&) {
                stack.push_back(childPath(entry.folder, n, len));
                yield_();
            });
        if (!exists) continue;   // a folder that does not exist adds nothing
        // Children were pushed in listing order; the stack must give them back in it.
        std::reverse(stack.begin() + static_cast<std::ptrdiff_t>(firstChild), stack.end());
        index.writeLine(entry.folder);
        cachedChars += entry.names.size();
        folders.push_back(std::move(entry));
        yield_();
    }
    index.rewind();
    if (!index.ok()) return;
    const size_t count = folders.size();
    events_.initialised(static_cast<long>(count));

    // Pass 2: each indexed folder in turn.
    events_.started();
    std::wstring line, names;
    size_t done = 0;
    while (index.readLine(line)) {
        if (!line.empty()) {
            events_.enterFolder(line);
            yield_();
            // The index pass's names serve as long as the folder has not changed since.
            const FolderEntry* entry = done < count && folders[done].folder == line ? &folders[done] : nullptr;
            FILETIME now;
            if (folderStamp(line, now)) {
                if (entry && entry->cached && sameStamp(now, entry->stamp))
                    examineNames(line, entry->names);
                else if (matchingFiles(line, names, nullptr))
                    examineNames(line, names);
            }
            if (entry) folders[done] = FolderEntry();   // done with it: give its memory back
        }
        ++done;
        if (count) events_.progress(percent(done, count));
        yield_();
    }
}

void Search::withoutIndex(const std::wstring& path) {
    events_.initialised(0);
    events_.started();
    struct Frame {
        std::vector<std::wstring> subfolders;
        size_t next = 0;
    };
    std::vector<Frame> stack;
    std::wstring names;
    // Enters a folder: the folder's own files, then a frame for its sub-folders.
    // The folder is listed after CurrentFolderChanged, so that what a handler
    // does to it there is seen.
    auto enter = [&](const std::wstring& folder) {
        if (folder.empty() || !isFolder(folder)) return false;
        events_.enterFolder(folder);
        yield_();
        Frame f;
        if (matchingFiles(folder, names, &f.subfolders)) examineNames(folder, names);
        stack.push_back(std::move(f));
        return true;
    };
    if (!enter(path)) return;
    while (!stack.empty()) {
        Frame& f = stack.back();
        if (f.next < f.subfolders.size()) {
            const bool top = stack.size() == 1;
            std::wstring child = std::move(f.subfolders[f.next++]);
            // Progress counts the top folder's sub-trees, also one that vanished.
            if (!enter(child) && top) events_.progress(percent(stack[0].next, stack[0].subfolders.size()));
            continue;
        }
        stack.pop_back();
        if (stack.size() == 1) events_.progress(percent(stack[0].next, stack[0].subfolders.size()));
    }
}

}  // namespace

// ------------------------------------------------------------------ criteria

Criteria::Criteria(const VARIANT* v) {
    while (v && V_VT(v) == (VT_BYREF | VT_VARIANT)) v = V_VARIANTREF(v);
    if (!v || (V_VT(v) == VT_ERROR && V_ERROR(v) == DISP_E_PARAMNOTFOUND)) {
        patterns_.emplace_back(L"*", 1, true);
        all_ = true;
        return;
    }
    const VARTYPE vt = V_VT(v);
    if (vt == VT_BSTR || vt == (VT_BYREF | VT_BSTR)) {
        add(v);
        return;
    }
    if (!(vt & VT_ARRAY)) return;   // no patterns: no files
    SAFEARRAY* sa = (vt & VT_BYREF) ? *V_ARRAYREF(v) : V_ARRAY(v);
    if (!sa || !sa->cDims) return;
    const VARTYPE element = vt & ~(VT_ARRAY | VT_BYREF);
    size_t count = 1;
    for (USHORT d = 0; d < sa->cDims; ++d) count *= sa->rgsabound[d].cElements;
    ArrayData data(sa);
    if (!data.locked()) return;
    const char* bytes = static_cast<const char*>(data.data());
    for (size_t i = 0; i < count; ++i) {
        const void* at = bytes + i * sa->cbElements;
        if (element == VT_VARIANT) {
            add(static_cast<const VARIANT*>(at));
            continue;
        }
        if (!scalarBytes(element) || scalarBytes(element) != sa->cbElements) return;   // records and the like
        VARIANT e;
        VariantInit(&e);
        V_VT(&e) = VT_BYREF | element;
        V_BYREF(&e) = const_cast<void*>(at);
        add(&e);
    }
}

void Criteria::add(const VARIANT* element) {
    Variant text;
    if (FAILED(VariantChangeTypeEx(&text, const_cast<VARIANT*>(element), LOCALE_USER_DEFAULT, 0, VT_BSTR))) return;
    const UINT n = SysStringLen(V_BSTR(&text));
    if (n == 0) return;   // an empty pattern matches nothing
    if (n == 1 && V_BSTR(&text)[0] == L'*') all_ = true;
    try {
        patterns_.emplace_back(V_BSTR(&text), n, true);
    } catch (const Raised&) {
        SetErrorInfo(0, nullptr);   // an invalid pattern matches nothing; no error leaves the search
    }
}

bool Criteria::matches(const wchar_t* name, size_t length) const {
    if (all_) return true;
    for (const WildcardPattern& p : patterns_)
        if (p.matches(name, length)) return true;
    return false;
}

// ------------------------------------------------------------------ helpers

std::wstring childPath(const std::wstring& folder, const wchar_t* name, size_t length) {
    std::wstring p;
    p.reserve(folder.size() + 1 + length);
    p = folder;
    if (!endsWithBackslash(folder)) p += L'\\';
    p.append(name, length);
    return p;
}

std::wstring indexFileName() {
    wchar_t temp[MAX_PATH + 2];
    DWORD n = GetTempPathW(MAX_PATH + 1, temp);
    if (n == 0 || n > MAX_PATH + 1) return std::wstring();
    std::wstring name(temp, n);
    if (!endsWithBackslash(name)) name += L'\\';
    GUID guid;
    wchar_t text[64];
    if (FAILED(CoCreateGuid(&guid)) || !StringFromGUID2(guid, text, 64)) return std::wstring();
    for (const wchar_t* c = text; *c; ++c)
        if (*c != L'{' && *c != L'}' && *c != L'-') name += *c;
    return name + L".TMP";
}

// Dispatching the pending messages costs a call into the window system even
// when there are none (under Wine a round trip to its server, some 40 to 90
// microseconds), far more than examining a file. So a search lets the message
// loop run at its first yield and then at most every kYieldInterval ms:
// windows, timers and clicks stay as lively as a screen can show, and the
// search keeps the speed of the bare folder walk.
constexpr DWORD kYieldInterval = 10;

void Yielder::operator()() {
    const DWORD now = GetTickCount();
    if (yielded_ && now - last_ < kYieldInterval) return;
    yielded_ = true;
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            // The quit belongs to the client's own loop: put it back and stop here.
            PostQuitMessage(static_cast<int>(msg.wParam));
            break;
        }
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    last_ = GetTickCount();
}

// ------------------------------------------------------------------ search

std::vector<Bstr> search(const std::wstring& path, const Criteria& criteria, bool createIndex, SearchEvents& events) {
    events.initialising();
    Search s(criteria, events);
    try {
        if (createIndex) s.withIndex(path);
        else s.withoutIndex(path);
    } catch (...) {
        // Out of memory: the caller learns it, after Complete like every call.
        events.complete();
        throw;
    }
    events.complete();
    return std::move(s.results);
}

}  // namespace folders
}  // namespace tova
