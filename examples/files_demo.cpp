// files_demo: searches a folder tree with the registered TOVA200.DLL and draws a
// text progress bar from the search's events; then keeps a few settings in the
// registry and reads them back; then lets FileMethods write, list, copy and
// delete a few files in a temporary folder.
//
//   files_demo [folder [pattern ...]]     (default: C:\windows, *.exe *.dll)
//
// The objects are created by ProgID and called early-bound through the C++
// header generated from the type library. The search's events arrive at an
// IDispatch sink connected to the FileSearch object: Initialised tells how many
// folders there are, Progress moves the bar, ExamineFile lets the sink refuse
// single files through its by-reference Cancel argument.
#include "frame/typelib.h"
#include "frame/values.h"
#include "demo_support.h"

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

using tova::Bstr;
using tova::ComPtr;
using tova::Variant;

using demo::check;
using demo::create;

namespace {

// The events of __FileSearch, numbered as in the type library.
enum : DISPID { Initialising = 1, Initialised, Started, CurrentFolderChanged, ExamineFile, Progress, Complete };

// Draws the progress bar and refuses the C runtime libraries (names starting
// with "msvc"), to show Cancel at work.
class SearchLog {
public:
    long folders = 0, examined = 0, refused = 0;

    void onEvent(DISPID id, DISPPARAMS* p) {
        switch (id) {
        case Initialising:
            std::printf("  Initialising: counting the folders\n");
            lastTenth_ = -1;
            break;
        case Initialised:
            folders = V_I4(&p->rgvarg[0]);
            std::printf("  Initialised: %ld folders\n", folders);
            break;
        case Started: std::printf("  Started\n"); break;
        case CurrentFolderChanged: current_ = V_BSTR(&p->rgvarg[0]); break;
        case ExamineFile: {
            ++examined;
            const wchar_t* path = V_BSTR(&p->rgvarg[1]);
            const wchar_t* name = std::wcsrchr(path, L'\\');
            if (name && _wcsnicmp(name + 1, L"msvc", 4) == 0) {
                *V_BOOLREF(&p->rgvarg[0]) = VARIANT_TRUE;   // Cancel: leave it out
                ++refused;
            }
            break;
        }
        case Progress: bar(V_R4(&p->rgvarg[0])); break;
        case Complete: std::printf("  Complete\n"); break;
        }
    }

private:
    // One line of bar per tenth (the demo's output is a log, not a terminal).
    void bar(float percent) {
        const int tenth = static_cast<int>(percent / 10);
        if (tenth == lastTenth_) return;
        lastTenth_ = tenth;
        std::string b(static_cast<size_t>(tenth * 3), '#');
        b.resize(30, '.');
        std::string where(current_.begin(), current_.end());
        if (where.size() > 40) where = "..." + where.substr(where.size() - 37);
        std::printf("  [%s] %5.1f%%  %s\n", b.c_str(), percent, where.c_str());
    }

    std::wstring current_;
    int lastTenth_ = -1;
};

// The names of a String array (FileSearch) or a Variant array (FileMethods).
std::vector<std::wstring> strings(const VARIANT& v) {
    std::vector<std::wstring> out;
    if (V_VT(&v) != (VT_ARRAY | VT_BSTR) && V_VT(&v) != (VT_ARRAY | VT_VARIANT)) return out;
    LONG ub = -1;
    SafeArrayGetUBound(V_ARRAY(&v), 1, &ub);
    for (LONG i = 0; i <= ub; ++i) {
        Variant e;
        if (V_VT(&v) == (VT_ARRAY | VT_BSTR)) {
            V_VT(&e) = VT_BSTR;
            SafeArrayGetElement(V_ARRAY(&v), &i, &V_BSTR(&e));
        } else {
            SafeArrayGetElement(V_ARRAY(&v), &i, &e);
        }
        out.push_back(V_VT(&e) == VT_BSTR && V_BSTR(&e) ? V_BSTR(&e) : L"");
    }
    return out;
}

double seconds() {
    LARGE_INTEGER f, t;
    QueryPerformanceFrequency(&f);
    QueryPerformanceCounter(&t);
    return static_cast<double>(t.QuadPart) / static_cast<double>(f.QuadPart);
}

void searchDemo(const std::wstring& folder, const std::vector<std::wstring>& patterns) {
    auto fs = create<_FileSearch>(L"TOVA32.FileSearch", IID__FileSearch);
    SearchLog progress;
    demo::Sink sink(DIID___FileSearch, [&](DISPID id, DISPPARAMS* p) { progress.onEvent(id, p); });
    sink.connect(fs.get());

    // The criteria: a Variant array of patterns.
    SAFEARRAY* list = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(patterns.size()));
    for (LONG i = 0; i < static_cast<LONG>(patterns.size()); ++i) {
        Variant p(patterns[static_cast<size_t>(i)].c_str());
        SafeArrayPutElement(list, &i, &p);
    }
    Variant criteria;
    V_VT(&criteria) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&criteria) = list;
    std::string shown;
    for (const std::wstring& p : patterns) shown += (shown.empty() ? "" : " ") + std::string(p.begin(), p.end());

    std::printf("SearchFolder %ls for %s, with the folder index first:\n", folder.c_str(), shown.c_str());
    Bstr path(folder);
    BSTR b = path.get();
    Variant found;
    const double start = seconds();
    check(fs->SearchFolder(&b, &criteria, &found), "SearchFolder");
    const double took = seconds() - start;
    std::vector<std::wstring> files = strings(found);
    std::printf("%zu files accepted of %ld examined (%ld refused by the sink's Cancel) in %ld folders, %.2f s.\n",
                files.size(), progress.examined, progress.refused, progress.folders, took);
    for (size_t i = 0; i < files.size() && i < 3; ++i) std::printf("    %ls\n", files[i].c_str());
    if (files.size() > 3) std::printf("    ...\n");

    std::printf("SearchFolderEx without the index: Progress counts the top folder's sub-folders only.\n");
    VARIANT_BOOL noIndex = VARIANT_FALSE;
    progress.examined = progress.refused = 0;
    Variant again;
    check(fs->SearchFolderEx(&b, &criteria, &noIndex, &again), "SearchFolderEx");
    std::printf("%zu files accepted, the same %s.\n", strings(again).size(),
                strings(again) == files ? "list in the same order" : "files in another order (the tree changed?)");
    sink.disconnect();
}

void registryDemo() {
    auto reg = create<_RegistryMethods>(L"TOVA32.RegistryMethods", IID__RegistryMethods);
    const RootKeyTypeEnum hkcu = tovaRootKey_HKEY_CURRENT_USER;
    Bstr key(L"Software\\TOVA200 demo\\Settings"), parent(L"Software\\TOVA200 demo");
    BSTR k = key.get(), pk = parent.get();
    std::printf("\nRegistryMethods under HKEY_CURRENT_USER\\Software\\TOVA200 demo:\n");
    const wchar_t* settings[][2] = {{L"LastFolder", L"C:\\windows"}, {L"Pattern", L"*.exe"}, {L"Window", L"maximised"}};
    for (auto& s : settings) {
        Bstr name(s[0]), value(s[1]);
        BSTR n = name.get(), v = value.get();
        VARIANT_BOOL ok = VARIANT_FALSE;
        check(reg->UpdateKey(hkcu, &k, &n, &v, &ok), "UpdateKey");
        std::printf("  UpdateKey %ls = \"%ls\": %s\n", s[0], s[1], ok ? "True" : "False");
    }
    Bstr name(L"Pattern"), read;
    BSTR n = name.get();
    check(reg->GetKeyValue(hkcu, &k, &n, nullptr, read.put()), "GetKeyValue");
    std::printf("  GetKeyValue Pattern: \"%ls\"\n", read.get());
    Variant all;
    check(reg->GetAllKeyValues(hkcu, &k, &all), "GetAllKeyValues");
    LONG count = -1;
    if (V_VT(&all) & VT_ARRAY) SafeArrayGetUBound(V_ARRAY(&all), 2, &count);
    std::printf("  GetAllKeyValues: %ld values, as (0 To 1, 0 To %ld): names in row 0, data in row 1\n", count + 1,
                count);
    VARIANT_BOOL ok = VARIANT_FALSE;
    check(reg->DeleteAllKeyValues(hkcu, &k, &ok), "DeleteAllKeyValues");
    std::printf("  DeleteAllKeyValues: %s\n", ok ? "True" : "False");
    check(reg->DeleteKey(hkcu, &k, &ok), "DeleteKey");
    reg->DeleteKey(hkcu, &pk, &ok);
    std::printf("  DeleteKey: %s; the demo leaves nothing behind.\n", ok ? "True" : "False");
}

void fileMethodsDemo() {
    auto fm = create<_FileMethods>(L"TOVA32.FileMethods", IID__FileMethods);
    std::printf("\nFileMethods in a temporary folder:\n");
    Bstr folder, prefix(L"tovademo"), none(L"");
    check(fm->CreateTempFolder(prefix.get(), none.get(), folder.put()), "CreateTempFolder");
    std::printf("  CreateTempFolder: %ls\n", folder.get());
    BSTR f = folder.get();
    const wchar_t* names[] = {L"notes.txt", L"Gr\u00fc\u00dfe.txt", L"data.bin"};
    for (const wchar_t* n : names) {
        Bstr more(n), path, text(L"written through a temporary file");
        BSTR m = more.get();
        check(fm->CombinePath(&f, &m, path.put()), "CombinePath");
        BSTR p = path.get(), t = text.get();
        VARIANT_BOOL ok = VARIANT_FALSE;
        check(fm->WriteTextFile(&p, &t, tovaEncodingUTF8, VARIANT_TRUE, &ok), "WriteTextFile");
    }
    Variant all(L"*");
    Variant list;
    check(fm->GetFiles(&f, &all, VARIANT_FALSE, VARIANT_FALSE, &list), "GetFiles");
    std::printf("  GetFiles, sorted:");
    for (const std::wstring& n : strings(list)) std::printf(" %ls", n.c_str());
    std::printf("\n");
    // Beside the folder: a folder copied into itself is refused (error 5).
    Bstr copyTo(std::wstring(folder.get()) + L"-copy");
    BSTR c = copyTo.get();
    VARIANT_BOOL ok = VARIANT_FALSE;
    check(fm->CopyFolder(&f, &c, VARIANT_FALSE, &ok), "CopyFolder");
    double size = 0;
    check(fm->GetFolderSize(&c, VARIANT_TRUE, &size), "GetFolderSize");
    std::printf("  CopyFolder beside it: %s; GetFolderSize of the copy: %.0f bytes\n", ok ? "True" : "False", size);
    check(fm->DeleteFolder(&c, VARIANT_FALSE, VARIANT_FALSE, &ok), "DeleteFolder");
    Variant txt(L"*.txt");
    LONG deleted = 0;
    check(fm->DeleteFiles(&f, &txt, VARIANT_TRUE, VARIANT_FALSE, VARIANT_FALSE, &deleted), "DeleteFiles");
    std::printf("  DeleteFiles *.txt with subfolders: %ld deleted\n", deleted);
    check(fm->DeleteFolder(&f, VARIANT_FALSE, VARIANT_FALSE, &ok), "DeleteFolder");
    std::printf("  DeleteFolder: %s; the demo leaves nothing behind.\n", ok ? "True" : "False");
}

}  // namespace

int main(int argc, char** argv) {
    check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), "CoInitializeEx");
    std::wstring folder = L"C:\\windows";
    std::vector<std::wstring> patterns;
    for (int i = 1; i < argc; ++i) {
        wchar_t w[MAX_PATH];
        MultiByteToWideChar(CP_ACP, 0, argv[i], -1, w, MAX_PATH);
        if (i == 1) folder = w;
        else patterns.push_back(w);
    }
    if (patterns.empty()) patterns = {L"*.exe", L"*.dll"};
    searchDemo(folder, patterns);
    registryDemo();
    fileMethodsDemo();
    CoUninitialize();
    std::printf("files_demo: done\n");
    return 0;
}
