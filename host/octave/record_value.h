// Records of numbers on their way to a function of the session.
#pragma once

// A 1-by-1 record whose fields are real numbers, as an array that holds Octave's own value, to be destroyed
// as any array is; null for anything else. Octave makes the same value of the record itself at several times
// the cost. The arrays are mxArrays, which in Octave's own headers are another type than in its mex.h.
void* make_record_value (const void* record);
