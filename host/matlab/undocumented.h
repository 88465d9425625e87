// Functions that MATLAB's libmex and libut export but no header of it declares. The other hosts supply their
// own.
#pragma once

extern "C" {

// Calls a MATLAB function. An error in it is returned as an error object, which the caller destroys, and then
// no output is set; null means success.
mxArray* mexCallMATLABWithTrapWithObject (int nlhs, mxArray* plhs[], int nrhs, mxArray* prhs[],
                                          const char* function_name);

// While disabled, Ctrl-C only raises the pending flag. Returns the setting before.
bool utSetInterruptEnabled (bool enabled);
bool utIsInterruptPending ();
void utSetInterruptPending (bool pending);
}
