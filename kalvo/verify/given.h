// Solutions that a user or a file gives.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"
#include "kalvo/task/values.h"

#include <memory>

namespace klv {

// The solution that a task with this problem holds then: completed, its statuses those that it deserves.
Solution complete (GivenSolution&& given, const std::shared_ptr<const Problem>& problem,
                   const Parameters& parameters, KLVsoltype which);

}
