// The road of the library's text to the user.
#pragma once

extern "C" {

// The function that is linked to the library's streams. Its handle is a CallbackHandle or null; text goes to
// the log function that the handle names, and to the console if it names none.
void logprint (void* handle, const char* text);
}
