// AlphaPaintPicture on the screen it finds: blended where the system can
// alpha-blend, an opaque copy where it cannot (an 8-bit screen, or a platform
// version without blending). tests/alpha_screen.sh runs it on screens of
// several depths and under several Windows versions; TOVA_EXPECT says which
// result that run must show ("blend" or "opaque").
#include "support.h"

using namespace test;

namespace {

std::string expected() {
    const char* e = getenv("TOVA_EXPECT");
    return e ? e : "";
}

int screenDepth() {
    HDC ic = CreateICA("DISPLAY", nullptr, nullptr, nullptr);
    int bits = ic ? GetDeviceCaps(ic, BITSPIXEL) : 0;
    if (ic) DeleteDC(ic);
    return bits;
}

}  // namespace

TEST(AlphaScreen, BlendsOrCopiesAsTheSystemAllows) {
    const std::string expect = expected();
    if (expect.empty()) GTEST_SKIP() << "run by tests/alpha_screen.sh, which sets TOVA_EXPECT";
    OSVERSIONINFOA v{};
    v.dwOSVersionInfoSize = sizeof v;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    GetVersionExA(&v);
#pragma GCC diagnostic pop
    printf("screen: %d bits per pixel; platform %lu, version %lu.%lu\n", screenDepth(), v.dwPlatformId,
           v.dwMajorVersion, v.dwMinorVersion);

    auto dib = create<_AlphaDIBSection>(CLSID_AlphaDIBSection, IID__AlphaDIBSection);
    ASSERT_TRUE(dib);
    VARIANT_BOOL ok;
    ASSERT_EQ(S_OK, dib->Create(8, 8, &ok));
    ASSERT_EQ(VARIANT_TRUE, ok);
    DWORD* px = reinterpret_cast<DWORD*>(dibBits(dib.get()));
    for (int i = 0; i < 64; ++i) px[i] = 0xFFC81E00;  // opaque: red 200, green 30, blue 0

    Canvas canvas(8, 8, RGB(0, 0, 200));
    ASSERT_EQ(S_OK, dib->AlphaPaintPicture(canvas.handle(), 0, 0, -1, -1, 0, 0, 128, VARIANT_FALSE));
    COLORREF c = canvas.pixel(4, 4);
    if (expect == "opaque") {
        EXPECT_EQ(RGB(200, 30, 0), c) << "an opaque copy";
    } else {
        EXPECT_NEAR(GetRValue(c), 100, 2) << "half of red 200 over 0";
        EXPECT_NEAR(GetBValue(c), 100, 2) << "half of blue 200 under it";
    }
}
