// Corrects points that miss their rows by little more than rounding.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"

#include <vector>

namespace klv {

// Moves the variables so that they satisfy the linear constraints that hold with equality at the solution, or are violated there: the
// smallest move in units of each variable's distance from its bounds. Empty: there is nothing to correct, or no memory for it.
std::vector<double> corrected (const Problem& problem, const Solution& solution);

}
