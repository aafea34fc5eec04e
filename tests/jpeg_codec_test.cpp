// The JPEG codec module: decodes of files made by another encoder compared
// with that library's own decodes (by mean error), encoder round trips and the
// quality/size/error trade-off, row strides both ways, and a corpus of
// truncated, bit-flipped and hand-broken streams that must fail softly.
#include <gtest/gtest.h>

#include "graphics/jpeg_codec.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;
namespace jpeg = tova::jpeg;

// Wine sees the build machine's files on drive Z:; the native build runs on it.
#ifdef _WIN32
const char kDrive[] = "Z:";
#else
const char kDrive[] = "";
#endif
std::string dataPath(const std::string& name) { return kDrive + std::string(TOVA_JPEG_DATA) + "/" + name; }

Bytes readFile(const std::string& name) {
    Bytes b;
    FILE* f = std::fopen(dataPath(name).c_str(), "rb");
    if (!f) return b;
    uint8_t buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) b.insert(b.end(), buf, buf + n);
    std::fclose(f);
    return b;
}

struct Image {
    int width = 0, height = 0;
    Bytes bgr;  // top-down, 3 * width per row
};

// Binary PPM (P6) or PGM (P5) as BGR.
Image readPnm(const std::string& name) {
    Image img;
    Bytes b = readFile(name);
    if (b.size() < 3 || b[0] != 'P' || (b[1] != '5' && b[1] != '6')) return img;
    bool grey = b[1] == '5';
    size_t i = 2;
    int fields[3], n = 0;
    while (n < 3 && i < b.size()) {
        while (i < b.size() && std::isspace(b[i])) ++i;
        int v = 0;
        while (i < b.size() && std::isdigit(b[i])) v = v * 10 + (b[i++] - '0');
        fields[n++] = v;
    }
    ++i;  // the single whitespace after the maximum value
    img.width = fields[0];
    img.height = fields[1];
    size_t pixels = static_cast<size_t>(img.width) * img.height;
    if (b.size() < i + pixels * (grey ? 1 : 3)) return Image{};
    img.bgr.resize(pixels * 3);
    for (size_t p = 0; p < pixels; ++p) {
        if (grey) {
            img.bgr[3 * p] = img.bgr[3 * p + 1] = img.bgr[3 * p + 2] = b[i + p];
        } else {
            img.bgr[3 * p] = b[i + 3 * p + 2];
            img.bgr[3 * p + 1] = b[i + 3 * p + 1];
            img.bgr[3 * p + 2] = b[i + 3 * p];
        }
    }
    return img;
}

double meanError(const Bytes& a, const Bytes& b) {
    if (a.size() != b.size() || a.empty()) return 1e9;
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i) sum += std::abs(int(a[i]) - int(b[i]));
    return sum / a.size();
}

// Decodes into a top-down buffer with padded rows; empty on failure.
Bytes decodeTopDown(const Bytes& file, jpeg::Info* infoOut = nullptr) {
    jpeg::Info info;
    if (!jpeg::readInfo(file.data(), file.size(), info)) return {};
    if (infoOut) *infoOut = info;
    const ptrdiff_t stride = 3 * info.width + 5;
    Bytes padded(stride * info.height, 0xCD);
    if (!jpeg::decode(file.data(), file.size(), padded.data(), stride, info.width, info.height)) return {};
    Bytes tight;
    for (int y = 0; y < info.height; ++y)
        tight.insert(tight.end(), padded.begin() + y * stride, padded.begin() + y * stride + 3 * info.width);
    // The row padding is never written.
    for (int y = 0; y < info.height; ++y)
        for (int i = 3 * info.width; i < stride; ++i)
            if (padded[y * stride + i] != 0xCD) return {};
    return tight;
}

// A smooth picture with edges and fine noise, so quality matters.
Image synthetic(int width, int height, unsigned seed = 1) {
    Image img{width, height, Bytes(static_cast<size_t>(width) * height * 3)};
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> noise(-8, 8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double r = 128 + 90 * std::sin(x / 13.0) * std::cos(y / 17.0);
            double g = 40 + 150.0 * y / height;
            double b = 220 - 160.0 * x / width;
            if ((x / 24 + y / 24) % 2) r = 255 - r;
            if (std::hypot(x - width / 2.0, y - height / 2.0) < height / 5.0) g = 250, b = 20;
            uint8_t* p = &img.bgr[(static_cast<size_t>(y) * width + x) * 3];
            auto clamp = [](double v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); };
            p[0] = clamp(b + noise(rng));
            p[1] = clamp(g + noise(rng));
            p[2] = clamp(r + noise(rng));
        }
    return img;
}

Bytes encodeImage(const Image& img, int quality) {
    Bytes out;
    EXPECT_TRUE(jpeg::encode(img.bgr.data(), 3 * img.width, img.width, img.height, quality, out));
    return out;
}

// ------------------------------------------------------------ decoding
struct Reference {
    const char* jpg;
    const char* pnm;
    int components;
    bool progressive;
};
const Reference kReferences[] = {
    {"baseline420.jpg", "baseline420.ppm", 3, false},
    {"baseline422.jpg", "baseline422.ppm", 3, false},
    {"baseline440.jpg", "baseline440.ppm", 3, false},
    {"baseline444.jpg", "baseline444.ppm", 3, false},
    {"baseline411.jpg", "baseline411.ppm", 3, false},
    {"grey.jpg", "grey.pgm", 1, false},
    {"progressive420.jpg", "progressive420.ppm", 3, true},
    {"progressive444.jpg", "progressive444.ppm", 3, true},
    {"progressive_grey.jpg", "progressive_grey.pgm", 1, true},
    {"restart420.jpg", "restart420.ppm", 3, false},
    {"progressive_restart.jpg", "progressive_restart.ppm", 3, true},
    {"optimized.jpg", "optimized.ppm", 3, false},
    {"multiscan.jpg", "multiscan.ppm", 3, false},
    {"metadata.jpg", "metadata.ppm", 3, false},
};

TEST(JpegDecode, MatchesTheReferenceDecoderOfEveryVariant) {
    for (const Reference& r : kReferences) {
        SCOPED_TRACE(r.jpg);
        Bytes file = readFile(r.jpg);
        ASSERT_FALSE(file.empty()) << "missing test file";
        Image ref = readPnm(r.pnm);
        ASSERT_EQ(ref.width, 61);
        jpeg::Info info;
        Bytes ours = decodeTopDown(file, &info);
        ASSERT_FALSE(ours.empty());
        EXPECT_EQ(info.width, 61);
        EXPECT_EQ(info.height, 43);
        EXPECT_EQ(info.components, r.components);
        EXPECT_EQ(info.progressive, r.progressive);
        // Same transform, filter and rounding: the decodes agree all but exactly.
        EXPECT_LT(meanError(ours, ref.bgr), 0.05);
    }
}

TEST(JpegDecode, GreyGivesEqualBlueGreenRed) {
    for (const char* name : {"grey.jpg", "progressive_grey.jpg"}) {
        Bytes ours = decodeTopDown(readFile(name));
        ASSERT_FALSE(ours.empty()) << name;
        bool equal = true;
        for (size_t i = 0; i < ours.size(); i += 3) equal &= ours[i] == ours[i + 1] && ours[i] == ours[i + 2];
        EXPECT_TRUE(equal) << name;
    }
}

TEST(JpegDecode, NegativeStrideWritesBottomUpRows) {
    Bytes file = readFile("baseline420.jpg");
    Bytes top = decodeTopDown(file);
    ASSERT_FALSE(top.empty());
    const int w = 61, h = 43;
    const ptrdiff_t stride = (3 * w + 3) & ~3;
    Bytes dib(stride * h);
    // Row 0 of the image is the last row in memory, as in a bottom-up DIB.
    ASSERT_TRUE(jpeg::decode(file.data(), file.size(), dib.data() + (h - 1) * stride, -stride, w, h));
    for (int y = 0; y < h; ++y)
        ASSERT_EQ(0, std::memcmp(&dib[(h - 1 - y) * stride], &top[y * 3 * w], 3 * w)) << "row " << y;
}

TEST(JpegDecode, RefusesWrongSizesAndArguments) {
    Bytes file = readFile("baseline420.jpg");
    Bytes out(61 * 43 * 3 + 100);
    EXPECT_FALSE(jpeg::decode(file.data(), file.size(), out.data(), 3 * 61, 60, 43));
    EXPECT_FALSE(jpeg::decode(file.data(), file.size(), out.data(), 3 * 61, 61, 44));
    EXPECT_FALSE(jpeg::decode(file.data(), file.size(), out.data(), 3 * 60, 61, 43));  // rows too short
    EXPECT_FALSE(jpeg::decode(nullptr, 0, out.data(), 3 * 61, 61, 43));
    EXPECT_FALSE(jpeg::decode(file.data(), file.size(), nullptr, 3 * 61, 61, 43));
    jpeg::Info info;
    EXPECT_FALSE(jpeg::readInfo(nullptr, 10, info));
    EXPECT_FALSE(jpeg::readInfo(file.data(), 0, info));
}

// ------------------------------------------------------------ encoding
TEST(JpegEncode, RoundTripAtEveryQualityKeepsSizeAndErrorInOrder) {
    Image img = synthetic(320, 240);
    size_t lastSize = 0;
    double lastError = 1e9;
    for (int q : {5, 20, 40, 60, 75, 90, 97, 100}) {
        SCOPED_TRACE(q);
        Bytes file = encodeImage(img, q);
        jpeg::Info info;
        Bytes back = decodeTopDown(file, &info);
        ASSERT_FALSE(back.empty());
        EXPECT_EQ(info.width, 320);
        EXPECT_EQ(info.height, 240);
        EXPECT_EQ(info.components, 3);
        EXPECT_FALSE(info.progressive);
        double err = meanError(back, img.bgr);
        EXPECT_GT(file.size(), lastSize);
        EXPECT_LT(err, lastError);
        lastSize = file.size();
        lastError = err;
        if (q == 90) EXPECT_LT(err, 6.0);
    }
    EXPECT_LT(lastError, 5.0);  // 4:2:0 bounds the error even at 100
}

TEST(JpegEncode, QualityOutsideTheRangeIsClamped) {
    Image img = synthetic(64, 48);
    EXPECT_EQ(encodeImage(img, 0), encodeImage(img, 1));
    EXPECT_EQ(encodeImage(img, -50), encodeImage(img, 1));
    EXPECT_EQ(encodeImage(img, 101), encodeImage(img, 100));
}

TEST(JpegEncode, OddSizesRoundTrip) {
    for (auto [w, h] : {std::pair{1, 1}, {1, 17}, {17, 1}, {2, 2}, {7, 9}, {15, 15}, {16, 16}, {17, 33}, {101, 3}}) {
        SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h));
        Image img = synthetic(w, h, w * 100 + h);
        // Flat colour plus a gentle ramp: small sizes carry no fine detail.
        for (size_t i = 0; i < img.bgr.size(); ++i) img.bgr[i] = static_cast<uint8_t>(60 + (i % 3) * 50 + (i / 3) % 5);
        Bytes file = encodeImage(img, 90);
        Bytes back = decodeTopDown(file);
        ASSERT_EQ(back.size(), img.bgr.size());
        EXPECT_LT(meanError(back, img.bgr), 4.0);
    }
}

TEST(JpegEncode, BottomUpSourceEncodesUpright) {
    Image img = synthetic(40, 30);
    const ptrdiff_t stride = 3 * 40 + 4;
    Bytes dib(stride * 30);
    for (int y = 0; y < 30; ++y) std::memcpy(&dib[(29 - y) * stride], &img.bgr[y * 120], 120);
    Bytes fromDib, direct = encodeImage(img, 80);
    ASSERT_TRUE(jpeg::encode(dib.data() + 29 * stride, -stride, 40, 30, 80, fromDib));
    EXPECT_EQ(fromDib, direct);
    EXPECT_FALSE(jpeg::encode(img.bgr.data(), 3 * 40 - 1, 40, 30, 80, fromDib));
    EXPECT_FALSE(jpeg::encode(img.bgr.data(), 120, 0, 30, 80, fromDib));
    EXPECT_FALSE(jpeg::encode(nullptr, 120, 40, 30, 80, fromDib));
}

// ------------------------------------------------------------ hostile input
bool survives(const Bytes& file) {
    jpeg::Info info;
    if (!jpeg::readInfo(file.data(), file.size(), info)) return false;
    if (info.width > 4096 || info.height > 4096) return false;  // mutations may claim huge sizes
    Bytes out(static_cast<size_t>(info.width) * info.height * 3);
    return jpeg::decode(file.data(), file.size(), out.data(), 3 * info.width, info.width, info.height);
}

TEST(JpegHostile, EveryTruncationFailsSoftly) {
    for (const char* name : {"baseline420.jpg", "progressive420.jpg", "restart420.jpg", "grey.jpg"}) {
        SCOPED_TRACE(name);
        Bytes file = readFile(name);
        ASSERT_TRUE(survives(file));
        bool sequential = std::strstr(name, "progressive") == nullptr;
        for (size_t n = 0; n < file.size(); ++n) {
            Bytes cut(file.begin(), file.begin() + n);
            bool ok = survives(cut);
            // Only the end-of-image marker may go missing from a sequential file.
            if (sequential && n + 2 < file.size()) EXPECT_FALSE(ok) << "length " << n;
        }
    }
}

TEST(JpegHostile, RandomBitFlipsAndByteChanges) {
    std::mt19937 rng(12345);
    Bytes sources[] = {readFile("baseline420.jpg"), readFile("progressive420.jpg"), readFile("progressive_restart.jpg"),
                       readFile("baseline444.jpg"), readFile("multiscan.jpg"),     encodeImage(synthetic(200, 150), 85)};
    int decoded = 0, total = 0;
    for (const Bytes& src : sources) {
        ASSERT_FALSE(src.empty());
        std::uniform_int_distribution<size_t> pos(0, src.size() - 1);
        for (int i = 0; i < 1500; ++i) {
            Bytes m = src;
            int kind = i % 3;
            if (kind == 0) {
                m[pos(rng)] ^= static_cast<uint8_t>(1u << (rng() % 8));
            } else if (kind == 1) {
                m[pos(rng)] = static_cast<uint8_t>(rng());
            } else {
                // Several changes, favouring the headers where lengths and tables live.
                for (int k = 0; k < 4; ++k) m[rng() % std::min<size_t>(m.size(), 700)] = static_cast<uint8_t>(rng());
            }
            decoded += survives(m);
            ++total;
        }
    }
    // Most single changes hit entropy data and still decode; many break it.
    EXPECT_GT(decoded, 0);
    EXPECT_LT(decoded, total);
}

Bytes segment(uint8_t marker, const Bytes& payload) {
    Bytes s = {0xFF, marker, static_cast<uint8_t>((payload.size() + 2) >> 8), static_cast<uint8_t>(payload.size() + 2)};
    for (uint8_t b : payload) s.push_back(b);
    return s;
}

TEST(JpegHostile, HandBrokenStreams) {
    jpeg::Info info;
    // Frame headers: too big, empty, 12-bit, four components, arithmetic coding, lossless.
    auto frame = [](uint8_t marker, int precision, int w, int h, int comps) {
        Bytes p = {static_cast<uint8_t>(precision), static_cast<uint8_t>(h >> 8), static_cast<uint8_t>(h),
                   static_cast<uint8_t>(w >> 8), static_cast<uint8_t>(w), static_cast<uint8_t>(comps)};
        for (int i = 0; i < comps; ++i) p.insert(p.end(), {static_cast<uint8_t>(i + 1), 0x11, 0});
        Bytes f = {0xFF, 0xD8};
        Bytes s = segment(marker, p);
        f.insert(f.end(), s.begin(), s.end());
        return f;
    };
    EXPECT_TRUE(jpeg::readInfo(frame(0xC0, 8, 100, 50, 3).data(), frame(0xC0, 8, 100, 50, 3).size(), info));
    EXPECT_EQ(info.width, 100);
    for (const Bytes& f : {frame(0xC0, 8, 65535, 65535, 3), frame(0xC0, 8, 0, 50, 3), frame(0xC0, 8, 50, 0, 1),
                           frame(0xC0, 12, 50, 50, 3), frame(0xC0, 8, 50, 50, 4), frame(0xC0, 8, 50, 50, 2),
                           frame(0xC9, 8, 50, 50, 3), frame(0xC3, 8, 50, 50, 3)})
        EXPECT_FALSE(jpeg::readInfo(f.data(), f.size(), info));

    // A segment length running past the end, and a frame with no scan.
    Bytes good = readFile("baseline420.jpg");
    Bytes longSegment = {0xFF, 0xD8, 0xFF, 0xE0, 0xFF, 0xFF, 'J'};
    EXPECT_FALSE(jpeg::readInfo(longSegment.data(), longSegment.size(), info));
    Bytes noScan = frame(0xC0, 8, 16, 16, 1);
    Bytes out(16 * 16 * 3);
    EXPECT_FALSE(jpeg::decode(noScan.data(), noScan.size(), out.data(), 48, 16, 16));

    // Over-subscribed Huffman code lengths: three codes of length 1.
    Bytes dht = {0x00, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3};
    Bytes bad = good;
    Bytes s = segment(0xC4, dht);
    bad.insert(bad.begin() + 2, s.begin(), s.end());
    EXPECT_FALSE(survives(bad));

    // A scan repeated in a progressive file brings no new bits: refused, so
    // that a stream cannot make the decoder loop over the image at will.
    Bytes prog = readFile("progressive420.jpg");
    std::vector<size_t> sos;
    for (size_t i = 0; i + 1 < prog.size(); ++i)
        if (prog[i] == 0xFF && prog[i + 1] == 0xDA) sos.push_back(i);
    ASSERT_GE(sos.size(), 3u);
    Bytes repeated = prog;
    repeated.insert(repeated.begin() + sos[2], prog.begin() + sos[1], prog.begin() + sos[2]);
    EXPECT_FALSE(survives(repeated));
    // A progressive header claiming far more blocks than the stream could
    // code is refused before its coefficients are allocated.
    Bytes claim = prog;
    for (size_t i = 0; i + 8 < claim.size(); ++i)
        if (claim[i] == 0xFF && claim[i + 1] == 0xC2) {
            claim[i + 5] = claim[i + 7] = 2000 >> 8;
            claim[i + 6] = claim[i + 8] = 2000 & 255;
            break;
        }
    ASSERT_TRUE(jpeg::readInfo(claim.data(), claim.size(), info));
    ASSERT_EQ(info.width, 2000);
    Bytes big(2000 * 2000 * 3);
    EXPECT_FALSE(jpeg::decode(claim.data(), claim.size(), big.data(), 6000, 2000, 2000));
    // The same file ending after its second scan is a coarse but whole picture.
    Bytes early(prog.begin(), prog.begin() + sos[2]);
    EXPECT_TRUE(survives(early));
}

}  // namespace
