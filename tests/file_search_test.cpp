// FileSearch through the DLL: the events of both modes in order with their
// values, the per-file Cancel, criteria forms, paths and names, and what a
// search leaves behind (nothing) when handlers misbehave or folders vanish.
#include "support.h"

#include <algorithm>
#include <memory>

using namespace test;

namespace {

using Strings = std::vector<std::wstring>;

enum Event : DISPID { Initialising = 1, Initialised, Started, CurrentFolderChanged, ExamineFile, Progress, Complete };

// ------------------------------------------------------------- folder trees

// A folder tree of its own under the temporary folder, removed afterwards.
class Tree {
public:
    Tree() {
        static int serial = 0;
        root_ = tempFolder() + L"tova_search_" + std::to_wstring(GetCurrentProcessId()) + L"_" +
                std::to_wstring(++serial);
        removeTree(root_);
        CreateDirectoryW(root_.c_str(), nullptr);
    }
    ~Tree() { removeTree(root_); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    const std::wstring& root() const { return root_; }
    std::wstring operator()(const std::wstring& rel) const { return rel.empty() ? root_ : root_ + L"\\" + rel; }
    Tree& folder(const std::wstring& rel) {
        EXPECT_TRUE(CreateDirectoryW((*this)(rel).c_str(), nullptr)) << "folder " << std::string(rel.begin(), rel.end());
        return *this;
    }
    Tree& file(const std::wstring& rel, DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
        HANDLE h = CreateFileW((*this)(rel).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, attributes, nullptr);
        EXPECT_NE(INVALID_HANDLE_VALUE, h);
        if (h != INVALID_HANDLE_VALUE) CloseHandle(h);
        return *this;
    }

private:
    std::wstring root_;
};

// root: a.txt, b.dat; one\c.txt; two\d.TXT
void threeFolders(Tree& t) {
    t.file(L"a.txt").file(L"b.dat").folder(L"one").file(L"one\\c.txt").folder(L"two").file(L"two\\d.TXT");
}

// ------------------------------------------------------------------ events

std::wstring str(const VARIANT& v) { return V_VT(&v) == VT_BSTR && V_BSTR(&v) ? V_BSTR(&v) : L""; }

// Records every event; an optional hook runs inside ExamineFile and answers Cancel.
class SearchLog : public Sink {
public:
    std::function<bool(const std::wstring&)> cancel;
    std::function<void(DISPID, const std::vector<Variant>&)> onEvent;

    SearchLog() {
        handler = [this](DISPID id, DISPPARAMS* p) {
            if (id == ExamineFile) {
                EXPECT_EQ(2u, p->cArgs);
                VARIANT& c = p->rgvarg[0];
                EXPECT_EQ(VT_BYREF | VT_BOOL, V_VT(&c));
                EXPECT_EQ(VARIANT_FALSE, *V_BOOLREF(&c)) << "Cancel arrives False";
                if (cancel && cancel(str(p->rgvarg[1]))) *V_BOOLREF(&c) = VARIANT_TRUE;
            }
            if (onEvent) onEvent(id, calls.back().args);
        };
    }

    std::vector<DISPID> ids() const {
        std::vector<DISPID> out;
        for (const Call& c : calls) out.push_back(c.id);
        return out;
    }
    Strings texts(DISPID id) const {
        Strings out;
        for (const Call& c : calls)
            if (c.id == id) out.push_back(str(c.args.at(0)));
        return out;
    }
    std::vector<float> progress() const {
        std::vector<float> out;
        for (const Call& c : calls)
            if (c.id == Progress) {
                EXPECT_EQ(VT_R4, V_VT(&c.args.at(0))) << "Percent is a Single";
                out.push_back(V_R4(&c.args.at(0)));
            }
        return out;
    }
    long folderCount() const {
        for (const Call& c : calls)
            if (c.id == Initialised) return V_I4(&c.args.at(0));
        return -1;
    }
    // The events as one line of letters, folders and files left out: "IiS...C".
    std::string outline() const {
        std::string s;
        for (const Call& c : calls) s += "?IiSFEPC"[c.id > 0 && c.id < 8 ? c.id : 0];
        return s;
    }
};

Strings stringArray(const VARIANT& v) {
    Strings out;
    if (V_VT(&v) != (VT_ARRAY | VT_BSTR)) return out;
    SAFEARRAY* sa = V_ARRAY(&v);
    LONG lb = 1, ub = 0;
    SafeArrayGetLBound(sa, 1, &lb);
    SafeArrayGetUBound(sa, 1, &ub);
    EXPECT_EQ(0, lb) << "zero-based";
    for (LONG i = lb; i <= ub; ++i) {
        BSTR b = nullptr;
        SafeArrayGetElement(sa, &i, &b);
        out.push_back(b ? b : L"");
        SysFreeString(b);
    }
    return out;
}

class FileSearchTest : public ::testing::Test {
protected:
    void SetUp() override {
        fs = create<_FileSearch>(CLSID_FileSearch, IID__FileSearch);
        ASSERT_TRUE(fs);
        log.connect(fs.get(), DIID___FileSearch);
    }
    void TearDown() override { log.disconnect(); }

    // SearchFolderEx through the vtable; `criteria` null: left out.
    Variant search(const std::wstring& path, VARIANT* criteria = nullptr, bool index = true) {
        Bstr p(path);
        BSTR b = p.get();
        VARIANT_BOOL ci = index ? VARIANT_TRUE : VARIANT_FALSE;
        Variant result;
        EXPECT_EQ(S_OK, fs->SearchFolderEx(&b, criteria, &ci, &result));
        return result;
    }
    std::wstring current() {
        Bstr b;
        fs->get_CurrentFolder(b.put());
        return b.str();
    }

    ComPtr<_FileSearch> fs;
    SearchLog log;
};

// The *.TMP files of the temporary folder named by 32 hexadecimal digits.
Strings indexFiles() {
    Strings out;
    WIN32_FIND_DATAW fd;
    HANDLE h = FindFirstFileW((tempFolder() + L"*.TMP").c_str(), &fd);
    if (h == INVALID_HANDLE_VALUE) return out;
    do {
        std::wstring n = fd.cFileName;
        if (n.size() == 36 && std::all_of(n.begin(), n.begin() + 32, iswxdigit)) out.push_back(n);
    } while (FindNextFileW(h, &fd));
    FindClose(h);
    return out;
}

}  // namespace

// ------------------------------------------------------------------ with the index

TEST_F(FileSearchTest, ThreeFoldersWithIndexRaiseEveryEventInOrder) {
    Tree t;
    threeFolders(t);
    Strings currentInHandler;
    log.onEvent = [&](DISPID id, const std::vector<Variant>&) {
        if (id == CurrentFolderChanged || id == Initialising) currentInHandler.push_back(current());
    };
    Variant r = search(t.root());

    EXPECT_EQ("IiSFEEPFEPFEPC", log.outline());
    EXPECT_EQ(3, log.folderCount());
    std::vector<float> p = log.progress();
    ASSERT_EQ(3u, p.size());
    EXPECT_FLOAT_EQ(33.33333f, p[0]);
    EXPECT_FLOAT_EQ(66.66667f, p[1]);
    EXPECT_EQ(100.0f, p[2]);
    EXPECT_EQ(static_cast<float>(1.0 / 3 * 100), p[0]) << "k / n x 100 rounded once to single precision";
    EXPECT_EQ((Strings{t.root(), t(L"one"), t(L"two")}), log.texts(CurrentFolderChanged));
    const Strings files{t(L"a.txt"), t(L"b.dat"), t(L"one\\c.txt"), t(L"two\\d.TXT")};
    EXPECT_EQ(files, log.texts(ExamineFile));
    EXPECT_EQ(files, stringArray(r));
    EXPECT_EQ((Strings{L"", t.root(), t(L"one"), t(L"two")}), currentInHandler)
        << "CurrentFolder is empty at the start and set before CurrentFolderChanged";
    EXPECT_EQ(L"", current()) << "and empty again at the end";
}

TEST_F(FileSearchTest, IndexFileExistsDuringTheSearchOnlyAndSurvivesNothing) {
    Tree t;
    threeFolders(t);
    const Strings before = indexFiles();
    Strings during;
    log.onEvent = [&](DISPID id, const std::vector<Variant>&) {
        if (id == Started) during = indexFiles();
    };
    search(t.root());
    EXPECT_EQ(before.size() + 1, during.size()) << "one index file of GUID name while the search runs";
    EXPECT_EQ(before, indexFiles()) << "deleted afterwards";

    // Also when the tree does not exist.
    log.onEvent = nullptr;
    search(t(L"missing"));
    EXPECT_EQ(before, indexFiles());
}

TEST_F(FileSearchTest, SearchFolderIsSearchFolderExWithTheIndex) {
    Tree t;
    threeFolders(t);
    Bstr p(t.root());
    BSTR b = p.get();
    Variant r;
    ASSERT_EQ(S_OK, fs->SearchFolder(&b, nullptr, &r));
    EXPECT_EQ(3, log.folderCount());
    EXPECT_EQ(4u, stringArray(r).size());
}

TEST_F(FileSearchTest, FilesAddedOrRemovedBetweenThePassesAreSeen) {
    Tree t;
    threeFolders(t);
    t.file(L"two\\gone.txt");
    log.onEvent = [&](DISPID id, const std::vector<Variant>&) {
        if (id != Started) return;
        // After the index pass has listed the folders, before the search reaches them.
        t.file(L"one\\new.txt");
        DeleteFileW(t(L"two\\gone.txt").c_str());
    };
    Variant r = search(t.root());
    EXPECT_EQ((Strings{t(L"a.txt"), t(L"b.dat"), t(L"one\\c.txt"), t(L"one\\new.txt"), t(L"two\\d.TXT")}),
              stringArray(r));

    // Without the index a folder is listed after CurrentFolderChanged.
    log.onEvent = [&](DISPID id, const std::vector<Variant>& args) {
        if (id == CurrentFolderChanged && str(args[0]) == t(L"two")) t.file(L"two\\late.txt");
    };
    r = search(t.root(), nullptr, false);
    EXPECT_EQ(t(L"two\\late.txt"), stringArray(r).back());
}

// ------------------------------------------------------------------ without the index

TEST_F(FileSearchTest, WithoutIndexProgressCountsTheTopFoldersSubtrees) {
    Tree t;
    threeFolders(t);
    t.folder(L"one\\deep").file(L"one\\deep\\e.txt");
    Variant r = search(t.root(), nullptr, false);

    EXPECT_EQ("IiSFEEFEFEPFEPC", log.outline()) << "Initialised(0) before Started; Progress after whole subtrees";
    EXPECT_EQ(0, log.folderCount());
    EXPECT_EQ((std::vector<float>{50.0f, 100.0f}), log.progress());
    EXPECT_EQ((Strings{t.root(), t(L"one"), t(L"one\\deep"), t(L"two")}), log.texts(CurrentFolderChanged));
    EXPECT_EQ((Strings{t(L"a.txt"), t(L"b.dat"), t(L"one\\c.txt"), t(L"one\\deep\\e.txt"), t(L"two\\d.TXT")}),
              stringArray(r))
        << "the same pre-order as with the index";
    EXPECT_EQ(L"", current());
}

TEST_F(FileSearchTest, WithoutIndexATopFolderWithoutSubfoldersRaisesNoProgress) {
    Tree t;
    t.file(L"only.txt");
    search(t.root(), nullptr, false);
    EXPECT_EQ("IiSFEC", log.outline());
}

TEST_F(FileSearchTest, BothModesGiveTheSameFilesForADeeperTree) {
    Tree t;
    for (const wchar_t* f : {L"b", L"a", L"a\\z", L"a\\y", L"a\\y\\x", L"c"}) {
        t.folder(f);
        t.file(std::wstring(f) + L"\\f1.txt").file(std::wstring(f) + L"\\f2.txt");
    }
    Variant withIndex = search(t.root());
    Strings folders1 = log.texts(CurrentFolderChanged);
    log.calls.clear();
    Variant without = search(t.root(), nullptr, false);
    EXPECT_EQ(12u, stringArray(withIndex).size());
    EXPECT_EQ(stringArray(withIndex), stringArray(without));
    EXPECT_EQ(folders1, log.texts(CurrentFolderChanged));
    EXPECT_EQ(7, static_cast<int>(folders1.size()));
}

// ------------------------------------------------------------------ Cancel

TEST_F(FileSearchTest, CancelLeavesFilesOutButEveryFileIsStillExamined) {
    Tree t;
    threeFolders(t);
    for (bool index : {true, false}) {
        log.calls.clear();
        log.cancel = [](const std::wstring&) { return true; };
        Variant r = search(t.root(), nullptr, index);
        EXPECT_EQ(VT_EMPTY, V_VT(&r)) << "Empty when no file was accepted";
        EXPECT_EQ(4u, log.texts(ExamineFile).size());

        log.calls.clear();
        log.cancel = [](const std::wstring& f) { return f.find(L".txt") != std::wstring::npos; };
        r = search(t.root(), nullptr, index);
        EXPECT_EQ((Strings{t(L"b.dat"), t(L"two\\d.TXT")}), stringArray(r)) << "only the files the sink let through";
    }
}

TEST_F(FileSearchTest, CancelOfOneSinkIsSeenByTheNext) {
    Tree t;
    t.file(L"x.txt");
    SearchLog second;
    second.connect(fs.get(), DIID___FileSearch);
    bool secondSawCancel = false;
    log.cancel = [](const std::wstring&) { return true; };
    second.handler = [&](DISPID id, DISPPARAMS* p) {
        if (id == ExamineFile) secondSawCancel = *V_BOOLREF(&p->rgvarg[0]) == VARIANT_TRUE;
    };
    Variant r = search(t.root());
    EXPECT_TRUE(secondSawCancel);
    EXPECT_EQ(VT_EMPTY, V_VT(&r));
}

// ------------------------------------------------------------------ paths and criteria

TEST_F(FileSearchTest, TrailingBackslashGivesChildPathsWithOneBackslash) {
    Tree t;
    threeFolders(t);
    for (bool index : {true, false}) {
        log.calls.clear();
        Variant r = search(t.root() + L"\\", nullptr, index);
        EXPECT_EQ((Strings{t.root() + L"\\", t(L"one"), t(L"two")}), log.texts(CurrentFolderChanged));
        EXPECT_EQ((Strings{t(L"a.txt"), t(L"b.dat"), t(L"one\\c.txt"), t(L"two\\d.TXT")}), stringArray(r));
    }
}

TEST_F(FileSearchTest, CriteriaFormsMatchCaseInsensitively) {
    Tree t;
    threeFolders(t);
    auto names = [&](VARIANT* criteria) {
        log.calls.clear();
        Strings out;
        for (const std::wstring& f : stringArray(search(t.root(), criteria))) out.push_back(f.substr(t.root().size() + 1));
        return out;
    };
    const Strings all{L"a.txt", L"b.dat", L"one\\c.txt", L"two\\d.TXT"};
    Variant missing;
    V_VT(&missing) = VT_ERROR;
    V_ERROR(&missing) = DISP_E_PARAMNOTFOUND;
    EXPECT_EQ(all, names(nullptr));
    EXPECT_EQ(all, names(&missing));

    Variant one(L"*.TXT");
    EXPECT_EQ((Strings{L"a.txt", L"one\\c.txt", L"two\\d.TXT"}), names(&one));
    Variant byRef;
    V_VT(&byRef) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(&byRef) = &one;
    EXPECT_EQ((Strings{L"a.txt", L"one\\c.txt", L"two\\d.TXT"}), names(&byRef));

    // An array: each file once, in listing order, whichever pattern matches it.
    SAFEARRAY* sa = SafeArrayCreateVector(VT_VARIANT, 0, 4);
    Variant p1(L"?.DAT"), p2(L""), p3(L"[c-d]*"), p4(L"*");
    LONG i = 0;
    for (Variant* p : {&p1, &p2, &p3}) {
        SafeArrayPutElement(sa, &i, p);
        ++i;
    }
    Variant list;
    V_VT(&list) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&list) = sa;
    EXPECT_EQ((Strings{L"b.dat", L"one\\c.txt", L"two\\d.TXT"}), names(&list)) << "an empty pattern matches nothing";
    SafeArrayPutElement(sa, &i, &p4);
    EXPECT_EQ(all, names(&list));

    // Other values give no files, but the folders are still searched.
    Variant empty, number(5L), blank(L""), invalid(L"[a");
    for (Variant* v : {&empty, &number, &blank, &invalid}) {
        EXPECT_EQ(Strings{}, names(v));
        EXPECT_EQ(3u, log.texts(CurrentFolderChanged).size());
        EXPECT_EQ(0u, log.texts(ExamineFile).size());
    }
}

TEST_F(FileSearchTest, UnicodeAndHiddenFilesKeepTheirNames) {
    Tree t;
    const std::wstring folder = L"\u00dcn\u00efc\u00f8d\u00e9 \u65e5\u672c";
    const std::wstring file = folder + L"\\\u0444\u0430\u0439\u043b \u03a9.txt";
    t.folder(folder).file(file).file(L"hidden.txt", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    for (bool index : {true, false}) {
        log.calls.clear();
        Variant r = search(t.root(), nullptr, index);
        EXPECT_EQ((Strings{t(L"hidden.txt"), t(file)}), stringArray(r));
        EXPECT_EQ((Strings{t.root(), t(folder)}), log.texts(CurrentFolderChanged));
    }
}

TEST_F(FileSearchTest, EmptyOrMissingPathExaminesNothing) {
    Tree t;
    for (const std::wstring& path : {std::wstring(), t(L"missing"), t(L"file.txt")}) {
        if (path == t(L"file.txt")) t.file(L"file.txt");
        log.calls.clear();
        Variant r = search(path, nullptr, true);
        EXPECT_EQ(VT_EMPTY, V_VT(&r));
        EXPECT_EQ(path.empty() ? "IC" : "IiSC", log.outline());
        EXPECT_EQ(path.empty() ? -1 : 0, log.folderCount());
        log.calls.clear();
        r = search(path, nullptr, false);
        EXPECT_EQ(VT_EMPTY, V_VT(&r));
        EXPECT_EQ("IiSC", log.outline());
    }
}

// ------------------------------------------------------------------ misbehaviour

// A sink whose every handler fails, as a script's handler raising an error does.
class FailingSink : public SearchLog {
public:
    STDMETHODIMP Invoke(DISPID id, REFIID r, LCID l, WORD f, DISPPARAMS* p, VARIANT* v, EXCEPINFO* e,
                        UINT* a) override {
        SearchLog::Invoke(id, r, l, f, p, v, e, a);
        if (e) {
            e->scode = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, 11);
            e->bstrDescription = SysAllocString(L"Division by zero");
        }
        return DISP_E_EXCEPTION;
    }
};

TEST_F(FileSearchTest, FailingHandlersDoNotStopTheSearch) {
    Tree t;
    threeFolders(t);
    log.disconnect();
    FailingSink failing;
    failing.connect(fs.get(), DIID___FileSearch);
    Variant r = search(t.root());
    EXPECT_EQ("IiSFEEPFEPFEPC", failing.outline());
    EXPECT_EQ(4u, stringArray(r).size());
}

TEST_F(FileSearchTest, FoldersThatVanishEndOnlyTheirPartOfTheSearch) {
    Tree t;
    threeFolders(t);
    log.onEvent = [&](DISPID id, const std::vector<Variant>& args) {
        if (id == CurrentFolderChanged && str(args[0]) == t.root()) removeTree(t(L"one"));
    };
    Variant r = search(t.root());
    EXPECT_EQ((Strings{t.root(), t(L"one"), t(L"two")}), log.texts(CurrentFolderChanged))
        << "every indexed line is entered";
    EXPECT_EQ((Strings{t(L"a.txt"), t(L"b.dat"), t(L"two\\d.TXT")}), stringArray(r));
    EXPECT_EQ(100.0f, log.progress().back());

    Tree u;
    threeFolders(u);
    log.calls.clear();
    log.onEvent = [&](DISPID id, const std::vector<Variant>& args) {
        // The root is listed by now, "one" among its sub-folders.
        if (id == ExamineFile && str(args[0]) == u(L"a.txt")) removeTree(u(L"one"));
    };
    r = search(u.root(), nullptr, false);
    EXPECT_EQ((Strings{u.root(), u(L"two")}), log.texts(CurrentFolderChanged));
    EXPECT_EQ((std::vector<float>{50.0f, 100.0f}), log.progress()) << "a vanished top sub-folder still counts";
    EXPECT_EQ("IiSFEEPFEPC", log.outline());
}

TEST_F(FileSearchTest, AHandlerMayReleaseTheObjectOrSearchAgain) {
    Tree t;
    threeFolders(t);
    // A nested search from a handler runs inside the current one.
    int nested = 0;
    log.onEvent = [&](DISPID id, const std::vector<Variant>&) {
        if (id == Started && nested++ == 0) {
            Bstr p(t(L"two"));
            BSTR b = p.get();
            Variant inner;
            fs->SearchFolderEx(&b, nullptr, nullptr, &inner);
            EXPECT_EQ((Strings{t(L"two\\d.TXT")}), stringArray(inner));
        }
    };
    Variant r = search(t.root());
    EXPECT_EQ(4u, stringArray(r).size());
    EXPECT_EQ(L"", current());

    // The client lets go of its last reference in the middle of a search.
    log.onEvent = [&](DISPID id, const std::vector<Variant>&) {
        if (id == ExamineFile && fs) {
            log.disconnect();
            fs.reset();
        }
    };
    Bstr p(t.root());
    BSTR b = p.get();
    Variant out;
    _FileSearch* raw = fs.get();
    EXPECT_EQ(S_OK, raw->SearchFolderEx(&b, nullptr, nullptr, &out));
    EXPECT_FALSE(fs);
    EXPECT_EQ(4u, stringArray(out).size()) << "the search went on to its end";
}

// A window of the client's, to see its messages handled while a search runs.
LRESULT CALLBACK countingProc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (m == WM_APP) ++*reinterpret_cast<int*>(GetWindowLongPtrW(w, GWLP_USERDATA));
    return DefWindowProcW(w, m, wp, lp);
}

TEST_F(FileSearchTest, TheClientsMessagesAreHandledDuringTheSearch) {
    Tree t;
    threeFolders(t);
    WNDCLASSW wc{};
    wc.lpfnWndProc = countingProc;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = L"TovaSearchTestWindow";
    RegisterClassW(&wc);
    HWND w = CreateWindowW(wc.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, wc.hInstance, nullptr);
    ASSERT_TRUE(w);
    int handled = 0;
    SetWindowLongPtrW(w, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&handled));
    for (bool index : {true, false}) {
        handled = 0;
        PostMessageW(w, WM_APP, 0, 0);
        int seenAtComplete = -1;
        log.onEvent = [&](DISPID id, const std::vector<Variant>&) {
            if (id == Complete) seenAtComplete = handled;
        };
        search(t.root(), nullptr, index);
        EXPECT_EQ(1, seenAtComplete) << "posted before the search, handled inside it";
    }
    DestroyWindow(w);
    UnregisterClassW(wc.lpszClassName, wc.hInstance);
}

// ------------------------------------------------------------------ late bound

TEST_F(FileSearchTest, LateBoundWithScriptArgumentsAndDefaultIndex) {
    Tree t;
    threeFolders(t);
    ComPtr<IDispatch> d = fs.as<IDispatch>(IID_IDispatch);
    Variant path(t.root().c_str()), criteria(L"*.txt");
    CallResult r;
    call(r, d.get(), L"SearchFolderEx", DISPATCH_METHOD, {vRef(&path), vRef(&criteria)});
    ASSERT_EQ(S_OK, r.hr);
    EXPECT_EQ(3, log.folderCount()) << "fCreateIndex left out: True";
    EXPECT_EQ((Strings{t(L"a.txt"), t(L"one\\c.txt"), t(L"two\\d.TXT")}), stringArray(r.value));

    CallResult none;
    Variant missing(t(L"nothing").c_str());
    call(none, d.get(), L"SearchFolder", DISPATCH_METHOD, {vRef(&missing)});
    ASSERT_EQ(S_OK, none.hr);
    EXPECT_EQ(VT_EMPTY, V_VT(&none.value));

    CallResult folder;
    call(folder, d.get(), L"CurrentFolder", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(L"", str(folder.value));
}
