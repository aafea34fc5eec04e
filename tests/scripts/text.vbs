' The text and data helpers as a VBScript user sees them: StringMethods,
' SortMethods, DictionaryMethods and EncryptMethods with plain variables.
' The last line is "text.vbs: OK" when every check passed (a run-time error
' ends a script silently under Wine).
Option Explicit

Dim failures: failures = 0
Sub Check(ok, what)
    If Not ok Then
        failures = failures + 1
        WScript.Echo "FAILED: " & what
    End If
End Sub

Function Joined(a)
    Dim i, s
    If Not IsArray(a) Then Joined = "(not an array: " & TypeName(a) & ")": Exit Function
    For i = LBound(a) To UBound(a)
        If i > LBound(a) Then s = s & ","
        s = s & a(i)
    Next
    Joined = s
End Function

Dim s, x, p, keys, vals, ini, fso
Set s = CreateObject("TOVA32.StringMethods")

' --- paths: text only, with their deliberate asymmetries
p = "C:\data\report.txt"
Check s.GetFileDrive(p) = "C", "GetFileDrive"
Check s.GetFilePath(p) = "C:\data", "GetFilePath"
Check s.GetFileTitle(p) = "report.txt", "GetFileTitle"
Check s.GetFileTitle("C:\x\a.b.c", False) = "a", "GetFileTitle cuts at the first dot"
Check s.GetFileExtension("C:\readme") = "C:\readme", "GetFileExtension without a dot returns the whole string"
Check s.GetBackupFilename(p) = "report.BAK", "GetBackupFilename default extension"
Check s.GetBackupFilename(p, ".old") = "report.old", "GetBackupFilename .old"
Check s.TrimDirString("C:\Program Files\Tools\data\report.txt", 20) = "C:\...\report.txt", "TrimDirString"
On Error Resume Next
x = s.GetFilePath("nobackslash")
Check Err.Number = 5, "GetFilePath without a backslash raises 5, got " & Err.Number
Err.Clear
On Error GoTo 0

' --- text
x = "o'neil-smith jr"
Check s.ConvertString(x) = "O'neil-smith Jr", "ConvertString"
Check x = "O'neil-smith Jr", "ConvertString writes back into the variable"
Check s.FormatHex(255) = "000000FF" And s.FormatHex(-1, 4) = "FFFFFFFF", "FormatHex"
Check s.IsAlpha("é") = False And s.IsHexDigit("f") And s.IsSpace("") = False, "character classes"
Check s.IsCharset("a", "ABC") = False And s.IsCharset("a", "ABC", 1), "IsCharset compare modes"
Check s.IsLowerCase("1") And s.IsUpperCase("1"), "characters without case are both"
Check s.GetAccessKey("Save &As") = "A" And s.GetAccessKey("Fish && Chips") = "", "GetAccessKey"
Check s.IsLike("ABC", "a*") And Not s.IsLike("ABC", "a*", 0), "IsLike compare modes"
Check s.IsLike("a*c", "a[*]c") And Not s.IsLike("b", "[!a-c]"), "IsLike brackets"
On Error Resume Next
x = s.IsLike("abc", "a[b")
Check Err.Number = 93, "an unclosed bracket raises 93, got " & Err.Number
Err.Clear
On Error GoTo 0
Check s.ConvResString("Hello <name><CR><version>", "<NAME>", "Ann", , Array(1, 2)) = _
      "Hello Ann" & vbCrLf & "1.2", "ConvResString"
Check s.IsString("x") And Not s.IsString(1), "IsString"
Check s.IsVariantValid(CLng(5), vbLong) And Not s.IsVariantValid(Empty, vbEmpty), "IsVariantValid"
Check s.SizeOfVariant(CLng(5)) = 6 And s.SizeOfVariant("abc") = 7 And s.SizeOfVariant(Empty) = 0, "SizeOfVariant"

' --- settings files, through plain variables
Set fso = CreateObject("Scripting.FileSystemObject")
ini = fso.GetSpecialFolder(2) & "\text-vbs-" & fso.GetTempName() & ".ini"
Check s.INIWriteString(ini, "main", "a", "1"), "INIWriteString"
Check s.INIReadString(ini, "main", "a") = "1", "INIReadString"
Check s.INIReadString(ini, "main", "missing", "dflt") = "dflt", "INIReadString default"
Check s.INIReadInteger(ini, "main", "a") = 1, "INIReadInteger"
Check s.INIWriteSection(ini, "list", Array("k1", "k2"), Array("v1", "x=y")), "INIWriteSection"
Check s.INIReadSection(ini, "list", keys, vals), "INIReadSection"
Check Joined(keys) = "k1,k2" And Joined(vals) = "v1,x=y", "INIReadSection arrays: " & Joined(keys) & " / " & Joined(vals)
If fso.FileExists(ini) Then fso.DeleteFile ini

' --- sorting in place
Dim so, a
Set so = CreateObject("TOVA32.SortMethods")
a = Array(5, 3, 9, 1)
Check so.ShellSortArray(a) And Joined(a) = "1,3,5,9", "ShellSortArray: " & Joined(a)
a = Array(3, 1, 2)
Check so.QuickSortArray(a, , True) And Joined(a) = "3,2,1", "QuickSortArray descending: " & Joined(a)
Check Not so.ShellSortArray(Empty), "sorting Empty is False"

' --- dictionaries by position
Dim dm, d
Set dm = CreateObject("TOVA32.DictionaryMethods")
Set d = dm.CreateDictionary()
d.Add "one", 1: d.Add "two", 2: d.Add "three", 3
Check dm.GetKey(d, 2) = "two" And dm.GetKey(d, 0) = "" And dm.GetKey(d, 4) = "", "GetKey by position"
Check dm.GetIndex(d, "THREE") = 3, "GetIndex under text comparison"
Check IsEmpty(dm.GetItem(d, "3")) And dm.GetItem(d, 3) = 3, "GetItem: a String is a key, a number a position"
Check dm.ChangeIndex(d, "three", 1) And dm.GetKey(d, 1) = "three", "ChangeIndex to the front"
Check dm.ChangeKey(d, "one", "uno") And dm.GetIndex(d, "uno") = 2, "ChangeKey keeps the position"
Check Not dm.ChangeKey(d, "uno", "two"), "ChangeKey to an existing key"
Check dm.RemoveItem(d, 1) And dm.GetCount(d) = 2, "RemoveItem by position"
Check dm.GetCount(Nothing) = 0, "GetCount of Nothing"

' --- cipher
Dim e, ka, kb, c
Set e = CreateObject("TOVA32.EncryptMethods")
Check e.Hexise("AB") = "4142" And e.DeHexise("4142") = "AB", "Hexise/DeHexise"
ka = "B": kb = "C"
Check Asc(e.Encrypt("A", ka, kb)) = 198, "Encrypt level 1"
ka = "key": kb = "other"
c = e.Encrypt("a longer plain text", ka, kb, 3)
Check ka = "keykeykeykeykeykeykeykey" And kb = "otherotherotherother", "keys doubled and written back"
Check e.Decrypt(c, ka, kb, 3) = "a longer plain text", "Decrypt round trip"
Dim k: k = "k"
c = e.Encrypt("ab", k, k, 2)
Check k = "kk" And e.Decrypt(c, k, k, 2) = "ab", "one variable for both keys"
ka = "key": c = e.Encrypt("plain", ka, kb, 0)
Check c = "plain" And ka = "key", "level 0 leaves text and keys alone"
On Error Resume Next
ka = ""
c = e.Encrypt("plain", ka, kb)
Check Err.Number = 5, "an empty key raises 5 (got " & Err.Number & ")"
On Error GoTo 0
Check Len(e.GenerateRandomString(10)) = 10 And Len(e.GenerateRandomString(10, "-", 4)) = 14, "GenerateRandomString"

If failures = 0 Then
    WScript.Echo "text.vbs: OK"
Else
    WScript.Echo "text.vbs: " & failures & " check(s) failed"
End If
