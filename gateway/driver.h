// One request from its start to its end.
#pragma once

#include "host/host.h"

// Takes the arguments of the MEX entry point, and makes its outputs.
void KLV_kalvomx (int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]);
