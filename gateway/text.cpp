#include "gateway/text.h"

#include "host/holders.h"

int getstring (const mxArray* array, char** text)
{
    *text = nullptr;
    if (array == nullptr || !mxIsChar (array))
        return 0;
    const mwSize size = static_cast<mwSize> (mxGetM (array) * mxGetN (array) + 1);
    *text = host::allocate<char> (2 * static_cast<std::size_t> (size)).release ();
    return *text != nullptr && mxGetString (array, *text, size) == 0;
}
