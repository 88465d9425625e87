// A solution slot of a task, as it is handed out.
#pragma once

#include "kalvo/include/kalvo.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace klv {

// How far a point is from what it should be, each the largest over all items.
struct Violations {
    double primal = 0, primal_absolute = 0;    // distance outside a bound
    double dual = 0, dual_absolute = 0;        // c - A'y - (slx - sux), multipliers of absent bounds
    double complementarity = 0;                // multiplier times distance from its bound, relative
    double gap = 0;                            // of primal and dual objective, relative
    double integer = 0;                        // distance from a whole number
};

struct Solution {
    std::int32_t problem_status = KLV_PRO_UNKNOWN;
    std::int32_t solution_status = KLV_SOLSTA_UNKNOWN;
    std::vector<std::int32_t> skc, skx;
    std::vector<double> xc, xx;
    std::vector<double> y, slc, suc, slx, sux;    // empty in the integer slot
    double primal_objective = 0;
    double dual_objective = 0;
    bool has_primal = false;    // xx is known; else it may be in part
    bool has_dual = false;      // y and slx - sux are known
    Violations violations;
};

// The slots of a task, by KLVsoltype.
using Solutions = std::array<std::optional<Solution>, KLV_SOL_COUNT>;

// Values as a user or a file gives them; empty where they are not given, NaN where one is unknown.
struct GivenSolution {
    std::vector<std::int32_t> skc, skx;
    std::vector<double> xx, xc, y, slc, suc, slx, sux;
    bool certificate = false;    // of infeasibility: y, slx and sux; or xx, of unboundedness
};

}
