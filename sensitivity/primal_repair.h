// Repair of an infeasible problem, with weights from the problem record.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Repairs the problem that the task holds, with the weights in the field "primalrepair" of the record.
KLVrescode_t primalrepair (KLVtask_t task, const mxArray* prob);
