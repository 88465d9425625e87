// Functions that MATLAB's libmex and libut export but none of its headers declares. The other hosts define their own.
#pragma once

extern "C" {

// Calls a MATLAB function. Returns null, or after an error in the function an error object, which the caller destroys; then no
// output is set.
mxArray* mexCallMATLABWithTrapWithObject (int nlhs, mxArray* plhs[], int nrhs, mxArray* prhs[],
                                          const char* function_name);

// While interrupts are disabled, Ctrl-C only raises the pending flag. Returns the previous setting.
bool utSetInterruptEnabled (bool enabled);
bool utIsInterruptPending ();
void utSetInterruptPending (bool pending);
}
