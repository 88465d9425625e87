// Measures claimed points on the problem as the user stated it. Statuses of solutions follow from these measurements alone.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"

#include <span>
#include <string>
#include <vector>

namespace klv {

struct Tolerances {
    double primal = 1e-6;
    double dual = 1e-6;
    double gap = 1e-6;
    double integer = 1e-6;
};

// Fills a slot from a primal point: xx, barx, xc, the primal objective and the primal violations.
void measure_primal (const Problem& problem, std::vector<double> x, std::vector<double> barx,
                     Solution& solution);

// Multipliers as they are claimed. Reduced costs and snx may be empty: computed.
struct ClaimedDuals {
    std::vector<double> y, reduced_cost = {}, doty = {}, snx = {};
};

// Fills a slot from multipliers: y, slc, suc, slx, sux, doty, snx, bars, dual objective and violations; with a primal point in
// the slot also gap and complementarity. Quadratic terms need that point. The equation of a variable in a cone holds by its
// snx, which takes what its bounds can't: it is the cone that is measured then.
void measure_dual (const Problem& problem, ClaimedDuals&& claimed, Solution& solution);

// Splits multipliers into parts for lower and for upper bounds; `sign`: 1, or -1 for maximisation.
void split (std::span<const double> multipliers, double sign, std::vector<double>& lower,
            std::vector<double>& upper);

// Distance of the integer variables from whole numbers.
void measure_integers (const Problem& problem, Solution& solution);

// Distance of an integer point's objective from a bound, relative to the objective.
double relative_gap (double objective, double bound);

// The statuses that a measured point of a continuous problem deserves.
void judge (const Tolerances& tolerances, Solution& solution);

// In which check a measured point of a continuous problem fails most: its violation, tolerance and, where there is one, item. Empty: in
// none.
std::string describe_failure (const Problem& problem, const Tolerances& tolerances, const Solution& solution);

// The statuses of a measured point of an integer problem; `closed`: its gap is within the gap parameters.
void judge_integer (const Tolerances& tolerances, bool closed, Solution& solution);

// Keys by position and multipliers, for a point without a basis. With duals an item whose multiplier
// outweighs the distance from its bound, both relative, is at that bound and others are basic; without, items at a bound are,
// others superbasic. Cones of variables: by position alone.
void derive_keys (const Problem& problem, double tolerance, Solution& solution);

}
