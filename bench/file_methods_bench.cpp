// FileMethods next to the scripting file-system object, both late-bound
// through IDispatch as a script calls them, in the same run:
// - listing a folder of 10,000 files: GetFiles against walking Folder.Files
//   (For Each, reading each File's Name);
// - reading a 50 MB UTF-16 text: ReadTextFile against
//   OpenTextFile(..., ForReading, False, TristateTrue).ReadAll;
// - writing it back as UTF-16: WriteTextFile against
//   CreateTextFile(..., True, True).Write ("n/a" where a side fails).
// Five interleaved rounds after an untimed one; each keeps its best round
// (a run of over 2 s is not repeated).
// Elapsed time and the process's CPU time. A figure, not a test.
//
//   file_methods_bench [FOLDER [--keep]]
//
// FOLDER (default %TEMP%\tova_fm_bench) gets the files when it lacks them;
// it is removed at the end unless --keep.

#include "frame/typelib.h"

#include "client.h"
#include "clock.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kFiles = 10000;
constexpr size_t kTextUnits = 25 * 1000 * 1000;   // 50 MB of UTF-16

// ------------------------------------------------------------------ late binding

// A call by name; `args` in declaration order. VT_EMPTY result on failure.
HRESULT invoke(IDispatch* d, const wchar_t* name, WORD flags, std::vector<VARIANT> args, VARIANT* result) {
    DISPID id;
    LPOLESTR n = const_cast<LPOLESTR>(name);
    HRESULT hr = d->GetIDsOfNames(IID_NULL, &n, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(hr)) return hr;
    std::vector<VARIANT> reversed(args.rbegin(), args.rend());
    DISPPARAMS p = {reversed.empty() ? nullptr : reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    VariantInit(result);
    return d->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &p, result, nullptr, nullptr);
}

VARIANT typed(VARTYPE vt) {
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = vt;
    return v;
}
VARIANT str(BSTR s) { VARIANT v = typed(VT_BSTR); V_BSTR(&v) = s; return v; }
VARIANT i4(long n) { VARIANT v = typed(VT_I4); V_I4(&v) = n; return v; }
VARIANT vbool(bool b) { VARIANT v = typed(VT_BOOL); V_BOOL(&v) = b ? VARIANT_TRUE : VARIANT_FALSE; return v; }

IDispatch* object(VARIANT& v) { return V_VT(&v) == VT_DISPATCH ? V_DISPATCH(&v) : nullptr; }

// ------------------------------------------------------------------ the figures

struct Figure {
    double seconds = 1e30, cpu = 1e30;   // elapsed; this process's user and kernel time
    long long amount = -1;   // files listed or characters moved; -1: failed
};

// One timed run of `run` (returning the amount, -1 on failure), folded into
// the best. A run of over 2 s is not repeated: one is figure enough.
template <class F>
void timeOnce(Figure& best, F&& run) {
    if (best.seconds > 2 && best.amount >= 0) return;
    const double cpu = cpuSeconds(), start = benchSeconds();
    const long long amount = run();
    const double seconds = benchSeconds() - start, used = cpuSeconds() - cpu;
    if (amount < 0) return;
    best.amount = amount;
    if (seconds < best.seconds) best.seconds = seconds;
    if (used < best.cpu) best.cpu = used;
}

void line(const char* name, const Figure& f, const Figure& peer) {
    if (f.amount < 0) {
        std::printf("%-44s %10s\n", name, "n/a");
        return;
    }
    std::printf("%-44s %10lld %8.1f ms %8.1f ms CPU", name, f.amount, f.seconds * 1e3, f.cpu * 1e3);
    // Speed against the peer's; CPU time is counted in ticks, too coarse below one.
    if (&f != &peer && peer.amount >= 0) {
        std::printf("   %5.1fx the peer's speed", peer.seconds / f.seconds);
        if (f.cpu > 0 && peer.cpu > 0) std::printf(" (CPU %.1fx)", peer.cpu / f.cpu);
    }
    std::printf("\n");
}

// ------------------------------------------------------------------ fixtures

bool makeFolder(const std::wstring& folder) {
    CreateDirectoryW(folder.c_str(), nullptr);
    wchar_t name[40];
    for (int i = 0; i < kFiles; ++i) {
        std::swprintf(name, 40, L"\\file%05d.txt", (i * 7919) % kFiles);   // not created in name order
        const std::wstring path = folder + name;
        if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) continue;
        HANDLE h = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
        if (h == INVALID_HANDLE_VALUE) return false;
        CloseHandle(h);
    }
    return true;
}

bool makeText(const std::wstring& path) {
    LARGE_INTEGER size{};
    HANDLE h = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (h != INVALID_HANDLE_VALUE) {
        GetFileSizeEx(h, &size);
        CloseHandle(h);
        if (size.QuadPart == static_cast<LONGLONG>(2 + kTextUnits * 2)) return true;
    }
    std::wstring text;
    text.reserve(kTextUnits + 1);
    text += L'\xFEFF';
    const std::wstring line = L"Line of a report, \u00C6r\u00F8 \u65E5\u672C, 0123456789 abcdefghij\r\n";
    while (text.size() + line.size() <= kTextUnits + 1) text += line;
    text.resize(kTextUnits + 1, L'.');
    h = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (h == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    const bool ok = WriteFile(h, text.data(), static_cast<DWORD>(text.size() * 2), &written, nullptr);
    CloseHandle(h);
    return ok;
}

void removeFolder(const std::wstring& folder) {
    WIN32_FIND_DATAW fd;
    HANDLE h = FindFirstFileW((folder + L"\\*").c_str(), &fd);
    if (h != INVALID_HANDLE_VALUE) {
        do {
            if (!(fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) DeleteFileW((folder + L"\\" + fd.cFileName).c_str());
        } while (FindNextFileW(h, &fd));
        FindClose(h);
    }
    RemoveDirectoryW(folder.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    std::wstring root;
    bool keep = false;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--keep")) {
            keep = true;
        } else {
            wchar_t w[MAX_PATH];
            MultiByteToWideChar(CP_ACP, 0, argv[i], -1, w, MAX_PATH);
            root = w;
        }
    }
    if (root.empty()) {
        wchar_t t[MAX_PATH + 1];
        const DWORD n = GetTempPathW(MAX_PATH + 1, t);
        root = std::wstring(t, n) + L"tova_fm_bench";
    }
    while (!root.empty() && root.back() == L'\\') root.pop_back();

    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    IDispatch* fm = createBeside<IDispatch>(CLSID_FileMethods, IID_IDispatch);
    CLSID fsoClass;
    IDispatch* fso = nullptr;
    if (SUCCEEDED(CLSIDFromProgID(L"Scripting.FileSystemObject", &fsoClass)))
        CoCreateInstance(fsoClass, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&fso));
    if (!fm || !fso) {
        std::printf("cannot create %s\n", fm ? "the file-system object" : "a FileMethods from TOVA200.DLL beside the program");
        return 1;
    }
    CreateDirectoryW(root.c_str(), nullptr);
    const std::wstring folder = root + L"\\files", textPath = root + L"\\text.txt", outPath = root + L"\\out.txt";
    std::printf("Generating the fixtures ...");
    std::fflush(stdout);
    if (!makeFolder(folder) || !makeText(textPath)) {
        std::printf(" cannot write in %ls (error %lu)\n", root.c_str(), GetLastError());
        return 1;
    }
    std::printf(" done\n");

    BSTR folderB = SysAllocString(folder.c_str()), textB = SysAllocString(textPath.c_str()),
         outB = SysAllocString(outPath.c_str());

    auto getFiles = [&]() -> long long {
        VARIANT r;
        if (FAILED(invoke(fm, L"GetFiles", DISPATCH_METHOD, {str(folderB)}, &r)) || V_VT(&r) != (VT_ARRAY | VT_VARIANT))
            return -1;
        LONG ub = -1;
        SafeArrayGetUBound(V_ARRAY(&r), 1, &ub);
        VariantClear(&r);
        return ub + 1;
    };
    auto fsoFiles = [&]() -> long long {
        VARIANT f, files, e;
        long long count = -1;
        if (SUCCEEDED(invoke(fso, L"GetFolder", DISPATCH_METHOD, {str(folderB)}, &f)) && object(f) &&
            SUCCEEDED(invoke(object(f), L"Files", DISPATCH_PROPERTYGET, {}, &files)) && object(files)) {
            DISPPARAMS none = {nullptr, nullptr, 0, 0};
            VariantInit(&e);
            object(files)->Invoke(DISPID_NEWENUM, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                  &none, &e, nullptr, nullptr);
            IEnumVARIANT* items = nullptr;
            if (V_VT(&e) == VT_UNKNOWN || V_VT(&e) == VT_DISPATCH)
                V_UNKNOWN(&e)->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(&items));
            if (items) {
                count = 0;
                VARIANT item, name;
                VariantInit(&item);
                while (items->Next(1, &item, nullptr) == S_OK) {
                    if (object(item) && SUCCEEDED(invoke(object(item), L"Name", DISPATCH_PROPERTYGET, {}, &name))) {
                        ++count;
                        VariantClear(&name);
                    }
                    VariantClear(&item);
                }
                items->Release();
            }
            VariantClear(&e);
        }
        VariantClear(&files);
        VariantClear(&f);
        return count;
    };
    // The floors: the platform's enumeration alone, nothing kept; one
    // FindNextFileW call per entry, and a megabyte of entries per call.
    auto bare = [&]() -> long long {
        WIN32_FIND_DATAW fd;
        HANDLE h = FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &fd, FindExSearchNameMatch, nullptr,
                                    FIND_FIRST_EX_LARGE_FETCH);
        if (h == INVALID_HANDLE_VALUE) return -1;
        long long count = 0;
        do
            if (!(fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) ++count;
        while (FindNextFileW(h, &fd));
        FindClose(h);
        return count;
    };
    std::vector<LONGLONG> buffer(1024 * 1024 / sizeof(LONGLONG));
    auto buffered = [&]() -> long long {
        HANDLE h = CreateFileW(folder.c_str(), FILE_LIST_DIRECTORY | SYNCHRONIZE,
                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        if (h == INVALID_HANDLE_VALUE) return -1;
        long long count = 0;
        FILE_INFO_BY_HANDLE_CLASS kind = FileIdBothDirectoryRestartInfo;
        for (; GetFileInformationByHandleEx(h, kind, buffer.data(), 1024 * 1024); kind = FileIdBothDirectoryInfo)
            for (auto* e = reinterpret_cast<const BYTE*>(buffer.data());;) {
                auto* entry = reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(e);
                if (!(entry->FileAttributes & FILE_ATTRIBUTE_DIRECTORY)) ++count;
                if (!entry->NextEntryOffset) break;
                e += entry->NextEntryOffset;
            }
        CloseHandle(h);
        return count;
    };
    auto readText = [&]() -> long long {
        VARIANT r;
        if (FAILED(invoke(fm, L"ReadTextFile", DISPATCH_METHOD, {str(textB), i4(tovaEncodingUTF16)}, &r)) ||
            V_VT(&r) != VT_BSTR)
            return -1;
        const long long units = SysStringLen(V_BSTR(&r));
        VariantClear(&r);
        return units;
    };
    auto fsoRead = [&]() -> long long {
        VARIANT stream, r, ignored;
        long long units = -1;
        // OpenTextFile(path, ForReading = 1, Create = False, TristateTrue = -1: Unicode)
        if (SUCCEEDED(invoke(fso, L"OpenTextFile", DISPATCH_METHOD, {str(textB), i4(1), vbool(false), i4(-1)}, &stream)) &&
            object(stream)) {
            if (SUCCEEDED(invoke(object(stream), L"ReadAll", DISPATCH_METHOD, {}, &r)) && V_VT(&r) == VT_BSTR)
                units = SysStringLen(V_BSTR(&r));
            invoke(object(stream), L"Close", DISPATCH_METHOD, {}, &ignored);
            VariantClear(&r);
        }
        VariantClear(&stream);
        return units;
    };
    // The text to write: what ReadTextFile gives.
    VARIANT text;
    invoke(fm, L"ReadTextFile", DISPATCH_METHOD, {str(textB)}, &text);
    auto writeText = [&]() -> long long {
        VARIANT r;
        DeleteFileW(outPath.c_str());
        if (FAILED(invoke(fm, L"WriteTextFile", DISPATCH_METHOD, {str(outB), text, i4(tovaEncodingUTF16)}, &r)) ||
            V_VT(&r) != VT_BOOL || !V_BOOL(&r))
            return -1;
        return SysStringLen(V_BSTR(&text));
    };
    auto fsoWrite = [&]() -> long long {
        VARIANT stream, r, ignored;
        bool ok = false;
        DeleteFileW(outPath.c_str());
        // CreateTextFile(path, Overwrite = True, Unicode = True)
        if (SUCCEEDED(invoke(fso, L"CreateTextFile", DISPATCH_METHOD, {str(outB), vbool(true), vbool(true)}, &stream)) &&
            object(stream)) {
            ok = SUCCEEDED(invoke(object(stream), L"Write", DISPATCH_METHOD, {text}, &r));
            ok = SUCCEEDED(invoke(object(stream), L"Close", DISPATCH_METHOD, {}, &ignored)) && ok;
        }
        VariantClear(&stream);
        LARGE_INTEGER size{};
        HANDLE h = CreateFileW(outPath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        if (h != INVALID_HANDLE_VALUE) {
            GetFileSizeEx(h, &size);
            CloseHandle(h);
        }
        // Only a complete Unicode file counts.
        return ok && size.QuadPart == static_cast<LONGLONG>(2 + 2 * SysStringLen(V_BSTR(&text))) ? SysStringLen(V_BSTR(&text))
                                                                                                 : -1;
    };

    getFiles();   // warm the caches
    fsoFiles();
    Figure floor, query, list, fsoList, read, fsoReadF, write, fsoWriteF;
    for (int round = 0; round < 5; ++round) {
        timeOnce(floor, bare);
        timeOnce(query, buffered);
        timeOnce(list, getFiles);
        timeOnce(fsoList, fsoFiles);
        timeOnce(read, readText);
        timeOnce(fsoReadF, fsoRead);
        timeOnce(write, writeText);
        timeOnce(fsoWriteF, fsoWrite);
    }

    std::printf("Folder %ls; best of 5 interleaved rounds, late-bound\n", root.c_str());
    std::printf("%-44s %10s %11s %15s\n", "", "count", "elapsed", "");
    line("FindNextFileW loop alone", floor, fsoList);
    line("directory query by 1 MB alone", query, fsoList);
    line("GetFiles, 10,000 files", list, fsoList);
    line("file-system object Folder.Files, Name each", fsoList, fsoList);
    line("ReadTextFile, 50 MB UTF-16 (characters)", read, fsoReadF);
    line("file-system object OpenTextFile.ReadAll", fsoReadF, fsoReadF);
    line("WriteTextFile, 50 MB UTF-16 (characters)", write, fsoWriteF);
    line("file-system object CreateTextFile.Write", fsoWriteF, fsoWriteF);

    VariantClear(&text);
    SysFreeString(folderB);
    SysFreeString(textB);
    SysFreeString(outB);
    fso->Release();
    fm->Release();
    if (!keep) {
        removeFolder(folder);
        DeleteFileW(textPath.c_str());
        DeleteFileW(outPath.c_str());
        RemoveDirectoryW(root.c_str());
    }
    CoUninitialize();
    return 0;
}
