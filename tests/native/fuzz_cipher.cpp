// The cipher's round trip: decrypt of encrypt is the identity for every text
// of the code page (the native one is Latin-1), any non-empty keys and any
// level, through both the string and the caller's-buffer forms, and the keys
// come back doubled the same way. Texts are the input's bytes repeated to a
// length of up to 20000 characters, so the converter's chunks are crossed.
// Then characters without a code, which decrypt drops.
#include "fuzz.h"
#include "text/cipher.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <string>

namespace {

std::wstring latin1(const std::string& bytes) {
    std::wstring out;
    for (unsigned char b : bytes) out += static_cast<wchar_t>(b);
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tova::cipher;
    FuzzedDataProvider in(data, size);
    const long level = in.ConsumeIntegral<int32_t>();
    std::wstring keyA = latin1(in.ConsumeRandomLengthString(40));
    std::wstring keyB = latin1(in.ConsumeRandomLengthString(40));
    const size_t length = in.ConsumeIntegralInRange<size_t>(0, 20000);
    const std::wstring pattern = latin1(in.ConsumeBytesAsString(in.remaining_bytes()));
    if (keyA.empty() || keyB.empty()) return 0;
    std::wstring text;
    while (!pattern.empty() && text.size() < length) text += pattern;

    const std::wstring a = keyA, b = keyB;
    std::wstring decA = keyA, decB = keyB;
    const std::wstring secret = encrypt(text, keyA, keyB, level);
    require(secret.size() == text.size(), "encrypt keeps the length");
    require(decrypt(secret, decA, decB, level) == text, "decrypt undoes encrypt");
    require(keyA == decA && keyB == decB, "both directions double the keys alike");
    require(dehexise(hexise(text)) == text, "dehexise undoes hexise");

    // Into buffers exactly the text's size, then in place.
    const Key ka{a.data(), a.size()}, kb{b.data(), b.size()};
    std::wstring buffer(text.size(), L'\0');
    require(encrypt(text.data(), text.size(), ka, kb, level, &buffer[0]) == text.size() && buffer == secret,
            "the buffer form encrypts as the string form");
    require(decrypt(buffer.data(), buffer.size(), ka, kb, level, &buffer[0]) == text.size() && buffer == text,
            "the buffer form decrypts in place");
    if (level > 0 && !text.empty()) {
        std::wstring doubled(doubledLength(a.size(), text.size()), L'\0');
        writeDoubled(ka, &doubled[0], doubled.size());
        require(doubled == keyA, "writeDoubled writes the doubled key");
    }

    // Every fifth character without a code: decrypt drops exactly those.
    std::wstring mixed = text;
    size_t coded = mixed.size();
    for (size_t i = 0; i < mixed.size(); i += 5, --coded) mixed[i] = L'\x4E00' + mixed[i];
    std::wstring out(mixed.size(), L'\0');
    const size_t written = decrypt(mixed.data(), mixed.size(), ka, kb, level, &out[0]);
    require(written == (level > 0 ? coded : mixed.size()), "decrypt drops the characters without a code");
    return 0;
}
