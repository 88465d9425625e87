#include "kalvo/verify/certificate.h"

#include "kalvo/verify/quality.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

// A ray's entries may be wrong by this, relative to its largest one; its value must exceed what its terms can
// hide.
constexpr double ray_tolerance = 1e-8;
constexpr double value_tolerance = 1e-9;

static double largest (std::span<const double> values)
{
    double most = 0;
    for (const double value : values)
        most = std::max (most, std::isnan (value) ? infinity : std::abs (value));
    return most;
}

static Solution zero_solution (const Problem& problem)
{
    const std::size_t m = static_cast<std::size_t> (problem.constraints ());
    const std::size_t n = static_cast<std::size_t> (problem.variables ());
    Solution zero;
    zero.skc.assign (m, KLV_SK_UNKNOWN);
    zero.skx.assign (n, KLV_SK_UNKNOWN);
    zero.xc.assign (m, 0);
    zero.xx.assign (n, 0);
    for (std::vector<double>* values : {&zero.y, &zero.slc, &zero.suc})
        values->assign (m, 0);
    for (std::vector<double>* values : {&zero.slx, &zero.sux})
        values->assign (n, 0);
    return zero;
}

static Solution infeasible_solution (const Problem& problem)
{
    Solution certificate = zero_solution (problem);
    certificate.problem_status = KLV_PRO_PRIMAL_INFEASIBLE;
    certificate.solution_status = KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE;
    certificate.dual_objective = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    return certificate;
}

// ---- No point is feasible --------------------------------------------------------------------------------

// The value of multipliers (positive: of lower bounds, negative: of upper ones), and the size of its terms.
struct RayValue {
    double value = 0;
    double terms = 0;
    double at_absent_bounds = 0;
};

// Multipliers that are noise at bounds which do not exist become 0.
static void add_value (const Bounds& bounds, std::span<double> multipliers, double noise, RayValue& ray)
{
    for (std::size_t i = 0; i < multipliers.size (); ++i) {
        const double bound = multipliers[i] > 0 ? bounds.lower[i] : bounds.upper[i];
        if (std::isfinite (bound)) {
            ray.value += bound * multipliers[i];
            ray.terms += std::abs (bound * multipliers[i]);
        } else {
            ray.at_absent_bounds = std::max (ray.at_absent_bounds, std::abs (multipliers[i]));
            if (std::abs (multipliers[i]) <= noise)
                multipliers[i] = 0;
        }
    }
}

// For y as it is, in the signs of minimisation.
static std::optional<Solution> certify (const Problem& problem, std::vector<double> y)
{
    const double most = largest (y);
    if (!(most > 0) || !std::isfinite (most))
        return std::nullopt;
    for (double& multiplier : y)
        multiplier /= most;
    RayValue ray;
    add_value (problem.constraint, y, ray_tolerance, ray);
    std::vector<double> z = reduced_costs (problem.matrix, {}, y);    // the costs have no part in it
    const double tolerance = ray_tolerance * std::max (1.0, largest (z));
    add_value (problem.variable, z, tolerance, ray);
    if (!(ray.at_absent_bounds <= tolerance) || !(ray.value > value_tolerance * ray.terms) ||
        !std::isfinite (1 / ray.value))
        return std::nullopt;

    Solution certificate = infeasible_solution (problem);
    const double sign = certificate.dual_objective;
    const auto scaled = [&] (std::vector<double>&& multipliers) {
        for (double& multiplier : multipliers)
            multiplier = sign / ray.value * multiplier + 0.0;
        return std::move (multipliers);
    };
    certificate.y = scaled (std::move (y));
    split (certificate.y, sign, certificate.slc, certificate.suc);
    split (scaled (std::move (z)), sign, certificate.slx, certificate.sux);
    certificate.violations.dual = ray.at_absent_bounds;
    certificate.violations.dual_absolute = ray.at_absent_bounds / ray.value;
    return certificate;
}

std::optional<Solution> certify_infeasible (const Problem& problem, std::span<const double> y)
{
    if (y.size () != static_cast<std::size_t> (problem.constraints ()))
        return std::nullopt;
    if (std::optional<Solution> found = certify (problem, {y.begin (), y.end ()}))
        return found;
    // A ray is one up to its sign, and engines do not agree on it.
    std::vector<double> reversed (y.begin (), y.end ());
    for (double& multiplier : reversed)
        multiplier = -multiplier;
    return certify (problem, std::move (reversed));
}

CrossedBounds find_crossed (const Problem& problem, double tolerance)
{
    CrossedBounds crossed;
    const auto look = [&] (const Bounds& bounds, bool variable) {
        for (std::size_t i = 0; i < bounds.key.size (); ++i)
            if (bounds.lower[i] - bounds.upper[i] > tolerance && crossed.count++ == 0) {
                crossed.variable = variable;
                crossed.item = static_cast<std::int32_t> (i);
            }
    };
    look (problem.constraint, false);
    look (problem.variable, true);
    return crossed;
}

Solution certify_crossed (const Problem& problem, const CrossedBounds& crossed)
{
    Solution certificate = infeasible_solution (problem);
    const std::size_t item = static_cast<std::size_t> (crossed.item);
    const Bounds& bounds = crossed.variable ? problem.variable : problem.constraint;
    const double multiplier = certificate.dual_objective / (bounds.lower[item] - bounds.upper[item]);
    (crossed.variable ? certificate.slx : certificate.slc)[item] = multiplier;
    (crossed.variable ? certificate.sux : certificate.suc)[item] = multiplier;
    return certificate;
}

// ---- The objective improves for ever ---------------------------------------------------------------------

// By how much values move out of bounds that exist.
static double leaving (const Bounds& bounds, std::span<const double> direction)
{
    double worst = 0;
    for (std::size_t i = 0; i < direction.size (); ++i) {
        if (bounds.lower[i] > -infinity)
            worst = std::max (worst, -direction[i]);
        if (bounds.upper[i] < infinity)
            worst = std::max (worst, direction[i]);
    }
    return worst;
}

static std::optional<Solution> certify_direction (const Problem& problem, std::vector<double> d)
{
    const double most = largest (d);
    if (!(most > 0) || !std::isfinite (most))
        return std::nullopt;
    for (double& entry : d)
        entry /= most;
    const std::vector<double> moves = activities (problem, d);
    const double violation = std::max (leaving (problem.variable, d), leaving (problem.constraint, moves));
    double value = 0;
    double terms = 0;
    for (std::size_t j = 0; j < d.size (); ++j) {
        value += problem.cost[j] * d[j];
        terms += std::abs (problem.cost[j] * d[j]);
    }
    const double wanted = problem.sense == KLV_SENSE_MAXIMIZE ? 1 : -1;
    if (!(violation <= ray_tolerance) || !(wanted * value > value_tolerance * terms) ||
        !std::isfinite (1 / value))
        return std::nullopt;

    Solution certificate = zero_solution (problem);
    certificate.problem_status = KLV_PRO_DUAL_INFEASIBLE;
    certificate.solution_status = KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE;
    certificate.primal_objective = wanted;
    for (std::size_t j = 0; j < d.size (); ++j)
        certificate.xx[j] = wanted / value * d[j] + 0.0;
    for (std::size_t i = 0; i < moves.size (); ++i)
        certificate.xc[i] = wanted / value * moves[i] + 0.0;
    certificate.violations.primal = violation;
    certificate.violations.primal_absolute = violation / std::abs (value);
    return certificate;
}

std::optional<Solution> certify_unbounded (const Problem& problem, std::span<const double> direction)
{
    if (direction.size () != static_cast<std::size_t> (problem.variables ()))
        return std::nullopt;
    if (std::optional<Solution> found = certify_direction (problem, {direction.begin (), direction.end ()}))
        return found;
    std::vector<double> reversed (direction.begin (), direction.end ());
    for (double& entry : reversed)
        entry = -entry;
    return certify_direction (problem, std::move (reversed));
}

// ---- A certificate that was stored ----------------------------------------------------------------------------

// What differs by rounding only stays as it was stored.
static void keep (const std::vector<double>& stored, std::vector<double>& verified)
{
    constexpr double rounding = 1e-12;
    if (std::ranges::equal (stored, verified, [] (double a, double b) {
            return std::abs (a - b) <= rounding * std::max (std::abs (b), 1.0);
        }))
        verified = stored;
}

std::optional<Solution> certify_again (const Problem& problem, const GivenSolution& stored, double tolerance)
{
    std::optional<Solution> found;
    if (!stored.xx.empty ())
        found = certify_unbounded (problem, stored.xx);
    else if (std::ranges::any_of (stored.y, [] (double multiplier) { return multiplier != 0; }))
        found = certify_infeasible (problem, stored.y);
    else if (const CrossedBounds crossed = find_crossed (problem, tolerance); crossed.count > 0)
        return certify_crossed (problem, crossed);
    if (found) {
        keep (stored.xx, found->xx);
        keep (stored.y, found->y);
        keep (stored.slx, found->slx);
        keep (stored.sux, found->sux);
        split (found->y, problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1, found->slc, found->suc);
    }
    return found;
}

}
