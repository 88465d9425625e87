// Corrects answers that miss what they claim by little more than rounding.
#pragma once

#include "kalvo/model/point.h"
#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"

#include <optional>

namespace klv {

// Newton's steps on the optimality conditions of a problem without cones, from a point and multipliers near its optimum: stationarity,
// rows, and complementarity with bounds, as primal-dual methods take them for a barrier of 0. What comes is a claim, as all others.
// Nothing: the problem has cones or matrices, or there is no memory for it.
std::optional<Point> corrected (const Problem& problem, const Solution& solution);

}
