// Moving files and folders to the recycle bin, never a permanent delete: the
// shell's file operation with a sink that refuses any item the shell would
// destroy, and where that operation does not work, the older shell call that
// asks rather than destroys.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

namespace tova {
namespace files {

// `paths` in the form of apiPath(). True when the platform reports every item
// recycled; False, with the rest cancelled, as soon as one could not be.
bool recycle(const std::vector<std::wstring>& paths);

namespace detail {
// The sink's verdict on one item (TRANSFER_SOURCE_FLAGS of PreDeleteItem):
// S_OK only for items the shell will put in the recycle bin.
HRESULT preDeleteVerdict(DWORD flags);
}  // namespace detail

}  // namespace files
}  // namespace tova
