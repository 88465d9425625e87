// The solution record: what a task knows of its solutions, as data.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Copies every solution that the task defines into the field `sol` of the result record, which has it exactly
// when there is one. statuskeys 0: statuses and keys are texts; otherwise they are the library's numbers.
// After a failure the record holds what was obtained.
KLVrescode_t getsolution (KLVtask_t task, int statuskeys, mxArray* res);
