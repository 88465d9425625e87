// Certificates: proofs that no point is feasible, or that the objective improves for ever. A ray is a certificate once its
// definition was verified on the problem as stated.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"

#include <optional>
#include <span>

namespace klv {

// A ray is tried as it is, reversed, without its noise, and refined; the definition is verified on the numbers that are returned.
// Multipliers at absent bounds are set to 0 where they are noise: at most 1e-12 of the terms that add up to them. The largest such
// share is the solution's relative violation. The absolute violation is the sum of the noise in a ray of value 1; its inverse
// tells how large a point may be in those variables (how far a direction may be followed in those constraints) before the proof
// no longer reaches it.
//
// A ray with noise proves a claim only where a true ray is near: each curved cone that the noise reaches has room for members to change by
// more than noise, or a change that leaves no noise in long double was found that only scales the cones without room. What has a
// ray within rounding alone, such as min x3, x1 >= |(x2, x3)|, x1 = x2, has none then. Bounds alone are flat: there noise is taken for
// the rounding of the data.

// Multipliers of constraints, of rows of affine conic constraints and of cones of variables (empty: all that bounds leave), and the
// point at which quadratic constraints have their gradients.
struct ClaimedRay {
    std::span<const double> y, doty = {}, snx = {}, x = {};
};

// Multipliers scaled so that the dual objective without constant is 1 (-1 for maximisation). Empty when nothing is proved. The
// problem's constraints must be convex.
std::optional<Solution> certify_infeasible (const Problem& problem, const ClaimedRay& claimed);

// From a direction d of the variables, and of semidefinite ones, that leaves no bound and no cone: the cost scaled to -1 (1 for
// maximisation). Empty when nothing is proved.
std::optional<Solution> certify_unbounded (const Problem& problem, std::span<const double> direction,
                                           std::span<const double> barx = {});

// A pair of bounds that is crossed by more than `tolerance`, if there is one, and the certificate of such a pair.
struct CrossedBounds {
    bool variable = false;
    std::int32_t item = -1;
    std::int32_t count = 0;    // of all crossed pairs
};
CrossedBounds find_crossed (const Problem& problem, double tolerance);
Solution certify_crossed (const Problem& problem, const CrossedBounds& crossed);

// Verifies a certificate that was stored. Values that are a proof as they stand are not changed; keys are left out.
std::optional<Solution> certify_again (const Problem& problem, const GivenSolution& stored, double tolerance);

}
