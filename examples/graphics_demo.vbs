' Draws a small picture off-screen with the graphics classes and saves it as
' a JPEG file and as a 32-bit bitmap file, saying what happens.
'   cscript //nologo graphics_demo.vbs FOLDER
' The last line is "graphics_demo.vbs: done".
Option Explicit

Dim folder, gdi, api, paint, m, sky, dib, jpeg, alpha, copy, x, fso, jpgFile, bmpFile
folder = WScript.Arguments(0)
jpgFile = folder & "\graphics_demo.jpg"
bmpFile = folder & "\graphics_demo.bmp"
Set fso = CreateObject("Scripting.FileSystemObject")
Set gdi = CreateObject("TOVA32.GDIMethods")
Set api = CreateObject("TOVA32.APIMethods")
Set paint = CreateObject("TOVA32.PaintMethods")

' A surface of 320 x 200, cleared to white by the factory.
Set m = gdi.CreateMemoryDC(320, 200, RGB(255, 255, 255))
WScript.Echo "GDIMethods.CreateMemoryDC made a " & m.Width & " x " & m.Height & " surface of " & m.ColorDepth & " bits per pixel, cleared to white."

' A sky gradient, a sun, a hill and a house, drawn on its hDC.
api.DrawGradient m.hDC, 0, 0, 320, 140, RGB(40, 90, 200), RGB(200, 230, 255), True
gdi.DrawEllipse m.hDC, 230, 20, 290, 80, RGB(230, 160, 0), 0, 2, RGB(255, 210, 40)
gdi.DrawEllipse m.hDC, -80, 110, 420, 330, RGB(30, 110, 30), 0, 1, RGB(60, 160, 60)
gdi.DrawRectangle m.hDC, 60, 100, 140, 160, RGB(90, 40, 20), 0, 2, RGB(200, 120, 80)
gdi.DrawRoundRect m.hDC, 90, 125, 110, 160, RGB(60, 30, 10), 0, 1, RGB(110, 60, 30), 0, 4, 6, 6
WScript.Echo "Drew a gradient sky, a sun, a hill and a house; the sun's centre is colour &H" & Hex(m.GetPixel(260, 50)) & "."

' A small copy of the picture, pasted with its white left out.
Set sky = gdi.CreateMemoryDC(80, 50, RGB(255, 255, 255))
gdi.DrawEllipse sky.hDC, 10, 10, 70, 40, RGB(0, 0, 0), 0, 1, RGB(250, 250, 250)
m.CopyPicture sky.Picture, 10, 10, 0, 0, RGB(255, 255, 255)
WScript.Echo "CopyPicture pasted a cloud, leaving out its white background."

' Into a 24-bit DIB section, then JPEG.
Set dib = CreateObject("TOVA32.DIBSection")
dib.CreateFromPicture m.Picture
WScript.Echo "DIBSection.CreateFromPicture: " & dib.Width & " x " & dib.Height & ", " & dib.BytesPerScanLine & " bytes per row."
' Halved with Resample and painted back into the corner (the DIB is made again from the result).
Set x = dib.Resample(100, 160)
paint.StretchPaintNormalStdPic m.hDC, 160, 100, 0, 0, x.Picture
dib.CreateFromPicture m.Picture
WScript.Echo "Resample(100, 160) made a " & x.Width & " x " & x.Height & " copy, painted back with PaintMethods."


' JPEG at quality 85.
Set jpeg = CreateObject("TOVA32.JPEGMethods")
If jpeg.SaveJPG(dib, jpgFile, 85) Then
    WScript.Echo "JPEGMethods.SaveJPG wrote " & jpgFile & " (" & fso.GetFile(jpgFile).Size & " bytes at quality 85)."
    Set copy = CreateObject("TOVA32.DIBSection")
    If jpeg.LoadJPG(copy, jpgFile) Then WScript.Echo "LoadJPG read it back: " & copy.Width & " x " & copy.Height & "."
Else
    WScript.Echo "JPEGMethods.SaveJPG could not encode (no JPEG codec in this build)."
End If

' Into a 32-bit DIB section, then a bitmap file.
Set alpha = CreateObject("TOVA32.AlphaDIBSection")
alpha.CreateFromPicture m.Picture
If alpha.SavePicture(bmpFile) Then
    WScript.Echo "AlphaDIBSection.SavePicture wrote " & bmpFile & " (" & fso.GetFile(bmpFile).Size & " bytes: 62 header bytes and 4 per pixel)."
End If

' Effects: the scene as thumbnails painted plainly, disabled, shadowed,
' colourised and faded, and an embossed star, on a radial gradient with frames.
Dim fx, scene, fxJpg, fxBmp, bytes, back, w, h, sepia
fxJpg = folder & "\graphics_effects.jpg"
fxBmp = folder & "\graphics_effects.bmp"
Set scene = m.Picture
Set fx = gdi.CreateMemoryDC(480, 260, RGB(255, 255, 255))
gdi.DrawRadialGradient fx.hDC, 0, 0, 480, 260, RGB(255, 250, 220), RGB(120, 140, 180)
paint.StretchPaintNormalStdPic fx.hDC, 10, 10, 150, 94, scene
paint.StretchPaintDisabledStdPic fx.hDC, 165, 10, 150, 94, scene
' Embossing shows a picture's ink (what is not white): a black star on white.
Dim star
Set star = gdi.CreateMemoryDC(150, 94, RGB(255, 255, 255))
gdi.DrawPolygon star.hDC, Array(75, 4, 98, 76, 36, 31, 114, 31, 52, 76), 0, 0, 1, 0, 0, 0, 2
paint.StretchPaintEmbossedStdPic fx.hDC, 320, 10, 150, 94, star.Picture, -1, RGB(255, 255, 255), RGB(90, 90, 110)
paint.StretchPaintShadowedStdPic fx.hDC, 10, 120, 150, 94, scene, -1, RGB(40, 40, 40), 6, 6, 110
paint.StretchPaintColourisedStdPic fx.hDC, 165, 120, 150, 94, scene, RGB(200, 120, 40)
paint.StretchPaintAlphaGradientStdPic fx.hDC, 320, 120, 150, 94, scene, 255, 0, 0
For x = 0 To 2
    gdi.DrawFrame3D fx.hDC, 8 + 155 * x, 8, 162 + 155 * x, 106, 1, 2
Next
gdi.DrawAlphaGradient fx.hDC, 0, 226, 480, 260, RGB(20, 40, 120), RGB(20, 40, 120), 0, 200, 0
gdi.DrawPolyline fx.hDC, Array(10, 250, 120, 232, 240, 248, 360, 230, 470, 246), RGB(255, 255, 255), 0, 2
w = 0: h = 0
paint.PictureDimensions fx.Picture, w, h
WScript.Echo "Effects: thumbnails plain, disabled, shadowed, colourised and faded, a star embossed, on a radial gradient, " & w & " x " & h & "."
bytes = paint.CPictureByteArray(fx.Picture, 1, 90)
Set back = paint.CPictureByteArray(bytes)
' (Wine's VBScript cannot take UBound or LenB of a Byte array; Windows' can.)
WScript.Echo "CPictureByteArray made a JPEG file image (VarType " & VarType(bytes) & ", a Byte array) and a " & TypeName(back) & " again from it."
Set sepia = CreateObject("TOVA32.DIBSection")
sepia.CreateFromPicture back
paint.SepiaDIB sepia, 128
WScript.Echo "SepiaDIB toned the copy half way; ReplaceColorDIB found " & paint.ReplaceColorDIB(sepia, RGB(255, 255, 255), RGB(255, 255, 255), 8) & " near-white pixels."
sepia.CreateFromPicture fx.Picture
If jpeg.SaveJPG(sepia, fxJpg, 90) Then WScript.Echo "Saved the effects as " & fxJpg & "."
Set alpha = CreateObject("TOVA32.AlphaDIBSection")
alpha.CreateFromPicture fx.Picture
If alpha.SavePicture(fxBmp) Then WScript.Echo "Saved them as " & fxBmp & " too."

' Errors a script may meet.
On Error Resume Next
alpha.SavePicture folder & "\no\such\folder\x.bmp"
WScript.Echo "SavePicture into a missing folder raises error " & Err.Number & " from " & Err.Source & "."
Err.Clear
Set m = gdi.CreateMemoryDC(0, 10)
WScript.Echo "CreateMemoryDC(0, 10) raises error " & Err.Number & ": " & Err.Description & "."
Err.Clear
paint.GreyscaleDIB Nothing
WScript.Echo "GreyscaleDIB Nothing raises error " & Err.Number & " (no picture to work on)."
Err.Clear
gdi.DrawLinearGradient fx.hDC, 0, 0, 10, 10, 0, 0, 7
WScript.Echo "A gradient direction of 7 raises error " & Err.Number & "."
On Error GoTo 0

WScript.Echo "graphics_demo.vbs: done"
