#include "kalvo/verify/given.h"

#include "kalvo/verify/certificate.h"
#include "kalvo/verify/check.h"
#include "kalvo/verify/quality.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <optional>
#include <utility>

namespace klv {

using Values = std::vector<double>;

// What is missing of two parts is zero.
static Values difference (const Values& plus, const Values& minus)
{
    Values result (std::max (plus.size (), minus.size ()));
    std::ranges::copy (plus, result.begin ());
    std::ranges::transform (result.begin (), result.begin () + std::ssize (minus), minus.begin (),
                            minus.end (), result.begin (), std::minus{});
    return result;
}

static bool is_known (const Values& values, std::size_t count)
{
    return values.size () == count &&
           std::ranges::none_of (values, [] (double value) { return std::isnan (value); });
}

static bool is_zero (const Values& values)
{
    return std::ranges::all_of (values, [] (double value) { return value == 0; });
}

static void keep (const Values& given, Values& place)
{
    if (!given.empty ())
        place = given;
}

static Tolerances tolerances (const Parameters& parameters)
{
    return {.primal = parameters.get (RealSetting::primal_tolerance),
            .dual = parameters.get (RealSetting::dual_tolerance),
            .gap = parameters.get (RealSetting::gap_tolerance),
            .integer = parameters.get (RealSetting::integer_tolerance)};
}

// Statuses follow from points and multipliers that are known in full, and so do the values that are not given. Of others
// what is given is kept, after all has been measured.
static Solution checked_point (const GivenSolution& given, const std::shared_ptr<const Problem>& problem,
                               const Parameters& parameters, KLVsoltype which)
{
    const bool integers = which == KLV_SOL_INT;
    const std::size_t m = problem->constraint.key.size (), n = problem->variable.key.size ();
    const Values y = given.y.empty () ? difference (given.slc, given.suc) : given.y;
    Values reduced_cost = difference (given.slx, given.sux);

    Solution solution = Check (problem, parameters, integers).unknown_solution ();
    solution.has_primal = is_known (given.xx, n);
    solution.has_dual = !integers && is_known (y, m) && (reduced_cost.empty () || is_known (reduced_cost, n));
    if (solution.has_primal)
        measure_primal (*problem, given.xx, solution);
    if (solution.has_dual)
        measure_dual (*problem, y, std::move (reduced_cost), solution);
    if (!integers)
        judge (tolerances (parameters), solution);
    else if (solution.has_primal) {
        measure_integers (*problem, solution);
        judge_integer (tolerances (parameters), false, solution);
    }
    // Nothing is feasible between bounds that contradict each other, which a point's measures don't tell.
    if (find_crossed (*problem, parameters.get (RealSetting::fixing_tolerance)).count > 0) {
        solution.problem_status = KLV_PRO_UNKNOWN;
        solution.solution_status = KLV_SOLSTA_UNKNOWN;
    }

    if (!solution.has_primal) {
        keep (given.xx, solution.xx);
        keep (given.xc, solution.xc);
    }
    if (!solution.has_dual && !integers) {
        keep (y, solution.y);
        split (solution.y, problem->sense == KLV_SENSE_MAXIMIZE ? -1 : 1, solution.slc, solution.suc);
        keep (given.slc, solution.slc);
        keep (given.suc, solution.suc);
        keep (given.slx, solution.slx);
        keep (given.sux, solution.sux);
    }
    return solution;
}

// A certificate as an answer holds it: a direction beside multipliers that are zero, where its slot has any, or multipliers
// beside a point that is zero. Whoever gives a point alone means a point.
static bool looks_like_certificate (const GivenSolution& given, KLVsoltype which)
{
    bool has_multipliers = false, are_zero = true;
    for (const Values* multipliers : {&given.y, &given.slc, &given.suc, &given.slx, &given.sux}) {
        has_multipliers = has_multipliers || !multipliers->empty ();
        are_zero = are_zero && is_zero (*multipliers);
    }
    return is_zero (given.xx) ? !are_zero : are_zero && (has_multipliers || which == KLV_SOL_INT);
}

// The certificate that is given, once it is verified. One that nobody calls so counts only where it is to nine digits
// what was verified: values that are given are not to be scaled.
static std::optional<Solution> given_certificate (const GivenSolution& given, const Problem& problem,
                                                  double tolerance, KLVsoltype which)
{
    if (!given.certificate && !looks_like_certificate (given, which))
        return std::nullopt;
    GivenSolution ray = given;
    if (is_zero (ray.xx))
        ray.xx.clear ();
    std::optional<Solution> found = certify_again (problem, ray, tolerance);
    const auto differ = [] (const Values& values, const Values& verified) {
        constexpr double rounding = 1e-9;
        return !values.empty () && !std::ranges::equal (values, verified, [] (double a, double b) {
            return std::abs (a - b) <= rounding * std::abs (b);
        });
    };
    if (found && !given.certificate &&
        (differ (given.xx, found->xx) || differ (given.y, found->y) || differ (given.slc, found->slc) ||
         differ (given.suc, found->suc) || differ (given.slx, found->slx) || differ (given.sux, found->sux)))
        return std::nullopt;
    if (found && which == KLV_SOL_INT)
        for (Values* multipliers : {&found->y, &found->slc, &found->suc, &found->slx, &found->sux})
            multipliers->clear ();
    return found;
}

Solution complete (GivenSolution&& given, const std::shared_ptr<const Problem>& problem,
                   const Parameters& parameters, KLVsoltype which)
{
    Solution solution = checked_point (given, problem, parameters, which);
    if (solution.solution_status != KLV_SOLSTA_OPTIMAL)
        if (std::optional<Solution> certificate =
                given_certificate (given, *problem, parameters.get (RealSetting::fixing_tolerance), which))
            solution = std::move (*certificate);
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
