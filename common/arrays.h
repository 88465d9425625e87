// Shape tests of the host's arrays, and conversions of their contents to the library's types. A null array stands for an absent
// one.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "host/host.h"

// 1 if `a` is a vector of length n: dense double 1-by-n or n-by-1, or, where sparse arrays are allowed, sparse n-by-1 of any class.
// For n = 0: 1 if `a` is absent or empty.
int isvector (const mxArray* a, std::uint64_t n, int allowsparse);

// The number of elements; 0 if `a` is absent.
std::uint64_t vectorlen (const mxArray* a);

// 1 if `a` is not sparse and has one row or one column. `a` is not null.
int is1ddensevec (const mxArray* a);

void rvec_copy (int n, const double* source, double* destination);

// Narrows row indices of a sparse array. The host's are 0-based, as the library's.
void mvItoklvI (const mwIndex* source, std::int32_t* destination, std::uint64_t n);

// Removes every c from s, in place. Returns the new length.
int strtrim (char* s, char c);

// Converts s to upper case in the current locale, in place. Returns s.
char* local_strupr (char* s);

inline bool is_given (const mxArray* a)
{
    return a != nullptr && !mxIsEmpty (a);
}

// Whether a number of items can be counted in the library's 32 bits.
inline bool is_countable (std::uint64_t size)
{
    return size <= std::numeric_limits<std::int32_t>::max ();
}

// A number truncated toward zero; nothing if the result does not fit, or the number is NaN.
template <class Whole>
std::optional<Whole> truncate_to (double value)
{
    // The largest number is not a double of 64 bits; the one above it is.
    constexpr double limit = 2.0 * static_cast<double> (Whole{1} << (std::numeric_limits<Whole>::digits - 1));
    value = std::trunc (value);
    if (value >= -limit && value < limit)
        return static_cast<Whole> (value);
    return std::nullopt;
}
inline std::optional<std::int32_t> truncate_to_int32 (double value)
{
    return truncate_to<std::int32_t> (value);
}
inline std::optional<std::int64_t> truncate_to_int64 (double value)
{
    return truncate_to<std::int64_t> (value);
}

// Calls take (item, value) for each stored entry of a sparse column of numbers or truth values, in storage order, until it returns
// false.
template <class Take>
void for_each_entry (const mxArray* column, Take take)
{
    const bool logical = mxGetClassID (column) == mxLOGICAL_CLASS;
    const double* numbers = logical ? nullptr : mxGetPr (column);
    const mxLogical* truths = logical ? static_cast<const mxLogical*> (mxGetData (column)) : nullptr;
    const mwIndex* rows = mxGetIr (column);
    const mwIndex count = mxGetJc (column)[1];
    for (mwIndex k = 0; k < count; ++k)
        if (!take (static_cast<std::int32_t> (rows[k]), logical ? double (truths[k] != 0) : numbers[k]))
            return;
}
