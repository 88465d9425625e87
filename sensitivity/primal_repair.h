// Repair of an infeasible problem, with weights from the problem record.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Repairs the task's problem, with the weights in the field "primalrepair" of the record: one for each row and column of the
// matrix, which comes from the record or from the file that was read.
KLVrescode_t primalrepair (KLVtask_t task, const mxArray* prob, bool from_file);
