// The functions that the host finds in the module.

#include <cstdint>

#include "gateway/driver.h"

extern "C" {

// The version of the interface that the module is built for: with large arrays.
[[gnu::visibility ("default")]] void mexfilerequiredapiversion (std::uint32_t* built, std::uint32_t* target)
{
    *built = 0x2017a;
    *target = 0;
}

[[gnu::visibility ("default")]] void mexFunction (int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[])
{
    KLV_kalvomx (nlhs, plhs, nrhs, prhs);
}
}
