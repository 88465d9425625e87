// Texts of the host's char arrays, and numbers in texts.
#pragma once

#include <cstdint>

#include "host/holders.h"

// Copies a char array; several rows give one text in column order. Returns 1, or 0 if `array` is no char array or memory is short.
// The caller frees *text, which may be null, with mxFree, also after a failure.
int getstring (const mxArray* array, char** text);

// As getstring, with an owner; null after a failure.
host::Memory<char> copy_text (const mxArray* array);

// Reads the decimal number at the start of a text, 0 if there is none, narrowed to 32 bits. Returns 0 unless a blank or the text's
// end follows.
int strtointeger (const char* text, std::int32_t* number);
