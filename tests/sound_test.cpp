// MiscMethods' sound members. Run by sound_test.sh, which starts a PulseAudio
// server with a null sink, makes the wave files, records the sink's monitor
// and measures what came out; this program checks results and timing.
//   TOVA_SOUND_EXPECT   device | none   (what the script arranged)
//   TOVA_SOUND_DIR      folder (Windows path) with tone1s.wav, tone4s.wav, short.wav
#include "window_support.h"

#include <mmsystem.h>

#include <cstdlib>
#include <string>

using namespace test;

namespace {

std::string env(const char* name) {
    const char* v = std::getenv(name);
    return v ? v : "";
}

Bstr wave(const char* name) {
    std::string path = env("TOVA_SOUND_DIR") + "\\" + name;
    return Bstr(std::wstring(path.begin(), path.end()));
}

// MCI devices open in this process.
long openDevices() {
    wchar_t answer[32] = L"";
    mciSendStringW(L"sysinfo all quantity open", answer, 32, nullptr);
    return std::wcstol(answer, nullptr, 10);
}

double seconds(ULONGLONG from) { return (GetTickCount64() - from) / 1000.0; }

class SoundTest : public ::testing::Test {
protected:
    void SetUp() override {
        misc = create<_MiscMethods>(CLSID_MiscMethods, IID__MiscMethods);
        ASSERT_TRUE(misc);
        expect = env("TOVA_SOUND_EXPECT");
    }
    bool play(Bstr name, bool async) {
        VARIANT_BOOL a = async ? VARIANT_TRUE : VARIANT_FALSE, r = 0;
        BSTR b = name.get();
        EXPECT_EQ(S_OK, misc->BeginPlaySound(&b, &a, &r));
        return r == VARIANT_TRUE;
    }
    void needDevice() {
        if (expect != "device") GTEST_SKIP() << "needs the sound server of sound_test.sh";
    }
    ComPtr<_MiscMethods> misc;
    std::string expect;
};

TEST_F(SoundTest, EmptyNameReturnsFalseWithoutTouchingTheDevice) {
    EXPECT_FALSE(play(Bstr(L""), true));
    BSTR none = nullptr;
    VARIANT_BOOL r = -1;
    EXPECT_EQ(S_OK, misc->BeginPlaySound(&none, nullptr, &r));
    EXPECT_EQ(VARIANT_FALSE, r);
    EXPECT_EQ(0, openDevices());
    EXPECT_EQ(S_OK, misc->StopSound()) << "nothing to stop";
}

TEST_F(SoundTest, NoDeviceMeansFalse) {
    if (expect != "none") GTEST_SKIP() << "only without a sound server";
    VARIANT_BOOL can = -1;
    misc->CanPlayWaveForms(&can);
    EXPECT_EQ(VARIANT_FALSE, can);
    EXPECT_FALSE(play(wave("tone1s.wav"), false));
    EXPECT_EQ(0, openDevices());
}

TEST_F(SoundTest, MissingFileReturnsFalse) {
    needDevice();
    EXPECT_FALSE(play(wave("no-such-file.wav"), true));
    misc->StopSound();
    EXPECT_EQ(0, openDevices());
}

// Phase "sync": one second of 440 Hz, waited for.
TEST_F(SoundTest, SynchronousPlayReturnsAtTheEnd) {
    needDevice();
    VARIANT_BOOL can = 0;
    misc->CanPlayWaveForms(&can);
    EXPECT_EQ(VARIANT_TRUE, can);
    ULONGLONG start = GetTickCount64();
    EXPECT_TRUE(play(wave("tone1s.wav"), false));
    double took = seconds(start);
    EXPECT_GE(took, 0.8) << "returned before the sound ended";
    EXPECT_LT(took, 5.0);
    std::printf("synchronous play of 1 s took %.2f s\n", took);
    misc->StopSound();
    EXPECT_EQ(0, openDevices());
}

// Phase "async": returns at once; the completion closes the device.
TEST_F(SoundTest, AsynchronousPlayClosesTheDeviceWhenDone) {
    needDevice();
    ULONGLONG start = GetTickCount64();
    EXPECT_TRUE(play(wave("tone1s.wav"), true));
    EXPECT_LT(seconds(start), 0.5) << "an asynchronous play returns at once";
    EXPECT_EQ(1, openDevices());
    pump(4000, [] { return openDevices() == 0; });
    EXPECT_EQ(0, openDevices()) << "closed through the completion notification";
    std::printf("device closed %.2f s after the asynchronous play began\n", seconds(start));
}

// Phase "second": a second play stops the first (4 s cut after 0.3 s, then 1.5 s).
TEST_F(SoundTest, ASecondPlayStopsTheFirst) {
    needDevice();
    EXPECT_TRUE(play(wave("tone4s.wav"), true));
    pump(300);
    EXPECT_TRUE(play(wave("short.wav"), true));
    EXPECT_EQ(1, openDevices()) << "the first was closed before the second opened";
    pump(3000, [] { return openDevices() == 0; });
    EXPECT_EQ(0, openDevices());
}

// Phase "stop": StopSound silences a long sound.
TEST_F(SoundTest, StopSoundStopsAndCloses) {
    needDevice();
    EXPECT_TRUE(play(wave("tone4s.wav"), true));
    pump(300);
    EXPECT_EQ(S_OK, misc->StopSound());
    EXPECT_EQ(0, openDevices());
    pump(300);
}

// Phase "release": the object's end stops the sound too.
TEST_F(SoundTest, ReleasingMiscMethodsStopsTheSound) {
    needDevice();
    EXPECT_TRUE(play(wave("tone4s.wav"), true));
    pump(300);
    misc.reset();
    EXPECT_EQ(0, openDevices());
}

}  // namespace
