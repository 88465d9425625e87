// One optimisation: from the problem as stated to checked answers in the task's slots.
#pragma once

#include "kalvo/solve/solver.h"

namespace klv {

// The problem's matrix must be packed. Returns 0 when the problem is settled, else a code that tells why not.
KLVrescode_t optimize (Task& task, Call& call, Solver& solver);

}
