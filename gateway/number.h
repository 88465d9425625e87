// Numbers of the host's double arrays.
#pragma once

#include "host/host.h"

// The first element of a double array that is not empty, also of a sparse one.
double first_number (const mxArray* array);

// A 1-by-1 double; null if it can't be made.
mxArray* make_number (double value);
