' The graphics classes as a VBScript user sees them: a MemoryDC made by
' GDIMethods, drawn on and copied into DIB sections, JPEG files, a 32-bit
' bitmap file, and the errors a script can meet. The last line is
' "graphics.vbs: OK" when every check passed (a run-time error ends a script
' silently under Wine).
Option Explicit

Dim failures: failures = 0
Sub Check(ok, what)
    If Not ok Then
        failures = failures + 1
        WScript.Echo "FAILED: " & what
    End If
End Sub

Dim fso, folder, gdi, m, pic, d, r, j, a, p, target, jpgFile, bmpFile, saved, loaded
Set fso = CreateObject("Scripting.FileSystemObject")
folder = fso.GetSpecialFolder(2) & "\tova_graphics_vbs"
If Not fso.FolderExists(folder) Then fso.CreateFolder folder
jpgFile = folder & "\picture.jpg"
bmpFile = folder & "\alpha.bmp"

' --- MemoryDC from the factory, cleared white, drawn on
Set gdi = CreateObject("TOVA32.GDIMethods")
Set m = gdi.CreateMemoryDC(64, 48, RGB(255, 255, 255))
Check m.Width = 64 And m.Height = 48 And m.hDC <> 0, "CreateMemoryDC 64 x 48"
Check m.GetPixel(63, 47) = RGB(255, 255, 255), "a given back colour clears the surface"
Check m.BackMode = 1 And m.StretchBltMode = 3, "transparent text, colour-on-colour stretching"
Check gdi.DrawEllipse(m.hDC, 4, 4, 60, 44, RGB(0, 0, 255), 0, 2, RGB(0, 255, 0)), "DrawEllipse on the surface"
Check m.GetPixel(32, 24) = RGB(0, 255, 0), "the ellipse's fill"
Check m.SetPixel(1, 1, RGB(255, 0, 0)) = RGB(255, 0, 0), "SetPixel"
Check m.TextWidth("Hello") > 0 And m.TextHeight("Hello") > 0, "text measurement"
Check m.Rectangle.Width = 64 And m.Rectangle.Height = 48, "Rectangle fitted to the surface"
Set pic = m.Picture
Check Not pic Is Nothing, "Picture"

' --- DIBSection from the picture, resampled; PaintMethods paints it back
Set d = CreateObject("TOVA32.DIBSection")
Check IsEmpty(d.CreateFromPicture(pic)), "CreateFromPicture returns Empty"
Check d.Width = 64 And d.Height = 48 And d.BytesPerScanLine = 192, "the DIB has the picture's size"
Set r = d.Resample(24, 32)
Check r.Width = 32 And r.Height = 24, "Resample takes the height first"
Check Not d.CopyToClipboard(), "CopyToClipboard as DIB offers nothing"
Set target = CreateObject("TOVA32.MemoryDC")
Check target.SetDimensions(64, 48), "SetDimensions"
Set p = CreateObject("TOVA32.PaintMethods")
Check p.StretchPaintNormalStdPic(target.hDC, 0, 0, 0, 0, d.Picture), "StretchPaintNormalStdPic, own size"
Check target.GetPixel(32, 24) = RGB(0, 255, 0) And target.GetPixel(1, 1) = RGB(255, 0, 0), "painted pixels"

' --- JPEG: failures are False; with the codec, a file round trip
Set j = CreateObject("TOVA32.JPEGMethods")
Check Not j.LoadJPG(d, folder & "\missing.jpg"), "LoadJPG of a missing file is False"
If j.SaveJPG(d, jpgFile, 90) Then
    Set loaded = CreateObject("TOVA32.DIBSection")
    Check j.LoadJPG(loaded, jpgFile), "LoadJPG of a saved file"
    Check loaded.Width = 64 And loaded.Height = 48, "the loaded size"
    Check j.SaveJPG(loaded, jpgFile, 30), "SaveJPG over an existing file"
Else
    WScript.Echo "note: the JPEG codec cannot encode yet; round trip not checked"
End If

' --- AlphaDIBSection: DrawDib switch, bitmap file, error 17
Set a = CreateObject("TOVA32.AlphaDIBSection")
Check a.Create(16, 8), "AlphaDIBSection.Create"
Check a.BytesPerScanLine = 64, "4 bytes per pixel"
a.UseDrawDib = True
a.UseDrawDib = False
Check a.UseDrawDib, "UseDrawDib reads True until ClearUp"
a.RandomiseBits True
a.PreMultiplyAlpha
a.AlphaPaintPicture target.hDC
Check a.SavePicture(bmpFile), "SavePicture"
Check fso.GetFile(bmpFile).Size = 62 + 16 * 8 * 4, "62 header bytes and the pixels"
a.ClearUp
Check Not a.UseDrawDib, "ClearUp closes DrawDib"

On Error Resume Next
a.SavePicture folder & "\no\such\folder\x.bmp"
Check Err.Number = 17, "SavePicture to a missing folder raises 17, got " & Err.Number
Check Right(Err.Source, 12) = ".cDIBSection", "source ends with .cDIBSection: " & Err.Source
Check Len(Err.Description) > 0, "the system's message"
Err.Clear
Set m = gdi.CreateMemoryDC(0, 10)
Check Err.Number = 5, "CreateMemoryDC(0, 10) raises 5, got " & Err.Number
Err.Clear
On Error GoTo 0

' --- without a surface
Check Not target.SetDimensions(0, 10), "SetDimensions(0, 10) is False"
Check target.hDC = 0 And target.Width = 0, "no surface"
Check IsNull(target.BackColor), "BackColor without a surface is Null"
Check target.Picture Is Nothing, "Picture without a surface is Nothing"

fso.DeleteFolder folder, True
If failures = 0 Then
    WScript.Echo "graphics.vbs: OK"
Else
    WScript.Echo "graphics.vbs: " & failures & " check(s) failed"
End If
