// The host as the gateway sees it: MATLAB's external interface (from the host's own mex.h) and the few functions that no public
// header declares. The folder of each host supplies functions that the host lacks.
// A mex.h may turn printf into mexPrintf: attributes of our functions say __printf__.
#pragma once

#include <mex.h>

#include "host/matlab/undocumented.h"
