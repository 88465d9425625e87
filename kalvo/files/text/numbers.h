// Numbers of text problem files. Read: decimal or scientific, '.' as the point whatever the locale, a sign of
// either kind, the exponent marked by E or by Fortran's D. Written: the shortest text that reads back to the
// same number.
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

namespace klv {

// Zeros of both signs are equal numbers and different texts.
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

// A range is the difference of two bounds, which double precision cannot always hold so that one bound and
// the range give the other back. With more than 17 digits it is read in extended precision.
long double parse_range (std::string_view text);

constexpr std::size_t number_room = 40;    // bytes that any number fits in

// Write a finite number at a place with number_room bytes and return its end.
char* put_number (char* at, double value);
char* put_range (char* at, long double value);

}
