// The registry work behind RegistryMethods. Every function opens (or creates)
// the key it needs, does its work and closes the key before it returns; no
// handle outlives a call.
//
// Names and text cross the platform in the ANSI code page (the registry's "A"
// functions): characters the code page cannot hold arrive as "?".
//
// Root keys are the predefined handles of RootKeyTypeEnum as Long values; any
// other value is passed to the platform as a key handle, which refuses what is
// not a key of the process (the call then fails softly).
//
// Failures of the platform are results (false, the default, Empty), never
// errors. What the functions raise are errors of the conversions they perform
// (13 for a Default that has no text, 94 for a Null Default, 10 for a locked
// byte array).
#pragma once

#include "../frame/library_frame.h"

#include <string>

namespace tova {
namespace registry {

// Writes `value` as REG_SZ (without a terminating NUL), creating the key when
// needed; an empty value deletes the value instead and gives true whatever the
// deletion gave. False when keyName or valueName is empty.
bool updateKey(long root, const std::wstring& keyName, const std::wstring& valueName, const std::wstring& value);

// A REG_SZ or REG_EXPAND_SZ value (not expanded) as text, or a REG_DWORD value
// rendered from its bytes as the text of its first NUL (see registry.cpp: a
// number with a zero byte or a byte below 16 is deliberately not its true
// value). Values that do not fit 1024 bytes, other types and every failure give
// `fallback`: `defaultValue` as text, or "" when it is null or missing.
std::wstring getKeyValue(long root, const std::wstring& keyName, const std::wstring& valueName,
                         const VARIANT* defaultValue);

// Writes the bytes of `bytes` (any element type of one byte, every dimension)
// as REG_BINARY, creating the key when needed. False when keyName or valueName
// is empty or the array was never dimensioned.
bool updateKeyEx(long root, const std::wstring& keyName, const std::wstring& valueName, SAFEARRAY* bytes);

// Reads the data of a value of any type into `*bytes`, which becomes a
// zero-based Byte array exactly as long as the data. False when the key does
// not open (`*bytes` untouched), when keyName or valueName is empty (untouched),
// when the value cannot be read or is empty (then `*bytes` holds what the last
// resize left: 1024 zero bytes, or the size the platform reported).
bool getKeyValueEx(long root, const std::wstring& keyName, const std::wstring& valueName, SAFEARRAY** bytes);

// The names of the key's subkeys in the platform's order, as a zero-based
// String array (no elements when the key has none). Empty when the key does not
// open.
void getAllSubKeys(long root, const std::wstring& keyName, VARIANT* result);

// The key's values as a Variant array (0 To 1, 0 To n - 1): row 0 the names,
// row 1 the data. Data: String for REG_SZ and REG_EXPAND_SZ (without the
// terminating NUL), a Byte array for REG_BINARY, a Long for REG_DWORD (the true
// number) and REG_DWORD_BIG_ENDIAN, a String array for REG_MULTI_SZ, a Byte
// array of the raw data for every other type. Values without data or of type 0
// are left out. Empty when the key does not open.
void getAllKeyValues(long root, const std::wstring& keyName, VARIANT* result);

// Deletes the key (whether a key with subkeys can go is the platform's rule).
// False when keyName is empty.
bool deleteKey(long root, const std::wstring& keyName);

// Deletes one value. False unless both names are given and the key opens.
bool deleteKeyValue(long root, const std::wstring& keyName, const std::wstring& valueName);

// Deletes every value with a name (the key's unnamed default value stays).
// Collects the names first and deletes afterwards, so that the enumeration
// indices stay valid. True when the key opened; false when it did not or when
// keyName is empty (the values of a root key are not wiped by an empty name).
bool deleteAllKeyValues(long root, const std::wstring& keyName);

// ANSI code page conversions of the registry text.
std::string toAnsi(const std::wstring& s);
std::wstring fromAnsi(const char* s, size_t n);

}  // namespace registry
}  // namespace tova
