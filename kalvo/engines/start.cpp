#include "kalvo/engines/start.h"

#include "kalvo/engines/check.h"
#include "kalvo/report/certificate.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

static bool has_basis (const Solution& solution)
{
    const auto basics = [] (const auto& keys) { return std::ranges::count (keys, KLV_SK_BASIC); };
    return basics (solution.skc) + basics (solution.skx) > 0;
}

// A ray is nothing to start from.
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

std::shared_ptr<const StartPoint> find_start (const Solutions& solutions, bool integers)
{
    auto start = std::make_shared<StartPoint> ();
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

std::optional<Claims> claim_again (const std::optional<Solution>& solution)
{
    if (!solution || !is_point (*solution) || !solution->has_dual)
        return std::nullopt;
    Claims claims;
    claims.outcome = Outcome::optimal;
    claims.x = solution->xx;
    claims.y = solution->y;
    return claims;
}

static Solution checked_point (GivenSolution& given, const std::shared_ptr<const Problem>& problem,
                               const Parameters& parameters, KLVsoltype which)
{
    const Check check (problem, parameters, which == KLV_SOL_INT);
    const auto combined = [] (std::vector<double>& plus, std::vector<double>& minus) {
        if (plus.empty () || minus.empty ()) {
            plus.resize (std::max (plus.size (), minus.size ()), 0.0);
            minus.resize (plus.size (), 0.0);
        }
        return difference (plus, minus);
    };
    Claims claims;
    claims.x = given.xx;
    claims.y = given.y.empty () ? combined (given.slc, given.suc) : std::move (given.y);
    claims.reduced_cost = combined (given.slx, given.sux);

    Answer answer = check (std::move (claims));
    Solution solution = answer.solution ? std::move (*answer.solution) : check.unknown_solution ();
    if (!solution.has_primal && !given.xx.empty ())
        solution.xx = std::move (given.xx);
    // Nothing is feasible between bounds that contradict each other, which a point's measures don't tell.
    if (find_crossed (*problem, parameters.get (RealSetting::fixing_tolerance)).count > 0) {
        solution.problem_status = KLV_PRO_UNKNOWN;
        solution.solution_status = KLV_SOLSTA_UNKNOWN;
    }
    return solution;
}

Solution complete (GivenSolution&& given, const std::shared_ptr<const Problem>& problem,
                   const Parameters& parameters, KLVsoltype which)
{
    std::optional<Solution> certificate;
    if (given.certificate)
        certificate = certify_again (*problem, given, parameters.get (RealSetting::fixing_tolerance));
    Solution solution =
        certificate ? std::move (*certificate) : checked_point (given, problem, parameters, which);
    // Keys are a user's word on where to start, and no one else's.
    const auto keep_keys = [] (std::vector<std::int32_t>& keys, std::vector<std::int32_t>& given_keys) {
        if (given_keys.empty ())
            std::ranges::fill (keys, KLV_SK_UNKNOWN);
        else
            keys = std::move (given_keys);
    };
    keep_keys (solution.skc, given.skc);
    keep_keys (solution.skx, given.skx);
    return solution;
}

}
