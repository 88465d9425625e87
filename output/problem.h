// The problem that a task holds, as the record that states it on input.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Makes the problem record and sets it as the field `prob` of the result record, after a failure with the
// values that were obtained until then. The form of status keys does not matter to it.
KLVrescode_t getprob (int statuskeys, KLVtask_t task, mxArray* res);

// Prints a warning if there are bounds in a complete problem record that would be no bounds, or refused, in an input.
void warn_of_large_bounds (KLVtask_t task, const mxArray* prob);
