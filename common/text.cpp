#include "common/text.h"

#include <cstdlib>

int getstring (const mxArray* array, char** text)
{
    *text = nullptr;
    if (array == nullptr || !mxIsChar (array))
        return 0;
    const std::size_t size =
        3 * mxGetNumberOfElements (array) + 1;    // a 16-bit character takes up to 3 bytes
    *text = host::allocate<char> (size).release ();
    return *text != nullptr && mxGetString (array, *text, static_cast<mwSize> (size)) == 0;
}

host::Memory<char> copy_text (const mxArray* array)
{
    char* text = nullptr;
    const int complete = getstring (array, &text);
    host::Memory<char> copy (text);
    if (!complete)
        copy.reset ();
    return copy;
}

int strtointeger (const char* text, std::int32_t* number)
{
    char* end = nullptr;
    *number = static_cast<std::int32_t> (std::strtol (text, &end, 10));
    return *end == ' ' || *end == '\0';
}
