#include "callbacks/progress.h"

#include <cmath>

#include "callbacks/chain.h"
#include "callbacks/handle.h"
#include "common/console.h"
#include "common/number.h"
#include "params/information.h"

namespace {

// A double whose whole part is not 0, or NaN, asks to stop. Values of other classes do not.
KLVrescode_t read_answer (const mxArray* answer)
{
    if (answer == nullptr || mxGetClassID (answer) != mxDOUBLE_CLASS || mxIsEmpty (answer))
        return KLV_RES_OK;
    const auto number = first_number (answer);
    if (!number)
        return KLV_RES_OUT_OF_MEMORY;
    return std::abs (*number) < 1 ? KLV_RES_OK : KLV_RES_USER_STOP;
}

// Any error of the function stops the run. An error line is printed unless Ctrl-C or the end of the session ended the function.
KLVrescode_t call_function (const CallbackHandle& handle, mxArray* caller)
{
    mxArray* inputs[] = {handle.object.get (), caller, handle.info.get ()};
    mxArray* output = nullptr;
    const host::Array error (mexCallMATLABWithTrapWithObject (1, &output, 3, inputs, handle.function.get ()));
    if (error) {
        if (!take_interrupt ())
            mx_error (KLV_RES_USER_STOP, "");
        return KLV_RES_USER_STOP;
    }
    const host::Array answer (output);
    return read_answer (answer.get ());
}

KLVrescode_t report (KLVtask_t task, const CallbackHandle& handle, std::uint32_t caller)
{
    const host::Array code (mxCreateDoubleScalar (caller));
    if (!code)
        return KLV_RES_OUT_OF_MEMORY;
    if (const KLVrescode_t refreshed = updateinfo (task, handle.info); refreshed != KLV_RES_OK)
        return refreshed;
    return call_function (handle, code.get ());
}

}

std::int32_t iterlog (KLVtask_t task, void* handle, std::uint32_t caller, const double*, const std::int32_t*,
                      const std::int64_t*)
{
    const CallbackHandle* iteration = static_cast<const CallbackHandle*> (handle);
    if (iteration == nullptr || !iteration->function)
        return 0;
    return report (task, *iteration, caller);
}

// A changed value gets a new array: the session may still hold the old one, in a record that it was given before.
KLVrescode_t updateinfo (KLVtask_t task, const host::Array& info)
{
    if (!info)
        return KLV_RES_OK;
    for (std::int32_t k = 0; k < information_items; ++k) {
        mxArray* old = mxGetFieldByNumber (info.get (), 0, k);
        double value = 0;
        read_information (task, k, value);
        if (*mxGetPr (old) == value)
            continue;
        mxArray* replacement = mxCreateDoubleScalar (value);
        if (replacement == nullptr)
            return KLV_RES_OUT_OF_MEMORY;
        mxDestroyArray (old);
        mxSetFieldByNumber (info.get (), 0, k, replacement);
    }
    return KLV_RES_OK;
}
