// How fast the cipher runs: Encrypt and Decrypt of a 10 MB text (10 * 2^20
// characters, one byte each in the ANSI code page) at level 1, with short keys,
// conversions and key doubling included. Best of five runs. A figure, not a test.
//
// Twice: as a client calls the EncryptMethods members, with new key strings
// and a new result each time, and into buffers kept from the previous call. A
// call makes some 70 MB of new strings (the result and both doubled keys that
// go back to the caller), and where touching new memory is slow that, not the
// cipher, sets the first figure; the cost of first touch is measured and
// printed to tell the two apart.
//
//   cipher_bench [megabytes]

#include "frame/typelib.h"
#include "text/cipher.h"
#include "text/encrypt_methods.h"

#include "clock.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// Text over the whole code page: mostly letters and spaces, every code now and then.
std::wstring sampleText(size_t n) {
    wchar_t chr[256];
    for (int code = 0; code < 256; ++code) {
        char b = static_cast<char>(code);
        if (MultiByteToWideChar(CP_ACP, 0, &b, 1, &chr[code], 1) != 1) chr[code] = L'?';
    }
    std::wstring text(n, L' ');
    unsigned x = 12345;
    for (size_t i = 0; i < n; ++i) {
        x = x * 1103515245u + 12345u;
        unsigned r = (x >> 16) & 0x7FFF;
        text[i] = r % 8 == 0 ? chr[r % 256] : r % 7 == 0 ? L' ' : static_cast<wchar_t>(L'a' + r % 26);
    }
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    double megabytes = argc > 1 ? std::atof(argv[1]) : 10;
    if (megabytes <= 0) megabytes = 10;
    const size_t n = static_cast<size_t>(megabytes * 1048576);
    const std::wstring text = sampleText(n);
    const std::wstring keyA = L"Secret!", keyB = L"Other key";
    std::printf("Text: %.0f MB (%zu characters), level 1, keys of %zu and %zu characters\n", megabytes, n,
                keyA.size(), keyB.size());
    std::wstring secret, plain;

    // Through the class, as a client calls it: the text in a String, new keys each time.
    tova::ComPtr<_EncryptMethods> methods;
    tova::createEncryptMethods(IID__EncryptMethods, methods.putVoid());
    BSTR textString = SysAllocStringLen(text.data(), static_cast<UINT>(n));
    BSTR secretString = nullptr;
    auto member = [&](bool encrypting, BSTR input, BSTR* output) {
        BSTR a = SysAllocString(keyA.c_str()), b = SysAllocString(keyB.c_str());
        BSTR in = input, result = nullptr;
        HRESULT hr = encrypting ? methods->Encrypt(&in, &a, &b, 1, &result) : methods->Decrypt(&in, &a, &b, 1, &result);
        if (FAILED(hr)) std::printf("call failed: 0x%08lx\n", static_cast<unsigned long>(hr));
        SysFreeString(a);
        SysFreeString(b);
        SysFreeString(*output);
        *output = result;
    };
    double tEncrypt = bestSeconds(5, [&] { member(true, textString, &secretString); });
    BSTR plainString = nullptr;
    double tDecrypt = bestSeconds(5, [&] { member(false, secretString, &plainString); });
    secret.assign(secretString, SysStringLen(secretString));
    bool same = std::wstring(plainString, SysStringLen(plainString)) == text;
    {
        std::wstring a = keyA, b = keyB;
        same = same && tova::cipher::encrypt(text, a, b, 1) == secret;
    }
    SysFreeString(textString);
    SysFreeString(secretString);
    SysFreeString(plainString);

    // The work alone: into a buffer kept from the previous call, keys read, not doubled.
    std::wstring buffer(n, L'\0');
    const tova::cipher::Key ka{keyA.data(), keyA.size()}, kb{keyB.data(), keyB.size()};
    double tEncryptReused = bestSeconds(5, [&] { tova::cipher::encrypt(text.data(), n, ka, kb, 1, &buffer[0]); });
    double tDecryptReused = bestSeconds(5, [&] { tova::cipher::decrypt(secret.data(), n, ka, kb, 1, &buffer[0]); });
    double tTouch = bestSeconds(5, [&] {
        std::wstring fresh(n, L'\0');
        if (fresh[n / 2] != 0) std::printf("?");
    });
    std::wstring hex;
    double tHexise = bestSeconds(3, [&] { hex = tova::cipher::hexise(text); });
    double tDeHexise = bestSeconds(3, [&] { plain = tova::cipher::dehexise(hex); });
    same = same && plain == text && buffer == text;

    std::printf("Hexise: %.0f MB/s\n", megabytes / tHexise);
    std::printf("DeHexise: %.0f MB/s\n", megabytes / tDeHexise);
    std::printf("Round trips: %s\n", same ? "identical" : "DIFFERENT");
    std::printf("New memory, first touch: %.1f ms per %.0f MB of text (UTF-16, %.0f MB)\n", tTouch * 1e3,
                megabytes, 2 * megabytes);
    std::printf("Encrypt, into a buffer kept: %.0f MB/s\n", megabytes / tEncryptReused);
    std::printf("Decrypt, into a buffer kept: %.0f MB/s\n", megabytes / tDecryptReused);
    std::printf("Encrypt member: %.0f MB/s (goal >= 200)\n", megabytes / tEncrypt);
    std::printf("Decrypt member: %.0f MB/s (goal >= 200)\n", megabytes / tDecrypt);
    // The least any call that returns new strings pays here: the result and both doubled keys touched once.
    const double fresh = 2.0 * static_cast<double>(n + tova::cipher::doubledLength(keyA.size(), n) +
                                                   tova::cipher::doubledLength(keyB.size(), n));
    const double floorSeconds = tTouch * fresh / (2.0 * static_cast<double>(n));
    std::printf("New strings per call: %.0f MB; touching them alone limits a call to %.0f MB/s here\n",
                fresh / 1048576, megabytes / floorSeconds);
    return 0;
}
