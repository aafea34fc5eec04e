' Creates an object of every class named on the command line by its ProgID,
' asks it for its type and calls one of its members: what an installed
' library must allow. The last line says OK or what failed.
Option Explicit
Dim failed, i, progId, o, got
failed = 0

Sub Check(ok, what)
    If ok Then
        WScript.Echo "ok:   " & what
    Else
        WScript.Echo "FAIL: " & what
        failed = failed + 1
    End If
End Sub

' One member call a class answers without a window, device context or file.
Function Probe(o, name)
    Select Case name
    Case "Rectangle": o.Width = 30: Probe = (o.Width = 30)
    Case "GDIMethods": Probe = Not o.DrawRectangle(0, 0, 0, 10, 10)
    Case "APIMethods": Dim l, t, r, b: l = 0: t = 0: r = 9: b = 9: Probe = Not o.DrawGradient(0, l, t, r, b, 0, 255)
    Case "PaintMethods"   ' no picture: the documented error 481
        On Error Resume Next
        o.StretchPaintNormalStdPic 0, 0, 0, 9, 9, Nothing
        Probe = (Err.Number = 481)
        Err.Clear
    Case "StringMethods": Probe = (o.GetFileDrive("C:\x") = "C")
    Case "SortMethods": Dim a: a = Array(3, 1, 2): Probe = o.ShellSortArray(a) And a(0) = 1
    Case "DictionaryMethods": Probe = IsObject(o.CreateDictionary())
    Case "EncryptMethods": Probe = (o.Hexise("A") = "41")
    Case "Rectangles": Probe = (o.Count = 0)
    Case "SubclassingMethods": Probe = Not o.IsWindowLocal(0)
    Case "Polygon": Probe = (o.Points.Count = 0)
    Case "FileSearch": Probe = (o.CurrentFolder = "")
    Case "RegistryMethods": Probe = (o.GetKeyValue(2, "Software\TOVA32\none", "none", "d") = "d")
    Case "MiscMethods": o.Pause 1: Probe = True
    Case "Timer": o.Tag = 5: Probe = (o.Tag = 5)
    Case "MouseTrack": Probe = (o.TrackMethod >= 0)
    Case "MouseTrackEx": Probe = Not o.IsAttached(1)
    Case "SystemVersionInfo": Probe = (o.Platform >= 0)
    Case "MemoryDC", "DIBSection", "AlphaDIBSection": Probe = (o.Width = 0)
    Case "JPEGMethods": Probe = Not o.LoadJPG(Nothing, "Z:\no\such.jpg")
    Case "FileMethods": Probe = Not o.FileExists("Z:\no\such\file")
    Case "Tooltip": Probe = (o.CurrentTool = 0)
    Case Else: Probe = Empty
    End Select
End Function

For i = 0 To WScript.Arguments.Count - 1
    progId = WScript.Arguments(i)
    Set o = Nothing
    On Error Resume Next
    Set o = CreateObject(progId)
    If Err.Number <> 0 Then
        Check False, progId & ": CreateObject failed (" & Err.Number & " " & Err.Description & ")"
        Err.Clear
    Else
        got = Probe(o, Mid(progId, 8))
        If Err.Number <> 0 Then
            Check False, progId & ": member call failed (" & Err.Number & " " & Err.Description & ")"
            Err.Clear
        ElseIf IsEmpty(got) Then
            Check False, progId & ": no member call known for this class (add one to installed.vbs)"
        Else
            Check got, progId & " (" & TypeName(o) & ")"
        End If
    End If
    On Error GoTo 0
Next
If failed = 0 And WScript.Arguments.Count > 0 Then WScript.Echo "installed.vbs: OK" Else WScript.Echo "installed.vbs: " & failed & " failed"
