// A solution slot of a task, as it is handed out.
#pragma once

#include "kalvo.h"

#include <cstdint>
#include <vector>

namespace klv {

struct Solution {
    std::int32_t problem_status = KLV_PRO_UNKNOWN;
    std::int32_t solution_status = KLV_SOLSTA_UNKNOWN;
    std::vector<std::int32_t> skc, skx;
    std::vector<double> xc, xx;
    std::vector<double> y, slc, suc, slx, sux;      // empty in the integer slot
    double primal_objective = 0;
    double dual_objective = 0;
};

}
