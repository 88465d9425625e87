// Repair of an infeasible problem: bounds move by the smallest weighted sum of amounts that makes it feasible.
#pragma once

#include "kalvo/solve/elastic.h"
#include "kalvo/solve/inner_task.h"

namespace klv {

// Refuses, and leaves the problem as it was, when there is no repair or the smallest sum is not proved.
KLVrescode_t repair_problem (Task& task, Weights&& constraints, Weights&& variables,
                             const Optimizer& optimizer);

}
