// Rounding by decimal digits, exactly: a number is taken as the digits a
// person reads (a Double to 15 significant digits, so 2.675 is 2.675 and not
// the binary value just below it) and rounded there, never through the
// runtime's binary arithmetic or its decimal rounding.
#pragma once

#include <cstdint>
#include <string>

namespace tova::rounding {

enum Mode { HalfEven = 0, HalfAwayFromZero = 1, HalfUp = 2, TowardZero = 3, Down = 4, Up = 5 };

// negative × digits × 10^exponent; digits without leading zeros ("" is 0).
struct Decimal {
    bool negative = false;
    std::string digits;
    int exponent = 0;
};

// The value's shortest form with at most `significant` digits (15 for a Double).
Decimal fromDouble(double value, int significant);
double toDouble(const Decimal& d);
Decimal fromInteger(uint64_t magnitude, bool negative, int exponent);
// The magnitude times 10^-exponent as an integer; false when it does not fit 64 bits.
bool toScaledInteger(const Decimal& d, int exponent, uint64_t& magnitude);

// Rounds to a multiple of 10^-decimals; the exponent of the result is at least that.
Decimal round(const Decimal& d, int decimals, Mode mode);

// Remainder with the divisor's sign (divisor not 0).
double modulo(double dividend, double divisor);

}  // namespace tova::rounding
