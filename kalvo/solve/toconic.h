// Conversion to conic form: quadratic terms become affine conic constraints.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

// Quadratic terms of the objective become those of one new variable, whose cost is 1, or -1 where the objective is maximised; a
// constraint with quadratic terms that bend it stays as a free row of its linear terms. Cones of variables become affine conic
// constraints as well: the records of problems state one of the two kinds. All that is new stands last, in this order, without
// names; solutions are dropped. Refused, the problem being left as it was: terms that are not convex, and too many entries.
// Without quadratic terms nothing is done.
void convert_to_conic (Task& task);

}
