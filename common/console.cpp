#include "common/console.h"

#include <cstdarg>
#include <cstdio>

#include "host/host.h"

void mx_printf (const char* format, ...)
{
    char text[2048];
    std::va_list values;
    va_start (values, format);
    std::vsnprintf (text, sizeof text, format, values);
    va_end (values);
    mexPrintf ("%s", text);
    mexEvalString ("drawnow");
}

void mx_error (KLVrescode_t code, const char* text)
{
    mx_printf ("*** Error(%d): %s\n", code, text);
}
