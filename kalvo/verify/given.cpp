#include "kalvo/verify/given.h"

#include "kalvo/forms/curvature.h"
#include "kalvo/verify/certificate.h"
#include "kalvo/verify/check.h"
#include "kalvo/verify/products.h"
#include "kalvo/verify/quality.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <utility>

namespace klv {

using Vector = std::vector<double>;

// Vector that `plus` or `minus` lacks are zero.
static Vector difference (const Vector& plus, const Vector& minus)
{
    Vector result (std::max (plus.size (), minus.size ()));
    std::ranges::copy (plus, result.begin ());
    std::ranges::transform (result.begin (), result.begin () + std::ssize (minus), minus.begin (),
                            minus.end (), result.begin (), std::minus{});
    return result;
}

static bool is_known (const Vector& values, std::size_t count)
{
    return values.size () == count &&
           std::ranges::none_of (values, [] (double value) { return std::isnan (value); });
}

static bool is_zero (const Vector& values)
{
    return std::ranges::all_of (values, [] (double value) { return value == 0; });
}

static void keep (const Vector& given, Vector& place)
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

// Multipliers prove nothing about a problem that may not be convex.
static bool is_convex (const Problem& problem)
try {
    return !has_quadratic_terms (problem) || refuse_curvature (problem).item == Refused::Item::none;
} catch (const std::length_error&) {
    return false;
}

// Points and multipliers that are known in full give statuses, and the values that were not given. Points and multipliers that
// are known in part are kept as they are, and say nothing.
static Solution checked_point (const GivenSolution& given, const std::shared_ptr<const Problem>& problem,
                               const Parameters& parameters, KLVsoltype which)
{
    const bool integers = which == KLV_SOL_INT;
    const auto rows = static_cast<std::size_t> (problem->affine_constraint.rows ());
    const auto length = static_cast<std::size_t> (problem->semidefinite.length ());
    const std::size_t m = problem->constraint.key.size (), n = problem->variable.key.size ();
    const Vector y = given.y.empty () ? difference (given.slc, given.suc) : given.y;
    Vector reduced_cost = difference (given.slx, given.sux);

    Solution solution = Check (problem, parameters, integers).unknown_solution ();
    const auto optional = [&] (const Vector& values) { return values.empty () || is_known (values, n); };
    solution.has_primal = is_known (given.xx, n) && is_known (given.barx, length);
    solution.has_dual = !integers && is_known (y, m) && is_known (given.doty, rows) &&
                        optional (reduced_cost) && optional (given.snx) &&
                        (solution.has_primal || !has_quadratic_terms (*problem)) && is_convex (*problem);
    if (solution.has_primal)
        measure_primal (*problem, given.xx, given.barx, solution);
    if (solution.has_dual)
        measure_dual (
            *problem,
            {.y = y, .reduced_cost = std::move (reduced_cost), .doty = given.doty, .snx = given.snx},
            solution);
    if (!integers)
        judge (tolerances (parameters), solution);
    else if (solution.has_primal) {
        measure_integers (*problem, solution);
        judge_integer (tolerances (parameters), false, solution);
    }
    // A point can be within tolerance of bounds that contradict each other: it is not feasible all the same.
    if (find_crossed (*problem, parameters.get (RealSetting::fixing_tolerance)).count > 0) {
        solution.problem_status = KLV_PRO_UNKNOWN;
        solution.solution_status = KLV_SOLSTA_UNKNOWN;
    }

    if (!solution.has_primal) {
        keep (given.xx, solution.xx);
        keep (given.barx, solution.barx);
        keep (given.xc, solution.xc);
    }
    if (!solution.has_dual && !integers) {
        keep (y, solution.y);
        split (solution.y, problem->sense == KLV_SENSE_MAXIMIZE ? -1 : 1, solution.slc, solution.suc);
        keep (given.slc, solution.slc);
        keep (given.suc, solution.suc);
        keep (given.slx, solution.slx);
        keep (given.sux, solution.sux);
        keep (given.doty, solution.doty);
        keep (given.snx, solution.snx);
        keep (given.bars, solution.bars);
    }
    // What is known of the linear part is a start all the same.
    solution.has_primal = is_known (given.xx, n);
    solution.has_dual = !integers && is_known (y, m) && optional (difference (given.slx, given.sux));
    return solution;
}

// Whether values look like a certificate in an answer: a direction with zero multipliers (the integer slot has none), or
// multipliers with a zero point, or with any where constraints are quadratic. A point without multipliers is a point.
static bool looks_like_certificate (const GivenSolution& given, const Problem& problem, KLVsoltype which)
{
    const bool at_point = !is_zero (given.y) && problem.quadratic_constraint.count () > 0;
    bool has_multipliers = false, are_zero = true;
    for (const Vector* multipliers :
         {&given.y, &given.slc, &given.suc, &given.slx, &given.sux, &given.doty, &given.snx, &given.bars}) {
        has_multipliers = has_multipliers || !multipliers->empty ();
        are_zero = are_zero && is_zero (*multipliers);
    }
    return at_point || (is_zero (given.xx) && is_zero (given.barx))
               ? !are_zero
               : are_zero && (has_multipliers || which == KLV_SOL_INT);
}

// The given certificate, verified. Verifying may scale values: unless they were given as a certificate, they count as one only
// when scaling leaves nine digits as they are.
static std::optional<Solution> given_certificate (const GivenSolution& given, const Problem& problem,
                                                  double tolerance, KLVsoltype which)
{
    if (!given.certificate && !looks_like_certificate (given, problem, which))
        return std::nullopt;
    GivenSolution ray = given;
    if (is_zero (ray.xx) && is_zero (ray.barx))
        ray.xx.clear ();
    std::optional<Solution> found = certify_again (problem, ray, tolerance);
    const auto differ = [] (const Vector& values, const Vector& verified) {
        constexpr double rounding = 1e-9;
        if (values.empty () || (verified.empty () && is_zero (values)))
            return false;
        return !std::ranges::equal (values, verified, [] (double a, double b) {
            return std::abs (a - b) <= rounding * std::abs (b);
        });
    };
    if (found && !given.certificate &&
        (differ (given.xx, found->xx) || differ (given.y, found->y) || differ (given.slc, found->slc) ||
         differ (given.suc, found->suc) || differ (given.slx, found->slx) || differ (given.sux, found->sux) ||
         differ (given.doty, found->doty) || differ (given.snx, found->snx) ||
         differ (given.barx, found->barx) || differ (given.bars, found->bars)))
        return std::nullopt;
    if (found && which == KLV_SOL_INT)
        for (Vector* multipliers : {&found->y, &found->slc, &found->suc, &found->slx, &found->sux})
            multipliers->clear ();
    return found;
}

Solution complete (GivenSolution&& given, const std::shared_ptr<const Problem>& problem,
                   const Parameters& parameters, KLVsoltype which)
{
    Solution solution = checked_point (given, problem, parameters, which);
    if (solution.solution_status != KLV_SOLSTA_OPTIMAL)
        if (std::optional<Solution> certificate =
                given_certificate (given, *problem, parameters.get (RealSetting::fixing_tolerance), which);
            certificate && is_convex (*problem))
            solution = std::move (*certificate);
    // Only keys that were given are stored: they say where to start.
    const auto keep_keys = [] (std::vector<std::int32_t>& keys, std::vector<std::int32_t>& given_keys) {
        if (given_keys.empty ())
            std::ranges::fill (keys, KLV_SK_UNKNOWN);
        else
            keys = std::move (given_keys);
    };
    keep_keys (solution.skc, given.skc);
    keep_keys (solution.skx, given.skx);
    solution.skn = std::move (given.skn);
    return solution;
}

}
