' The windows and system classes as a VBScript user sees them: Timer,
' MiscMethods, SubclassingMethods, SystemVersionInfo, MouseTrack(Ex), Tooltip. Scripts
' cannot receive events under Wine, so ticks and hovers are tested from C++;
' here: properties, results, defaults and the error numbers.
' The last line is "windows.vbs: OK" when every check passed (a run-time error
' ends a script silently under Wine).
Option Explicit

Dim failures: failures = 0
Sub Check(ok, what)
    If Not ok Then
        failures = failures + 1
        WScript.Echo "FAILED: " & what
    End If
End Sub

Dim t, m, sm, db, v, mt, mx, started, n, ok

' --- Timer
Set t = CreateObject("TOVA32.Timer")
Check t.Interval = 0 And t.Enabled = False And t.ElapsedTime = 0, "a new Timer is stopped"
Check IsEmpty(t.Tag), "Tag starts empty"
t.Tag = "label"
Check t.Tag = "label", "Tag holds a value"
t.Interval = 50
t.Enabled = True
Check t.Enabled = True And t.Interval = 50, "Interval and Enabled by plain assignment"
Check t.ElapsedTime = 0, "no tick without a message loop"
t.Enabled = False
t.Interval = -3
t.Enabled = True
Check t.Interval = -3, "a negative interval is kept (the timer does not run)"
t.Enabled = False

' --- MiscMethods
Set m = CreateObject("TOVA32.MiscMethods")
Set t = m.CreateTimer(40)
Check t.Enabled = True And t.Interval = 40, "CreateTimer starts the timer"
t.Enabled = False
Set t = m.CreateTimer(40, False)
Check t.Enabled = False And t.Interval = 40, "CreateTimer with Enabled False"
started = Timer
m.Pause 120
Check Timer - started >= 0.1, "Pause blocks"
Check m.BeginPlaySound("") = False, "BeginPlaySound of an empty name is False"
Check m.CanPlayWaveForms = False Or m.CanPlayWaveForms = True, "CanPlayWaveForms is a Boolean"
m.StopSound

' --- SubclassingMethods
Set sm = CreateObject("TOVA32.SubclassingMethods")
Set db = sm.GetSubclassDatabase
Check db.Count = 0, "the thread's catalogue starts empty"
Check sm.CurrentMessage = 0, "no message dispatched yet"
Check sm.IsWindowLocal(0) = False, "window 0 is not local"
On Error Resume Next
sm.AttachMessage Nothing, 0, 512
Check Err.Number = -2147208421, "attaching to no window raises 0x8004331B, got " & Err.Number
Check Err.Description = "Invalid window", "description: " & Err.Description
Check Err.Source = "TOVA200.WindowProc", "source: " & Err.Source
Err.Clear
n = db.Item(1).hWnd
Check Err.Number = 9, "Item of an empty catalogue raises 9, got " & Err.Number
Err.Clear
sm.DetachMessage Nothing, 0, 512
Check Err.Number = 0, "DetachMessage never raises"
On Error GoTo 0

' --- SystemVersionInfo
Set v = CreateObject("TOVA32.SystemVersionInfo")
Check v.Platform = 2, "Platform NT"
Check v.MajorVersion >= 5, "MajorVersion " & v.MajorVersion
If v.MajorVersion >= 6 Then
    Check v.SystemType = 0, "nothing after major version 5 is classified"
End If
Check v.BuildNumber > 0, "BuildNumber"
Check InStr(v.CSDVersion, Chr(0)) = 0, "CSDVersion is cut at its NUL"
Check v.ServicePackMajor >= 0 And v.ServicePackMinor >= 0, "service-pack numbers"
WScript.Echo "SystemVersionInfo: platform " & v.Platform & ", " & v.MajorVersion & "." & v.MinorVersion & _
    " build " & v.BuildNumber & " """ & v.CSDVersion & """, SystemType " & v.SystemType

' --- MouseTrack and MouseTrackEx
Set mt = CreateObject("TOVA32.MouseTrack")
Check mt.Tracking = False And mt.TrackMethod = 0, "a new MouseTrack"
On Error Resume Next
mt.AttachMouseTracking 0
Check Err.Number = 0, "attaching to window 0 only stores it"
mt.AttachMouseTracking 12345678
Check Err.Number = -2147208421, "attaching to a handle that is no window raises, got " & Err.Number
Err.Clear
mt.DetachMouseTracking
Check Err.Number = 0, "DetachMouseTracking"
On Error GoTo 0
Set mx = CreateObject("TOVA32.MouseTrackEx")
Check mx.IsAttached(0) = True, "MouseTrackEx.IsAttached(0) when detached"
mx.DetachMouseTracking
Check mx.Tracking = False, "MouseTrackEx.Tracking"

' --- Tooltip, late-bound: defaults, measuring, errors (events need a C++ sink)
Dim tip, tw, th
Set tip = CreateObject("TOVA32.Tooltip")
Check tip.Enabled And tip.Visible = False And tip.hWnd = 0 And tip.AnimationDuration = 200, "a new Tooltip"
Check tip.MeasureTip(tw, th, "Script") And tw > 10 And th > 10, "MeasureTip gives a size"
Check tip.MeasureTip(tw, th) = False And tw = 0, "MeasureTip without text"
On Error Resume Next
tip.Delay = -1
Check Err.Number = 5, "a negative Delay raises 5, got " & Err.Number
Err.Clear
tip.AddTool4 0, Nothing
Check Err.Number = 91, "AddTool4 of Nothing raises 91, got " & Err.Number
Err.Clear
On Error GoTo 0
Check tip.ShowTip(300, 200) = False, "ShowTip without text"
tip.Text = "From a script"
Check tip.ShowTip(300, 200) And tip.Visible, "ShowTip"
tip.HideTip
Check tip.Visible = False, "HideTip"

If failures = 0 Then
    WScript.Echo "windows.vbs: OK"
Else
    WScript.Echo "windows.vbs: " & failures & " check(s) failed"
End If
