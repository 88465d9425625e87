#include "gateway/text.h"

#include "host/holders.h"

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
