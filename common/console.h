// The gateway's own words on the console. The library's text goes through callbacks/log.h.
#pragma once

#include "kalvo.h"

// Prints at most 2047 characters, which the host shows at once.
void mx_printf (const char* format, ...) __attribute__ ((format (__printf__, 1, 2)));

// Prints an error line: the code, and the path of the faulty input or a sentence.
void mx_error (KLVrescode_t code, const char* text);
