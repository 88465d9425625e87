// Numbers of text problem files. Read: decimal or scientific, '.' as the point whatever the locale, a sign of
// either kind, the exponent marked by E or by Fortran's D. Written: the shortest text that reads back to the
// same number.
#pragma once

#include <bit>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace klv {

// Zeros of different sign are equal but have different texts.
inline bool same_bits (double a, double b)
{
    return std::bit_cast<std::uint64_t> (a) == std::bit_cast<std::uint64_t> (b);
}

inline bool is_plain_zero (double value)
{
    return same_bits (value, 0.0);
}

// Any number but NaN; "inf" and "infinity" with a sign or without are numbers. Throws FileFault.
double parse_number (std::string_view text);
double parse_finite (std::string_view text);

// A range is the difference of two bounds. In double precision one bound and the range do not always give the other bound back, so
// a range may have more than 17 digits, and is read in extended precision then.
long double parse_range (std::string_view text);

// The text of a finite number, or of a range.
class NumberText {
public:
    explicit NumberText (double value) : end_ (put (value)) {}
    explicit NumberText (long double range);
    NumberText (const NumberText&) = delete;
    NumberText& operator= (const NumberText&) = delete;

    operator std::string_view () const { return {text_, end_}; }

private:
    char* put (double value) { return std::to_chars (std::begin (text_), std::end (text_), value).ptr; }

    char text_[40];    // enough for any number
    const char* end_;
};

}
