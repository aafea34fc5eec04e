// DIBSection and JPEGMethods through the DLL: pixels, pictures, resampling,
// JPEG files and buffers, reference files and malformed ones.
#include "support.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

using namespace test;

namespace {

ComPtr<_DIBSection> newDib() { return create<_DIBSection>(CLSID_DIBSection, IID__DIBSection); }
ComPtr<_JPEGMethods> newJpeg() { return create<_JPEGMethods>(CLSID_JPEGMethods, IID__JPEGMethods); }

ComPtr<_DIBSection> dibOf(long w, long h) { return createDib<_DIBSection>(CLSID_DIBSection, IID__DIBSection, w, h); }
uint8_t* bitsOf(_DIBSection* d) { return dibBits(d); }

long lineOf(_DIBSection* d) {
    LONG v = 0;
    d->get_BytesPerScanLine(&v);
    return v;
}

HDC dcOf(_DIBSection* d) {
    LONG h = 0;
    d->get_hDC(&h);
    return tova::toHandle<HDC>(h);
}

// Pixel (x, y) counted from the top, read from memory: blue, green, red.
uint8_t* at(_DIBSection* d, int x, int y) {
    LONG h = 0;
    d->get_Height(&h);
    GdiFlush();
    return bitsOf(d) + (h - 1 - y) * lineOf(d) + x * 3;
}

COLORREF rgbAt(_DIBSection* d, int x, int y) {
    uint8_t* p = at(d, x, y);
    return RGB(p[2], p[1], p[0]);
}

// A smooth test picture: red above, blue below, shaded.
void paintPattern(_DIBSection* d, int w, int h) {
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            uint8_t* p = at(d, x, y);
            if (y < h / 2) { p[2] = static_cast<uint8_t>(160 + x * 90 / w); p[1] = static_cast<uint8_t>(40 + y * 2); p[0] = 30; }
            else { p[2] = 20; p[1] = static_cast<uint8_t>(60 + x * 60 / w); p[0] = static_cast<uint8_t>(150 + (y - h / 2) * 3); }
        }
}

// Mean absolute difference per channel between two sections of one size.
double meanError(_DIBSection* a, _DIBSection* b, int w, int h) {
    double sum = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) sum += std::abs(at(a, x, y)[c] - at(b, x, y)[c]);
    return sum / (3.0 * w * h);
}

std::wstring tempPath(const wchar_t* name) {
    wchar_t dir[MAX_PATH];
    GetTempPathW(MAX_PATH, dir);
    return std::wstring(dir) + L"tova_dib_" + std::to_wstring(GetCurrentProcessId()) + L"_" + name;
}

std::vector<uint8_t> readAll(const std::wstring& path) {
    std::vector<uint8_t> data;
    HANDLE f = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (f == INVALID_HANDLE_VALUE) return data;
    DWORD size = GetFileSize(f, nullptr), got = 0;
    data.resize(size);
    if (size) ReadFile(f, data.data(), size, &got, nullptr);
    CloseHandle(f);
    data.resize(got);
    return data;
}

void writeAll(const std::wstring& path, const std::vector<uint8_t>& data) {
    HANDLE f = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD put = 0;
    if (!data.empty()) WriteFile(f, data.data(), static_cast<DWORD>(data.size()), &put, nullptr);
    CloseHandle(f);
}

// The reference files in tests/data/jpeg, made by libjpeg-turbo's programs:
// JPEG files and their decodes by djpeg as binary PPM.
std::wstring fixture(const char* name) {
    std::string s = std::string("Z:") + TOVA_JPEG_DATA + "/" + name;
    return std::wstring(s.begin(), s.end());
}

// A binary PPM as a section.
ComPtr<_DIBSection> referencePicture(const char* name) {
    std::vector<uint8_t> file = readAll(fixture(name));
    std::string text(file.begin(), file.end());
    int w = 0, h = 0, max = 0, used = 0;
    if (std::sscanf(text.c_str(), "P6 %d %d %d%n", &w, &h, &max, &used) != 3 || max != 255) return {};
    const size_t start = static_cast<size_t>(used) + 1;  // one white-space character ends the header
    if (file.size() < start + static_cast<size_t>(w) * h * 3) return {};
    auto d = dibOf(w, h);
    if (!d) return d;
    const uint8_t* rgb = file.data() + start;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x, rgb += 3) {
            uint8_t* p = at(d.get(), x, y);
            p[0] = rgb[2], p[1] = rgb[1], p[2] = rgb[0];
        }
    return d;
}

bool loadBuffer(_JPEGMethods* j, _DIBSection* d, const std::vector<uint8_t>& data) {
    VARIANT_BOOL ok = VARIANT_FALSE;
    _DIBSection* s = d;
    j->LoadJPGFromPtr(&s, reinterpret_cast<LONG_PTR>(data.data()), static_cast<LONG>(data.size()), &ok);
    return ok == VARIANT_TRUE;
}

std::vector<uint8_t> saveBuffer(_JPEGMethods* j, _DIBSection* d, long quality) {
    std::vector<uint8_t> buf(1 << 20);
    LONG size = static_cast<LONG>(buf.size());
    VARIANT_BOOL ok = VARIANT_FALSE;
    _DIBSection* s = d;
    j->SaveJPGToPtr(&s, reinterpret_cast<LONG_PTR>(buf.data()), &size, quality, &ok);
    buf.resize(ok ? static_cast<size_t>(size) : 0);
    return buf;
}

}  // namespace

// ------------------------------------------------------------------ DIBSection

TEST(DIBSection, BytesPerScanLineAndHandles) {
    const long expected[] = {4, 8, 12, 12, 16};
    for (long w = 1; w <= 5; ++w) {
        auto d = dibOf(w, 2);
        ASSERT_TRUE(d);
        EXPECT_EQ(expected[w - 1], lineOf(d.get())) << "width " << w;
    }
    auto d = dibOf(7, 3);
    LONG v = 0;
    d->get_Width(&v);
    EXPECT_EQ(7, v);
    d->get_Height(&v);
    EXPECT_EQ(3, v);
    d->get_hDib(&v);
    HBITMAP dib = tova::toHandle<HBITMAP>(v);
    DIBSECTION ds{};
    ASSERT_EQ(static_cast<int>(sizeof ds), GetObjectW(dib, sizeof ds, &ds));
    EXPECT_EQ(24, ds.dsBm.bmBitsPixel);
    EXPECT_EQ(3, ds.dsBmih.biHeight) << "positive: bottom-up";
    EXPECT_EQ(bitsOf(d.get()), ds.dsBm.bmBits);
    EXPECT_EQ(dib, GetCurrentObject(dcOf(d.get()), OBJ_BITMAP)) << "selected into its own DC";

    d->ClearUp();
    d->get_hDib(&v);
    EXPECT_EQ(0, v);
    d->get_hDC(&v);
    EXPECT_EQ(0, v);
    EXPECT_EQ(nullptr, bitsOf(d.get()));
    d->get_Width(&v);
    EXPECT_EQ(7, v) << "the header keeps its size";
    EXPECT_EQ(0u, GetObjectType(dib)) << "deleted";
    EXPECT_EQ(S_OK, d->RandomiseBits(VARIANT_FALSE)) << "no DIB: nothing happens";

    VARIANT_BOOL ok = VARIANT_TRUE;
    d->Create(0, 5, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    d->get_hDC(&v);
    EXPECT_EQ(0, v);
    d->Create(-4, 5, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);

    // CreateDIB hands out a DIB it neither keeps nor selects.
    LONG handle = 0;
    d->CreateDIB(0, 4, 4, &handle, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(static_cast<DWORD>(OBJ_BITMAP), GetObjectType(tova::toHandle<HBITMAP>(handle)));
    d->get_hDib(&v);
    EXPECT_EQ(0, v);
    DeleteObject(tova::toHandle<HBITMAP>(handle));
}

TEST(DIBSection, RowsAreBottomUp) {
    auto d = dibOf(5, 4);
    ASSERT_TRUE(d);
    SetPixelV(dcOf(d.get()), 0, 0, RGB(255, 0, 0));
    GdiFlush();
    uint8_t* last = bitsOf(d.get()) + 3 * lineOf(d.get());
    EXPECT_EQ(255, last[2]) << "the top row is last in memory";
    EXPECT_EQ(0, last[0]);
    uint8_t* first = bitsOf(d.get());
    first[0] = 200, first[1] = 100, first[2] = 50;
    EXPECT_EQ(RGB(50, 100, 200), GetPixel(dcOf(d.get()), 0, 3)) << "the first row in memory is the bottom row";
}

TEST(DIBSection, PaintAndLoadWithDefaults) {
    auto d = dibOf(4, 3);
    ASSERT_TRUE(d);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) { uint8_t* p = at(d.get(), x, y); p[0] = 10, p[1] = 20, p[2] = static_cast<uint8_t>(30 + x + 10 * y); }
    Canvas c(10, 10, RGB(0, 0, 0));
    ASSERT_EQ(S_OK, d->PaintPicture(c.handle(), 2, 1, -1, -1, 0, 0, SRCCOPY));
    EXPECT_EQ(RGB(30, 20, 10), c.pixel(2, 1));
    EXPECT_EQ(RGB(53, 20, 10), c.pixel(5, 3));
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(6, 3)) << "its own width";
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(2, 4)) << "its own height";
    d->PaintPicture(c.handle(), 0, 0, 2, 2, 1, 1, NOTSRCCOPY);
    EXPECT_EQ(RGB(255 - 41, 255 - 20, 255 - 10), c.pixel(0, 0)) << "source offset and raster operation";

    // Late-bound, everything after the DC left out.
    ComPtr<IDispatch> disp = d.as<IDispatch>(IID_IDispatch);
    Canvas s(6, 6, RGB(0, 0, 0));
    CallResult r;
    call(r, disp.get(), L"PaintPicture", DISPATCH_METHOD, {vLong(s.handle())});
    EXPECT_EQ(S_OK, r.hr);
    EXPECT_EQ(RGB(53, 20, 10), s.pixel(3, 2));

    Canvas src(10, 10, RGB(9, 8, 7));
    SetPixelV(src.dc(), 3, 2, RGB(255, 255, 0));
    d->LoadPictureBlt(src.handle(), 3, 2, -1, -1, SRCCOPY);
    EXPECT_EQ(RGB(255, 255, 0), rgbAt(d.get(), 0, 0));
    EXPECT_EQ(RGB(9, 8, 7), rgbAt(d.get(), 3, 2));
}

TEST(DIBSection, PicturesInAndOut) {
    auto d = dibOf(6, 5);
    ASSERT_TRUE(d);
    paintPattern(d.get(), 6, 5);
    ComPtr<IPictureDisp> pic;
    d->get_Picture(pic.put());
    ASSERT_TRUE(pic);
    ComPtr<IPicture> p = pic.as<IPicture>(IID_IPicture);
    OLE_HANDLE h = 0;
    p->get_Handle(&h);
    HBITMAP bitmap = reinterpret_cast<HBITMAP>(static_cast<ULONG_PTR>(h));
    DIBSECTION ds{};
    EXPECT_NE(static_cast<int>(sizeof ds), GetObjectW(bitmap, sizeof ds, &ds)) << "a device-dependent copy";

    auto e = newDib();
    Variant result;
    IPictureDisp* raw = pic.get();
    ASSERT_EQ(S_OK, e->CreateFromPicture(&raw, &result));
    EXPECT_EQ(VT_EMPTY, V_VT(&result)) << "always Empty";
    LONG v = 0;
    e->get_Width(&v);
    EXPECT_EQ(6, v);
    e->get_Height(&v);
    EXPECT_EQ(5, v);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x) EXPECT_EQ(rgbAt(d.get(), x, y), rgbAt(e.get(), x, y));

    IPictureDisp* none = nullptr;
    EXPECT_EQ(S_OK, e->CreateFromPicture(&none, result.put()));
    EXPECT_EQ(VT_EMPTY, V_VT(&result));
    auto empty = newDib();
    empty->get_Picture(pic.put());
    EXPECT_FALSE(pic) << "no DIB: Nothing";
}

TEST(DIBSection, Clipboard) {
    auto d = dibOf(8, 8);
    ASSERT_TRUE(d);
    paintPattern(d.get(), 8, 8);
    DWORD before = GetClipboardSequenceNumber();
    VARIANT_BOOL ok = VARIANT_TRUE;
    ASSERT_EQ(S_OK, d->CopyToClipboard(VARIANT_TRUE, &ok));
    EXPECT_EQ(VARIANT_FALSE, ok) << "as DIB nothing is offered";
    EXPECT_EQ(before, GetClipboardSequenceNumber()) << "the clipboard is unchanged";

    ASSERT_EQ(S_OK, d->CopyToClipboard(VARIANT_FALSE, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_TRUE(IsClipboardFormatAvailable(CF_BITMAP));
    if (OpenClipboard(nullptr)) {
        EmptyClipboard();
        CloseClipboard();
    }
}

TEST(DIBSection, RandomiseBits) {
    auto d = dibOf(33, 17);
    ASSERT_TRUE(d);
    d->RandomiseBits(VARIANT_FALSE);
    int blue = 0, sameGreenRed = 0, values[256] = {};
    for (int y = 0; y < 17; ++y)
        for (int x = 0; x < 33; ++x) {
            uint8_t* p = at(d.get(), x, y);
            blue += p[0];
            sameGreenRed += p[1] == p[2];
            values[p[1]]++;
        }
    EXPECT_EQ(0, blue) << "without grey, blue stays 0";
    EXPECT_LT(sameGreenRed, 33 * 17 / 10);
    int distinct = 0;
    for (int n : values) distinct += n > 0;
    EXPECT_GT(distinct, 150);

    std::vector<uint8_t> first(bitsOf(d.get()), bitsOf(d.get()) + 17 * lineOf(d.get()));
    d->RandomiseBits(VARIANT_TRUE);
    int grey = 0;
    for (int y = 0; y < 17; ++y)
        for (int x = 0; x < 33; ++x) {
            uint8_t* p = at(d.get(), x, y);
            grey += p[0] == p[1] && p[1] == p[2];
        }
    EXPECT_EQ(33 * 17, grey);
    d->RandomiseBits(VARIANT_FALSE);
    EXPECT_NE(0, memcmp(first.data(), bitsOf(d.get()), first.size())) << "a new sequence each call";
}

TEST(DIBSection, Resample) {
    auto d = dibOf(20, 10);
    ASSERT_TRUE(d);
    d->RandomiseBits(VARIANT_TRUE);
    ComPtr<_DIBSection> same;
    ASSERT_EQ(S_OK, d->Resample(10, 20, same.put()));
    ASSERT_TRUE(same);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 20; ++x) ASSERT_EQ(rgbAt(d.get(), x, y), rgbAt(same.get(), x, y)) << "an exact copy";

    // A horizontal ramp stays a ramp; height comes first.
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 20; ++x) { uint8_t* p = at(d.get(), x, y); p[0] = p[1] = p[2] = static_cast<uint8_t>(x * 10); }
    ComPtr<_DIBSection> big;
    d->Resample(5, 40, big.put());
    ASSERT_TRUE(big);
    LONG v = 0;
    big->get_Width(&v);
    EXPECT_EQ(40, v);
    big->get_Height(&v);
    EXPECT_EQ(5, v);
    for (int x = 1; x < 40; ++x) EXPECT_GE(at(big.get(), x, 2)[1], at(big.get(), x - 1, 2)[1]);
    EXPECT_EQ(0, at(big.get(), 0, 0)[0]);
    EXPECT_EQ(190, at(big.get(), 39, 4)[0]);
    EXPECT_NEAR(at(big.get(), 20, 2)[0], 97, 3) << "interpolated, not repeated";

    ComPtr<_DIBSection> none;
    EXPECT_EQ(S_OK, d->Resample(0, 5, none.put()));
    EXPECT_FALSE(none);
}

// ------------------------------------------------------------------ JPEG

TEST(JPEG, FailuresAreFalse) {
    auto j = newJpeg();
    auto d = dibOf(8, 8);
    ASSERT_TRUE(j && d);
    _DIBSection* s = d.get();
    VARIANT_BOOL ok = VARIANT_TRUE;
    Bstr missing(tempPath(L"missing.jpg").c_str());
    BSTR m = missing.get();
    EXPECT_EQ(S_OK, j->LoadJPG(&s, &m, &ok));
    EXPECT_EQ(VARIANT_FALSE, ok);
    Bstr empty(L"");
    BSTR e = empty.get();
    j->LoadJPG(&s, &e, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    _DIBSection* nothing = nullptr;
    j->LoadJPG(&nothing, &m, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);

    const uint8_t junk[] = {0xFF, 0xD8, 0xFF, 0xE0, 0x00, 0x10, 'J', 'F', 'I', 'F', 0, 1, 2, 3, 4, 5, 6, 7, 8};
    std::vector<uint8_t> buffers[] = {{0xFF, 0xD8}, {junk, junk + sizeof junk}, {'G', 'I', 'F', '8', '9', 'a'}};
    for (const auto& b : buffers) EXPECT_FALSE(loadBuffer(j.get(), d.get(), b));
    j->LoadJPGFromPtr(&s, 0, 100, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok) << "no address";
    j->LoadJPGFromPtr(&s, reinterpret_cast<LONG_PTR>(junk), 0, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok) << "no bytes";

    // A buffer too small: False, lBufSize as it was, nothing written beyond it.
    uint8_t tiny[8] = {0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55};
    LONG size = 4;
    j->SaveJPGToPtr(&s, reinterpret_cast<LONG_PTR>(tiny), &size, 90, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(4, size);
    EXPECT_EQ(0x55, tiny[4]);
    size = 100;
    j->SaveJPGToPtr(&s, 0, &size, 90, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(100, size);

    // A failed encoding (a section without a DIB) leaves an existing file alone.
    std::wstring path = tempPath(L"keep.jpg");
    writeAll(path, {1, 2, 3});
    auto bare = newDib();
    _DIBSection* b = bare.get();
    Bstr name(path.c_str());
    BSTR n = name.get();
    j->SaveJPG(&b, &n, 90, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ((std::vector<uint8_t>{1, 2, 3}), readAll(path));
    DeleteFileW(path.c_str());

    // From a script: the section travels as an object.
    ComPtr<IDispatch> disp = j.as<IDispatch>(IID_IDispatch);
    CallResult r;
    Variant file(missing.get());
    call(r, disp.get(), L"LoadJPG", DISPATCH_METHOD, {vObject(d.as<IDispatch>(IID_IDispatch).get()), file});
    EXPECT_EQ(S_OK, r.hr);
    EXPECT_EQ(VARIANT_FALSE, V_BOOL(&r.value));
}

TEST(JPEG, HostileHeaderIsRefusedBeforeAllocating) {
    std::vector<uint8_t> data = readAll(fixture("baseline420.jpg"));
    ASSERT_FALSE(data.empty());
    // The frame header claims 60000 x 60000 pixels for a kilobyte of data.
    for (size_t i = 0; i + 9 < data.size(); ++i)
        if (data[i] == 0xFF && (data[i + 1] == 0xC0 || data[i + 1] == 0xC2)) {
            data[i + 5] = 0xEA, data[i + 6] = 0x60, data[i + 7] = 0xEA, data[i + 8] = 0x60;
            break;
        }
    auto j = newJpeg();
    auto d = dibOf(4, 4);
    EXPECT_FALSE(loadBuffer(j.get(), d.get(), data));
    LONG w = 0;
    d->get_Width(&w);
    EXPECT_EQ(4, w) << "the section was not re-created";
}

TEST(JPEG, RoundTripThroughMemoryIsUprightAndClose) {
    auto j = newJpeg();
    auto d = dibOf(96, 64);
    paintPattern(d.get(), 96, 64);
    std::vector<uint8_t> jpeg = saveBuffer(j.get(), d.get(), 90);
    ASSERT_GT(jpeg.size(), 100u);
    EXPECT_EQ(0xFF, jpeg[0]);
    EXPECT_EQ(0xD8, jpeg[1]);

    // Exactly enough room works, and lBufSize reports the bytes written.
    std::vector<uint8_t> exact(jpeg.size() + 16, 0xAA);
    LONG size = static_cast<LONG>(jpeg.size());
    VARIANT_BOOL ok = VARIANT_FALSE;
    _DIBSection* s = d.get();
    j->SaveJPGToPtr(&s, reinterpret_cast<LONG_PTR>(exact.data()), &size, 90, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(static_cast<LONG>(jpeg.size()), size);
    EXPECT_EQ(0xAA, exact[jpeg.size()]) << "nothing beyond";
    size = static_cast<LONG>(jpeg.size()) - 1;
    j->SaveJPGToPtr(&s, reinterpret_cast<LONG_PTR>(exact.data()), &size, 90, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(static_cast<LONG>(jpeg.size()) - 1, size);

    auto back = newDib();
    ASSERT_TRUE(loadBuffer(j.get(), back.get(), jpeg));
    LONG w = 0, h = 0;
    back->get_Width(&w);
    back->get_Height(&h);
    ASSERT_EQ(96, w);
    ASSERT_EQ(64, h);
    EXPECT_LT(meanError(d.get(), back.get(), 96, 64), 3.0);
    // Upright when painted: red at the top, blue at the bottom.
    Canvas c(96, 64, RGB(0, 0, 0));
    back->PaintPicture(c.handle(), 0, 0, -1, -1, 0, 0, SRCCOPY);
    EXPECT_GT(GetRValue(c.pixel(48, 2)), 150);
    EXPECT_GT(GetBValue(c.pixel(48, 61)), 150);
}

TEST(JPEG, LowerQualityIsSmallerAndWorse) {
    auto j = newJpeg();
    auto d = dibOf(128, 96);
    d->RandomiseBits(VARIANT_FALSE);
    // Smooth it a little so that quality matters the way it does for photographs.
    ComPtr<_DIBSection> small, smooth;
    d->Resample(24, 32, small.put());
    small->Resample(96, 128, smooth.put());
    std::vector<uint8_t> high = saveBuffer(j.get(), smooth.get(), 90);
    std::vector<uint8_t> low = saveBuffer(j.get(), smooth.get(), 20);
    ASSERT_FALSE(high.empty());
    ASSERT_FALSE(low.empty());
    EXPECT_LT(low.size(), high.size());
    auto a = newDib(), b = newDib();
    ASSERT_TRUE(loadBuffer(j.get(), a.get(), high));
    ASSERT_TRUE(loadBuffer(j.get(), b.get(), low));
    double eh = meanError(smooth.get(), a.get(), 128, 96), el = meanError(smooth.get(), b.get(), 128, 96);
    EXPECT_GT(el, eh * 1.3) << "quality 20: " << el << ", quality 90: " << eh;
}

TEST(JPEG, FilesAndReplacedFilesKeepTheirDatesAndAttributes) {
    auto j = newJpeg();
    auto d = dibOf(40, 30);
    paintPattern(d.get(), 40, 30);
    _DIBSection* s = d.get();
    std::wstring path = tempPath(L"saved.jpg");
    DeleteFileW(path.c_str());
    Bstr name(path.c_str());
    BSTR n = name.get();
    VARIANT_BOOL ok = VARIANT_FALSE;
    ASSERT_EQ(S_OK, j->SaveJPG(&s, &n, 90, &ok));
    ASSERT_EQ(VARIANT_TRUE, ok);
    auto back = newDib();
    _DIBSection* b = back.get();
    j->LoadJPG(&b, &n, &ok);
    ASSERT_EQ(VARIANT_TRUE, ok);
    // A sharp pattern at this size loses most to 4:2:0 chroma: judged by mean error.
    EXPECT_LT(meanError(d.get(), back.get(), 40, 30), 8.0);

    // Replace it: the old creation time and attributes stay.
    HANDLE f = CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    SYSTEMTIME st{2001, 2, 0, 3, 4, 5, 6, 0};
    FILETIME old;
    SystemTimeToFileTime(&st, &old);
    SetFileTime(f, &old, nullptr, &old);
    CloseHandle(f);
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE);
    WIN32_FILE_ATTRIBUTE_DATA set{};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &set);
    // Wine keeps no creation time of its own on Linux file systems.
    const bool creationKept = CompareFileTime(&old, &set.ftCreationTime) == 0;
    // New content: the pattern in inverted colours.
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            for (int c = 0; c < 3; ++c) at(d.get(), x, y)[c] = static_cast<uint8_t>(255 - at(d.get(), x, y)[c]);
    j->SaveJPG(&s, &n, 50, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    WIN32_FILE_ATTRIBUTE_DATA after{};
    ASSERT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &after));
    if (creationKept) EXPECT_EQ(0, CompareFileTime(&old, &after.ftCreationTime));
    EXPECT_EQ(0, CompareFileTime(&old, &after.ftLastWriteTime)) << "the dates of the file it replaces";
    EXPECT_EQ(static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE),
              after.dwFileAttributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE));
    j->LoadJPG(&b, &n, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_LT(meanError(d.get(), back.get(), 40, 30), 12.0) << "the new content";

    // A read-only file is not replaced.
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    std::vector<uint8_t> before = readAll(path);
    j->SaveJPG(&s, &n, 90, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(before, readAll(path));
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(path.c_str());
}

TEST(JPEG, ReferenceFilesDecode) {
    auto j = newJpeg();
    // Against djpeg's decode of the same file.
    for (const char* name : {"baseline420", "progressive420"}) {
        SCOPED_TRACE(name);
        auto reference = referencePicture((std::string(name) + ".ppm").c_str());
        ASSERT_TRUE(reference);
        LONG w = 0, h = 0;
        reference->get_Width(&w);
        reference->get_Height(&h);
        auto d = newDib();
        _DIBSection* s = d.get();
        Bstr file(fixture((std::string(name) + ".jpg").c_str()).c_str());
        BSTR f = file.get();
        VARIANT_BOOL ok = VARIANT_FALSE;
        j->LoadJPG(&s, &f, &ok);
        ASSERT_EQ(VARIANT_TRUE, ok);
        EXPECT_LT(meanError(reference.get(), d.get(), w, h), 3.0);
    }
    auto grey = newDib();
    _DIBSection* g = grey.get();
    Bstr file(fixture("grey.jpg").c_str());
    BSTR f = file.get();
    VARIANT_BOOL ok = VARIANT_FALSE;
    j->LoadJPG(&g, &f, &ok);
    ASSERT_EQ(VARIANT_TRUE, ok);
    LONG w = 0, h = 0;
    grey->get_Width(&w);
    grey->get_Height(&h);
    ASSERT_GT(w * h, 0);
    int equal = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            uint8_t* p = at(grey.get(), x, y);
            equal += p[0] == p[1] && p[1] == p[2];
        }
    EXPECT_EQ(w * h, equal) << "grey as equal blue, green and red";
}

TEST(JPEG, MalformedCorpusNeverCrashes) {
    auto j = newJpeg();
    std::vector<std::vector<uint8_t>> originals;
    for (const char* name : {"baseline420.jpg", "progressive420.jpg", "grey.jpg"}) originals.push_back(readAll(fixture(name)));
    auto d = dibOf(8, 8);
    originals.push_back(saveBuffer(j.get(), d.get(), 75));
    auto target = newDib();
    for (const auto& original : originals) {
        ASSERT_GT(original.size(), 50u);
        // Truncations before the end of the entropy-coded data are refused.
        for (double cut : {0.1, 0.3, 0.5, 0.7, 0.9}) {
            std::vector<uint8_t> t(original.begin(), original.begin() + static_cast<ptrdiff_t>(original.size() * cut));
            EXPECT_FALSE(loadBuffer(j.get(), target.get(), t)) << "cut at " << cut;
        }
        // Bit flips anywhere: any result, but no crash, hang or overrun.
        srand(1234);
        for (int i = 0; i < 300; ++i) {
            std::vector<uint8_t> f = original;
            for (int k = 0; k < 1 + i % 4; ++k) f[static_cast<size_t>(rand()) % f.size()] ^= static_cast<uint8_t>(1 << (rand() % 8));
            loadBuffer(j.get(), target.get(), f);
        }
    }
}
