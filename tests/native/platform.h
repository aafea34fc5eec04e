// The native build's stand-ins for what the portable cores ask of Windows:
// raise() throws Raised with the bare error number (there is no COM error to
// carry it), the wildcard matcher's locale folds ASCII only, and the cipher's
// code page is Latin-1 (code n is U+00nn; nothing else has a code).
#pragma once

namespace tova::native {

struct Raised {
    long code;
};

}  // namespace tova::native
