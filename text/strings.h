// The string helpers behind StringMethods: path strings, proper case, hex text,
// character classes, resource strings with placeholders, Variant checks and
// settings (initialisation) files.
//
// Strings are UTF-16 code units throughout. Upper- and lower-casing use the user
// locale's case mapping (one code unit for one), and "case-insensitive" means
// both sides upper-cased that way and then compared exactly. Settings files go
// through the ANSI profile functions: text is converted to the ANSI code page
// for each call and back.
//
// Errors: the functions raise only what the operations they perform raise (5,
// 9, 13, 94 and the errors of a resource reader object); the deliberate ones are
// noted below. Missing optional Variants (null, or VT_ERROR with
// DISP_E_PARAMNOTFOUND) count as Empty / not given. Every VARIANT* may hold its
// value by reference.
#pragma once

#include "../frame/library_frame.h"

#include <string>

namespace tova {
namespace strings {

// ------------------------------------------------------------------ Variants

// The bounds of the first dimension of the array a Variant holds. False, with
// both bounds 0, for Empty, Null, non-arrays and arrays never dimensioned.
bool getArrayBounds(const VARIANT* v, long& lower, long& upper);

// True when the Variant holds a String (arrays of strings are not strings).
bool isString(const VARIANT* v);

// The Variant's type code (VT_BYREF left out; arrays carry VT_ARRAY) equals
// `expectedType`; Empty needs allowEmpty and arrays need allowArray. False for a
// missing Variant.
bool isVariantValid(const VARIANT* v, VARTYPE expectedType, bool allowArray, bool allowEmpty);

// The bytes the automation runtime's binary record writer produces for the
// value (the layout is described in strings.cpp). 0 for Empty, Null, a missing
// Variant and anything the writer cannot write (objects, records, types the
// runtime has no name for).
long sizeOfVariant(const VARIANT* v);

// ------------------------------------------------------------------ paths
// All work on the text alone, splitting on "\"; an empty path gives "".

// Text before the first ":"; "" when there is none.
std::wstring fileDrive(const std::wstring& path);
// The text before the last "\". Raises 5 (deliberately) when there is no "\".
std::wstring filePath(const std::wstring& path);
// The last component; cut at its first "." when !withExtension.
std::wstring fileTitle(const std::wstring& path, bool withExtension);
// The text after the last "." anywhere in the string; the whole string without one.
std::wstring fileExtension(const std::wstring& path);
// fileTitle(fileSpec, false) with `newExtension` ("." added unless it starts
// with one; an empty extension gives the bare title).
std::wstring backupFilename(const std::wstring& fileSpec, const std::wstring& newExtension);
// Puts "..." in place of the middle folders of a path longer than maxLength,
// keeping the first three characters and the whole file title.
std::wstring trimDirString(const std::wstring& filename, long maxLength);

// ------------------------------------------------------------------ text

std::wstring upperCase(const std::wstring& s);
std::wstring lowerCase(const std::wstring& s);

// Lower-cases the text and upper-cases its first character and every character
// after a space. Raises 5 (deliberately) for an empty text and for a text whose
// last character is a space.
std::wstring properCase(const std::wstring& text);

// Upper-case hexadecimal of the value's 32 bits, left-padded with "0" to
// `digits`; never truncated.
std::wstring formatHex(long value, long digits);

// The character after the last "&" marker ("&&" is an escaped ampersand).
std::wstring accessKey(const std::wstring& caption);

// ------------------------------------------------------------------ character classes
// Each tests the first character of `ch`.

// compare: 0 exact, 1 case-insensitive, anything else gives false.
bool isCharset(const std::wstring& ch, const std::wstring& charset, long compare);
bool isAlpha(const std::wstring& ch);
bool isDigit(const std::wstring& ch);
bool isHexDigit(const std::wstring& ch);
bool isAlphaDigit(const std::wstring& ch);
bool isSpace(const std::wstring& ch);
// True also for characters without case and for an empty string.
bool isLowerCase(const std::wstring& ch);
bool isUpperCase(const std::wstring& ch);
// The wildcard match: case-insensitive when compare != 0.
bool isLike(const std::wstring& text, const std::wstring& pattern, long compare);

// ------------------------------------------------------------------ resource strings

// Replaces identifiers by values (case-insensitively, pair by pair when both are
// arrays of the same bounds), then <CR> and <TAB> (exactly), <APPTITLE> by the
// application name and <VERSION> by the version (an array is joined with ".").
// Raises 13 for identifiers or values that have no text, 94 for Null ones.
std::wstring convResString(const std::wstring& text, const VARIANT* identifiers, const VARIANT* values,
                           const VARIANT* appName, const VARIANT* appVersion);

// String `resourceId` of a module's string table in the language of `localeId`
// (falling back to the module's default language); "" when there is none.
std::wstring loadStringResource(HMODULE module, long resourceId, long localeId);

// Reads string `resourceId` from `source` and expands it with convResString.
// `source` is
// - a String: the file name of a module (DLL or EXE) read as data;
// - an object: a reader called by name, late-bound:
//       Function ReadString(ResourceID As Long, LocaleID As Long) As String
//   whose errors pass through with their numbers;
// - anything else that converts to a number: the handle of a module already loaded.
// Null, Empty, an array, an empty file name, a file that does not exist or a
// string that is not there give "".
std::wstring readResString(long resourceId, long localeId, const VARIANT* source, const VARIANT* identifiers,
                           const VARIANT* values, const VARIANT* appName, const VARIANT* appVersion);

// ------------------------------------------------------------------ settings files
// Each gives its empty result ("", the default, false) without touching the file
// when a name it needs is empty.

// At most 1023 characters; a missing key gives `defaultValue`.
std::wstring iniReadString(const std::wstring& file, const std::wstring& section, const std::wstring& key,
                           const std::wstring& defaultValue);
long iniReadInteger(const std::wstring& file, const std::wstring& section, const std::wstring& key,
                    long defaultValue);
// Destroys both arrays (null allowed) and, when the section has lines, replaces
// them by String arrays 0 to count - 1 parallel to the lines: the key before the
// first "=" and the value after it, "" in both for a line without "=". True
// when the section had content. Raises 10 when an array is locked.
bool iniReadSection(const std::wstring& file, const std::wstring& section, SAFEARRAY** keyNames,
                    SAFEARRAY** values);
// An empty value writes "key=" (it does not delete the key).
bool iniWriteString(const std::wstring& file, const std::wstring& section, const std::wstring& key,
                    const std::wstring& value);
// Replaces the section by key=value lines. A non-array is taken as an array of
// one (lower bound 0); values are taken at the keys' indices. False, writing
// nothing, when there are fewer values than keys or an array has no bounds.
bool iniWriteSection(const std::wstring& file, const std::wstring& section, const VARIANT* keyNames,
                     const VARIANT* values);

}  // namespace strings
}  // namespace tova
