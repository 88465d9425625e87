// Starting an optimisation from solutions that a task holds.
#pragma once

#include "kalvo/model/point.h"
#include "kalvo/model/solution.h"

#include <memory>
#include <optional>

namespace klv {

// What to start from, or null where nothing can be started from: of a problem whose integer variables are to be whole the known
// values of the integer solution; else a basis, else a point, of the basic solution or of the interior one.
std::shared_ptr<const Start> find_start (const Solutions& solutions, bool integers);

// The interior or basic solution as a claim, to be checked on the problem as it is now; or nothing.
std::optional<Point> claim_again (const std::optional<Solution>& solution);

}
