// Starts of an optimisation, taken from the task's solutions.
#pragma once

#include "kalvo/model/point.h"
#include "kalvo/model/solution.h"

#include <memory>
#include <optional>

namespace klv {

// With `integers` the known values of the integer solution; else a basis, else a point, of the basic or the interior solution.
// Null where there is no such start.
std::shared_ptr<const Start> find_start (const Solutions& solutions, bool integers);

// An earlier interior or basic solution as claims, to be checked on the problem as it is now.
std::optional<Point> claim_again (const std::optional<Solution>& solution);

}
