// Takes the library's text to the user.
#pragma once

extern "C" {

// The function that is linked to the library's streams. Its handle is a CallbackHandle or null. Text goes to the log function that
// the handle names, otherwise to the console.
void logprint (void* handle, const char* text);
}
