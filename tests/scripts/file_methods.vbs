' FileMethods as a VBScript user sees it: information, path forms and drives
' on a scratch folder made with the scripting file-system object. The last
' line is "file_methods.vbs: OK" when every check passed (a run-time error
' ends a script silently under Wine).
Option Explicit

Dim failures: failures = 0
Sub Check(ok, what)
    If Not ok Then
        failures = failures + 1
        WScript.Echo "FAILED: " & what
    End If
End Sub

Dim fm, fso, dir, f, name, d
Set fm = CreateObject("TOVA32.FileMethods")
Set fso = CreateObject("Scripting.FileSystemObject")
dir = fm.CombinePath(fm.GetTempFolder(), "tova_vbs_" & fso.GetTempName())
fso.CreateFolder dir
name = fm.CombinePath(dir, "a.txt")
Set f = fso.CreateTextFile(name): f.Write "12345": f.Close

Check fm.FileExists(name) And Not fm.FileExists(dir) And Not fm.FileExists("NUL"), "FileExists"
Check fm.FolderExists(dir) And Not fm.IsFolderEmpty(dir), "FolderExists, IsFolderEmpty"
Check fm.GetFileSize(name) = 5 And fm.GetFolderSize(dir) = 5, "GetFileSize, GetFolderSize"
Check fm.GetFileSize(dir & "\none") = -1 And fm.GetAttributes(dir & "\none") = -1, "soft failures"
d = #2023-07-01 12:34:56#
Check fm.SetFileDate(name, d) And fm.GetFileDate(name) = d, "SetFileDate reads back"
Check fm.SetReadOnly(name) And (fm.GetAttributes(name) And 1) = 1, "SetReadOnly"
Check fm.SetFileDate(name, d + 1, 7), "SetFileDate on a read-only file"
Check fm.SetAttributes(name, 128) And fm.GetAttributes(name) = fso.GetFile(name).Attributes, "SetAttributes"
Check fm.GetUniqueFileName(name) = fm.CombinePath(dir, "a (2).txt"), "GetUniqueFileName"
Check fm.GetRelativePath(dir, name) = "a.txt" And fm.ChangeFileExtension(name, "log") = dir & "\a.log", _
      "GetRelativePath, ChangeFileExtension"
Check fm.MakeValidFileName("con.a:b") = "_con.a_b", "MakeValidFileName"
Check fm.GetLongPath(fm.GetShortPath(name)) = name, "short and long forms"
Check fm.GetDriveType("C:") = 3 And fm.DriveExists("C") And fm.IsDriveReady("C:\"), "drives"
Check fm.GetDriveTotalSpace("C:") = fso.GetDrive("C:").TotalSize, "GetDriveTotalSpace"
Check fm.GetVolumeSerialNumber("C:") = fso.GetDrive("C:").SerialNumber, "GetVolumeSerialNumber"
Check fm.GetFileVersion(name) = "" And fm.GetAssociatedProgram(".zzqq") = "", "GetFileVersion, GetAssociatedProgram"
Check IsArray(fm.GetDrives()), "GetDrives"
Check UBound(fm.GetDrives()) >= 1, "GetDrives can be indexed"

fso.DeleteFolder dir, True
If failures = 0 Then
    WScript.Echo "file_methods.vbs: OK"
Else
    WScript.Echo "file_methods.vbs: " & failures & " check(s) failed"
End If
