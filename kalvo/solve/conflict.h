// Why a problem is infeasible: a small set of its bounds that contradict each other.
#pragma once

#include "kalvo/solve/inner_task.h"

#include <cstdint>

namespace klv {

// Looks for a conflict of a problem whose solutions say that it is infeasible, prints it on a stream and keeps it in the task, if
// anyone listens there; what was found before for the same problem is told again. Other problems have none. The code is that of a stop by the callback, or 0.
KLVrescode_t find_conflict (Task& task, std::int32_t stream, const Optimizer& optimizer);

// The same for a problem that was not optimised: first it is found out whether there is a feasible point.
KLVrescode_t analyze_feasibility (Task& task, std::int32_t stream, const Optimizer& optimizer);

}
