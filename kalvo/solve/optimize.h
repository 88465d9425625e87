// One optimisation: from the problem as stated to checked answers in the task's slots.
#pragma once

#include "kalvo/solve/runs.h"
#include "kalvo/task/task.h"

namespace klv {

// The problem's matrix is packed. A response code: 0 where the problem is settled, or why it is not.
KLVrescode_t optimize (Task& task, Runs& runs);

}
