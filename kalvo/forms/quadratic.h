// Makes the quadratic form of a problem with a quadratic objective and linear constraints.
#pragma once

#include "kalvo/forms/linear.h"

namespace klv {

// Bounds from `infinite_bound` on are left out. Integer variables are taken as continuous. The stated matrix must be packed.
Lowered lower_quadratic (const Problem& stated, double infinite_bound, bool scaled);

}
