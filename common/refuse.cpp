#include "common/refuse.h"

#include <cstdarg>
#include <cstdio>

#include "common/console.h"

KLVrescode_t refuse (KLVrescode_t code, const char* format, ...)
{
    char text[255];
    std::va_list values;
    va_start (values, format);
    std::vsnprintf (text, sizeof text, format, values);
    va_end (values);
    mx_error (code == KLV_RES_ARGUMENT_LENGTH ? KLV_RES_ARGUMENT : code, text);
    return code;
}

KLVrescode_t check_values (const char* name, const mxArray* array)
{
    if (!mxIsDouble (array) && mxGetClassID (array) != mxLOGICAL_CLASS)
        return refuse (KLV_RES_ARGUMENT, "prob.%s is neither double nor logical", name);
    const bool stores_nothing = mxIsSparse (array) && mxGetJc (array)[mxGetN (array)] == 0;
    return stores_nothing || mxGetData (array) != nullptr ? KLV_RES_OK : KLV_RES_OUT_OF_MEMORY;
}
