// Numbers of the host's double arrays.
#pragma once

#include <optional>

#include "host/host.h"

// The first element of a double array, dense or sparse, that is not empty. Octave keeps some arrays as ranges: nothing if it has
// no memory to spell the numbers out.
std::optional<double> first_number (const mxArray* array);
