#include "kalvo/verify/given.h"

#include "kalvo/verify/certificate.h"
#include "kalvo/verify/check.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace klv {

static std::vector<double> difference (const std::vector<double>& a, const std::vector<double>& b)
{
    std::vector<double> c (a.size ());
    std::ranges::transform (a, b, c.begin (), std::minus{});
    return c;
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
    Point claims;
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
