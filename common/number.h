// Numbers of the host's double arrays.
#pragma once

#include <optional>

#include "host/host.h"

// The first element of a double array that is not empty, also of a sparse one. Nothing if the host holds the numbers
// in another form, as a range, and has no memory to spell them out.
std::optional<double> first_number (const mxArray* array);

// A 1-by-1 double; null if it can't be made.
mxArray* make_number (double value);
