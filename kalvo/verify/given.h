// Solutions that a user or a file gives.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"
#include "kalvo/task/values.h"

#include <memory>

namespace klv {

// The solution for a task to hold: the given values, those that follow from them, and the statuses that the values prove.
Solution complete (GivenSolution&& given, const std::shared_ptr<const Problem>& problem,
                   const Parameters& parameters, KLVsoltype which);

}
