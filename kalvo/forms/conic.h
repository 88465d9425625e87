// Makes the conic form of any convex problem. Semidefinite variables become columns, every cone one of the elementary ones, the
// quadratic terms of a constraint a second-order cone; those of the objective stay.
#pragma once

#include "kalvo/forms/linear.h"

#include <memory>
#include <vector>

namespace klv {

// Values near the solution: of the variables, and of the linear parts of constraints and of rows of affine conic constraints.
struct Centre {
    std::vector<double> variables, constraints, affine_rows;
};

// Bounds from `infinite_bound` on are left out. Integer variables are taken as continuous. The stated matrices must be packed.
// Linear maps that leave a rotated, exponential or power cone as it is take the values of a `centre` to the middle of the cone:
// methods are made for members of like magnitude.
Lowered lower_conic (std::shared_ptr<const Problem> stated, double infinite_bound, bool scaled,
                     const Centre* centre = nullptr);

}
