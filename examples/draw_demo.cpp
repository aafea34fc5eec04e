// draw_demo: draws a small picture with the registered TOVA200.DLL and saves it
// as a bitmap file.
//
//   draw_demo [picture.bmp]      (default: demo.bmp next to the program)
//
// The objects are created by ProgID, as any client does, and called early-bound
// through the C++ header generated from the type library (frame/typelib.h wraps
// it: there the record RECT is TOVA_RECT). Optional by-reference parameters take
// a pointer to the value, or nullptr for "omitted". The program also listens to
// the Rectangle's Changed event and prints every change of its edges.
#include "frame/typelib.h"
#include "frame/values.h"
#include "demo_support.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using tova::ComPtr;

using demo::check;
using demo::create;

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 200;
constexpr DISPID kChangedEvent = 1;

// Device-context handles travel as Long.
LONG handleOf(HDC dc) { return static_cast<LONG>(reinterpret_cast<LONG_PTR>(dc)); }

std::string edges(const TOVA_RECT& r) {
    char b[64];
    std::snprintf(b, sizeof b, "(%ld,%ld)-(%ld,%ld)", static_cast<long>(r.Left), static_cast<long>(r.Top),
                  static_cast<long>(r.Right), static_cast<long>(r.Bottom));
    return b;
}

// Prints the Rectangle's Changed events: the previous edges come as a RECT
// record by reference, the new ones are read from the rectangle itself.
struct ChangeLog {
    _Rectangle* source;
    int count = 0;
    void onEvent(DISPID id, DISPPARAMS* params) {
        if (id != kChangedEvent || params->cArgs != 1) return;
        const VARIANT& arg = params->rgvarg[0];
        if (V_VT(&arg) != (VT_RECORD | VT_BYREF) || !V_RECORD(&arg)) return;
        const TOVA_RECT before = *static_cast<const TOVA_RECT*>(V_RECORD(&arg));
        TOVA_RECT now{};
        source->get_RECT(&now);
        ++count;
        std::printf("    Changed: %s -> %s\n", edges(before).c_str(), edges(now).c_str());
    }
};

// The picture: a 32-bit top-down DIB section selected into a memory DC.
struct Canvas {
    HDC dc = nullptr;
    HBITMAP bitmap = nullptr;
    HGDIOBJ previous = nullptr;
    const BYTE* pixels = nullptr;  // BGRA, row by row from the top

    Canvas() {
        BITMAPINFO bi{};
        bi.bmiHeader.biSize = sizeof bi.bmiHeader;
        bi.bmiHeader.biWidth = kWidth;
        bi.bmiHeader.biHeight = -kHeight;
        bi.bmiHeader.biPlanes = 1;
        bi.bmiHeader.biBitCount = 32;
        bi.bmiHeader.biCompression = BI_RGB;
        void* bits = nullptr;
        dc = CreateCompatibleDC(nullptr);
        bitmap = CreateDIBSection(nullptr, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
        if (!dc || !bitmap) {
            std::fprintf(stderr, "draw_demo: cannot make a %dx%d bitmap\n", kWidth, kHeight);
            std::exit(1);
        }
        pixels = static_cast<const BYTE*>(bits);
        previous = SelectObject(dc, bitmap);
    }
    ~Canvas() {
        SelectObject(dc, previous);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }

    // Writes a 24-bit bottom-up .bmp file, the form every viewer reads.
    bool save(const std::string& path) const {
        GdiFlush();
        const DWORD rowBytes = (kWidth * 3 + 3) & ~3u;
        BITMAPFILEHEADER fh{};
        BITMAPINFOHEADER ih{};
        ih.biSize = sizeof ih;
        ih.biWidth = kWidth;
        ih.biHeight = kHeight;
        ih.biPlanes = 1;
        ih.biBitCount = 24;
        ih.biCompression = BI_RGB;
        ih.biSizeImage = rowBytes * kHeight;
        fh.bfType = 0x4D42;  // "BM"
        fh.bfOffBits = sizeof fh + sizeof ih;
        fh.bfSize = fh.bfOffBits + ih.biSizeImage;
        FILE* f = std::fopen(path.c_str(), "wb");
        if (!f) return false;
        bool ok = std::fwrite(&fh, sizeof fh, 1, f) == 1 && std::fwrite(&ih, sizeof ih, 1, f) == 1;
        std::vector<BYTE> row(rowBytes, 0);
        for (int y = kHeight - 1; ok && y >= 0; --y) {
            const BYTE* src = pixels + static_cast<size_t>(y) * kWidth * 4;
            for (int x = 0; x < kWidth; ++x) {
                row[x * 3 + 0] = src[x * 4 + 0];
                row[x * 3 + 1] = src[x * 4 + 1];
                row[x * 3 + 2] = src[x * 4 + 2];
            }
            ok = std::fwrite(row.data(), rowBytes, 1, f) == 1;
        }
        return std::fclose(f) == 0 && ok;
    }
};

std::string defaultPath() {
    char exe[MAX_PATH];
    DWORD n = GetModuleFileNameA(nullptr, exe, MAX_PATH);
    std::string path(exe, n < MAX_PATH ? n : 0);
    size_t slash = path.find_last_of("\\/");
    return (slash == std::string::npos ? std::string() : path.substr(0, slash + 1)) + "demo.bmp";
}

void say(const char* text) { std::printf("%s\n", text); }

// Values for the by-reference parameters of the early-bound calls.
struct Style {
    LONG borderColor;
    PenStyleConstants borderStyle;
    LONG borderWidth;
    LONG backColor;
    BrushStyleConstants backStyle;
    HatchStyleConstants hatch;
};

int run(const std::string& path) {
    ComPtr<_Rectangle> rect = create<_Rectangle>(L"TOVA32.Rectangle", IID__Rectangle);
    ComPtr<_GDIMethods> gdi = create<_GDIMethods>(L"TOVA32.GDIMethods", IID__GDIMethods);
    ComPtr<_APIMethods> api = create<_APIMethods>(L"TOVA32.APIMethods", IID__APIMethods);
    say("Created TOVA32.Rectangle, TOVA32.GDIMethods and TOVA32.APIMethods by ProgID.");

    ChangeLog changes{rect.get()};
    demo::Sink sink(DIID___Rectangle, [&](DISPID id, DISPPARAMS* p) { changes.onEvent(id, p); });
    sink.connect(rect.get());
    say("Listening to the rectangle's Changed event.");

    Canvas canvas;
    const LONG hdc = handleOf(canvas.dc);
    VARIANT_BOOL ok = VARIANT_FALSE;
    LONG result = 0;

    // Sky: the rectangle takes the size of the bitmap in the DC, then fills itself.
    say("Sky: FitToDC sizes the rectangle to the picture, DrawGradient fills it from top to bottom.");
    check(rect->FitToDC(hdc, &ok), "FitToDC");
    LONG skyTop = RGB(25, 55, 140), skyBottom = RGB(175, 210, 245);
    VARIANT_BOOL vertical = VARIANT_TRUE;
    check(rect->DrawGradient(hdc, &skyTop, &skyBottom, &vertical), "Rectangle.DrawGradient");

    // Ground: the same gradient routine called through APIMethods, with four edges.
    say("Ground: APIMethods.DrawGradient fills the lowest 50 pixels.");
    LONG gl = 0, gt = 150, gr = kWidth, gb = kHeight;
    check(api->DrawGradient(hdc, &gl, &gt, &gr, &gb, RGB(95, 175, 70), RGB(35, 100, 35), VARIANT_TRUE, &ok),
          "APIMethods.DrawGradient");

    // Sun: a hatched halo on the inflated rectangle, the sun itself once deflated again.
    say("Sun: SetRectangle3, Inflate for a hatched halo (DrawEllipse), Deflate back for the sun.");
    SetBkMode(canvas.dc, TRANSPARENT);  // hatch lines only, the sky shows between them
    LONG l = 248, t = 16, r = 288, b = 56;
    check(rect->SetRectangle3(&l, &t, &r, &b), "SetRectangle3");
    LONG halo = 9;
    check(rect->Inflate(&halo, &halo), "Inflate");
    Style haloStyle{0, PS_NULL, 0, RGB(255, 235, 120), BS_HATCHED, HS_DIAGCROSS};
    check(rect->DrawEllipse(hdc, &haloStyle.borderColor, &haloStyle.borderStyle, &haloStyle.borderWidth,
                            &haloStyle.backColor, &haloStyle.backStyle, &haloStyle.hatch),
          "DrawEllipse (halo)");
    check(rect->Deflate(&halo, &halo), "Deflate");
    Style sun{RGB(240, 140, 20), PS_SOLID, 2, RGB(255, 215, 40), BS_SOLID, HS_CROSS};
    check(rect->DrawEllipse(hdc, &sun.borderColor, &sun.borderStyle, &sun.borderWidth, &sun.backColor,
                            &sun.backStyle, &sun.hatch),
          "DrawEllipse (sun)");

    // House: the body, then the roof on a saved state, then back to the body.
    say("House: SetRectangle4 and Draw for the walls; PushState, a DrawRound roof, PopState.");
    l = 40, t = 95;
    LONG w = 110, h = 60;
    check(rect->SetRectangle4(&l, &t, &w, &h), "SetRectangle4");
    Style walls{RGB(90, 50, 20), PS_SOLID, 2, RGB(240, 225, 190), BS_SOLID, HS_CROSS};
    check(rect->Draw(hdc, &walls.borderColor, &walls.borderStyle, &walls.borderWidth, &walls.backColor,
                     &walls.backStyle, &walls.hatch),
          "Draw (walls)");
    check(rect->PushState(&ok), "PushState");
    l = 30, t = 76, r = 160, b = 101;
    check(rect->SetRectangle3(&l, &t, &r, &b), "SetRectangle3 (roof)");
    Style roof{RGB(110, 20, 20), PS_SOLID, 2, RGB(200, 50, 40), BS_SOLID, HS_CROSS};
    check(rect->DrawRound(hdc, &roof.borderColor, &roof.borderStyle, &roof.borderWidth, &roof.backColor,
                          &roof.backStyle, &roof.hatch),
          "DrawRound (roof)");
    check(rect->PopState(&ok), "PopState");

    // Windows: one drawn, then the same rectangle offset for the second.
    say("Windows: a small rectangle drawn with a sunken DrawEdge, then Offset to the right for the second.");
    l = 52, t = 110, w = 24, h = 20;
    check(rect->SetRectangle4(&l, &t, &w, &h), "SetRectangle4 (window)");
    Style glass{RGB(60, 60, 60), PS_SOLID, 1, RGB(150, 200, 235), BS_SOLID, HS_CROSS};
    EdgeStyleConstants sunken = EDGE_SUNKEN;
    EdgeModeConstants around = BF_RECT;
    for (int i = 0; i < 2; ++i) {
        if (i > 0) {
            LONG dx = 62, dy = 0;
            check(rect->Offset(&dx, &dy), "Offset");
        }
        check(rect->Draw(hdc, &glass.borderColor, &glass.borderStyle, &glass.borderWidth, &glass.backColor,
                         &glass.backStyle, &glass.hatch),
              "Draw (window)");
        check(rect->DrawEdge(hdc, &sunken, &around, &result), "DrawEdge (window)");
    }

    // Door and tree: the stateless helpers take the edges as arguments.
    say("Door and tree: GDIMethods.DrawRoundRect, DrawRectangle and DrawEllipse.");
    check(gdi->DrawRoundRect(hdc, 84, 122, 106, 156, RGB(70, 35, 10), PS_SOLID, 1, RGB(140, 80, 35), BS_SOLID,
                             HS_CROSS, 10, 10, &ok),
          "GDIMethods.DrawRoundRect");
    check(gdi->DrawRectangle(hdc, 184, 128, 194, 160, RGB(60, 35, 15), PS_SOLID, 1, RGB(110, 70, 30), BS_SOLID,
                             HS_CROSS, &ok),
          "GDIMethods.DrawRectangle");
    check(gdi->DrawEllipse(hdc, 164, 86, 214, 136, RGB(20, 80, 20), PS_SOLID, 2, RGB(50, 140, 50), BS_SOLID,
                           HS_CROSS, &ok),
          "GDIMethods.DrawEllipse");

    // Sign: a raised panel with centred text.
    say("Sign: a raised DrawEdge with BF_MIDDLE, and DrawText centred in it.");
    l = 222, t = 104, r = 306, b = 140;
    check(rect->SetRectangle3(&l, &t, &r, &b), "SetRectangle3 (sign)");
    EdgeStyleConstants raised = EDGE_RAISED;
    EdgeModeConstants filled = static_cast<EdgeModeConstants>(BF_RECT | BF_MIDDLE);
    check(rect->DrawEdge(hdc, &raised, &filled, &result), "DrawEdge (sign)");
    HFONT font = CreateFontW(-13, 0, 0, 0, FW_BOLD, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                             CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_SWISS, L"Tahoma");
    HGDIOBJ oldFont = SelectObject(canvas.dc, font);
    SetTextColor(canvas.dc, RGB(20, 20, 90));
    BSTR caption = SysAllocString(L"TOVA32");
    DrawTextFormatConstants centred = static_cast<DrawTextFormatConstants>(DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    check(rect->DrawText(hdc, &caption, &centred, &result), "Rectangle.DrawText");
    SysFreeString(caption);

    // Footer: APIMethods.DrawText with a RECT record.
    say("Footer: APIMethods.DrawText along the bottom edge.");
    SetTextColor(canvas.dc, RGB(255, 255, 255));
    BSTR footer = SysAllocString(L"drawn by TOVA200.DLL");
    TOVA_RECT line{0, 178, kWidth, 198};
    check(api->DrawText(hdc, &footer, &line, static_cast<DrawTextFormatConstants>(DT_CENTER | DT_SINGLELINE),
                        &result),
          "APIMethods.DrawText");
    SysFreeString(footer);
    SelectObject(canvas.dc, oldFont);
    DeleteObject(font);

    // Kite: a polygon built point by point, turned about its centre, filled.
    say("Kite: a Polygon of four points, Rotate about its CentrePoint by 25 degrees, Draw filled.");
    ComPtr<_Polygon> kite = create<_Polygon>(L"TOVA32.Polygon", IID__Polygon);
    ComPtr<_Points> corners;
    check(kite->get_Points(corners.put()), "Polygon.Points");
    const double shape[][2] = {{110, 14}, {128, 38}, {110, 70}, {92, 38}};
    for (const auto& c : shape) {
        VARIANT last;
        VariantInit(&last);
        V_VT(&last) = VT_ERROR;
        V_ERROR(&last) = DISP_E_PARAMNOTFOUND;
        double x = c[0], y = c[1];
        ComPtr<_Point> added;
        check(corners->Add(&last, &x, &y, added.put()), "Points.Add");
    }
    ComPtr<_Point> centre;
    check(kite->get_CentrePoint(centre.put()), "CentrePoint");
    double cx = 0, cy = 0, angle = 25 * 3.14159265358979 / 180;
    centre->get_X(&cx);
    centre->get_Y(&cy);
    check(kite->Rotate(&angle, &cx, &cy), "Rotate");
    PenStyleConstants kiteLine = PS_SOLID;
    LONG kiteBorder = RGB(120, 20, 90), kiteWidth = 2, kiteFill = RGB(235, 90, 160);
    BrushStyleConstants kiteBrush = BS_SOLID;
    HatchStyleConstants kiteHatch = HS_CROSS;
    check(kite->Draw(hdc, &kiteLine, &kiteBorder, &kiteWidth, &kiteFill, &kiteBrush, &kiteHatch), "Polygon.Draw");
    ComPtr<_Rectangle> kiteBounds;
    check(kite->get_Rectangle(kiteBounds.put()), "Polygon.Rectangle");
    TOVA_RECT kb{};
    kiteBounds->get_RECT(&kb);
    std::printf("The turned kite spans %s.\n", edges(kb).c_str());

    // Frame: the whole picture again, outlined with a hollow brush.
    say("Frame: FitToDC again, and GDIMethods.DrawRectangle with BS_HOLLOW around the picture.");
    check(rect->FitToDC(hdc, &ok), "FitToDC");
    TOVA_RECT all{};
    check(rect->get_RECT(&all), "RECT");
    check(gdi->DrawRectangle(hdc, all.Left, all.Top, all.Right, all.Bottom, RGB(15, 30, 70), PS_SOLID, 1, 0,
                             BS_HOLLOW, HS_CROSS, &ok),
          "GDIMethods.DrawRectangle (frame)");

    LONG width = 0, height = 0, midX = 0, midY = 0;
    rect->get_Width(&width);
    rect->get_Height(&height);
    rect->get_MidX(&midX);
    rect->get_MidY(&midY);
    std::printf("The rectangle ends as %s: %ld x %ld, centre (%ld, %ld); Changed was raised %d times.\n",
                edges(all).c_str(), static_cast<long>(width), static_cast<long>(height),
                static_cast<long>(midX), static_cast<long>(midY), changes.count);
    sink.disconnect();

    if (!canvas.save(path)) {
        std::fprintf(stderr, "draw_demo: cannot write %s\n", path.c_str());
        return 1;
    }
    char full[MAX_PATH * 2];
    DWORD n = GetFullPathNameA(path.c_str(), sizeof full, full, nullptr);
    std::printf("Picture (%dx%d) written to %s\n", kWidth, kHeight, n > 0 && n < sizeof full ? full : path.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        std::fprintf(stderr, "draw_demo: CoInitializeEx failed\n");
        return 1;
    }
    int rc = run(argc > 1 ? argv[1] : defaultPath());
    CoUninitialize();
    if (rc == 0) std::printf("draw_demo: done\n");
    return rc;
}
