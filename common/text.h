// Texts of the host's char arrays, and numbers in texts.
#pragma once

#include <cstdint>

#include "host/holders.h"

// Copies a char array; several rows give one text in column order. Answers 1, or 0 if `array` is not a char
// array or there is no memory. *text is null or is the caller's to free with mxFree, also after a failure.
int getstring (const mxArray* array, char** text);

// The same copy with an owner; null after a failure.
host::Memory<char> copy_text (const mxArray* array);

// The decimal number at the start of a text, 0 if there is none, narrowed to 32 bits. Answers 0 unless a blank or the
// end follows.
int strtointeger (const char* text, std::int32_t* number);
