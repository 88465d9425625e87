// Error lines about input.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Prints an error line with a text of at most 254 characters, and returns the code. KLV_RES_ARGUMENT_LENGTH is printed as
// KLV_RES_ARGUMENT.
KLVrescode_t refuse (KLVrescode_t code, const char* format, ...) __attribute__ ((format (__printf__, 2, 3)));

// Refuses a field of the problem record unless it is empty or has numbers or truth values (complex ones count with their real
// parts). Octave keeps some arrays as ranges: out of memory if the numbers can't be spelt out.
KLVrescode_t check_values (const char* name, const mxArray* array);
