'' FileMethods as a VBScript user sees it, in a folder of its own under the
' temporary folder that the script removes again: folders made, text written
' and read back in two encodings, dates and attributes set, files listed and
' indexed, copied, moved, renamed and deleted, paths respelt, drives compared
' with the scripting file-system object; and the errors a script gets for
' names and folders it must not use. The last line is "file_methods.vbs: OK"
' when every check passed (a run-time error ends a script silently under Wine).
Option Explicit

Dim failures: failures = 0
Sub Check(ok, what)
    If Not ok Then
        failures = failures + 1
        WScript.Echo "FAILED: " & what
    End If
End Sub

'' The error number of the call before, cleared for the next.
Function ErrorOf()
    ErrorOf = Err.Number
    Err.Clear
End Function

Dim fm: Set fm = CreateObject("TOVA32.FileMethods")
Dim root: root = fm.CreateTempFolder("tovavbs")
Check fm.FolderExists(root), "CreateTempFolder made " & root
Check fm.IsFolderEmpty(root), "a new folder is empty"

' Folders and text.
Dim sub1: sub1 = fm.CombinePath(root, "a\b")
Check fm.CreateFolder(sub1), "CreateFolder with its parents"
' Names and text outside ASCII, built with Chr (Wine's engine lacks ChrW): the
' script file itself is ASCII.
Dim greeting: greeting = "Gr" & Chr(252) & Chr(223) & "e.txt"
Dim omega: omega = Chr(233) & Chr(128) & "mega"
Dim f: f = fm.CombinePath(sub1, greeting)
Check fm.WriteTextFile(f, "one" & vbCrLf & "two"), "WriteTextFile"
Check fm.ReadTextFile(f) = "one" & vbCrLf & "two", "ReadTextFile gives the text back"
Check fm.AppendLine(f, "three"), "AppendLine"
Check fm.CountLines(f) = 3, "CountLines after AppendLine"
Dim lines: lines = fm.ReadTextLines(f)
Check UBound(lines) = 2 And lines(2) = "three", "ReadTextLines is indexable"
Dim u: u = fm.CombinePath(root, "utf16.txt")
Check fm.WriteTextFile(u, omega, 3), "WriteTextFile as UTF-16"
Check fm.ReadTextFile(u) = omega, "Auto reads the byte-order mark"
Check fm.GetFileSize(u) = 14, "GetFileSize of BOM and six UTF-16 characters"
Check Not fm.WriteTextFile(u, "x", -1, False), "no overwrite asked"

' Dates and attributes.
Dim d: d = #2023-07-01 12:34:56#
Check fm.SetFileDate(f, d) And fm.GetFileDate(f) = d, "SetFileDate reads back"
Check fm.SetReadOnly(f) And (fm.GetAttributes(f) And 1) = 1, "SetReadOnly"
Check fm.SetFileDate(f, d + 1, 7), "SetFileDate on a read-only file"
Check Not fm.DeleteFile(f), "a read-only file resists DeleteFile"
Check fm.SetAttributes(f, 128) And (fm.GetAttributes(f) And 1) = 0, "SetAttributes NORMAL clears it"
Check fm.GetUniqueFileName(u) = fm.CombinePath(root, "utf16 (2).txt"), "GetUniqueFileName"
Check fm.GetLongPath(fm.GetShortPath(u)) = u, "short and long forms"

' Listing.
Dim names: names = fm.GetFiles(root, "*.txt", True)
Check UBound(names) = 1, "GetFiles with subfolders finds two files"
Check names(0) = "utf16.txt" And names(1) = "a\b\" & greeting, "the folder's own files first, then its subfolders', relative"
Check UBound(fm.GetFiles(root, "*.htm")) = -1, "no match: no elements"
Check IsEmpty(fm.GetFiles(fm.CombinePath(root, "missing"))), "a missing folder: Empty"
Check fm.GetNewestFile(root, "*", True) <> "", "GetNewestFile"

' Copy, move, rename, delete.
Dim c: c = fm.CombinePath(root, "copy.txt")
Check fm.CopyFile(u, c), "CopyFile"
Check Not fm.CopyFile(f, c), "CopyFile does not overwrite unasked"
Check fm.CopyFile(f, c, True) And fm.CompareFiles(f, c), "CopyFile with Overwrite"
Check fm.RenameFile(c, "renamed.txt"), "RenameFile"
Check fm.MoveFile(fm.CombinePath(root, "renamed.txt"), sub1 & "\"), "MoveFile into a folder"
Check fm.FileExists(fm.CombinePath(sub1, "renamed.txt")), "the moved file is there"
Check fm.CopyFolder(fm.CombinePath(root, "a"), fm.CombinePath(root, "a2")), "CopyFolder"
Check fm.GetFolderSize(fm.CombinePath(root, "a2")) = fm.GetFolderSize(fm.CombinePath(root, "a")), "the copy is as big"
Check fm.DeleteFiles(root, "*.txt", True) = 5, "DeleteFiles counts what it deleted"

' Paths and drives.
Check fm.ChangeFileExtension("C:\x.d\file", ".txt") = "C:\x.d\file.txt", "ChangeFileExtension"
Check fm.GetRelativePath("C:\a\b", "C:\a\c\d.txt") = "..\c\d.txt", "GetRelativePath"
Check fm.MakeValidFileName("a:b*c?.txt ") = "a_b_c_.txt", "MakeValidFileName"
Dim drives: drives = fm.GetDrives()
Check UBound(drives) >= 1, "GetDrives lists C: and Z:"
Check fm.GetDriveType("C:") = 3 And fm.DriveExists("C") And fm.IsDriveReady("C:\"), "C: is fixed and ready"
Dim fso: Set fso = CreateObject("Scripting.FileSystemObject")
Check fm.GetDriveTotalSpace("C:") = fso.GetDrive("C:").TotalSize, "GetDriveTotalSpace as the file-system object"
Check fm.GetVolumeSerialNumber("C:") = fso.GetDrive("C:").SerialNumber, "GetVolumeSerialNumber as the file-system object"
Check fm.GetAssociatedProgram(".zzqq") = "", "no program for an unknown extension"

' What a script must not do: errors it can trap.
On Error Resume Next
fm.RenameFile root, "a:b"
Check ErrorOf() = 5, "RenameFile with an invalid name raises 5"
fm.DeleteFolder "C:\"
Check ErrorOf() = 5, "DeleteFolder of a drive root raises 5"
fm.GetFileDate root, 3
Check ErrorOf() = 5, "GetFileDate with two dates raises 5"
On Error GoTo 0

Check fm.DeleteFolder(root), "DeleteFolder removes the tree"
Check Not fm.FolderExists(root), "nothing left"

If failures = 0 Then
    WScript.Echo "file_methods.vbs: OK"
Else
    WScript.Echo "file_methods.vbs: " & failures & " check(s) failed"
End If
