// FileSearch: searches a folder tree for files matching criteria and reports
// its work through events (Initialising, Initialised, Started,
// CurrentFolderChanged, ExamineFile with a per-file Cancel, Progress,
// Complete), over the folder-walk module.
#pragma once

#include "../frame/library_frame.h"

#include <string>

namespace tova {

class FileSearch final : public Object<FileSearch, _FileSearch> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP get_CurrentFolder(BSTR* pRet) override;
    STDMETHODIMP SearchFolder(BSTR* Path, VARIANT* Criteria, VARIANT* pRet) override;
    STDMETHODIMP SearchFolderEx(BSTR* Path, VARIANT* Criteria, VARIANT_BOOL* fCreateIndex, VARIANT* pRet) override;

private:
    friend class Object<FileSearch, _FileSearch>;
    friend class FileSearchEvents;
    FileSearch() = default;

    void search(BSTR* path, VARIANT* criteria, bool createIndex, VARIANT* result);

    std::wstring currentFolder_;
};

}  // namespace tova
