' Polygons and lists of rectangles as a VBScript user sees them: building a
' polygon vertex by vertex, editing, transforming, saved states, cloning, and
' a list of rectangles. The last line is "geometry.vbs: OK" when every check
' passed (a run-time error ends a script silently under Wine).
Option Explicit

Dim failures: failures = 0
Sub Check(ok, what)
    If Not ok Then
        failures = failures + 1
        WScript.Echo "FAILED: " & what
    End If
End Sub

Const Pi = 3.14159265358979

Dim poly, pts, p, q, r, c, clone, list, a, b
Set poly = CreateObject("TOVA32.Polygon")
Set pts = poly.Points

' --- vertices: Add is the only way to make a point, positions are 1-based
pts.Add , 0, 0
pts.Add , 10, 0
Set p = pts.Add(, 0, 10)
Check pts.Count = 3, "Count after three Adds"
Check p.Index = 3, "Index of the last point"
Check pts(2).X = 10, "default member Item by position"
Set q = pts.Add(1, 5, 5)
Check q.Index = 1 And pts(2).X = 0, "Add before position 1"
pts.Remove 1
Check pts.Count = 3 And pts(1).Y = 0, "Remove by position"
p.Index = 1
Check pts(1).Y = 10 And p.Index = 1, "Index let moves the point"
p.Index = 1: pts.Remove p
Check pts.Count = 2, "Remove by object"
pts.Add , 0, 10

' --- centre and bounding rectangle
Set c = poly.CentrePoint
Check Abs(c.X - 10 / 3) < 0.000001 And Abs(c.Y - 10 / 3) < 0.000001, "CentrePoint"
Check c.Index = 0, "the centre is not a vertex"
Set r = poly.Rectangle
Check r.Left = 0 And r.Top = 0 And r.Right = 10 And r.Bottom = 10, "Rectangle"

' --- whole-polygon operations
poly.Rotate Pi / 2
Check Abs(pts(2).X) < 0.000001 And Abs(pts(2).Y + 10) < 0.000001, "Rotate about the origin"
poly.Rotate -Pi / 2
poly.Offset 5, 100
Check Abs(pts(1).X - 5) < 0.000001 And Abs(pts(1).Y - 5) < 0.000001, "Offset moves both axes by the first amount"

' --- saved states hold whole numbers
pts(1).X = 1.4
Check poly.PushState, "PushState"
pts(1).X = 77
Check poly.PopState, "PopState"
Check pts(1).X = 1, "popped state is whole numbers"
Check Not poly.PopState, "PopState with nothing saved"

' --- clone and tag
poly.Tag = "label"
Set clone = poly.Clone
Check clone.Points.Count = 3, "Clone has the vertices"
Check IsEmpty(clone.Tag), "Clone has no Tag"
Check poly.Tag = "label", "Tag let and get"
Set poly.Tag = r
Check poly.Tag Is r, "Tag set keeps the object"

' --- a point outlives its polygon
Set p = pts(1)
Set poly = Nothing
Set clone = Nothing
p.X = 3
Check p.X = 3 And p.Index = 0, "point after its polygon ended"

' --- Rectangles: identity decides
Set list = CreateObject("TOVA32.Rectangles")
Set a = list.Add2("first")
Set b = CreateObject("TOVA32.Rectangle")
Check list.AddObject(b), "AddObject"
Check Not list.AddObject(b), "AddObject twice"
Check list.Count = 2 And list.Exists(b), "Exists"
Check list(1).Tag = "first", "default member Item"
list.RemoveObject a
Check list.Count = 1 And list(1) Is b, "RemoveObject"
On Error Resume Next
'' (Wine's script engine loses the error number of a default member in Set)
Set a = list.Item(5)
Check Err.Number = 9, "Item out of range raises 9 (got " & Err.Number & ")"
Err.Clear
list.Remove 0
Check Err.Number = 9 And list.Count = 1, "Remove out of range raises 9 and removes nothing"
On Error GoTo 0
list.Clear
Check list.Count = 0, "Clear"

If failures = 0 Then WScript.Echo "geometry.vbs: OK"
