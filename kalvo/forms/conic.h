// Makes the conic form of any convex problem. Semidefinite variables become columns, every cone one of the elementary ones, the
// quadratic terms of a constraint a second-order cone; those of the objective stay.
#pragma once

#include "kalvo/forms/linear.h"

#include <memory>

namespace klv {

// Bounds from `infinite_bound` on are left out. Integer variables are taken as continuous. The stated matrices must be packed.
Lowered lower_conic (std::shared_ptr<const Problem> stated, double infinite_bound, bool scaled);

}
