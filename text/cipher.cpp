#include "cipher.h"

namespace tova {
namespace cipher {

std::wstring hexise(const std::wstring&) { return {}; }
std::wstring dehexise(const std::wstring&) { return {}; }
std::wstring randomString(long, const std::wstring&, long) { return {}; }
std::wstring encrypt(const std::wstring& text, std::wstring&, std::wstring&, long) { return text; }
std::wstring decrypt(const std::wstring& text, std::wstring&, std::wstring&, long) { return text; }

}  // namespace cipher
}  // namespace tova
