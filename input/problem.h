// The problem record: a user's data become the problem of a task.
#pragma once

#include "host/host.h"
#include "kalvo.h"

// Loads the problem record into an empty task. Null or an empty record leaves the task empty. After a failure the task holds part
// of the problem: only its messages are of use.
KLVrescode_t putproblem (KLVtask_t task, const mxArray* prob);
