' APIMethods' system helpers and MiscMethods as a VBScript user calls them:
' list results indexed, records filled from Empty variables, optional
' arguments left out, soft failures and the error numbers.
' The last line is "api.vbs: OK" when every check passed (a run-time error
' ends a script silently under Wine).
Option Explicit

Dim failures: failures = 0
Sub Check(ok, what)
    If Not ok Then
        failures = failures + 1
        WScript.Echo "FAILED: " & what
    End If
End Sub

Function ErrorOf()
    ErrorOf = Err.Number
    Err.Clear
End Function

Dim a, m, g, b, r, p, env, i, found, major, minor, build, x, y, shell, grid

Set a = CreateObject("TOVA32.APIMethods")
Set m = CreateObject("TOVA32.MiscMethods")

' --- words, unsigned views, GUIDs
Check a.HiWord(&H12345678) = &H1234, "HiWord"
Check a.LoWord(&H1234FFFF) = 65535 And a.LoWord(&H1234FFFF, True) = -1, "LoWord, signed"
Check a.MakeLong(&HFFFF, &HFFFF) = -1, "MakeLong never overflows"
Check a.LongToUnsigned(-1) = 4294967295, "LongToUnsigned"
Check a.UnsignedToLong(4294967295) = -1, "UnsignedToLong"
Check a.ShiftLeft(1, 31) = &H80000000 And a.ShiftRight(&H80000000, 31, True) = -1, "shifts"
On Error Resume Next
a.UnsignedToLong 4294967296
Check ErrorOf() = 6, "UnsignedToLong beyond 32 bits raises 6"
a.ShiftLeft 1, 32
Check ErrorOf() = 5, "a shift of 32 raises 5"
On Error GoTo 0
g = a.CreateGUID
Check Len(g) = 38 And a.IsGUID(g) And Len(a.CreateGUID(False)) = 36, "CreateGUID with and without braces"
b = a.GUIDToBytes("{00112233-4455-6677-8899-AABBCCDDEEFF}")
' GUIDToBytes gives a Byte array, which Wine's VBScript cannot index: C++ checks the bytes.
Check a.BytesToGUID(b) = "{00112233-4455-6677-8899-AABBCCDDEEFF}", "and back"
Check a.BytesToGUID(Array(0, 0, 0, &H33, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), False) = "33000000-0000-0000-0000-000000000000", _
      "BytesToGUID from a script's array"
Check IsEmpty(a.GUIDToBytes("nope")) And a.BytesToGUID(Array(1, 2)) = "", "soft failures"

' --- folders, version, environment
Set shell = CreateObject("WScript.Shell")
Check LCase(a.GetWindowsFolder) = LCase(shell.ExpandEnvironmentStrings("%SystemRoot%")), "GetWindowsFolder"
Check Right(LCase(a.GetSystemWow64Folder), 9) = "\syswow64", "GetSystemWow64Folder"
Check a.SetCurrentFolder("C:\no such folder") = False And a.LastDllError = 2, "SetCurrentFolder of a missing folder"
Check a.LastDllError = 2, "reading LastDllError leaves it as it is"
Check a.GetOSVersion(major, minor, build) And major > 0, "GetOSVersion fills its outputs"
Check InStr(a.GetOSVersionString, major & "." & minor & "." & build) = 1, "GetOSVersionString"
Check a.IsOSVersionAtLeast(major) And Not a.IsOSVersionAtLeast(major + 1), "IsOSVersionAtLeast"
Check a.SetEnvironmentVariable("TOVA_SCRIPT", "v1") And a.GetEnvironmentVariable("TOVA_SCRIPT") = "v1", "environment"
env = a.GetEnvironmentVariables
found = False
For i = 0 To UBound(env, 2)
    If env(0, i) = "TOVA_SCRIPT" Then found = (env(1, i) = "v1")
Next
Check found, "GetEnvironmentVariables lists names and values"
Check a.SetEnvironmentVariable("TOVA_SCRIPT") And a.GetEnvironmentVariable("TOVA_SCRIPT") = "" _
      And a.LastDllError = 203, "leaving Value out removes the variable"
Check a.ExpandEnvironmentStrings("%NOPE_TOVA%") = "%NOPE_TOVA%", "unknown names are kept"

' --- screen, records, colours, pointer
Check a.GetScreenWidth > 0 And a.GetMonitorCount = 1 And a.GetTwipsPerPixel = 15, "screen"
Check a.GetVirtualScreenRect(r), "GetVirtualScreenRect fills an Empty variable"
Check r(2) - r(0) = a.GetScreenWidth And r(3) - r(1) = a.GetScreenHeight, "as Array(Left, Top, Right, Bottom)"
Check a.GetMonitorRect(r) And r(2) = a.GetScreenWidth, "GetMonitorRect with the window left out"
Check a.PointsToPixels(12) = 16, "PointsToPixels at 96 DPI"
Check a.SetCursorPosition(100, 120) And a.GetCursorPosition(p) And p(0) = 100 And p(1) = 120, "the pointer"
Check a.GetCursorPosition2(x, y) And x = 100 And y = 120, "GetCursorPosition2"
Check a.BlendColors(0, &HFFFFFF) = &H808080 And a.BlendColors(0, &HFFFFFF, 0.25) = &H404040, "BlendColors, Ratio optional"
Check a.ColorToHTML(&H30201) = "#010203" And a.HTMLToColor("#fff") = &HFFFFFF And a.HTMLToColor("#12345") = -1, "HTML colours"
Check a.TranslateColor(&H80000005) = a.GetSystemColor(5) And a.TranslateColor(&H800000FF) = -1, "TranslateColor"
On Error Resume Next
a.MakeColor -1, 0, 0
Check ErrorOf() = 5, "MakeColor of a negative channel raises 5"
a.Beep 20
Check ErrorOf() = 5, "Beep below 37 Hz raises 5"
On Error GoTo 0
Check a.SetClipboardText("from a script") And a.GetClipboardText = "from a script", "clipboard"
Check a.ClearClipboard And a.GetClipboardText = "", "ClearClipboard"
Check Len(a.GetErrorText(2)) > 0 And a.GetErrorText(&H80070005) = a.GetErrorText(5), "GetErrorText"

' --- windows, work area, fonts
Dim wins, names, font, wa
wins = a.GetTopLevelWindows(m.CurrentProcessId)
Check IsArray(wins), "GetTopLevelWindows gives a list"
For i = 0 To UBound(wins)
    Check a.GetWindowProcessId(wins(i)) = m.CurrentProcessId, "each window of this process"
Next
Check a.IsWindow(0) = False And a.GetWindowText(0) = "" And a.LastDllError = 1400, "no window"
Check IsEmpty(a.GetChildWindows(0)), "GetChildWindows of no window is Empty"
Check a.GetWorkArea(wa) And wa(2) > wa(0) And wa(3) > wa(1), "GetWorkArea fills an Empty variable"
names = a.GetFontNames
Check UBound(names) >= 0, "GetFontNames lists fonts"
Check a.FontExists(names(0)) And Not a.FontExists("No Such Font"), "FontExists"
Set font = a.CreateStdFont(names(0), 12)
Check font.Name = names(0), "CreateStdFont"
Check a.GetTextWidth("abcd", font) > a.GetTextWidth("ab", font) And a.GetTextWidth("") = 0, "GetTextWidth"
Check a.GetTextHeight("x" & vbCrLf & "y", font) = 2 * a.GetTextHeight("x", font), "GetTextHeight"
Check a.GetTextWidth("abcd") > 0, "GetTextWidth in the message font"
Check a.DeleteGDIObject(a.CreateFontHandle(font)), "a font handle made and deleted"
Check a.GetSystemFont(4).Size > 0, "GetSystemFont"

' --- MiscMethods
Check m.DoEvents >= 0 And m.WaitWithEvents(10), "the message pump"
Check m.IIf(Null, 1, 2) = 2 And m.IIf(True, "a", "b") = "a", "IIf"
Check IsEmpty(m.NullToValue(Null)) And m.NullToValue(Empty, 5) = 5 And m.NullToValue(3, 5) = 3, "NullToValue"
Check m.SafeDivide(1, 0) = 0 And IsNull(m.SafeDivide(1, 0, Null)) And m.SafeDivide(1, 4) = 0.25, "SafeDivide"
Check m.Clamp(5, 0, 3) = 3, "Clamp"
Check m.MinOf(Array(3, 1.5, Null, 2)) = 1.5 And m.MaxOf(Array(3, 1.5, Null, 2)) = 3, "MinOf, MaxOf"
Check IsNull(m.MinOf(Array())), "MinOf of nothing is Null"
Check m.RoundNumber(2.5) = 3 And m.RoundNumber(-2.5) = -3 And m.RoundNumber(2.5, 0, 0) = 2, "RoundNumber"
Check m.RoundNumber(2.675, 2) = 2.68 And m.RoundNumber(2.665, 2, 0) = 2.66 And m.RoundNumber(1234.5, -2) = 1200, _
      "RoundNumber by decimal digits"
Check TypeName(m.RoundNumber(CCur(2.345), 2, 0)) = "Currency" And m.RoundNumber(CCur(2.345), 2, 0) = 2.34, _
      "Currency stays Currency"
Check m.Modulo(-1, 24) = 23 And m.Modulo(5.5, -2) = -0.5, "Modulo"
ReDim grid(1, 4)
Check m.ArrayCount(grid, 2) = 5 And m.ArrayCount(grid, 3) = 0 And m.ArrayCount(Empty) = 0, "ArrayCount"
Check m.CurrentProcessId <> 0 And m.CurrentThreadId <> 0, "ids"
x = m.StartStopwatch
m.Pause 50
Check m.ReadStopwatch(x) >= 45, "stopwatch"
On Error Resume Next
m.Modulo 1, 0
Check ErrorOf() = 11, "Modulo by zero raises 11"
m.IIf "x", 1, 2
Check ErrorOf() = 13, "IIf of text without a truth value raises 13"
m.Clamp 1, 3, 0
Check ErrorOf() = 5, "Clamp with Minimum above Maximum raises 5"
m.MinOf Array(1, "a")
Check ErrorOf() = 13, "MinOf of numbers and text raises 13"
On Error GoTo 0

If failures = 0 Then
    WScript.Echo "api.vbs: OK"
Else
    WScript.Echo "api.vbs: " & failures & " check(s) failed"
End If
