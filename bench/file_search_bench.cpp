// What a folder search costs next to the bare folder walk: files per second of
// FileSearch.SearchFolder (with the folder index) and SearchFolderEx(..., False),
// each with a connected sink that counts every event, and of a plain recursive
// FindFirstFileW / FindNextFileW walk of the same tree in the same run. The
// three are run in turn, five rounds after one untimed walk that warms the
// caches, and each keeps its best round: on a shared machine interleaving keeps
// a busy moment from favouring one of them. Besides the elapsed time, the
// process's CPU time (user and kernel) is shown, which other programs on the
// machine disturb less. A figure, not a test.
//
//   file_search_bench [TREE_FOLDER [--keep]]
//
// The tree (100,000 empty files, 100 in each of 1,000 folders: 10 folders of
// 99 sub-folders each) is generated when TREE_FOLDER does not hold it yet;
// default %TEMP%\tova_search_bench. It is removed at the end unless --keep.

#include "frame/typelib.h"

#include "client.h"
#include "clock.h"

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string>

namespace {

constexpr int kTopFolders = 10, kSubFolders = 99, kFilesPerFolder = 100;
constexpr long kFiles = static_cast<long>(kTopFolders) * (kSubFolders + 1) * kFilesPerFolder;

// ------------------------------------------------------------------ the tree

bool makeFile(const std::wstring& path) {
    HANDLE h = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) return false;
    CloseHandle(h);
    return true;
}

bool fillFolder(const std::wstring& folder) {
    if (!CreateDirectoryW(folder.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS) return false;
    wchar_t name[32];
    for (int i = 0; i < kFilesPerFolder; ++i) {
        std::swprintf(name, 32, L"\\file%03d.dat", i);
        if (!makeFile(folder + name)) return false;
    }
    return true;
}

std::wstring marker(const std::wstring& root) { return root + L"\\complete.marker"; }

bool makeTree(const std::wstring& root) {
    if (GetFileAttributesW(marker(root).c_str()) != INVALID_FILE_ATTRIBUTES) return true;
    std::printf("Generating %ld files in %d folders ...", kFiles, kTopFolders * (kSubFolders + 1));
    std::fflush(stdout);
    const double start = benchSeconds();
    CreateDirectoryW(root.c_str(), nullptr);
    wchar_t name[32];
    for (int t = 0; t < kTopFolders; ++t) {
        std::swprintf(name, 32, L"\\top%02d", t);
        const std::wstring top = root + name;
        if (!fillFolder(top)) return false;
        for (int s = 0; s < kSubFolders; ++s) {
            std::swprintf(name, 32, L"\\sub%02d", s);
            if (!fillFolder(top + name)) return false;
        }
    }
    std::printf(" %.1f s\n", benchSeconds() - start);
    // The marker sits in the root, which the searches see as one more file.
    return makeFile(marker(root));
}

void removeTree(const std::wstring& path) {
    WIN32_FIND_DATAW fd;
    HANDLE h = FindFirstFileW((path + L"\\*").c_str(), &fd);
    if (h != INVALID_HANDLE_VALUE) {
        do {
            if (!std::wcscmp(fd.cFileName, L".") || !std::wcscmp(fd.cFileName, L"..")) continue;
            const std::wstring child = path + L"\\" + fd.cFileName;
            if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) removeTree(child);
            else DeleteFileW(child.c_str());
        } while (FindNextFileW(h, &fd));
        FindClose(h);
    }
    RemoveDirectoryW(path.c_str());
}

// ------------------------------------------------------------------ bare walk

long walk(const std::wstring& folder) {
    long files = 0;
    WIN32_FIND_DATAW fd;
    HANDLE h = FindFirstFileW((folder + L"\\*").c_str(), &fd);
    if (h == INVALID_HANDLE_VALUE) return 0;
    do {
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            if (std::wcscmp(fd.cFileName, L".") && std::wcscmp(fd.cFileName, L".."))
                files += walk(folder + L"\\" + fd.cFileName);
        } else {
            ++files;
        }
    } while (FindNextFileW(h, &fd));
    FindClose(h);
    return files;
}

// ------------------------------------------------------------------ counting sink

class CountingSink : public IDispatch {
public:
    long events = 0, examined = 0;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        *ppv = riid == IID_IUnknown || riid == IID_IDispatch ? static_cast<IDispatch*>(this) : nullptr;
        if (!*ppv) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }   // lives on main's stack
    STDMETHODIMP GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        ++events;
        if (id == 5) ++examined;   // ExamineFile
        return S_OK;
    }
};

long resultCount(const VARIANT& v) {
    if (V_VT(&v) != (VT_ARRAY | VT_BSTR)) return 0;
    LONG ub = -1;
    SafeArrayGetUBound(V_ARRAY(&v), 1, &ub);
    return ub + 1;
}

struct Figure {
    double seconds = 1e30;   // elapsed
    double cpu = 1e30;       // this process's user and kernel time
    long files = 0;
    long events = 0;
};

// One timed run of `run`, folded into the best so far.
template <class F>
void timeOnce(Figure& best, F&& run) {
    const double cpu = cpuSeconds(), start = benchSeconds();
    Figure r = run();
    r.seconds = benchSeconds() - start;
    r.cpu = cpuSeconds() - cpu;
    best.files = r.files;
    best.events = r.events;
    if (r.seconds < best.seconds) best.seconds = r.seconds;
    if (r.cpu < best.cpu) best.cpu = r.cpu;
}

}  // namespace

int main(int argc, char** argv) {
    std::wstring root;
    bool keep = false;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--keep")) keep = true;
        else {
            wchar_t w[MAX_PATH];
            MultiByteToWideChar(CP_ACP, 0, argv[i], -1, w, MAX_PATH);
            root = w;
        }
    }
    if (root.empty()) {
        wchar_t t[MAX_PATH + 1];
        DWORD n = GetTempPathW(MAX_PATH + 1, t);
        root = std::wstring(t, n) + L"tova_search_bench";
    }
    while (!root.empty() && root.back() == L'\\') root.pop_back();

    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    _FileSearch* fs = createBeside<_FileSearch>(CLSID_FileSearch, IID__FileSearch);
    if (!fs) {
        std::printf("cannot create a FileSearch from TOVA200.DLL beside the program\n");
        return 1;
    }
    if (!makeTree(root)) {
        std::printf("\ncannot generate the tree in %ls (error %lu)\n", root.c_str(), GetLastError());
        return 1;
    }

    CountingSink sink;
    IConnectionPointContainer* cpc = nullptr;
    IConnectionPoint* cp = nullptr;
    DWORD cookie = 0;
    fs->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&cpc));
    if (cpc) cpc->FindConnectionPoint(DIID___FileSearch, &cp);
    if (!cp || FAILED(cp->Advise(&sink, &cookie))) {
        std::printf("cannot connect the counting sink\n");
        return 1;
    }

    walk(root);   // warm the caches
    auto search = [&](bool index) {
        BSTR path = SysAllocString(root.c_str());
        VARIANT_BOOL ci = index ? VARIANT_TRUE : VARIANT_FALSE;
        VARIANT result;
        VariantInit(&result);
        sink.events = sink.examined = 0;
        fs->SearchFolderEx(&path, nullptr, &ci, &result);
        Figure f;
        f.files = resultCount(result);
        f.events = sink.events;
        if (sink.examined != f.files) std::printf("  (ExamineFile %ld, results %ld)\n", sink.examined, f.files);
        VariantClear(&result);
        SysFreeString(path);
        return f;
    };
    Figure bare, indexed, oneshot;
    for (int round = 0; round < 5; ++round) {
        timeOnce(bare, [&] {
            Figure f;
            f.files = walk(root);
            return f;
        });
        timeOnce(indexed, [&] { return search(true); });
        timeOnce(oneshot, [&] { return search(false); });
    }

    std::printf("Tree: %ls, %ld files; best of 5 interleaved rounds\n", root.c_str(), bare.files);
    std::printf("%-42s %9s %8s %6s   %9s %8s %6s\n", "", "files/s", "elapsed", "", "files/s", "CPU", "");
    auto line = [&](const char* name, const Figure& f) {
        const double rate = f.files / f.seconds, cpuRate = f.files / f.cpu;
        std::printf("%-42s %9.0f %7.3fs %5.0f%%   %9.0f %7.3fs %5.0f%%", name, rate, f.seconds,
                    100.0 * rate / (bare.files / bare.seconds), cpuRate, f.cpu, 100.0 * cpuRate / (bare.files / bare.cpu));
        if (f.events) std::printf("   %ld events", f.events);
        std::printf("\n");
    };
    line("bare FindFirstFileW walk", bare);
    line("SearchFolder (index), counting sink", indexed);
    line("SearchFolderEx(..., False), counting sink", oneshot);

    cp->Unadvise(cookie);
    cp->Release();
    cpc->Release();
    fs->Release();
    if (!keep) removeTree(root);
    CoUninitialize();
    return 0;
}
