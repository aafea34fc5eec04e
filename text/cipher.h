// Hexadecimal text encoding, random strings and the light symmetric text
// cipher (the work behind EncryptMethods). Character codes are those of the
// system's ANSI code page.
#pragma once

#include <string>

namespace tova {
namespace cipher {

std::wstring hexise(const std::wstring& text);
// Raises 13 for a pair that is not hexadecimal.
std::wstring dehexise(const std::wstring& text);
std::wstring randomString(long length, const std::wstring& delimiter, long delimiterFrequency);
// The keys are doubled in place until they reach the text's length.
std::wstring encrypt(const std::wstring& text, std::wstring& keyA, std::wstring& keyB, long level);
std::wstring decrypt(const std::wstring& text, std::wstring& keyA, std::wstring& keyB, long level);

}  // namespace cipher
}  // namespace tova
