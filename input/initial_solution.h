// The initial solution of a problem record: the same record as in a result, any part of it.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Takes the initial solution of a problem record.
KLVrescode_t putsolution (KLVtask_t task, const mxArray* prob);

// Reads status keys that a user gives, in either form. Absent or empty: every key is 0.
KLVrescode_t translatestatuskeys (KLVtask_t task, int count, const mxArray* array, const char* field,
                                  const char* solution, int* keys);
