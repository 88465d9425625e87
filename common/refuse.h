// Error lines about input.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Prints an error line with a text of at most 254 characters, and answers its code. A wrong length is printed as the wrong
// argument that it is.
KLVrescode_t refuse (KLVrescode_t code, const char* format, ...) __attribute__ ((format (__printf__, 2, 3)));

// Refuses a field of the problem record, not an empty one, whose values are not numbers or truth values. Of complex
// numbers the real parts are read.
// A host may hold them in another form, as a range, and have no memory to spell them out.
KLVrescode_t check_values (const char* name, const mxArray* array);
