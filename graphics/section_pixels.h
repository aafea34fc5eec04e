// The pixels of a DIBSection or AlphaDIBSection a caller passes as Object,
// read through the section's own interface (its address is pointer-sized).
#pragma once

#include "../frame/library_frame.h"
#include "colourise.h"

namespace tova {

// Raises 481 for Nothing, another object or a section without a DIB.
colourise::PixelRows sectionPixels(IDispatch* section);

}  // namespace tova
