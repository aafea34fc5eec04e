' FileSearch and RegistryMethods as a VBScript user sees them: a folder tree
' searched with criteria in both modes (and listed by FileMethods), and registry values written, read,
' listed and deleted under a test key of HKEY_CURRENT_USER that the script
' removes again. The last line is "files.vbs: OK" when every check passed (a
' run-time error ends a script silently under Wine; scripts cannot receive
' events there, so the events are tested from C++).
Option Explicit

Const HKCU = &H80000001

Dim failures: failures = 0
Sub Check(ok, what)
    If Not ok Then
        failures = failures + 1
        WScript.Echo "FAILED: " & what
    End If
End Sub

' The results of FileSearch and GetAllSubKeys are String arrays (VarType
' vbArray + vbString). Windows' script engines index them; Wine's (8) cannot
' (UBound, For Each and indexing fail with an error), so under Wine the script
' checks their type and the C++ tests check their contents.
Const StringArray = 8200
Dim canIndex: canIndex = True

' The paths of an array after the root, joined with "|"; "" where the engine
' cannot index a String array.
Function Relative(a, root)
    Dim i, s
    If Not IsArray(a) Then Relative = "(" & TypeName(a) & ")": Exit Function
    If Not canIndex Then Relative = "": Exit Function
    For i = LBound(a) To UBound(a)
        If i > LBound(a) Then s = s & "|"
        s = s & Mid(a(i), Len(root) + 2)
    Next
    Relative = s
End Function

' True when the engine can index the String array `a`.
Function Indexable(a)
    Dim n
    On Error Resume Next
    n = UBound(a)
    Indexable = (Err.Number = 0)
    Err.Clear
End Function

' Compares a result with what it should be: the type always, the paths where
' the engine can read them.
Sub CheckFiles(r, root, expected, what)
    Check VarType(r) = StringArray, what & ": a String array, got VarType " & VarType(r)
    If canIndex Then Check Relative(r, root) = expected, what & ": " & Relative(r, root)
End Sub

' --- a small tree: root\a.txt, root\b.LOG, root\one\c.txt, root\two\d.txt
Dim fso, root, fs, r, ci
Set fso = CreateObject("Scripting.FileSystemObject")
root = fso.GetSpecialFolder(2) & "\files-vbs-" & fso.GetTempName()
fso.CreateFolder root
fso.CreateFolder root & "\one"
fso.CreateFolder root & "\two"
fso.CreateTextFile(root & "\a.txt").Close
fso.CreateTextFile(root & "\b.LOG").Close
fso.CreateTextFile(root & "\one\c.txt").Close
fso.CreateTextFile(root & "\two\d.txt").Close

Set fs = CreateObject("TOVA32.FileSearch")
Check fs.CurrentFolder = "", "CurrentFolder is empty before a search"
r = fs.SearchFolder(root)
canIndex = Indexable(r)
If Not canIndex Then WScript.Echo "note: this script engine cannot index String arrays; their contents are not checked"
CheckFiles r, root, "a.txt|b.LOG|one\c.txt|two\d.txt", "SearchFolder"
If canIndex Then Check LBound(r) = 0, "the result is zero-based"
CheckFiles fs.SearchFolder(root, "*.log"), root, "b.LOG", "criteria are case-insensitive"
CheckFiles fs.SearchFolderEx(root & "\", Array("*.log", "?.TXT"), False), root, _
           "a.txt|b.LOG|one\c.txt|two\d.txt", "array criteria without the index"
ci = False
CheckFiles fs.SearchFolderEx(root, "c*", ci), root, "one\c.txt", "fCreateIndex in a variable"
Check IsEmpty(fs.SearchFolder(root & "\missing")), "a missing folder gives Empty"
Check IsEmpty(fs.SearchFolder("")), "an empty path gives Empty"
Check IsEmpty(fs.SearchFolder(root, Empty)), "Empty criteria list no files"
Check fs.CurrentFolder = "", "CurrentFolder is empty after a search"

' FileMethods' listings are Variant arrays, which every engine indexes, Wine's too.
Dim fm: Set fm = CreateObject("TOVA32.FileMethods")
Dim listed
r = fm.GetFiles(root, "*.txt", True)
For i = 0 To UBound(r): listed = listed & "|" & r(i): Next
Check listed = "|a.txt|one\c.txt|two\d.txt", "GetFiles indexed by the script: " & listed
Check UBound(fm.GetSubfolders(root, "")) = -1, "GetSubfolders with the pattern """" lists nothing"
Check IsEmpty(fm.GetFiles(root & "\missing")), "GetFiles of a missing folder gives Empty"
Check fm.GetNewestFile(root, "a*") = root & "\a.txt", "GetNewestFile"
fso.DeleteFolder root, True

' --- the registry
Dim rm, k, b, all, i, names
Set rm = CreateObject("TOVA32.RegistryMethods")
k = "Software\TOVA200 tests\files.vbs"
Check rm.UpdateKey(HKCU, k, "Text", "hello"), "UpdateKey"
Check rm.GetKeyValue(HKCU, k, "Text") = "hello", "GetKeyValue"
Check rm.GetKeyValue(HKCU, k, "Missing", 42) = "42", "GetKeyValue default"
Check rm.UpdateKey(HKCU, k, "Text", ""), "UpdateKey with an empty text deletes"
Check rm.GetKeyValue(HKCU, k, "Text") = "", "deleted"
Check Not rm.UpdateKey(HKCU, "", "Text", "x"), "an empty key name is refused"

Check rm.UpdateKeyEx(HKCU, k, "Bytes", Array(1, 2, 250)), "UpdateKeyEx from a Variant array"
Check rm.GetKeyValueEx(HKCU, k, "Bytes", b), "GetKeyValueEx"
Check UBound(b) = 2 And b(0) = 1 And b(2) = 250, "GetKeyValueEx fills the variable"

Check rm.UpdateKey(HKCU, k & "\sub1", "v", "1") And rm.UpdateKey(HKCU, k & "\sub2", "v", "2"), "subkeys"
names = rm.GetAllSubKeys(HKCU, k)
Check VarType(names) = StringArray, "GetAllSubKeys gives a String array"
If canIndex Then Check UBound(names) = 1 And names(0) = "sub1" And names(1) = "sub2", "GetAllSubKeys"
Check IsEmpty(rm.GetAllSubKeys(HKCU, k & "\missing")), "GetAllSubKeys of a missing key"
names = rm.GetAllSubKeys(HKCU, k & "\sub1")
Check VarType(names) = StringArray, "GetAllSubKeys without subkeys is still an array"
If canIndex Then Check UBound(names) = -1, "GetAllSubKeys without subkeys has no elements"

Check rm.UpdateKey(HKCU, k, "Name", "value"), "a second value"
all = rm.GetAllKeyValues(HKCU, k)
Check UBound(all, 1) = 1 And UBound(all, 2) = 1, "GetAllKeyValues is (0 To 1, 0 To n - 1)"
For i = 0 To UBound(all, 2)
    If all(0, i) = "Name" Then Check all(1, i) = "value", "GetAllKeyValues text data"
    If all(0, i) = "Bytes" Then Check VarType(all(1, i)) = 8209, "GetAllKeyValues byte data is a Byte array"
Next

Check rm.DeleteAllKeyValues(HKCU, k), "DeleteAllKeyValues"
Check IsEmpty(rm.GetAllKeyValues(HKCU, k & "\missing")), "GetAllKeyValues of a missing key"
Check UBound(rm.GetAllKeyValues(HKCU, k), 2) = -1, "no values left"
Check rm.DeleteKeyValue(HKCU, k & "\sub1", "v"), "DeleteKeyValue"
Check rm.DeleteKey(HKCU, k & "\sub1") And rm.DeleteKey(HKCU, k & "\sub2"), "DeleteKey of the subkeys"
Check rm.DeleteKey(HKCU, k), "DeleteKey"
rm.DeleteKey HKCU, "Software\TOVA200 tests"
Check IsEmpty(rm.GetAllSubKeys(HKCU, k)), "the test key is gone"

If failures = 0 Then
    WScript.Echo "files.vbs: OK"
Else
    WScript.Echo "files.vbs: " & failures & " check(s) failed"
End If
