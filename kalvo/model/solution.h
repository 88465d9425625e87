// A solution slot of a task, as it is handed out.
#pragma once

#include "kalvo/include/kalvo.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace klv {

// Violations of a point, each the largest over all items; the first of a pair is relative.
struct Violations {
    double primal = 0, primal_absolute = 0;    // distance outside a bound
    double dual = 0, dual_absolute = 0;        // c - A'y - (slx - sux), multipliers of absent bounds
    double complementarity = 0;                // multiplier times distance from the bound, relative
    double gap = 0;                            // between primal and dual objective, relative
    double integer = 0;                        // distance from a whole number
    // Relative distances from cones and from positive semidefinite matrices, among those above: of affine constraints and variables,
    // and of their duals.
    double primal_cone = 0, primal_matrix = 0, dual_cone = 0, dual_matrix = 0;
};

struct Solution {
    std::int32_t problem_status = KLV_PRO_UNKNOWN;
    std::int32_t solution_status = KLV_SOLSTA_UNKNOWN;
    std::vector<std::int32_t> skc, skx;
    std::vector<double> xc, xx;
    std::vector<double> y, slc, suc, slx, sux;    // empty in the integer slot
    // Of the interior slot: keys of cones, conic duals of variables, packed triangles of semidefinite variables and of their duals,
    // duals of the rows of affine conic constraints. Empty where nothing is known: keys are unknown then, values 0.
    std::vector<std::int32_t> skn = {};
    std::vector<double> snx = {}, barx = {}, bars = {}, doty = {};
    double primal_objective = 0;
    double dual_objective = 0;
    bool has_primal = false;    // all of xx is known; otherwise xx holds zeros, or NaN for unknown values
    bool has_dual = false;      // y and slx - sux are known
    Violations violations;
};

// The slots of a task, by KLVsoltype.
using Solutions = std::array<std::optional<Solution>, KLV_SOL_COUNT>;

// A solution that a user or a file gives: an array that is not given is empty, an unknown value NaN.
struct GivenSolution {
    std::vector<std::int32_t> skc, skx;
    std::vector<double> xx, xc, y, slc, suc, slx, sux;
    std::vector<std::int32_t> skn = {};
    std::vector<double> snx = {}, barx = {}, bars = {}, doty = {};    // as in Solution
    bool certificate = false;    // y, slx and sux prove infeasibility, or xx unboundedness
};

}
