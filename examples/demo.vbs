' demo.vbs: TOVA32.Rectangle at work, late-bound from VBScript.
'
'   cscript //nologo demo.vbs
'
' Needs TOVA200.DLL registered (regsvr32 TOVA200.DLL). On 64-bit Windows the
' 32-bit DLL is used by C:\Windows\SysWOW64\cscript.exe, the 64-bit build by
' the 64-bit cscript.exe.
'
' Records (RECT, POINTAPI) are passed from scripts as arrays: Array(Left, Top,
' Right, Bottom) for a RECT, Array(X, Y) for a point. An empty variable given
' where a RECT is returned receives such an array.
Option Explicit

Dim r, other, copy, saved, ok, x, y

Sub Say(text)
    WScript.Echo text
End Sub

Function Edges(rect)
    Edges = "(" & rect.Left & "," & rect.Top & ")-(" & rect.Right & "," & rect.Bottom & ")"
End Function

Function Size(rect)
    Size = rect.Width & " x " & rect.Height
End Function

' Join() is missing from some script hosts (Wine's among them): join by hand.
Function ArrayText(a)
    Dim i, text
    text = "Array("
    For i = LBound(a) To UBound(a)
        If i > LBound(a) Then text = text & ", "
        text = text & a(i)
    Next
    ArrayText = text & ")"
End Function

Function YesNo(b)
    If b Then YesNo = "yes" Else YesNo = "no"
End Function

Set r = CreateObject("TOVA32.Rectangle")
Say "A new TOVA32.Rectangle starts empty: " & Edges(r) & ", " & Size(r) & "."

' ---------------------------------------------------------------- edges
r.Left = 10
r.Top = 20
r.Right = 110
r.Bottom = 70
Say "Setting Left, Top, Right and Bottom gives " & Edges(r) & ", " & Size(r) & "."
Say "Its centre is at MidX = " & r.MidX & ", MidY = " & r.MidY & "."

r.Width = 40
Say "Width = 40 moves the right edge: " & Edges(r) & "."
r.Height = -5
Say "Height = -5 is ignored (a size cannot be negative): " & Edges(r) & "."

r.SetRectangle Array(0, 0, 64, 48)
Say "SetRectangle with Array(0, 0, 64, 48) gives " & Edges(r) & "."
r.SetRectangle4 100, 100, 30, 20
Say "SetRectangle4 100, 100, 30, 20 (left, top, width, height) gives " & Edges(r) & "."

' ------------------------------------------------------ moving and sizing
r.Offset 5, -10
Say "Offset 5, -10 moves it: " & Edges(r) & "."
r.Offset , 10
Say "Offset , 10 (dX left out, so 0) moves it down only: " & Edges(r) & "."
r.Inflate 10, 5
Say "Inflate 10, 5 grows it on every side: " & Edges(r) & ", " & Size(r) & "."
r.Deflate 10
Say "Deflate 10 (dy left out) shrinks only the width: " & Edges(r) & ", " & Size(r) & "."
r.ScaleRectangle 2
Say "ScaleRectangle 2 doubles every edge: " & Edges(r) & "."

' ------------------------------------------------------------ the stack
ok = r.PushState()
Say "PushState saves " & Edges(r) & " on the rectangle's stack (returned " & ok & ")."
r.SetRectangle3 1, 2, 3, 4
ok = r.PushState()
Say "SetRectangle3 1, 2, 3, 4 gives " & Edges(r) & "; pushed as well."
r.Reset
Say "Reset sets every edge to 0: " & Edges(r) & "."

saved = Empty
ok = r.Peek(saved)
Say "Peek shows the top of the stack without taking it: " & ArrayText(saved) & "."
ok = r.PopState()
Say "PopState restores the last state pushed: " & Edges(r) & "."
ok = r.PopState()
Say "PopState again restores the first one: " & Edges(r) & "."
ok = r.PopState()
Say "A third PopState finds the stack empty and returns " & ok & "; the edges stay " & Edges(r) & "."

' ---------------------------------------------------------------- tests
r.SetRectangle Array(0, 0, 100, 50)
Say "Now the rectangle is " & Edges(r) & "; right and bottom edges are outside it."
Say "  Is the point (10, 10) in it?   " & YesNo(r.PointInMe(Array(10, 10)))
Say "  Is the point (100, 10) in it?  " & YesNo(r.PointInMe(Array(100, 10)))
x = 99: y = 49
Say "  Is the point (99, 49) in it?   " & YesNo(r.PointInMe2(x, y)) & " (PointInMe2 takes X and Y)"
Say "  Does (90,40)-(200,80) overlap it?     " & YesNo(r.Overlaps(Array(90, 40, 200, 80)))
Say "  Does (150,0)-(200,50) overlap it?     " & YesNo(r.Overlaps(Array(150, 0, 200, 50)))
Say "  ... and does it overlap horizontally? " & YesNo(r.OverlapsHoriz(Array(150, 0, 200, 50))) & _
    ", vertically? " & YesNo(r.OverlapsVert(Array(150, 0, 200, 50)))
Say "  Does it equal Array(0, 0, 100, 50)?   " & YesNo(r.Equals(Array(0, 0, 100, 50)))

' -------------------------------------------------------- other objects
Set copy = r.Clone()
Say "Clone gives a new rectangle " & Edges(copy) & "; equal to the original: " & YesNo(r.Equals2(copy)) & "."
copy.Offset 100, 50
Say "Moving the clone to " & Edges(copy) & " leaves the original at " & Edges(r) & "."
Say "  They touch only at the corner (100, 50). Is that point in the original? " & _
    YesNo(r.PointInMe(Array(100, 50)))
Say "  Do they overlap? " & YesNo(r.Overlaps2(copy)) & " (overlap tests count touching edges)"
copy.Offset 1
Say "  Moved one more to the right, " & Edges(copy) & ": do they overlap? " & YesNo(r.Overlaps2(copy))
Say "  Does Overlaps2 Nothing raise an error? no, it answers " & YesNo(r.Overlaps2(Nothing))

Set other = CreateObject("TOVA32.Rectangle")
other.SetRectangle2 copy
Say "SetRectangle2 copies the edges of another rectangle: " & Edges(other) & "."

' ------------------------------------------------------------------ Tag
r.Tag = "the first rectangle"
Say "Tag holds any value: """ & r.Tag & """."
Set r.Tag = copy
Say "Or an object: the tag's Width is " & r.Tag.Width & "."
r.Tag = Empty

' --------------------------------------------------------------- errors
On Error Resume Next
ok = r.Equals2(Nothing)
Say "Equals2 Nothing raises error " & Err.Number & " from " & Err.Source & ": " & Err.Description & "."
Err.Clear
On Error GoTo 0

Set copy = Nothing
Set other = Nothing
Set r = Nothing

' -------------------------------------------------------- text and data
WScript.Echo ""
WScript.Echo "== The text and data helpers"
Dim sm, so, dm, em, path, name, list, d, keyA, keyB, secret
Set sm = CreateObject("TOVA32.StringMethods")
path = "C:\Projects\Demo\report.final.txt"
Say "StringMethods splits """ & path & """: drive " & sm.GetFileDrive(path) & _
    ", folder " & sm.GetFilePath(path) & ", title " & sm.GetFileTitle(path, False) & _
    ", extension " & sm.GetFileExtension(path) & ", backup name " & sm.GetBackupFilename(path) & "."
Say "Shortened to 20 characters it reads " & sm.TrimDirString(path, 20) & "."
name = "ada lovelace"
sm.ConvertString name
Say "ConvertString capitalises words in the variable itself: " & name & "."
Say "IsLike(""report.final.txt"", ""*.TXT"") is " & sm.IsLike("report.final.txt", "*.TXT") & _
    " (text comparison), with Compare 0 it is " & sm.IsLike("report.final.txt", "*.TXT", 0) & "."
Say "FormatHex(48879) = " & sm.FormatHex(48879) & "; the access key of ""Save &As"" is " & sm.GetAccessKey("Save &As") & "."
Say sm.ConvResString("Hello <NAME>, this is version <VERSION>.", "<name>", "Ann", , Array(2, 0, 38))

Set so = CreateObject("TOVA32.SortMethods")
list = Array(42, 7, 19, 3, 25)
so.ShellSortArray list
Say "SortMethods sorts an array in place: " & ArrayText(list) & "."

Set dm = CreateObject("TOVA32.DictionaryMethods")
Set d = dm.CreateDictionary()
d.Add "red", 255: d.Add "green", 65280: d.Add "blue", 16711680
dm.ChangeIndex d, "blue", 1
Say "DictionaryMethods reads a Dictionary by position: first key " & dm.GetKey(d, 1) & _
    ", ""green"" is at position " & dm.GetIndex(d, "GREEN") & " of " & dm.GetCount(d) & "."

Set em = CreateObject("TOVA32.EncryptMethods")
keyA = "north": keyB = "wind"
secret = em.Encrypt("meet at noon", keyA, keyB, 2)
Say "EncryptMethods enciphers ""meet at noon"" to " & em.Hexise(secret) & " (hex) and back: """ & _
    em.Decrypt(secret, keyA, keyB, 2) & """."

WScript.Echo "demo.vbs: done"
