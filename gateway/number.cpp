#include "gateway/number.h"

double first_number (const mxArray* array)
{
    if (mxIsSparse (array) && (mxGetJc (array)[1] == 0 || mxGetIr (array)[0] != 0))
        return 0;
    return *mxGetPr (array);
}

mxArray* make_number (double value)
{
    mxArray* array = mxCreateDoubleMatrix (1, 1, mxREAL);
    if (array)
        *mxGetPr (array) = value;
    return array;
}
