// Repair of an infeasible problem, with weights from the problem record.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Repairs the problem that the task holds, with the weights in the field "primalrepair" of the record: one a row and column
// of the record's matrix, or of the file's that the task was read from.
KLVrescode_t primalrepair (KLVtask_t task, const mxArray* prob, bool from_file);
