#include "common/number.h"

std::optional<double> first_number (const mxArray* array)
{
    if (mxIsSparse (array) && (mxGetJc (array)[1] == 0 || mxGetIr (array)[0] != 0))
        return 0;
    const double* const values = mxGetPr (array);
    return values ? std::optional (*values) : std::nullopt;
}
