// The solution record: what a task knows of its solutions, as data.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Copies every solution that the task defines into the field `sol` of the result record, which has it exactly
// when there is one. statuskeys 0: statuses and keys are texts; otherwise they are the library's numbers.
// After a failure the record holds what was obtained.
KLVrescode_t getsolution (KLVtask_t task, int statuskeys, mxArray* res);

// Reads status keys that a user gives, in either form. Absent or empty: every key is 0.
KLVrescode_t translatestatuskeys (KLVtask_t task, int count, const mxArray* array, const char* field,
                                  const char* solution, int* keys);

// Takes the initial solution of a problem record.
KLVrescode_t putsolution (KLVtask_t task, const mxArray* prob);
