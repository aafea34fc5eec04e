// Rectangle, GDIMethods and APIMethods as a JScript user sees them.
// Run: cscript //nologo rectangle.js  -- the last line is "rectangle.js: OK"
// when every check passed.
// JScript passes every argument by value, so records go in as arrays and
// nothing is written back into script variables. A JScript array is an object
// to COM: the arrays the library takes are built as VB arrays (SAFEARRAYs)
// through Scripting.Dictionary, and read back with VBArray.
var failures = 0;
function check(ok, what) {
    if (ok) return;
    failures++;
    WScript.Echo("FAILED: " + what);
}
function vbArray(values) {
    var d = new ActiveXObject("Scripting.Dictionary");
    for (var i = 0; i < values.length; i++) d.Add(i, values[i]);
    return d.Items();
}
function edges(r) { return [r.Left, r.Top, r.Right, r.Bottom].join(","); }
// A JScript exception from a COM error: its low word is the error number.
function errorOf(f) {
    try { f(); } catch (e) { return e.number & 0xFFFF; }
    return 0;
}

var r = new ActiveXObject("TOVA32.Rectangle");

// --- edges and size
check(edges(r) == "0,0,0,0", "a new rectangle is empty");
r.Left = 10; r.Top = 20; r.Right = 110; r.Bottom = 70;
check(edges(r) == "10,20,110,70", "edges set one by one: " + edges(r));
check(r.Width == 100 && r.Height == 50, "Width/Height 100x50");
r.Width = 30; r.Height = 10;
check(edges(r) == "10,20,40,30", "Width/Height move Right/Bottom: " + edges(r));
r.Width = -5; r.Height = -1;
check(edges(r) == "10,20,40,30", "negative Width/Height ignored: " + edges(r));

// --- setting
check(new VBArray(vbArray([1, 2, 3, 4])).toArray().join(",") == "1,2,3,4", "a VB array round trip");
r.SetRectangle(vbArray([1, 2, 3, 4]));
check(edges(r) == "1,2,3,4", "SetRectangle with an array: " + edges(r));
r.SetRectangle3(5, 6, 7, 8);
check(edges(r) == "5,6,7,8", "SetRectangle3: " + edges(r));
r.SetRectangle4(10, 20, 30, 40);
check(edges(r) == "10,20,40,60", "SetRectangle4: " + edges(r));
r.SetRectangle4(1, 2, -3, 4);
check(edges(r) == "10,20,40,60", "SetRectangle4 with negative width changes nothing: " + edges(r));
var c = new ActiveXObject("TOVA32.Rectangle");
c.SetRectangle(vbArray([-1, -2, 3, 4]));
r.SetRectangle2(c);
check(edges(r) == "-1,-2,3,4", "SetRectangle2: " + edges(r));
r.SetRectangle2(null);
check(edges(r) == "-1,-2,3,4", "SetRectangle2(null) changes nothing");
r.Reset();
check(edges(r) == "0,0,0,0", "Reset");

// --- moving and sizing; trailing optional arguments left out
r.SetRectangle(vbArray([0, 0, 10, 10]));
r.Offset(2, 3);
check(edges(r) == "2,3,12,13", "Offset(2, 3): " + edges(r));
r.Offset(1);
check(edges(r) == "3,3,13,13", "Offset(1): " + edges(r));
r.Offset();
check(edges(r) == "3,3,13,13", "Offset(): " + edges(r));
r.Inflate(1, 2);
check(edges(r) == "2,1,14,15", "Inflate(1, 2): " + edges(r));
r.Deflate(1);
check(edges(r) == "3,1,13,15", "Deflate(1): " + edges(r));

// --- midpoints round half to even; scaling too
r.SetRectangle(vbArray([0, 0, 5, 7]));
check(r.MidX == 2 && r.MidY == 4, "MidX/MidY of 0..5/0..7: " + r.MidX + "/" + r.MidY);
r.SetRectangle(vbArray([-3, -3, 0, 0]));
check(r.MidX == -2 && r.MidY == -2, "MidX/MidY of -3..0: " + r.MidX + "/" + r.MidY);
r.SetRectangle(vbArray([1, 3, 5, 7]));
r.ScaleRectangle(0.5);
check(edges(r) == "0,2,2,4", "ScaleRectangle(0.5) on 1,3,5,7: " + edges(r));

// --- state stack: last in, first out; Peek's argument stays the script's
r.ClearStack();
check(r.PopState() === false, "PopState on an empty stack is false");
r.SetRectangle(vbArray([1, 2, 3, 4]));
check(r.PushState() === true, "PushState is true");
r.SetRectangle(vbArray([5, 6, 7, 8]));
r.PushState();
r.Reset();
var peeked;
check(r.Peek(peeked) === true && peeked === undefined, "Peek is true and leaves a by-value argument alone");
check(r.Peek(vbArray([0, 0, 0, 0])) === true, "Peek accepts an array");
check(r.PopState() === true && edges(r) == "5,6,7,8", "first PopState gives the last state: " + edges(r));
check(r.PopState() === true && edges(r) == "1,2,3,4", "second PopState gives the first state: " + edges(r));
check(r.PopState() === false, "the stack is empty again");

// --- hit tests: PointInMe is half-open, Overlaps/Equals closed
r.SetRectangle(vbArray([0, 0, 10, 10]));
check(r.PointInMe2(0, 0) && r.PointInMe2(9, 9), "PointInMe2 inside (left/top edges included)");
check(!r.PointInMe2(10, 5) && !r.PointInMe2(5, 10), "PointInMe2 outside (right/bottom excluded)");
check(r.PointInMe(vbArray([5, 5])) && !r.PointInMe(vbArray([10, 10])), "PointInMe with an array");
check(r.Overlaps(vbArray([10, 10, 20, 20])), "touching rectangles overlap");
check(!r.Overlaps(vbArray([11, 0, 20, 10])), "separate rectangles do not overlap");
check(r.Equals(vbArray([0, 0, 10, 10])), "Equals with an array");
check(r.Overlaps2(null) === false && r.OverlapsHoriz2(null) === false && r.OverlapsVert2(null) === false,
      "Overlaps2/Horiz2/Vert2 with null are false");
check(errorOf(function () { r.Equals2(null); }) == 91, "Equals2(null) raises 91");
check(errorOf(function () { r.Equals2(r); }) == 0 && r.Equals2(r.Clone()) === true, "Equals2 with a rectangle");

// --- Clone and Tag
r.Tag = "original";
c = r.Clone();
check(edges(c) == edges(r), "Clone has the same edges");
check(c.Tag === undefined, "Clone's Tag is empty");
r.Tag = 42;
check(r.Tag === 42, "Tag holds a number");
r.Tag = c;
c.Left = 7;
check(r.Tag.Left === 7, "Tag holds the object itself, not a copy");
r.Tag = vbArray([1, "two"]);
check(new VBArray(r.Tag).toArray().join(",") == "1,two", "Tag holds an array, read back as a VBArray");

// --- members that need a device context give soft results without one
check(r.Fill(0, 0xFF) === false, "Fill(0) is false");
check(r.FitToDC(0) === false, "FitToDC(0) is false");
check(r.FitToWindow(0) === false, "FitToWindow(0) is false");
check(r.IsVisible(0) === false, "IsVisible(0) is false");
check(edges(r) == "0,0,10,10", "they leave the edges alone: " + edges(r));

// --- the global helpers
var g = new ActiveXObject("TOVA32.GDIMethods");
check(g.DrawRectangle(0, 0, 0, 10, 10) === false, "GDIMethods.DrawRectangle(0, ...) is false");
check(errorOf(function () { g.DrawRectangle(0, 0, 0, 10, 10, 0, 99); }) == 5, "DrawRectangle with BorderStyle 99 raises 5");
var api = new ActiveXObject("TOVA32.APIMethods");
check(api.DrawGradient(0, 0, 0, 10, 10, 0xFF, 0xFF0000) === false, "APIMethods.DrawGradient(0, ...) is false");

WScript.Echo(failures == 0 ? "rectangle.js: OK" : "rectangle.js: " + failures + " check(s) failed");
