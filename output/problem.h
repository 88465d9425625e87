// The problem that a task holds, as the record that states it on input.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Makes the problem record and sets it as the field `prob` of the result record; after a failure with the values so far. The form
// of status keys is ignored.
KLVrescode_t getprob (int statuskeys, KLVtask_t task, mxArray* res);

// Prints a warning if a complete problem record has bounds that would be refused, or mean no bound, when the record is an input.
void warn_of_large_bounds (KLVtask_t task, const mxArray* prob);
