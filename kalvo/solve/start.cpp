#include "kalvo/solve/start.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

static bool has_basis (const Solution& solution)
{
    const auto basics = [] (const auto& keys) { return std::ranges::count (keys, KLV_SK_BASIC); };
    return basics (solution.skc) + basics (solution.skx) > 0;
}

// A ray is not a point to start from.
static bool is_point (const Solution& solution)
{
    return solution.has_primal && solution.solution_status != KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE;
}

static std::vector<double> difference (const std::vector<double>& a, const std::vector<double>& b)
{
    std::vector<double> c (a.size ());
    std::ranges::transform (a, b, c.begin (), std::minus{});
    return c;
}

std::shared_ptr<const Start> find_start (const Solutions& solutions, bool integers)
{
    auto start = std::make_shared<Start> ();
    if (integers) {
        const std::optional<Solution>& found = solutions[KLV_SOL_INT];
        const auto is_known = [] (double value) { return !std::isnan (value); };
        const auto is_unknown = [] (double value) { return std::isnan (value); };
        if (!found || (!found->has_primal && std::ranges::none_of (found->xx, is_unknown)) ||
            std::ranges::none_of (found->xx, is_known))
            return nullptr;
        start->x = found->xx;
        return start;
    }
    for (const KLVsoltype which : {KLV_SOL_BAS, KLV_SOL_ITR}) {
        const std::optional<Solution>& found = solutions[which];
        if (found && which == KLV_SOL_BAS && has_basis (*found)) {
            start->row_key = found->skc;
            start->column_key = found->skx;
            return start;
        }
        if (found && is_point (*found)) {
            start->x = found->xx;
            start->activity = found->xc;
            if (found->has_dual) {
                start->y = found->y;
                start->reduced_cost = difference (found->slx, found->sux);
            }
            return start;
        }
    }
    return nullptr;
}

std::optional<Point> claim_again (const std::optional<Solution>& solution)
{
    if (!solution || !is_point (*solution) || !solution->has_dual)
        return std::nullopt;
    Point claims;
    claims.outcome = Outcome::optimal;
    claims.x = solution->xx;
    claims.y = solution->y;
    return claims;
}

}
