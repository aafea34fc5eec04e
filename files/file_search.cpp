#include "file_search.h"

#include "folder_walk.h"

namespace tova {

const ClassIdentity FileSearch::kClass = {L"FileSearch", &CLSID_FileSearch, &IID__FileSearch, &DIID___FileSearch};

HRESULT createFileSearch(REFIID riid, void** ppv) { return FileSearch::create(riid, ppv); }

namespace {

// DISPIDs of __FileSearch.
enum : DISPID {
    kInitialising = 1,
    kInitialised,
    kStarted,
    kCurrentFolderChanged,
    kExamineFile,
    kProgress,
    kComplete,
};

}  // namespace

// The search's reports as the object's events. A handler's failure is its
// own: the connection point delivers to every sink and goes on.
class FileSearchEvents final : public folders::SearchEvents {
public:
    explicit FileSearchEvents(FileSearch& owner) : o_(owner) {}

    void initialising() override {
        raise(kInitialising);
        o_.currentFolder_.clear();
    }
    void initialised(long folderCount) override {
        if (!o_.hasSinks()) return;
        EventArgs args;
        args.val(folderCount);
        o_.raiseEvent(kInitialised, args);
    }
    void started() override { raise(kStarted); }
    void enterFolder(const std::wstring& folder) override {
        o_.currentFolder_ = folder;
        if (!o_.hasSinks()) return;
        Bstr name(folder);
        EventArgs args;
        args.val(name.get());
        o_.raiseEvent(kCurrentFolderChanged, args);
    }
    bool examineFile(BSTR fullPath) override {
        if (!o_.hasSinks()) return false;
        VARIANT_BOOL cancel = VARIANT_FALSE;
        EventArgs args;
        args.val(fullPath).refBool(cancel);
        o_.raiseEvent(kExamineFile, args);
        return cancel != VARIANT_FALSE;
    }
    void progress(float percent) override {
        if (!o_.hasSinks()) return;
        EventArgs args;
        args.valSingle(percent);
        o_.raiseEvent(kProgress, args);
    }
    void complete() override {
        o_.currentFolder_.clear();
        raise(kComplete);
    }

private:
    void raise(DISPID id) {
        if (!o_.hasSinks()) return;
        EventArgs none;
        o_.raiseEvent(id, none);
    }
    FileSearch& o_;
};

STDMETHODIMP FileSearch::get_CurrentFolder(BSTR* pRet) {
    return guard([&] { *required(pRet) = Bstr(currentFolder_).detach(); });
}

STDMETHODIMP FileSearch::SearchFolder(BSTR* Path, VARIANT* Criteria, VARIANT* pRet) {
    return guard([&] { search(Path, Criteria, true, pRet); });
}

STDMETHODIMP FileSearch::SearchFolderEx(BSTR* Path, VARIANT* Criteria, VARIANT_BOOL* fCreateIndex, VARIANT* pRet) {
    // Left out (a null pointer from C++ callers): True.
    return guard([&] { search(Path, Criteria, !fCreateIndex || fromVB(*fCreateIndex), pRet); });
}

void FileSearch::search(BSTR* path, VARIANT* criteria, bool createIndex, VARIANT* result) {
    VariantInit(required(result));
    BSTR p = *required(path);
    // Handlers and dispatched messages may release the client's last reference
    // mid-search: the object lives until the search is over.
    ComPtr<FileSearch> keepAlive(this);
    // Copies: a handler may change the caller's variables while the search runs.
    const std::wstring folder = p ? std::wstring(p, SysStringLen(p)) : std::wstring();
    const folders::Criteria patterns(criteria);
    FileSearchEvents events(*this);
    std::vector<Bstr> found = folders::search(folder, patterns, createIndex, events);

    if (found.empty()) return;   // Empty: nothing accepted
    SafeArray list(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(found.size())));
    if (!list.get()) raise(kOutOfMemory);
    {
        ArrayData data(list.get());
        auto* out = static_cast<BSTR*>(data.data());
        for (size_t i = 0; i < found.size(); ++i) out[i] = found[i].detach();
    }
    V_VT(result) = VT_ARRAY | VT_BSTR;
    V_ARRAY(result) = list.detach();
}

}  // namespace tova
