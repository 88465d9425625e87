// The initial solution of a problem record: any part of the record `sol` of a result.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Takes the initial solution of a problem record.
KLVrescode_t putsolution (KLVtask_t task, const mxArray* prob);

// Reads status keys as texts or as numbers. An absent or empty field gives zeros.
KLVrescode_t translatestatuskeys (KLVtask_t task, int count, const mxArray* array, const char* field,
                                  const char* solution, int* keys);
