// The error numbers the library raises and raise() itself, apart from the COM
// types that carry them to callers: modules that know nothing of Windows (the
// wildcard matcher, the cipher) include only this, so they also build natively
// (tests/native), where raise() is defined without COM.
#pragma once

namespace tova {

// Standard run-time error numbers the classes raise.
enum RuntimeError : long {
    kInvalidArgument = 5,      // "Invalid procedure call or argument"
    kOverflow = 6,
    kSubscriptOutOfRange = 9,
    kDivisionByZero = 11,
    kOutOfMemory = 7,
    kTypeMismatch = 13,
    kCannotPerform = 17,       // operation not possible in the current state
    kObjectNotSet = 91,
    kInvalidPattern = 93,
    kNotSupported = 438,       // object doesn't support this property or method
    kInvalidPicture = 481,
};

// Raises `code`: a standard run-time error when code <= 1000 (source and
// description default to the library's name and the host's standard text),
// otherwise the library error 0x80040000 | code.
[[noreturn]] void raise(long code, const wchar_t* source = nullptr, const wchar_t* description = nullptr);

}  // namespace tova
