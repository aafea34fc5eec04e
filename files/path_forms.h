// The path-form members of FileMethods: joining, qualifying, relating and
// respelling paths, extensions and file names.
#pragma once

#include <string>

namespace tova {
namespace files {

std::wstring combinePath(const std::wstring& path, const std::wstring& more);
std::wstring fullPath(const std::wstring& path);
std::wstring relativePath(const std::wstring& fromFolder, const std::wstring& toPath);
std::wstring shortPath(const std::wstring& path);
std::wstring longPath(const std::wstring& path);
std::wstring canonicalPath(const std::wstring& path, bool resolveLinks);
std::wstring changeExtension(const std::wstring& path, const std::wstring& newExtension);
std::wstring makeValidFileName(const std::wstring& name, const std::wstring& replacement);

}  // namespace files
}  // namespace tova
