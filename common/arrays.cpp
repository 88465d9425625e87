#include "common/arrays.h"

#include <algorithm>
#include <cctype>
#include <cstring>

int isvector (const mxArray* a, std::uint64_t n, int allowsparse)
{
    if (!is_given (a))
        return n == 0;
    const std::uint64_t rows = mxGetM (a), columns = mxGetN (a);
    if (mxIsSparse (a))
        return allowsparse && rows == n && columns == 1;
    return mxIsDouble (a) && ((rows == 1 && columns == n) || (rows == n && columns == 1));
}

std::uint64_t vectorlen (const mxArray* a)
{
    return is_given (a) ? std::uint64_t (mxGetM (a)) * mxGetN (a) : 0;
}

int is1ddensevec (const mxArray* a)
{
    return !mxIsSparse (a) && (mxGetM (a) == 1 || mxGetN (a) == 1);
}

void rvec_copy (int n, const double* source, double* destination)
{
    std::copy_n (source, n, destination);
}

void mvItoklvI (const mwIndex* source, std::int32_t* destination, std::uint64_t n)
{
    for (std::uint64_t k = 0; k < n; ++k)
        destination[k] = static_cast<std::int32_t> (source[k]);
}

int strtrim (char* s, char c)
{
    char* end = std::remove (s, s + std::strlen (s), c);
    *end = '\0';
    return static_cast<int> (end - s);
}

char* local_strupr (char* s)
{
    for (char* p = s; *p != '\0'; ++p)
        *p = static_cast<char> (std::toupper (static_cast<unsigned char> (*p)));
    return s;
}
