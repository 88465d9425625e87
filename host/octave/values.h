// Arrays that hold Octave's own values, filled in place and handed over without a copy. Ordinary mxArrays are copied into such
// values by Octave, at several times the cost.
//
// The pointers are to mxArrays, a type that Octave's mex.h and its other headers declare differently. Each array must be destroyed,
// or put into another one, as any array.
#pragma once

#include <cstddef>

// All throw when memory is short.

// The value of a 1-by-1 record that Octave's functions have made, and of all records in it; null for anything else.
void* make_value_of_record (const void* record);

// A 1-by-1 record of values; null ones leave their fields empty.
void* make_record_value (int count, const char* const* names, const void* const* values);
void* make_number_value (double number);
void* make_text_value (const char* text);
void* make_characters_value (std::ptrdiff_t rows, std::ptrdiff_t columns);
void* make_zeros_value (std::ptrdiff_t rows, std::ptrdiff_t columns);
// A sparse matrix without entries, but with room for them.
void* make_sparse_value (std::ptrdiff_t rows, std::ptrdiff_t columns, std::ptrdiff_t room);
