#include "decimal_rounding.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace tova::rounding {

namespace {

void trimLeadingZeros(std::string& s) {
    size_t i = 0;
    while (i < s.size() && s[i] == '0') ++i;
    s.erase(0, i);
}

// Adds one to the last digit.
void increment(std::string& s) {
    size_t i = s.size();
    while (i > 0 && s[i - 1] == '9') s[--i] = '0';
    if (i == 0) s.insert(s.begin(), '1');
    else ++s[i - 1];
}

}  // namespace

Decimal fromDouble(double value, int significant) {
    Decimal d;
    d.negative = std::signbit(value);
    if (value == 0 || !std::isfinite(value)) return d;
    char text[64];
    // d.ddde±x: the digits and the exponent are read without the decimal
    // point, which follows the locale.
    std::snprintf(text, sizeof text, "%.*e", significant - 1, std::fabs(value));
    const char* p = text;
    for (; *p && *p != 'e' && *p != 'E'; ++p)
        if (*p >= '0' && *p <= '9') d.digits += *p;
    const int e = *p ? std::atoi(p + 1) : 0;
    d.exponent = e - static_cast<int>(d.digits.size()) + 1;
    // Trailing zeros say nothing; dropping them keeps the digits short.
    while (!d.digits.empty() && d.digits.back() == '0') {
        d.digits.pop_back();
        ++d.exponent;
    }
    trimLeadingZeros(d.digits);
    return d;
}

double toDouble(const Decimal& d) {
    if (d.digits.empty()) return 0.0;
    double v;
    if (d.digits.size() <= 15 && d.exponent >= -22 && d.exponent <= 22) {
        // Both factors exact, so one correctly rounded operation.
        const double m = static_cast<double>(std::strtoull(d.digits.c_str(), nullptr, 10));
        const double p = std::pow(10.0, std::abs(d.exponent));
        v = d.exponent >= 0 ? m * p : m / p;
    } else {
        const std::string text = d.digits + "e" + std::to_string(d.exponent);
        v = std::strtod(text.c_str(), nullptr);
    }
    return d.negative ? -v : v;
}

Decimal fromInteger(uint64_t magnitude, bool negative, int exponent) {
    Decimal d;
    d.negative = negative;
    d.exponent = exponent;
    if (magnitude) d.digits = std::to_string(magnitude);
    return d;
}

bool toScaledInteger(const Decimal& d, int exponent, uint64_t& magnitude) {
    if (d.digits.empty()) return magnitude = 0, true;
    const int shift = d.exponent - exponent;   // zeros to append; never negative after rounding
    if (shift < 0) return false;
    uint64_t m = 0;
    for (size_t i = 0; i < d.digits.size() + static_cast<size_t>(shift); ++i) {
        const unsigned digit = i < d.digits.size() ? static_cast<unsigned>(d.digits[i] - '0') : 0;
        if (m > (UINT64_MAX - digit) / 10) return false;
        m = m * 10 + digit;
    }
    magnitude = m;
    return true;
}

Decimal round(const Decimal& d, int decimals, Mode mode) {
    const int last = -decimals;   // exponent of the last digit kept
    if (d.digits.empty() || d.exponent >= last) return d;
    const size_t drop = static_cast<size_t>(last - d.exponent);
    const size_t keep = drop < d.digits.size() ? d.digits.size() - drop : 0;
    Decimal r;
    r.negative = d.negative;
    r.exponent = last;
    r.digits = d.digits.substr(0, keep);
    // What is dropped, against half a unit of the last kept digit.
    const std::string dropped = drop <= d.digits.size() ? d.digits.substr(keep) : std::string(drop - d.digits.size(), '0') + d.digits;
    const bool any = dropped.find_first_not_of('0') != std::string::npos;
    const int half = dropped[0] > '5' ? 1 : dropped[0] < '5' ? -1 : (dropped.find_first_not_of('0', 1) != std::string::npos ? 1 : 0);
    bool away = false;   // away from zero
    switch (mode) {
    case HalfEven: away = half > 0 || (half == 0 && !r.digits.empty() && (r.digits.back() - '0') % 2 == 1); break;
    case HalfAwayFromZero: away = half >= 0; break;
    case HalfUp: away = half > 0 || (half == 0 && !d.negative); break;
    case TowardZero: away = false; break;
    case Down: away = any && d.negative; break;
    case Up: away = any && !d.negative; break;
    }
    if (away) increment(r.digits);
    trimLeadingZeros(r.digits);
    if (r.digits.empty()) r.negative = false;
    return r;
}

double modulo(double dividend, double divisor) {
    double r = std::fmod(dividend, divisor);
    if (r != 0 && (r < 0) != (divisor < 0)) r += divisor;
    return r == 0 ? 0.0 : r;
}

}  // namespace tova::rounding
