// Problems whose constraint matrix has no entries: every row and every variable is a problem of its own.
#pragma once

#include "kalvo/model/point.h"
#include "kalvo/model/problem.h"

namespace klv {

// The answer in the form in which engines claim theirs, to be checked in the same way. No bounds may be crossed.
Point solve_separable (const Problem& problem, bool integers);

}
