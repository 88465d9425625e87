#include "gateway/console.h"
#include "input/arrays.h"
#include "output/solution.h"

// The library can't start from a solution yet: better refused than left out.
KLVrescode_t putsolution ([[maybe_unused]] KLVtask_t task, const mxArray* prob)
{
    if (!is_given (prob) || !mxIsStruct (prob) || !is_given (mxGetField (prob, 0, "sol")))
        return KLV_RES_OK;
    mx_error (KLV_RES_ARGUMENT, "prob.sol is not supported yet");
    return KLV_RES_ARGUMENT;
}
