// Words, bytes, unsigned views and bit shifts of integers, and GUIDs in text
// and bytes: what VB-style languages cannot write without overflow.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>

namespace tova {

namespace words {

// Only the low 32 bits of a pointer-sized value count.
long hiWord(LONG_PTR value, bool isSigned);
long loWord(LONG_PTR value, bool isSigned);
long makeLong(long low, long high);
long hiByte(LONG_PTR value);
long loByte(LONG_PTR value);
double longToUnsigned(long value);
long unsignedToLong(double value);        // error 6 outside -2^31 ... 2^32 - 1
long integerToUnsigned(short value);
short unsignedToInteger(long value);      // error 6 outside -32768 ... 65535
long shiftLeft(long value, long bits);    // error 5 for bits outside 0 ... 31
long shiftRight(long value, long bits, bool arithmetic);

}  // namespace words

namespace guids {

std::wstring create(bool braces);
// True for "{8-4-4-4-12}" or the bare form, hex digits of either case, nothing else.
bool parse(const std::wstring& text, GUID& out);
std::wstring format(const GUID& g, bool braces);
// The 16 bytes of a Byte array or of an array of numbers 0 ... 255 (any lower bound).
bool fromBytes(const VARIANT& bytes, GUID& out);

}  // namespace guids

}  // namespace tova
