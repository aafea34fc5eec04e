// The folder search behind FileSearch: walks a folder tree depth-first, in
// pre-order, and reports every folder it enters and every file that matches
// the criteria to a SearchEvents receiver, which may reject single files.
//
// Enumeration uses the Win32 find functions: they list a folder's entries in
// the same order as the scripting file-system object, at a fraction of its
// cost. Files include hidden and system ones; sub-folders that are reparse
// points (symbolic links, junctions) are not descended into, since a link
// back up the tree would never end.
//
// Two modes:
// - with an index: a first pass writes every folder path into a temporary
//   text file (the index) and counts them; the second pass reads the index
//   line by line and searches each folder, so that Progress climbs evenly to
//   100. The first pass remembers the matching file names of each folder with
//   the folder's last-write time; the second pass lists a folder again only
//   when that time has changed, so the tree is read once while the result
//   stays what a fresh listing gives.
// - without: one recursive pass; Progress after each of the top folder's
//   sub-trees.
//
// Failures inside a search (a folder that vanishes, access denied, an error in
// an event handler) end only that part of it; the search goes on with what it
// can read.
#pragma once

#include "../frame/library_frame.h"
#include "../text/wildcard.h"

#include <string>
#include <vector>

namespace tova {
namespace folders {

// The patterns files are listed by. A missing value is the one pattern "*"; a
// String is one pattern; an array (any dimensions, any element type convertible
// to text) is its elements in storage order; anything else gives no patterns
// and so no files. Empty patterns, patterns that do not convert and invalid
// patterns (an unclosed bracket, a reversed range) match nothing. Matching is
// case-insensitive, on the file name without its folder.
class Criteria {
public:
    // `v` null means missing.
    explicit Criteria(const VARIANT* v);
    bool matches(const wchar_t* name, size_t length) const;
    bool none() const { return patterns_.empty(); }

private:
    void add(const VARIANT* element);
    std::vector<WildcardPattern> patterns_;
    bool all_ = false;   // a pattern is "*": the commonest listing asks nothing of a name
};

// What a search reports, in this order: initialising, initialised, started,
// then per folder enterFolder and examineFile for its files, progress, and
// finally complete (on every call, also after a failure).
class SearchEvents {
public:
    virtual void initialising() = 0;
    virtual void initialised(long folderCount) = 0;
    virtual void started() = 0;
    // A folder is entered: it becomes the current folder.
    virtual void enterFolder(const std::wstring& folder) = 0;
    // A matching file, as its full path; true rejects it (leaves it out of the result).
    virtual bool examineFile(BSTR fullPath) = 0;
    virtual void progress(float percent) = 0;
    // The current folder becomes empty, then Complete.
    virtual void complete() = 0;

protected:
    ~SearchEvents() = default;
};

// Searches the tree at `path` and returns the accepted files' full paths in the
// order they were accepted (an empty list when none was).
std::vector<Bstr> search(const std::wstring& path, const Criteria& criteria, bool createIndex, SearchEvents& events);

// The path of a folder's entry: folder & "\" & name, without the added "\"
// when the folder already ends in one.
std::wstring childPath(const std::wstring& folder, const wchar_t* name, size_t length);

// FindFirstFileExW without short names and with large fetches where the
// system offers them; INVALID_HANDLE_VALUE on failure (see GetLastError).
HANDLE findFirst(const std::wstring& pattern, WIN32_FIND_DATAW& fd);
// "." or "..": a name ending in NUL, or of `length` characters.
bool isDots(const wchar_t* name);
bool isDots(const wchar_t* name, size_t length);

// The index file's name: the temporary folder, "\", a new GUID's 32 hex
// digits, ".TMP". Empty when there is no temporary folder.
std::wstring indexFileName();

// Lets the thread's message loop run: dispatches the pending messages, at most
// every few milliseconds (see folder_walk.cpp). One Yielder serves one search.
class Yielder {
public:
    void operator()();

private:
    bool yielded_ = false;
    DWORD last_ = 0;
};

}  // namespace folders
}  // namespace tova
