#include "jpeg_codec.h"

namespace tova::jpeg {

bool readInfo(const uint8_t*, size_t, Info&) { return false; }
bool decode(const uint8_t*, size_t, uint8_t*, ptrdiff_t, int, int) { return false; }
bool encode(const uint8_t*, ptrdiff_t, int, int, int, std::vector<uint8_t>&) { return false; }

}  // namespace tova::jpeg
