// Certificates: proofs that no point is feasible, or that the objective improves for ever. A ray becomes a
// certificate only after it was verified by definition on the problem as stated.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"

#include <optional>
#include <span>

namespace klv {

// From multipliers y of the rows: slx - sux = -A'y, and the sum of bound times multiplier over all bounds
// that exist scaled to 1 (-1 for maximisation). Empty when a multiplier stands at a bound that does not exist
// by more than 1e-8 of the largest one, or when the sum is not well above its own rounding.
std::optional<Solution> certify_infeasible (const Problem& problem, std::span<const double> y);

// From a direction d of the variables: c'd scaled to -1 (1 for maximisation). Empty when d leaves a bound
// that exists, by more than 1e-8 of its largest entry, or when c'd is not well above its own rounding.
std::optional<Solution> certify_unbounded (const Problem& problem, std::span<const double> direction);

// The pair of bounds that is crossed by more than `tolerance`, if any, and its certificate.
struct CrossedBounds {
    bool variable = false;
    std::int32_t item = -1;
    std::int32_t count = 0;    // of all crossed pairs
};
CrossedBounds find_crossed (const Problem& problem, double tolerance);
Solution certify_crossed (const Problem& problem, const CrossedBounds& crossed);

// A certificate that was stored, verified; its values to the last bit where they are what was verified. Without keys.
std::optional<Solution> certify_again (const Problem& problem, const GivenSolution& stored, double tolerance);

}
