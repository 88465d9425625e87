// The one place where answers are checked: whatever an engine claims is measured here on the problem as the
// user stated it, and statuses follow from these measurements alone.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"

#include <span>
#include <vector>

namespace klv {

struct Tolerances {
    double primal = 1e-6;
    double dual = 1e-6;
    double gap = 1e-6;
    double integer = 1e-6;
};

// A x and c - A'y (c empty: all zeros) in one pass over the matrix each; sums are compensated, so that what is measured is the
// point's error and not the measurement's.
std::vector<double> activities (const Problem& problem, std::span<const double> x);
std::vector<double> reduced_costs (const ColumnMatrix& matrix, std::span<const double> cost,
                                   std::span<const double> y);
double objective (const Problem& problem, std::span<const double> x);

// Fills a slot from a primal point: xx, xc, the primal objective and the primal violations.
void measure_primal (const Problem& problem, std::vector<double> x, Solution& solution);

// Fills a slot from duals of the rows and reduced costs (which may be empty: then they are computed): y, slc,
// suc, slx, sux, the dual objective, and the dual violations. With a primal point in the slot also gap and
// complementarity.
void measure_dual (const Problem& problem, std::vector<double> y, std::vector<double> reduced_cost,
                   Solution& solution);

// Splits multipliers into those of the lower and those of the upper bounds; `sign`: 1, or -1 for maximisation.
void split (std::span<const double> multipliers, double sign, std::vector<double>& lower,
            std::vector<double>& upper);

// Distance of the integer variables from whole numbers.
void measure_integers (const Problem& problem, Solution& solution);

// How far an integer point is from a bound on its objective, relative to it.
double relative_gap (double objective, double bound);

// The statuses that a measured point of a continuous problem deserves.
void judge (const Tolerances& tolerances, Solution& solution);

// The same for a point of an integer problem; `closed`: the search ended with a gap within its parameters.
void judge_integer (const Tolerances& tolerances, bool closed, Solution& solution);

// Keys by position and multipliers, for a point without a basis. With duals an item whose multiplier
// outweighs the distance from its bound, both relative, is at that bound and others are basic; without, items at a bound are,
// others superbasic.
void derive_keys (const Problem& problem, double tolerance, Solution& solution);

}
