// Arrays that hold Octave's own values. Octave makes the same values of its arrays itself, by copying them, at several times
// the cost; what is filled in place here is handed over as it is.
//
// The arrays are mxArrays, which in Octave's own headers are another type than in its mex.h. Each is to be destroyed, or put
// into another, as any array is.
#pragma once

#include <cstddef>

// A 1-by-1 record whose fields are real numbers; null for anything else.
void* make_record_value (const void* record);

// These throw where there is no memory.
void* make_empty_text_value ();
void* make_zeros_value (std::ptrdiff_t rows, std::ptrdiff_t columns);    // more than one
// Without entries, but with room for them.
void* make_sparse_value (std::ptrdiff_t rows, std::ptrdiff_t columns, std::ptrdiff_t room);
