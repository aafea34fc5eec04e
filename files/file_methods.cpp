#include "file_methods.h"

#include "drives.h"
#include "file_info.h"
#include "file_listing.h"
#include "file_ops.h"
#include "long_paths.h"
#include "path_forms.h"
#include "text_files.h"

namespace tova {

const ClassIdentity FileMethods::kClass = {L"FileMethods", &CLSID_FileMethods, &IID__FileMethods, nullptr};

HRESULT createFileMethods(REFIID riid, void** ppv) { return FileMethods::create(riid, ppv); }

namespace {

// 1601-01-01, the first day a file time can hold.
const DATE kFirstFileDate = -109205.0;

std::wstring text(const BSTR* s) {
    BSTR b = *required(s);
    return b ? std::wstring(b, SysStringLen(b)) : std::wstring();
}

std::wstring value(BSTR b) { return b ? std::wstring(b, SysStringLen(b)) : std::wstring(); }

long encoding(TextEncodingConstants e) {
    const long v = e;
    if (v < tovaEncodingAuto || v > tovaEncodingOEM) raise(kInvalidArgument);
    return v;
}

// A Double declared as a Variant: the type library cannot hold a Double's
// default. Missing is 0; what does not convert is a type mismatch.
double number(const VARIANT& v) {
    if (isMissing(&v)) return 0;
    Variant d;
    if (FAILED(VariantChangeType(&d, const_cast<VARIANT*>(&v), 0, VT_R8))) raise(kTypeMismatch);
    return V_R8(&d);
}

// A one-dimensional Byte array, directly or by reference; anything else is a type mismatch.
SAFEARRAY* byteArray(VARIANT* v) {
    while (V_VT(v) == (VT_BYREF | VT_VARIANT)) v = V_VARIANTREF(v);
    SAFEARRAY* sa = nullptr;
    if (V_VT(v) == (VT_ARRAY | VT_UI1)) sa = V_ARRAY(v);
    else if (V_VT(v) == (VT_BYREF | VT_ARRAY | VT_UI1)) sa = *V_ARRAYREF(v);
    if (!sa || SafeArrayGetDim(sa) != 1) raise(kTypeMismatch);
    return sa;
}

}  // namespace

STDMETHODIMP FileMethods::FileExists(BSTR* FileName, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::fileExists(text(FileName)));
    });
}

STDMETHODIMP FileMethods::FolderExists(BSTR* FolderName, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::folderExists(text(FolderName)));
    });
}

STDMETHODIMP FileMethods::DriveExists(BSTR* Drive, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::driveExists(text(Drive)));
    });
}

STDMETHODIMP FileMethods::IsDriveReady(BSTR* Drive, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::isDriveReady(text(Drive)));
    });
}

STDMETHODIMP FileMethods::IsFolderEmpty(BSTR* FolderName, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::isFolderEmpty(text(FolderName)));
    });
}

STDMETHODIMP FileMethods::IsFileInUse(BSTR* FileName, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::isFileInUse(text(FileName)));
    });
}

STDMETHODIMP FileMethods::GetFileSize(BSTR* FileName, double* pRet) {
    return guard([&] {
        *required(pRet) = files::fileSize(text(FileName));
    });
}

STDMETHODIMP FileMethods::GetFolderSize(BSTR* FolderName, VARIANT_BOOL IncludeSubfolders, double* pRet) {
    return guard([&] {
        *required(pRet) = files::folderSize(text(FolderName), fromVB(IncludeSubfolders));
    });
}

STDMETHODIMP FileMethods::GetFileDate(BSTR* Path, FileDateConstants Which, DATE* pRet) {
    return guard([&] {
        const long which = Which;
        if (which != tovaFileDateCreated && which != tovaFileDateAccessed && which != tovaFileDateModified)
            raise(kInvalidArgument);
        *required(pRet) = files::fileDate(text(Path), which);
    });
}

STDMETHODIMP FileMethods::SetFileDate(BSTR* Path, DATE NewDate, FileDateConstants Which, VARIANT_BOOL* pRet) {
    return guard([&] {
        const long which = Which;
        if (which < 1 || which > tovaFileDateAll || NewDate < kFirstFileDate) raise(kInvalidArgument);
        *required(pRet) = toVB(files::setFileDate(text(Path), NewDate, which));
    });
}

STDMETHODIMP FileMethods::GetAttributes(BSTR* Path, FileAttributeConstants* pRet) {
    return guard([&] {
        *required(pRet) = static_cast<FileAttributeConstants>(files::attributes(text(Path)));
    });
}

STDMETHODIMP FileMethods::SetAttributes(BSTR* Path, FileAttributeConstants Attributes, VARIANT_BOOL* pRet) {
    return guard([&] {
        if (static_cast<long>(Attributes) < 0) raise(kInvalidArgument);
        *required(pRet) = toVB(files::setAttributes(text(Path), Attributes));
    });
}

STDMETHODIMP FileMethods::SetReadOnly(BSTR* Path, VARIANT_BOOL ReadOnly, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::setAttributeBit(text(Path), FILE_ATTRIBUTE_READONLY, fromVB(ReadOnly)));
    });
}

STDMETHODIMP FileMethods::SetHidden(BSTR* Path, VARIANT_BOOL Hidden, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::setAttributeBit(text(Path), FILE_ATTRIBUTE_HIDDEN, fromVB(Hidden)));
    });
}

STDMETHODIMP FileMethods::CopyFile(BSTR* Source, BSTR* Destination, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::copyFile(text(Source), text(Destination), fromVB(Overwrite)));
    });
}

STDMETHODIMP FileMethods::MoveFile(BSTR* Source, BSTR* Destination, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::moveFile(text(Source), text(Destination), fromVB(Overwrite)));
    });
}

STDMETHODIMP FileMethods::RenameFile(BSTR* FileName, BSTR* NewName, VARIANT_BOOL* pRet) {
    return guard([&] {
        const std::wstring name = text(NewName);
        files::requireValidName(name);
        *required(pRet) = toVB(files::renameFile(text(FileName), name));
    });
}

STDMETHODIMP FileMethods::DeleteFile(BSTR* FileName, VARIANT_BOOL ToRecycleBin, VARIANT_BOOL Force, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::deleteFile(text(FileName), fromVB(ToRecycleBin), fromVB(Force)));
    });
}

STDMETHODIMP FileMethods::CopyFolder(BSTR* Source, BSTR* Destination, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::copyFolder(text(Source), text(Destination), fromVB(Overwrite)));
    });
}

STDMETHODIMP FileMethods::MoveFolder(BSTR* Source, BSTR* Destination, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::moveFolder(text(Source), text(Destination)));
    });
}

STDMETHODIMP FileMethods::RenameFolder(BSTR* FolderName, BSTR* NewName, VARIANT_BOOL* pRet) {
    return guard([&] {
        const std::wstring name = text(NewName);
        files::requireValidName(name);
        *required(pRet) = toVB(files::renameFolder(text(FolderName), name));
    });
}

STDMETHODIMP FileMethods::DeleteFolder(BSTR* FolderName, VARIANT_BOOL ToRecycleBin, VARIANT_BOOL Force, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::deleteFolder(text(FolderName), fromVB(ToRecycleBin), fromVB(Force)));
    });
}

STDMETHODIMP FileMethods::CreateFolder(BSTR* FolderName, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::createFolder(text(FolderName)));
    });
}

STDMETHODIMP FileMethods::DeleteFiles(BSTR* FolderName, VARIANT* Pattern, VARIANT_BOOL IncludeSubfolders, VARIANT_BOOL ToRecycleBin, VARIANT_BOOL Force, LONG* pRet) {
    return guard([&] {
        const folders::Criteria criteria(required(Pattern));
        *required(pRet) = files::deleteFiles(text(FolderName), criteria, fromVB(IncludeSubfolders), fromVB(ToRecycleBin),
                                             fromVB(Force));
    });
}

STDMETHODIMP FileMethods::GetFiles(BSTR* FolderName, VARIANT* Pattern, VARIANT_BOOL IncludeSubfolders, VARIANT_BOOL FullPaths, VARIANT* pRet) {
    return guard([&] {
        std::vector<Bstr> names;
        VariantInit(required(pRet));
        if (files::listFiles(text(FolderName), folders::Criteria(Pattern), fromVB(IncludeSubfolders), fromVB(FullPaths), names))
            toVariantArray(names, pRet);
    });
}

STDMETHODIMP FileMethods::GetSubfolders(BSTR* FolderName, VARIANT* Pattern, VARIANT_BOOL IncludeSubfolders, VARIANT_BOOL FullPaths, VARIANT* pRet) {
    return guard([&] {
        std::vector<Bstr> names;
        VariantInit(required(pRet));
        if (files::listSubfolders(text(FolderName), folders::Criteria(Pattern), fromVB(IncludeSubfolders),
                                  fromVB(FullPaths), names))
            toVariantArray(names, pRet);
    });
}

STDMETHODIMP FileMethods::GetNewestFile(BSTR* FolderName, VARIANT* Pattern, VARIANT_BOOL IncludeSubfolders, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::newestFile(text(FolderName), folders::Criteria(Pattern), fromVB(IncludeSubfolders))).detach();
    });
}

STDMETHODIMP FileMethods::ReadTextFile(BSTR* FileName, TextEncodingConstants Encoding, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        std::wstring content;
        files::readText(text(FileName), encoding(Encoding), content);
        *pRet = Bstr(content).detach();
    });
}

STDMETHODIMP FileMethods::ReadTextLines(BSTR* FileName, TextEncodingConstants Encoding, VARIANT* pRet) {
    return guard([&] {
        std::vector<std::wstring> lines;
        VariantInit(required(pRet));
        if (files::readLines(text(FileName), encoding(Encoding), lines)) toVariantArray(lines, pRet);
    });
}

STDMETHODIMP FileMethods::WriteTextFile(BSTR* FileName, BSTR* Text, TextEncodingConstants Encoding, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::writeText(text(FileName), text(Text), encoding(Encoding), fromVB(Overwrite)));
    });
}

STDMETHODIMP FileMethods::AppendLine(BSTR* FileName, BSTR* Text, TextEncodingConstants Encoding, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::appendLine(text(FileName), text(Text), encoding(Encoding)));
    });
}

STDMETHODIMP FileMethods::CountLines(BSTR* FileName, LONG* pRet) {
    return guard([&] {
        *required(pRet) = files::countLines(text(FileName));
    });
}

STDMETHODIMP FileMethods::ReadBinaryFile(BSTR* FileName, VARIANT Offset, LONG Length, VARIANT* pRet) {
    return guard([&] {
        const double offset = number(Offset);
        if (!(offset >= 0) || Length < -1) raise(kInvalidArgument);
        VariantInit(required(pRet));
        files::readBinary(text(FileName), offset, Length, pRet);
    });
}

STDMETHODIMP FileMethods::WriteBinaryFile(BSTR* FileName, VARIANT* Data, VARIANT_BOOL Overwrite, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::writeBinary(text(FileName), byteArray(required(Data)), fromVB(Overwrite)));
    });
}

STDMETHODIMP FileMethods::CompareFiles(BSTR* FileName1, BSTR* FileName2, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(files::compareFiles(text(FileName1), text(FileName2)));
    });
}

STDMETHODIMP FileMethods::GetFileHash(BSTR* FileName, HashAlgorithmConstants Algorithm, BSTR* pRet) {
    return guard([&] {
        const long algorithm = Algorithm;
        if (algorithm < tovaHashMD5 || algorithm > tovaHashSHA512) raise(kInvalidArgument);
        *required(pRet) = nullptr;
        *pRet = Bstr(files::fileHash(text(FileName), algorithm)).detach();
    });
}

STDMETHODIMP FileMethods::GetTempFolder(BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::tempFolder()).detach();
    });
}

STDMETHODIMP FileMethods::CreateTempFile(BSTR Prefix, BSTR Extension, BSTR Folder, BSTR* pRet) {
    return guard([&] {
        const std::wstring prefix = value(Prefix), extension = value(Extension);
        if (files::hasInvalidNameCharacter(prefix) || files::hasInvalidNameCharacter(extension)) raise(kInvalidArgument);
        *required(pRet) = nullptr;
        *pRet = Bstr(files::createTempFile(prefix, extension, value(Folder))).detach();
    });
}

STDMETHODIMP FileMethods::CreateTempFolder(BSTR Prefix, BSTR ParentFolder, BSTR* pRet) {
    return guard([&] {
        const std::wstring prefix = value(Prefix);
        if (files::hasInvalidNameCharacter(prefix)) raise(kInvalidArgument);
        *required(pRet) = nullptr;
        *pRet = Bstr(files::createTempFolder(prefix, value(ParentFolder))).detach();
    });
}

STDMETHODIMP FileMethods::GetUniqueFileName(BSTR* FileName, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::uniqueFileName(text(FileName))).detach();
    });
}

STDMETHODIMP FileMethods::CombinePath(BSTR* Path, BSTR* More, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::combinePath(text(Path), text(More))).detach();
    });
}

STDMETHODIMP FileMethods::GetFullPath(BSTR* Path, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::fullPath(text(Path))).detach();
    });
}

STDMETHODIMP FileMethods::GetRelativePath(BSTR* FromFolder, BSTR* ToPath, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::relativePath(text(FromFolder), text(ToPath))).detach();
    });
}

STDMETHODIMP FileMethods::GetShortPath(BSTR* Path, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::shortPath(text(Path))).detach();
    });
}

STDMETHODIMP FileMethods::GetLongPath(BSTR* Path, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::longPath(text(Path))).detach();
    });
}

STDMETHODIMP FileMethods::GetCanonicalPath(BSTR* Path, VARIANT_BOOL ResolveLinks, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::canonicalPath(text(Path), fromVB(ResolveLinks))).detach();
    });
}

STDMETHODIMP FileMethods::ChangeFileExtension(BSTR* Path, BSTR* NewExtension, BSTR* pRet) {
    return guard([&] {
        const std::wstring extension = text(NewExtension);
        if (files::hasInvalidNameCharacter(extension)) raise(kInvalidArgument);
        *required(pRet) = nullptr;
        *pRet = Bstr(files::changeExtension(text(Path), extension)).detach();
    });
}

STDMETHODIMP FileMethods::MakeValidFileName(BSTR* Name, BSTR Replacement, BSTR* pRet) {
    return guard([&] {
        const std::wstring replacement = value(Replacement);
        if (files::hasInvalidNameCharacter(replacement)) raise(kInvalidArgument);
        *required(pRet) = nullptr;
        *pRet = Bstr(files::makeValidFileName(text(Name), replacement)).detach();
    });
}

STDMETHODIMP FileMethods::GetDrives(VARIANT* pRet) {
    return guard([&] {
        VariantInit(required(pRet));
        toVariantArray(files::driveRoots(), pRet);
    });
}

STDMETHODIMP FileMethods::GetDriveType(BSTR* Drive, DriveTypeConstants* pRet) {
    return guard([&] {
        *required(pRet) = static_cast<DriveTypeConstants>(files::driveType(text(Drive)));
    });
}

STDMETHODIMP FileMethods::GetDriveFreeSpace(BSTR* Drive, double* pRet) {
    return guard([&] {
        *required(pRet) = files::driveFreeSpace(text(Drive));
    });
}

STDMETHODIMP FileMethods::GetDriveTotalSpace(BSTR* Drive, double* pRet) {
    return guard([&] {
        *required(pRet) = files::driveTotalSpace(text(Drive));
    });
}

STDMETHODIMP FileMethods::GetVolumeLabel(BSTR* Drive, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::volumeLabel(text(Drive))).detach();
    });
}

STDMETHODIMP FileMethods::GetVolumeSerialNumber(BSTR* Drive, LONG* pRet) {
    return guard([&] {
        *required(pRet) = files::volumeSerialNumber(text(Drive));
    });
}

STDMETHODIMP FileMethods::GetFileVersion(BSTR* FileName, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::fileVersion(text(FileName))).detach();
    });
}

STDMETHODIMP FileMethods::GetAssociatedProgram(BSTR* FileName, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = Bstr(files::associatedProgram(text(FileName))).detach();
    });
}

}  // namespace tova
