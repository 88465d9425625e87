// The solution record: a task's solutions as data.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Copies every solution of the task into the field `sol` of the result record, which has the field exactly when there is a
// solution. statuskeys 0: statuses and keys are texts; otherwise they are the library's numbers. After a failure the record holds
// the values so far.
KLVrescode_t getsolution (KLVtask_t task, int statuskeys, mxArray* res);
