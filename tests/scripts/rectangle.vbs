' Rectangle, GDIMethods and APIMethods as a VBScript user sees them.
' Run: cscript //nologo rectangle.vbs  -- the last line is "rectangle.vbs: OK"
' when every check passed. A run-time error ends the script early (under Wine
' silently), so the success line is what the caller relies on.
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

Function Edges(r)
    Edges = r.Left & "," & r.Top & "," & r.Right & "," & r.Bottom
End Function

Dim r, c, g, api, x, a, l, t, w, h
Set r = CreateObject("TOVA32.Rectangle")

' --- edges and size
Check Edges(r) = "0,0,0,0", "a new rectangle is empty"
r.Left = 10: r.Top = 20: r.Right = 110: r.Bottom = 70
Check Edges(r) = "10,20,110,70", "edges set one by one: " & Edges(r)
Check r.Width = 100 And r.Height = 50, "Width/Height 100x50"
r.Width = 30: r.Height = 10
Check Edges(r) = "10,20,40,30", "Width/Height move Right/Bottom: " & Edges(r)
r.Width = -5: r.Height = -1
Check Edges(r) = "10,20,40,30", "negative Width/Height ignored: " & Edges(r)

' --- setting
r.SetRectangle Array(1, 2, 3, 4)
Check Edges(r) = "1,2,3,4", "SetRectangle Array(1,2,3,4): " & Edges(r)
r.SetRectangle3 5, 6, 7, 8
Check Edges(r) = "5,6,7,8", "SetRectangle3: " & Edges(r)
l = "9": r.SetRectangle3 l, 6, 7, 8
Check Edges(r) = "9,6,7,8" And TypeName(l) = "String", "SetRectangle3 leaves an unchanged argument alone"
r.SetRectangle4 10, 20, 30, 40
Check Edges(r) = "10,20,40,60", "SetRectangle4: " & Edges(r)
r.SetRectangle4 1, 2, -3, 4
Check Edges(r) = "10,20,40,60", "SetRectangle4 with negative width changes nothing: " & Edges(r)
r.SetRectangle4 1, 2, 3, -4
Check Edges(r) = "10,20,40,60", "SetRectangle4 with negative height changes nothing: " & Edges(r)
Set c = CreateObject("TOVA32.Rectangle")
c.SetRectangle Array(-1, -2, 3, 4)
r.SetRectangle2 c
Check Edges(r) = "-1,-2,3,4", "SetRectangle2: " & Edges(r)
r.SetRectangle2 Nothing
Check Edges(r) = "-1,-2,3,4", "SetRectangle2 Nothing changes nothing"
r.Reset
Check Edges(r) = "0,0,0,0", "Reset"

' --- moving and sizing, optional arguments left out
r.SetRectangle Array(0, 0, 10, 10)
r.Offset 2, 3
Check Edges(r) = "2,3,12,13", "Offset 2, 3: " & Edges(r)
r.Offset , 5
Check Edges(r) = "2,8,12,18", "Offset , 5: " & Edges(r)
r.Offset 1
Check Edges(r) = "3,8,13,18", "Offset 1: " & Edges(r)
r.Offset
Check Edges(r) = "3,8,13,18", "Offset without arguments: " & Edges(r)
r.Inflate 1, 2
Check Edges(r) = "2,6,14,20", "Inflate 1, 2: " & Edges(r)
r.Inflate , 1
Check Edges(r) = "2,5,14,21", "Inflate , 1: " & Edges(r)
r.Deflate 1, 2
Check Edges(r) = "3,7,13,19", "Deflate 1, 2: " & Edges(r)
r.Deflate 1
Check Edges(r) = "4,7,12,19", "Deflate 1: " & Edges(r)
r.Deflate
Check Edges(r) = "4,7,12,19", "Deflate without arguments: " & Edges(r)

' --- midpoints round half to even; scaling too
r.SetRectangle Array(0, 0, 5, 7)
Check r.MidX = 2 And r.MidY = 4, "MidX/MidY of 0..5/0..7: " & r.MidX & "/" & r.MidY
r.SetRectangle Array(-3, -3, 0, 0)
Check r.MidX = -2 And r.MidY = -2, "MidX/MidY of -3..0: " & r.MidX & "/" & r.MidY
r.SetRectangle Array(1, 3, 5, 7)
r.ScaleRectangle 0.5
Check Edges(r) = "0,2,2,4", "ScaleRectangle 0.5 on 1,3,5,7: " & Edges(r)
r.ScaleRectangle 3
Check Edges(r) = "0,6,6,12", "ScaleRectangle 3: " & Edges(r)
r.ScaleRectangle 0
Check Edges(r) = "0,6,6,12", "ScaleRectangle 0 changes nothing: " & Edges(r)

' --- state stack: last in, first out; Peek writes into its argument
r.ClearStack
Check r.PopState = False, "PopState on an empty stack is False"
Check r.Peek(x) = False, "Peek on an empty stack is False"
r.SetRectangle Array(1, 2, 3, 4)
Check r.PushState, "PushState"
r.SetRectangle Array(5, 6, 7, 8)
r.PushState
r.Reset
x = Empty
Check r.Peek(x) = True, "Peek with two states"
Check Joined(x) = "5,6,7,8", "Peek into an Empty variable gives an array: " & Joined(x)
a = Array(0, 0, 0, 0)
r.Peek a
Check Joined(a) = "5,6,7,8", "Peek into an array variable: " & Joined(a)
Check Edges(r) = "0,0,0,0", "Peek changes nothing"
Check r.PopState And Edges(r) = "5,6,7,8", "first PopState gives the last state: " & Edges(r)
Check r.PopState And Edges(r) = "1,2,3,4", "second PopState gives the first state: " & Edges(r)
Check r.PopState = False, "the stack is empty again"
r.PushState: r.ClearStack
Check r.PopState = False, "ClearStack empties the stack"

' --- hit tests: PointInMe is half-open, Overlaps/Equals closed
r.SetRectangle Array(0, 0, 10, 10)
Check r.PointInMe2(0, 0) And r.PointInMe2(9, 9), "PointInMe2 inside (left/top edges included)"
Check Not r.PointInMe2(10, 5) And Not r.PointInMe2(5, 10) And Not r.PointInMe2(-1, 5), "PointInMe2 outside (right/bottom excluded)"
Check r.PointInMe(Array(5, 5)) And Not r.PointInMe(Array(10, 10)), "PointInMe with Array"
Check r.Overlaps(Array(10, 10, 20, 20)), "touching rectangles overlap"
Check r.Overlaps(Array(2, 2, 3, 3)), "a contained rectangle overlaps"
Check Not r.Overlaps(Array(11, 0, 20, 10)), "separate rectangles do not overlap"
Check r.OverlapsHoriz(Array(5, 100, 15, 200)) And Not r.OverlapsVert(Array(5, 100, 15, 200)), "OverlapsHoriz/OverlapsVert"
Check r.Equals(Array(0, 0, 10, 10)) And Not r.Equals(Array(0, 0, 10, 11)), "Equals with Array"
c.SetRectangle Array(10, 10, 20, 20)
Check r.Overlaps2(c) And r.OverlapsHoriz2(c) And r.OverlapsVert2(c), "Overlaps2/Horiz2/Vert2 with a rectangle"
Check r.Overlaps2(Nothing) = False And r.OverlapsHoriz2(Nothing) = False And r.OverlapsVert2(Nothing) = False, _
    "Overlaps2/Horiz2/Vert2 with Nothing are False"
Check Not r.Equals2(c), "Equals2 with a different rectangle"
On Error Resume Next
x = r.Equals2(Nothing)
Check Err.Number = 91, "Equals2 Nothing raises 91, got " & Err.Number
Check Err.Source = "TOVA200", "error source TOVA200, got '" & Err.Source & "'"
On Error GoTo 0

' --- Boolean results are VBScript's True (-1)
Check VarType(r.PointInMe2(1, 1)) = vbBoolean, "PointInMe2 returns a Boolean"
Check CInt(r.PointInMe2(1, 1)) = -1, "True is -1, not 1"
Check CInt(r.PushState) = -1, "PushState returns -1"

' --- Clone and Tag
r.Tag = "original"
Set c = r.Clone
Check Edges(c) = Edges(r), "Clone has the same edges"
Check IsEmpty(c.Tag), "Clone's Tag is Empty"
c.Offset 1, 1
Check Edges(r) = "0,0,10,10", "Clone is independent"
Check r.Equals2(r.Clone), "Equals2 with a clone"
r.Tag = 42
Check r.Tag = 42 And TypeName(r.Tag) = "Integer", "Tag holds a number: " & TypeName(r.Tag)
r.Tag = Array(1, "two")
Check Joined(r.Tag) = "1,two", "Tag holds an array"
Set r.Tag = c
Check r.Tag Is c, "Set Tag holds the object"
Check r.Tag.Left = 1, "the tagged object is reachable"

' --- members that need a device context give soft results without one
Check r.Fill(0, &HFF) = False, "Fill 0 is False"
Check r.FitToDC(0) = False, "FitToDC 0 is False"
Check r.FitToWindow(0) = False, "FitToWindow 0 is False"
Check r.FitToClientWindow(0) = False, "FitToClientWindow 0 is False"
Check r.IsVisible(0) = False, "IsVisible 0 is False"
Check Edges(r) = "0,0,10,10", "they leave the edges alone: " & Edges(r)

' --- the global helpers
Set g = CreateObject("TOVA32.GDIMethods")
Check g.DrawRectangle(0, 0, 0, 10, 10) = False, "GDIMethods.DrawRectangle with hDC 0 is False"
Check g.DrawEllipse(0, 0, 0, 10, 10, vbRed) = False, "GDIMethods.DrawEllipse with hDC 0 is False"
On Error Resume Next
x = g.DrawRectangle(0, 0, 0, 10, 10, , 99)
Check Err.Number = 5, "DrawRectangle with BorderStyle 99 raises 5, got " & Err.Number
On Error GoTo 0
Set api = CreateObject("TOVA32.APIMethods")
l = 0: t = 0: w = 10: h = 10
Check api.DrawGradient(0, l, t, w, h, vbRed, vbBlue) = False, "APIMethods.DrawGradient with hDC 0 is False"

If failures = 0 Then
    WScript.Echo "rectangle.vbs: OK"
Else
    WScript.Echo "rectangle.vbs: " & failures & " check(s) failed"
End If
