// FileMethods: global, stateless file, folder and drive helpers. Each member
// checks and converts its arguments and calls the module of its group:
// file_info (existence, size, dates, attributes, temporary names),
// file_ops (copy, move, rename, delete, create), file_listing, text_files
// (content), path_forms and drives. See docs/files.md.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class FileMethods final : public Object<FileMethods, _FileMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP FileExists(BSTR* FileName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP FolderExists(BSTR* FolderName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DriveExists(BSTR* Drive, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsDriveReady(BSTR* Drive, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsFolderEmpty(BSTR* FolderName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsFileInUse(BSTR* FileName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetFileSize(BSTR* FileName, double* pRet) override;
    STDMETHODIMP GetFolderSize(BSTR* FolderName, VARIANT_BOOL IncludeSubfolders, double* pRet) override;
    STDMETHODIMP GetFileDate(BSTR* Path, FileDateConstants Which, DATE* pRet) override;
    STDMETHODIMP SetFileDate(BSTR* Path, DATE NewDate, FileDateConstants Which, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetAttributes(BSTR* Path, FileAttributeConstants* pRet) override;
    STDMETHODIMP SetAttributes(BSTR* Path, FileAttributeConstants Attributes, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SetReadOnly(BSTR* Path, VARIANT_BOOL ReadOnly, VARIANT_BOOL* pRet) override;
    STDMETHODIMP SetHidden(BSTR* Path, VARIANT_BOOL Hidden, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CopyFile(BSTR* Source, BSTR* Destination, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) override;
    STDMETHODIMP MoveFile(BSTR* Source, BSTR* Destination, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) override;
    STDMETHODIMP RenameFile(BSTR* FileName, BSTR* NewName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DeleteFile(BSTR* FileName, VARIANT_BOOL ToRecycleBin, VARIANT_BOOL Force, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CopyFolder(BSTR* Source, BSTR* Destination, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) override;
    STDMETHODIMP MoveFolder(BSTR* Source, BSTR* Destination, VARIANT_BOOL* pRet) override;
    STDMETHODIMP RenameFolder(BSTR* FolderName, BSTR* NewName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DeleteFolder(BSTR* FolderName, VARIANT_BOOL ToRecycleBin, VARIANT_BOOL Force, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CreateFolder(BSTR* FolderName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DeleteFiles(BSTR* FolderName, VARIANT* Pattern, VARIANT_BOOL IncludeSubfolders, VARIANT_BOOL ToRecycleBin, VARIANT_BOOL Force, LONG* pRet) override;
    STDMETHODIMP GetFiles(BSTR* FolderName, VARIANT* Pattern, VARIANT_BOOL IncludeSubfolders, VARIANT_BOOL FullPaths, VARIANT* pRet) override;
    STDMETHODIMP GetSubfolders(BSTR* FolderName, VARIANT* Pattern, VARIANT_BOOL IncludeSubfolders, VARIANT_BOOL FullPaths, VARIANT* pRet) override;
    STDMETHODIMP GetNewestFile(BSTR* FolderName, VARIANT* Pattern, VARIANT_BOOL IncludeSubfolders, BSTR* pRet) override;
    STDMETHODIMP ReadTextFile(BSTR* FileName, TextEncodingConstants Encoding, BSTR* pRet) override;
    STDMETHODIMP ReadTextLines(BSTR* FileName, TextEncodingConstants Encoding, VARIANT* pRet) override;
    STDMETHODIMP WriteTextFile(BSTR* FileName, BSTR* Text, TextEncodingConstants Encoding, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) override;
    STDMETHODIMP AppendLine(BSTR* FileName, BSTR* Text, TextEncodingConstants Encoding, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CountLines(BSTR* FileName, LONG* pRet) override;
    STDMETHODIMP ReadBinaryFile(BSTR* FileName, VARIANT Offset, LONG Length, VARIANT* pRet) override;
    STDMETHODIMP WriteBinaryFile(BSTR* FileName, VARIANT* Data, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CompareFiles(BSTR* FileName1, BSTR* FileName2, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetFileHash(BSTR* FileName, HashAlgorithmConstants Algorithm, BSTR* pRet) override;
    STDMETHODIMP GetTempFolder(BSTR* pRet) override;
    STDMETHODIMP CreateTempFile(BSTR Prefix, BSTR Extension, BSTR Folder, BSTR* pRet) override;
    STDMETHODIMP CreateTempFolder(BSTR Prefix, BSTR ParentFolder, BSTR* pRet) override;
    STDMETHODIMP GetUniqueFileName(BSTR* FileName, BSTR* pRet) override;
    STDMETHODIMP CombinePath(BSTR* Path, BSTR* More, BSTR* pRet) override;
    STDMETHODIMP GetFullPath(BSTR* Path, BSTR* pRet) override;
    STDMETHODIMP GetRelativePath(BSTR* FromFolder, BSTR* ToPath, BSTR* pRet) override;
    STDMETHODIMP GetShortPath(BSTR* Path, BSTR* pRet) override;
    STDMETHODIMP GetLongPath(BSTR* Path, BSTR* pRet) override;
    STDMETHODIMP GetCanonicalPath(BSTR* Path, VARIANT_BOOL ResolveLinks, BSTR* pRet) override;
    STDMETHODIMP ChangeFileExtension(BSTR* Path, BSTR* NewExtension, BSTR* pRet) override;
    STDMETHODIMP MakeValidFileName(BSTR* Name, BSTR Replacement, BSTR* pRet) override;
    STDMETHODIMP GetDrives(VARIANT* pRet) override;
    STDMETHODIMP GetDriveType(BSTR* Drive, DriveTypeConstants* pRet) override;
    STDMETHODIMP GetDriveFreeSpace(BSTR* Drive, double* pRet) override;
    STDMETHODIMP GetDriveTotalSpace(BSTR* Drive, double* pRet) override;
    STDMETHODIMP GetVolumeLabel(BSTR* Drive, BSTR* pRet) override;
    STDMETHODIMP GetVolumeSerialNumber(BSTR* Drive, LONG* pRet) override;
    STDMETHODIMP GetFileVersion(BSTR* FileName, BSTR* pRet) override;
    STDMETHODIMP GetAssociatedProgram(BSTR* FileName, BSTR* pRet) override;

private:
    friend class Object<FileMethods, _FileMethods>;
    FileMethods() = default;
};

}  // namespace tova
