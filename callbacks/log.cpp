#include "callbacks/log.h"

#include "callbacks/handle.h"

namespace {

void print (const char* text)
{
    mexPrintf ("%s", text);
    mexEvalString ("drawnow");
}

// After an error in the log function the line is lost, and nothing else.
void pass_on (const CallbackHandle& handle, const char* text)
{
    const host::Array line (mxCreateString (text));
    if (!line)
        return;
    mxArray* inputs[] = {handle.object.get (), line.get ()};
    const host::Array error (mexCallMATLABWithTrapWithObject (0, nullptr, 2, inputs, handle.function.get ()));
}

}

void logprint (void* handle, const char* text)
{
    const CallbackHandle* log = static_cast<const CallbackHandle*> (handle);
    if (log && log->function)
        pass_on (*log, text);
    else
        print (text);
}
