// The JPEG codec's speed and quality next to libjpeg-turbo (run natively by
// jpeg_bench.sh on the same picture). Modes:
//   synth OUT.ppm [W H]        a photograph-like test picture (default 4000x3000)
//   run PHOTO.ppm REF.jpg REFPROG.jpg REFDEC.ppm OURS.jpg [QUALITY]
//        encodes PHOTO at QUALITY (default 90) into OURS.jpg, decodes REF.jpg
//        (the reference encoder's file at the same quality) and its progressive
//        form, and compares our decode of REF.jpg with the reference decode
//   compare A.ppm B.ppm        mean absolute difference per sample
#include "bench/clock.h"
#include "graphics/jpeg_codec.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

bool readFile(const char* path, Bytes& out) {
    FILE* f = std::fopen(path, "rb");
    if (!f) return false;
    std::fseek(f, 0, SEEK_END);
    long n = std::ftell(f);
    std::fseek(f, 0, SEEK_SET);
    out.resize(n > 0 ? static_cast<size_t>(n) : 0);
    bool ok = std::fread(out.data(), 1, out.size(), f) == out.size();
    std::fclose(f);
    return ok;
}

bool writeFile(const char* path, const uint8_t* data, size_t size) {
    FILE* f = std::fopen(path, "wb");
    if (!f) return false;
    bool ok = std::fwrite(data, 1, size, f) == size;
    return std::fclose(f) == 0 && ok;
}

struct Image {
    int width = 0, height = 0;
    Bytes bgr;
};

bool readPpm(const char* path, Image& img) {
    Bytes b;
    if (!readFile(path, b) || b.size() < 2 || b[0] != 'P' || b[1] != '6') return false;
    size_t i = 2;
    int v[3];
    for (int& f : v) {
        while (i < b.size() && std::isspace(b[i])) ++i;
        f = 0;
        while (i < b.size() && std::isdigit(b[i])) f = f * 10 + (b[i++] - '0');
    }
    ++i;
    img.width = v[0];
    img.height = v[1];
    size_t n = static_cast<size_t>(img.width) * img.height * 3;
    if (b.size() < i + n) return false;
    img.bgr.resize(n);
    for (size_t p = 0; p < n; p += 3) {
        img.bgr[p] = b[i + p + 2];
        img.bgr[p + 1] = b[i + p + 1];
        img.bgr[p + 2] = b[i + p];
    }
    return true;
}

bool writePpm(const char* path, const Image& img) {
    std::string head = "P6\n" + std::to_string(img.width) + " " + std::to_string(img.height) + "\n255\n";
    Bytes out(head.begin(), head.end());
    size_t base = out.size();
    out.resize(base + img.bgr.size());
    for (size_t p = 0; p < img.bgr.size(); p += 3) {
        out[base + p] = img.bgr[p + 2];
        out[base + p + 1] = img.bgr[p + 1];
        out[base + p + 2] = img.bgr[p];
    }
    return writeFile(path, out.data(), out.size());
}

double meanError(const Bytes& a, const Bytes& b) {
    if (a.size() != b.size() || a.empty()) return -1;
    uint64_t sum = 0;
    for (size_t i = 0; i < a.size(); ++i) sum += static_cast<uint64_t>(std::abs(int(a[i]) - int(b[i])));
    return static_cast<double>(sum) / a.size();
}

// Smooth random field: bilinear value noise over a lattice of `cell` pixels.
struct ValueNoise {
    int cell, cols, rows;
    std::vector<float> v;
    ValueNoise(int w, int h, int c, std::mt19937& rng) : cell(c), cols(w / c + 2), rows(h / c + 2) {
        std::uniform_real_distribution<float> d(-1, 1);
        v.resize(static_cast<size_t>(cols) * rows);
        for (float& x : v) x = d(rng);
    }
    float at(int x, int y) const {
        int cx = x / cell, cy = y / cell;
        float fx = float(x % cell) / cell, fy = float(y % cell) / cell;
        fx = fx * fx * (3 - 2 * fx);
        fy = fy * fy * (3 - 2 * fy);
        const float* r0 = &v[static_cast<size_t>(cy) * cols + cx];
        const float* r1 = r0 + cols;
        float a = r0[0] + (r0[1] - r0[0]) * fx, b = r1[0] + (r1[1] - r1[0]) * fx;
        return a + (b - a) * fy;
    }
};

// Sky, hills and textured objects with soft and hard edges, detail at every
// scale falling off like a natural image's spectrum, and sensor noise.
Image synthesise(int width, int height) {
    std::mt19937 rng(2026);
    std::vector<ValueNoise> octaves;
    for (int cell = 512; cell >= 2; cell /= 2) octaves.emplace_back(width, height, cell, rng);
    ValueNoise hue(width, height, 300, rng), hue2(width, height, 90, rng);
    struct Blob {
        float x, y, r;
        float col[3];
    };
    std::vector<Blob> blobs;
    std::uniform_real_distribution<float> u(0, 1);
    for (int i = 0; i < 60; ++i)
        blobs.push_back({u(rng) * width, height * (0.35f + 0.65f * u(rng)), 20 + u(rng) * height / 8,
                         {40 + 200 * u(rng), 40 + 200 * u(rng), 40 + 200 * u(rng)}});
    std::normal_distribution<float> sensor(0, 2.5f);
    Image img{width, height, Bytes(static_cast<size_t>(width) * height * 3)};
    for (int y = 0; y < height; ++y) {
        const float horizon = height * 0.25f;
        for (int x = 0; x < width; ++x) {
            float ridge = horizon + 0.08f * height * octaves[0].at(x, 0) + 0.03f * height * octaves[2].at(x, 7);
            float detail = 0, amp = 1, total = 0;
            for (size_t o = 0; o < octaves.size(); ++o) {
                detail += amp * octaves[o].at(x, y);
                total += amp;
                amp *= 0.9f;
            }
            detail /= total;
            float c[3];
            if (y < ridge) {  // sky: smooth gradient with faint clouds
                float t = y / ridge;
                c[0] = 235 - 60 * t + 12 * detail;   // blue
                c[1] = 170 + 30 * t + 10 * detail;   // green
                c[2] = 110 + 80 * t + 10 * detail;   // red
            } else {  // land: greens and browns with strong texture
                float h = 0.5f + 0.5f * hue.at(x, y) + 0.2f * hue2.at(x, y);
                // Foliage-like fine texture where the field says so.
                float mask = std::min(1.0f, std::max(0.0f, 0.5f + hue2.at(x, y)));
                size_t n = octaves.size();
                float fine = 80 * mask * (octaves[n - 1].at(x, y) + 0.7f * octaves[n - 2].at(x, y));
                c[0] = 40 + 30 * h + 120 * detail + 0.6f * fine;
                c[1] = 90 + 50 * (1 - h) + 150 * detail + fine;
                c[2] = 60 + 80 * h + 140 * detail + 0.8f * fine;
            }
            for (const Blob& b : blobs) {
                if (std::fabs(x - b.x) >= b.r || std::fabs(y - b.y) >= b.r) continue;
                float d = std::hypot(x - b.x, y - b.y);
                if (d < b.r) {
                    float edge = std::min(1.0f, (b.r - d) / 3.0f);  // hard-ish rim
                    for (int k = 0; k < 3; ++k) c[k] = c[k] * (1 - edge) + (b.col[k] + 60 * detail) * edge;
                }
            }
            uint8_t* p = &img.bgr[(static_cast<size_t>(y) * width + x) * 3];
            for (int k = 0; k < 3; ++k) {
                float v = c[k] + sensor(rng);
                p[k] = static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v + 0.5f);
            }
        }
    }
    return img;
}

double threadCpuSeconds() {
    FILETIME created, exited, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &exited, &kernel, &user);
    auto v = [](FILETIME t) { return (static_cast<uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime; };
    return (v(kernel) + v(user)) * 1e-7;
}

// Best wall-clock time of `runs` calls, and their mean processor time (this
// thread's, which other processes on a busy machine do not inflate; Wine
// counts it in 10 ms steps, hence the mean over all runs).
struct Timing {
    double wall = -1, cpu = -1;
};
template <class F>
Timing measure(int runs, F&& f) {
    Timing t;
    double best = 1e30, c0 = threadCpuSeconds();
    for (int i = 0; i < runs; ++i) {
        double t0 = benchSeconds();
        if (!f()) return t;
        best = std::min(best, benchSeconds() - t0);
    }
    t.cpu = (threadCpuSeconds() - c0) / runs;
    t.wall = best;
    return t;
}
std::string rate(double mp, Timing t) {
    char buf[80];
    if (t.wall <= 0) return "failed";
    std::snprintf(buf, sizeof buf, "%6.1f MP/s wall, %6.1f MP/s cpu", mp / t.wall, t.cpu > 0 ? mp / t.cpu : 0.0);
    return buf;
}

int run(int argc, char** argv) {
    if (argc < 7) return 2;
    Image photo;
    Bytes ref, refProg, ours;
    Image refDec;
    if (!readPpm(argv[2], photo) || !readFile(argv[3], ref) || !readFile(argv[4], refProg) || !readPpm(argv[5], refDec)) {
        std::printf("cannot read the inputs\n");
        return 1;
    }
    int quality = argc > 7 ? std::atoi(argv[7]) : 90;
    const int w = photo.width, h = photo.height;
    const double mp = w * static_cast<double>(h) / 1e6;
    const int runs = 10;

    Timing enc = measure(runs, [&] { return tova::jpeg::encode(photo.bgr.data(), 3 * w, w, h, quality, ours); });
    if (enc.wall < 0 || !writeFile(argv[6], ours.data(), ours.size())) {
        std::printf("encode failed\n");
        return 1;
    }
    Bytes back(photo.bgr.size());
    tova::jpeg::decode(ours.data(), ours.size(), back.data(), 3 * w, w, h);
    std::printf("ours          encode q%d    : %s  %9zu bytes  mean error %.3f (own decode)\n", quality,
                rate(mp, enc).c_str(), ours.size(), meanError(back, photo.bgr));

    // A bottom-up destination, as the DIB receives it.
    const ptrdiff_t stride = (3 * w + 3) & ~3;
    Bytes dib(static_cast<size_t>(stride) * h);
    auto decodeInto = [&](const Bytes& file) {
        return tova::jpeg::decode(file.data(), file.size(), dib.data() + (h - 1) * stride, -stride, w, h);
    };
    Timing dec = measure(runs, [&] { return decodeInto(ref); });
    Bytes top(photo.bgr.size());
    for (int y = 0; y < h; ++y) std::memcpy(&top[static_cast<size_t>(y) * 3 * w], &dib[(h - 1 - y) * stride], 3 * w);
    std::printf("ours          decode baseline   : %s  (its file; differs from its decode by %.3f, error %.3f)\n",
                rate(mp, dec).c_str(), meanError(top, refDec.bgr), meanError(top, photo.bgr));
    Timing decProg = measure(runs, [&] { return decodeInto(refProg); });
    std::printf("ours          decode progressive: %s\n", rate(mp, decProg).c_str());
    return dec.wall < 0 || decProg.wall < 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 3 && std::strcmp(argv[1], "synth") == 0) {
        int w = argc > 4 ? std::atoi(argv[3]) : 4000, h = argc > 4 ? std::atoi(argv[4]) : 3000;
        return writePpm(argv[2], synthesise(w, h)) ? 0 : 1;
    }
    if (argc >= 2 && std::strcmp(argv[1], "run") == 0) return run(argc, argv);
    if (argc >= 4 && std::strcmp(argv[1], "compare") == 0) {
        Image a, b;
        if (!readPpm(argv[2], a) || !readPpm(argv[3], b)) return 1;
        std::printf("%.3f\n", meanError(a.bgr, b.bgr));
        return 0;
    }
    std::printf("usage: jpeg_bench synth OUT.ppm [W H] | run PHOTO.ppm REF.jpg REFPROG.jpg REFDEC.ppm OURS.jpg [Q] | "
                "compare A.ppm B.ppm\n");
    return 2;
}
