// Whole-file content: text in the encodings of TextEncodingConstants, lines,
// bytes, comparison and digests. Writes of whole files go through
// safe_write.h, so that a failure leaves the old file.
#pragma once

#include <string>
#include <vector>

#include <windows.h>
#include <oleauto.h>

namespace tova {
namespace files {

// `encoding` is a TextEncodingConstants value (-1 to 5).
bool readText(const std::wstring& path, long encoding, std::wstring& out);
bool readLines(const std::wstring& path, long encoding, std::vector<std::wstring>& out);
bool writeText(const std::wstring& path, const std::wstring& text, long encoding, bool overwrite);
bool appendLine(const std::wstring& path, const std::wstring& text, long encoding);
long countLines(const std::wstring& path);  // -1 when unreadable
// `offset` >= 0, `length` >= -1 (-1: to the end). Leaves `out` Empty when unreadable.
void readBinary(const std::wstring& path, double offset, long length, VARIANT* out);
// `data` is a one-dimensional Byte array (the caller checked).
bool writeBinary(const std::wstring& path, SAFEARRAY* data, bool overwrite);
bool compareFiles(const std::wstring& a, const std::wstring& b);
// `algorithm` is a HashAlgorithmConstants value (1 to 5).
std::wstring fileHash(const std::wstring& path, long algorithm);

}  // namespace files
}  // namespace tova
