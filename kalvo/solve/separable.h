// Problems whose constraint matrix has no entries: every row and every variable is a problem of its own.
#pragma once

#include "kalvo/model/point.h"
#include "kalvo/model/problem.h"

namespace klv {

// Claims the answer as an engine would, to be checked likewise; a row is violated when it is by more than the relative tolerance. No
// bounds may be crossed.
Point solve_separable (const Problem& problem, bool integers, double tolerance);

}
