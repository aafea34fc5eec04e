// Positional access to the scripting runtime's Dictionary (the work behind
// DictionaryMethods; Points keeps its vertices through it too).
//
// A dictionary is any IDispatch: the scripting Dictionary is reached through its
// own vtable interface, anything else by name through IDispatch. Positions are
// 1-based in insertion order. An index (a VARIANT) selects an entry: a String is
// a key, any other value is read as a number (ties to even) and taken as a
// position.
//
// Nothing here raises: a null or foreign object, a failing dictionary call or an
// index that cannot be read gives the soft result ("", 0, false, Empty or a null
// pointer). Item is never read for a key not first seen by Exists, because the
// scripting Dictionary adds a key that is read and missing.
#pragma once

#include "../frame/values.h"

#include <string>

namespace tova {
namespace dictionary {

// Comparison modes of the scripting Dictionary.
enum CompareMode : long { kBinaryCompare = 0, kTextCompare = 1, kDatabaseCompare = 2 };

// How an index selects an entry: a String by key, any other value by 1-based
// position (read as a number, ties to even). Neither when the value cannot be
// read as a number. The key is borrowed from the index.
struct Selector {
    enum Kind { kNone, kKey, kPosition } kind = kNone;
    BSTR key = nullptr;
    long position = 0;
};
Selector select(const VARIANT& index);

// The object an index holds (Nothing included), seen through by-reference
// Variants; false for any other value.
bool objectOf(const VARIANT& index, IUnknown*& object);

// A new scripting Dictionary with its CompareMode set (a mode it refuses leaves
// its own default); null when the runtime cannot create one.
ComPtr<IDispatch> create(long compareMode = kTextCompare);

// The key an index selects: for a position 1..Count the key there, as a String;
// for a String the String itself when that key exists. "" otherwise.
std::wstring key(IDispatch* dict, const VARIANT& index);
std::wstring key(IDispatch* dict, long position);

// The 1-based position an index selects: a number is the position itself when it
// lies in 1..Count; an existing String key is located by walking the keys and
// comparing each under the dictionary's CompareMode (first equal wins; binary
// compares code units, text and database the user locale's text ignoring case).
// 0 otherwise.
long index(IDispatch* dict, const VARIANT& index);
long index(IDispatch* dict, const std::wstring& key);

// True when the dictionary has entries and its first item is an object
// (Nothing included). Only the first item is looked at.
bool isObjectDictionary(IDispatch* dict);

// The item an index selects (through key()). In an object dictionary the item is
// taken as a reference, so a non-object item there reads Empty; otherwise it is
// taken by value, so an object item reads as its default value (Empty when it has
// none). Empty when the key resolves to "".
Variant item(IDispatch* dict, const VARIANT& index);
Variant item(IDispatch* dict, long position);
Variant item(IDispatch* dict, const std::wstring& key);

// Replaces the item an index selects (through key()): an object is stored as a
// reference, anything else by value. Never adds a key. False when the dictionary
// is empty, the key resolves to "" or the dictionary refuses.
bool setItem(IDispatch* dict, const VARIANT& index, const VARIANT& item);

// Renames `key` to `newKey`, the entry keeping its position and item. Only when
// both are non-empty, `key` exists and `newKey` does not.
bool changeKey(IDispatch* dict, const std::wstring& key, const std::wstring& newKey);

// Moves the entry of `key` to the 1-based position `newIndex` (1..Count); the
// entries in between shift by one. True also when it is already there. The
// entry is found ignoring case whatever the CompareMode: in a binary dictionary
// holding "a" then "A", asking for "A" moves "a". Moving to the last place
// removes and re-adds the entry; any other move rebuilds the dictionary.
bool changeIndex(IDispatch* dict, const std::wstring& key, long newIndex);

bool exists(IDispatch* dict, const std::wstring& key);
long count(IDispatch* dict);

// Removes the entry an index selects (through key()); true when its key's text no
// longer exists afterwards (so also for a position holding a key that is no String,
// which stays).
bool remove(IDispatch* dict, const VARIANT& index);

// Adds an entry at the end (an object item by reference); false when the key
// exists or the dictionary refuses.
bool add(IDispatch* dict, const std::wstring& key, const VARIANT& item);

}  // namespace dictionary
}  // namespace tova
