#include "kalvo/verify/certificate.h"

#include "kalvo/forms/curvature.h"
#include "kalvo/sparse/index.h"
#include "kalvo/verify/products.h"
#include "kalvo/verify/proof.h"
#include "kalvo/verify/quality.h"
#include "kalvo/verify/rays.h"
#include "kalvo/verify/refinement.h"
#include "kalvo/verify/sum.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace klv {

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

// ---- Certificates of proofs -----------------------------------------------------------------------------

static std::vector<double> times (double factor, std::vector<double> values)
{
    for (double& value : values)
        value = factor * value + 0.0;
    return values;
}

// The certificate of a proof whose gradients are taken at x.
static Solution certificate_of (const Multipliers& kind, Proof&& proof, std::vector<double>&& x)
{
    const Problem& problem = kind.problem;
    const std::size_t n = kind.variables (), m = kind.constraints (),
                      rows = index (problem.affine_constraint.rows ());
    Solution certificate = infeasible_solution (problem);
    const double sign = certificate.dual_objective;
    const std::vector<double> multipliers = times (sign, std::move (proof.ray));
    const std::vector<double> products = times (sign, std::move (proof.products));
    const auto part = [] (const std::vector<double>& all_of, std::size_t first, std::size_t count) {
        const auto begin = all_of.begin () + static_cast<std::ptrdiff_t> (first);
        return std::vector<double> (begin, begin + static_cast<std::ptrdiff_t> (count));
    };
    certificate.y = part (multipliers, 0, m);
    certificate.doty = part (multipliers, m, rows);
    certificate.bars = part (products, n, products.size () - n);
    split (certificate.y, sign, certificate.slc, certificate.suc);
    std::vector<double> of_bounds = part (products, 0, n);
    if (problem.cone.count () > 0) {
        certificate.snx.assign (n, 0);
        for (const std::int32_t member : problem.cone.member)
            std::swap (certificate.snx[index (member)], of_bounds[index (member)]);
        for (std::size_t k = 0; k < kind.bounded_members ().size (); ++k) {
            const std::size_t j = index (kind.bounded_members ()[k]);
            of_bounds[j] = std::exchange (certificate.snx[j], multipliers[m + rows + k]);
        }
    }
    split (of_bounds, sign, certificate.slx, certificate.sux);
    if (std::ranges::any_of (problem.quadratic_constraint.item,
                             [&] (std::int32_t i) { return certificate.y[index (i)] != 0; }))
        certificate.xx = std::move (x);
    certificate.violations.dual = proof.noise_share;
    certificate.violations.dual_absolute = proof.noise_sum;
    return certificate;
}

// The point for the gradients of quadratic constraints. Fixed variables are where they are fixed, since convexity along them is not
// known.
static std::vector<double> with_fixed (const FixedVariables& fixed, std::vector<double> x)
{
    for (std::size_t j = 0; j < x.size (); ++j)
        if (fixed.is_fixed (j))
            x[j] = fixed.value (j);
    return x;
}

// The point moved so that products of the multipliers become 0 that should be: a move d changes them by W d, W being the weighted sum of
// the constraints' matrices.
static std::vector<double> refined_point (const Problem& problem, const FixedVariables& fixed,
                                          std::span<const double> ray, std::vector<double> x)
try {
    constexpr int steps = 3;
    const SemidefiniteEquations equations (problem.quadratic_constraint,
                                           ray.first (index (problem.constraints ())), fixed);
    for (int step = 0; step < steps; ++step) {
        const Multipliers kind (problem, x);
        const std::vector<double> products = products_of (kind, ray), terms = own_terms (kind, ray);
        std::vector<double> move;
        for (const std::int32_t j : equations.variables ())
            move.push_back (should_be_zero (kind, index (j), products[index (j)], terms[index (j)])
                                ? products[index (j)]
                                : 0);
        equations.solve (move);
        for (std::size_t k = 0; k < move.size (); ++k)
            x[index (equations.variables ()[k])] += move[k];
    }
    return x;
} catch (const std::length_error&) {
    return x;
}

// The claimed multipliers as a ray, positive at lower bounds.
static std::vector<double> ray_of (const Problem& problem, const ClaimedRay& claimed,
                                   std::span<const double> x)
{
    std::vector<double> ray;
    append (claimed.y, ray);
    append (claimed.doty, ray);
    const Multipliers kind (problem);
    std::vector<double> all;
    if (claimed.snx.empty () && !kind.bounded_members ().empty ())
        all = reduced_costs (problem, {claimed.y, claimed.doty}, x, false);
    for (const std::int32_t member : kind.bounded_members ())
        ray.push_back ((claimed.snx.empty () ? Numbers (all) : claimed.snx)[index (member)]);
    return times (problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1, std::move (ray));
}

std::optional<Solution> certify_infeasible (const Problem& problem, const ClaimedRay& claimed)
{
    const std::size_t n = index (problem.variables ()), m = index (problem.constraints ()),
                      rows = index (problem.affine_constraint.rows ());
    const bool curved = problem.quadratic_constraint.count () > 0;
    if (claimed.y.size () != m || claimed.doty.size () != rows ||
        (!claimed.snx.empty () && claimed.snx.size () != n))
        return std::nullopt;
    if (!curved) {
        const Multipliers kind (problem);
        std::optional<Proof> proof = prove (kind, ray_of (problem, claimed, {}));
        return proof ? std::optional (certificate_of (kind, std::move (*proof), {})) : std::nullopt;
    }
    const FixedVariables fixed (problem);
    const bool has_x = claimed.x.size () == n &&
                       std::ranges::all_of (claimed.x, [] (double value) { return std::isfinite (value); });
    std::vector<double> x = with_fixed (
        fixed, has_x ? std::vector<double> (claimed.x.begin (), claimed.x.end ()) : std::vector<double> (n));
    const std::vector<double> ray = ray_of (problem, claimed, x);
    for (const bool refine : {false, true}) {
        if (refine)
            x = refined_point (problem, fixed, ray, std::move (x));
        const Multipliers kind (problem, x);
        if (std::optional<Proof> proof = prove (kind, ray))
            return certificate_of (kind, std::move (*proof), std::vector<double> (x));
    }
    return std::nullopt;
}

std::optional<Solution> certify_unbounded (const Problem& problem, std::span<const double> direction,
                                           std::span<const double> barx)
{
    const auto n = static_cast<std::size_t> (problem.variables ());
    std::vector<double> ray;
    ray.reserve (direction.size () + barx.size ());
    append (direction, ray);
    append (barx, ray);
    if (direction.size () != n)
        return std::nullopt;
    std::optional<Proof> proof = prove (Direction (problem), ray);
    if (!proof)
        return std::nullopt;
    Solution certificate = zero_solution (problem);
    certificate.problem_status = KLV_PRO_DUAL_INFEASIBLE;
    certificate.solution_status = KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE;
    certificate.primal_objective = problem.sense == KLV_SENSE_MAXIMIZE ? 1 : -1;
    certificate.xx = times (1, std::move (proof->ray));
    certificate.barx.assign (certificate.xx.begin () + static_cast<std::ptrdiff_t> (n),
                             certificate.xx.end ());
    certificate.xx.resize (n);
    certificate.xc = times (1, std::move (proof->products));
    certificate.xc.resize (static_cast<std::size_t> (problem.constraints ()));
    certificate.violations.primal = proof->noise_share;
    certificate.violations.primal_absolute = proof->noise_sum;
    return certificate;
}

// ---- Bounds that contradict each other -------------------------------------------------------------------

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

// ---- A certificate that was stored ----------------------------------------------------------------------------

std::optional<Solution> certify_again (const Problem& problem, const GivenSolution& stored, double tolerance)
{
    const auto is_some = [] (const std::vector<double>& values) {
        return std::ranges::any_of (values, [] (double value) { return value != 0; });
    };
    const bool multipliers = is_some (stored.y) || is_some (stored.doty) || is_some (stored.snx);
    const bool at_point = multipliers && problem.quadratic_constraint.count () > 0;
    if ((!stored.xx.empty () || is_some (stored.barx)) && !at_point)
        return certify_unbounded (problem, stored.xx, stored.barx);
    if (multipliers)
        return certify_infeasible (problem, {stored.y, stored.doty, stored.snx, stored.xx});
    if (const CrossedBounds crossed = find_crossed (problem, tolerance); crossed.count > 0)
        return certify_crossed (problem, crossed);
    return std::nullopt;
}

}
