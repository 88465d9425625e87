#include "kalvo/verify/certificate.h"

#include "kalvo/verify/products.h"
#include "kalvo/verify/quality.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

// Noise is at most this part of the terms that it is left of; the value must exceed what its terms can hide.
constexpr double noise_tolerance = 1e-12;
constexpr double value_tolerance = 1e-9;
// A bound this large gives noise a value, so that noise there is none either.
constexpr double far_bound = 1e15;

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

// ---- Rays ------------------------------------------------------------------------------------------------

// A ray has an entry for each item of one kind, and a product for each item of the other kind: a row or column of the matrix
// times the ray. Each of them may have to be 0, or have one sign only, by the bounds that its item has.

// Multipliers of the constraints, positive at lower bounds; their products are those of the variables.
struct Multipliers {
    const Problem& problem;

    static double size_of_bound (const Bounds& bounds, std::size_t i, double multiplier)
    {
        const Interval here = bounds.interval (i);
        return multiplier == 0 ? 0 : std::abs (multiplier > 0 ? here.lower : here.upper);
    }
    bool allows_entry (std::size_t i, double y) const
    {
        return size_of_bound (problem.constraint, i, y) < infinity;
    }
    bool allows_product (std::size_t j, double z) const
    {
        return size_of_bound (problem.variable, j, z) < infinity;
    }
    bool trusts_product (std::size_t j, double z) const
    {
        return size_of_bound (problem.variable, j, z) < far_bound;
    }

    std::vector<double> products (std::span<const double> y) const
    {
        return reduced_costs (problem, {y}, {}, false);
    }
    template <class Function>
    void each_value (const Function& function) const
    {
        for (std::int32_t j = 0; j < problem.variables (); ++j) {
            const Column column = problem.matrix.column (j);
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                function (static_cast<std::size_t> (j), static_cast<std::size_t> (column.rows[k]),
                          column.values[k]);
        }
    }
    template <class Function>
    void each_term (std::span<const double> y, std::span<const double> z, const Function& function) const
    {
        const auto add = [&] (const Bounds& bounds, std::span<const double> multipliers) {
            for (std::size_t i = 0; i < multipliers.size (); ++i)
                if (const Interval here = bounds.interval (i); multipliers[i] != 0)
                    function (multipliers[i] > 0 ? here.lower : here.upper, multipliers[i]);
        };
        add (problem.constraint, y);
        add (problem.variable, z);
    }
};

// A direction of the variables; its products are the moves of the constraints.
struct Direction {
    const Problem& problem;

    static bool keeps (const Bounds& bounds, std::size_t i, double move)
    {
        return move == 0 || std::isinf (move < 0 ? bounds.lower[i] : bounds.upper[i]);
    }
    bool allows_entry (std::size_t j, double d) const { return keeps (problem.variable, j, d); }
    bool allows_product (std::size_t i, double move) const { return keeps (problem.constraint, i, move); }
    bool trusts_product (std::size_t i, double move) const { return allows_product (i, move); }

    std::vector<double> products (std::span<const double> d) const
    {
        return activities (problem, {d}, false);
    }
    template <class Function>
    void each_value (const Function& function) const
    {
        Multipliers{problem}.each_value (
            [&] (std::size_t j, std::size_t i, double value) { function (i, j, value); });
    }
    template <class Function>
    void each_term (std::span<const double> d, std::span<const double>, const Function& function) const
    {
        const double sign = problem.sense == KLV_SENSE_MAXIMIZE ? 1 : -1;
        for (std::size_t j = 0; j < d.size (); ++j)
            function (sign * problem.cost[j], d[j]);
    }
};

// A ray with its products, noise taken out of them, and what they add up to.
struct Proof {
    std::vector<double> ray = {}, products = {};
    long double value = 0, terms = 0;
    double noise_share = 0, noise_sum = 0;
};

template <class Kind>
static std::vector<double> own_terms (const Kind& kind, std::span<const double> ray, std::size_t products)
{
    std::vector<double> terms (products);
    kind.each_value (
        [&] (std::size_t to, std::size_t from, double value) { terms[to] += std::abs (value * ray[from]); });
    return terms;
}

// Written so that a NaN proves nothing.
template <class Kind>
static std::optional<Proof> verify (const Kind& kind, std::vector<double> ray)
{
    for (std::size_t i = 0; i < ray.size (); ++i)
        if (!std::isfinite (ray[i]) || !kind.allows_entry (i, ray[i]))
            return std::nullopt;
    Proof proof{.ray = std::move (ray)};
    proof.products = kind.products (proof.ray);
    std::vector<double> terms;
    for (std::size_t i = 0; i < proof.products.size (); ++i) {
        if (kind.trusts_product (i, proof.products[i]))
            continue;
        if (terms.empty ())
            terms = own_terms (kind, proof.ray, proof.products.size ());
        const double noise = std::abs (proof.products[i]);
        if (!(noise <= noise_tolerance * terms[i])) {
            if (kind.allows_product (i, proof.products[i]))
                continue;
            return std::nullopt;
        }
        proof.products[i] = 0;
        proof.noise_sum += noise;
        proof.noise_share = std::max (proof.noise_share, noise / terms[i]);
    }
    kind.each_term (proof.ray, proof.products, [&] (long double a, long double b) {
        proof.value += a * b;
        proof.terms += std::abs (a * b);
    });
    return proof.value > value_tolerance * proof.terms ? std::optional (std::move (proof)) : std::nullopt;
}

// The numbers that are handed out are those that were verified. A ray with its right value stays as it is.
template <class Kind>
static std::optional<Proof> verify_scaled (const Kind& kind, std::vector<double> ray)
{
    std::optional<Proof> proof = verify (kind, std::move (ray));
    if (!proof || std::abs (proof->value - 1) <= value_tolerance)
        return proof;
    for (double& entry : proof->ray)
        entry = static_cast<double> (entry / proof->value);
    return verify (kind, std::move (proof->ray));
}

// Without entries that are not allowed, and those that are small beside the largest.
template <class Kind>
static std::vector<double> cleaned (const Kind& kind, std::vector<double> ray, double small)
{
    const auto smaller = [] (double a, double b) { return std::abs (a) < std::abs (b); };
    const double least =
        ray.empty () ? 0 : small * std::abs (*std::max_element (ray.begin (), ray.end (), smaller));
    for (std::size_t i = 0; i < ray.size (); ++i)
        if (std::abs (ray[i]) < least || !kind.allows_entry (i, ray[i]))
            ray[i] = 0;
    return ray;
}

// Makes products smaller that should be 0 (those of the wrong sign, and those that come near to 0 and may have one sign at
// most) by the least relative change of the ray's entries: conjugate gradients on the least squares, each product taken
// relative to its terms. What is wrong by more than noise stays as it is. The rounds are limited by the size of the matrix,
// which keeps the time below a second.
template <class Kind>
static std::vector<double> refined (const Kind& kind, std::vector<double> ray)
{
    using Vector = std::vector<long double>;
    const std::vector<double> products = kind.products (ray);
    const std::vector<double> terms = own_terms (kind, ray, products.size ());
    Vector weights (products.size ());    // 0 where a product may be what it is
    Vector residual (products.size ());
    constexpr double far = 0.01, near_zero = 1e-6;
    for (std::size_t i = 0; i < products.size (); ++i) {
        const bool allowed = kind.allows_product (i, products[i]);
        if (!allowed && std::abs (products[i]) > far * terms[i])
            return ray;
        const bool near = std::abs (products[i]) <= near_zero * terms[i] &&
                          !(kind.trusts_product (i, 1) && kind.trusts_product (i, -1));
        if (terms[i] > 0 && (!allowed || near))
            weights[i] = 1 / static_cast<long double> (terms[i]);
    }
    std::int64_t values = 1;
    kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
        residual[to] -= weights[to] * value * ray[from];
        ++values;
    });

    Vector change (ray.size ());
    const auto gradient = [&] {
        Vector sums (ray.size ());
        kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
            sums[from] += weights[to] * value * ray[from] * residual[to];
        });
        return sums;
    };
    const auto square = [] (const Vector& vector) {
        long double sum = 0;
        for (const long double value : vector)
            sum += value * value;
        return sum;
    };
    Vector slope = gradient (), step = slope;
    long double steepness = square (slope);
    const std::int64_t rounds = std::clamp<std::int64_t> (50'000'000 / values, 3, 500);
    for (std::int64_t round = 0; round < rounds && steepness > 1e-34L; ++round) {
        Vector effect (products.size ());
        kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
            effect[to] += weights[to] * value * ray[from] * step[from];
        });
        const long double length = steepness / square (effect);
        for (std::size_t i = 0; i < change.size (); ++i)
            change[i] += length * step[i];
        for (std::size_t i = 0; i < residual.size (); ++i)
            residual[i] -= length * effect[i];
        slope = gradient ();
        const long double before = std::exchange (steepness, square (slope));
        for (std::size_t i = 0; i < step.size (); ++i)
            step[i] = slope[i] + steepness / before * step[i];
    }
    for (std::size_t i = 0; i < ray.size (); ++i)
        ray[i] = static_cast<double> (ray[i] * (1 + change[i]));
    return ray;
}

// A ray is one up to its sign, and engines do not agree on it.
template <class Kind>
static std::optional<Proof> prove (const Kind& kind, std::span<const double> claimed, std::size_t entries)
{
    if (claimed.size () != entries ||
        !std::ranges::all_of (claimed, [] (double entry) { return std::isfinite (entry); }))
        return std::nullopt;
    const std::vector<double> ray (claimed.begin (), claimed.end ());
    std::vector<double> reversed (ray);
    for (double& entry : reversed)
        entry = -entry;
    const std::vector<double>* ways[] = {&ray, &reversed};
    for (const auto* way : ways)
        if (std::optional<Proof> proof = verify_scaled (kind, *way))
            return proof;
    constexpr double simplex = 1e-12, interior = 1e-7;
    for (const double small : {simplex, interior})
        for (const auto* way : ways) {
            const std::vector<double> clean = cleaned (kind, *way, small);
            if (std::optional<Proof> proof = verify_scaled (kind, clean))
                return proof;
            if (std::optional<Proof> proof = verify_scaled (kind, cleaned (kind, refined (kind, clean), 0)))
                return proof;
        }
    return std::nullopt;
}

static std::vector<double> times (double factor, std::vector<double> values)
{
    for (double& value : values)
        value = factor * value + 0.0;
    return values;
}

std::optional<Solution> certify_infeasible (const Problem& problem, std::span<const double> y)
{
    if (!problem.is_linear ())
        return std::nullopt;
    std::optional<Proof> proof =
        prove (Multipliers{problem}, y, static_cast<std::size_t> (problem.constraints ()));
    if (!proof)
        return std::nullopt;
    Solution certificate = infeasible_solution (problem);
    const double sign = certificate.dual_objective;
    certificate.y = times (sign, std::move (proof->ray));
    split (certificate.y, sign, certificate.slc, certificate.suc);
    split (times (sign, std::move (proof->products)), sign, certificate.slx, certificate.sux);
    certificate.violations.dual = proof->noise_share;
    certificate.violations.dual_absolute = proof->noise_sum;
    return certificate;
}

std::optional<Solution> certify_unbounded (const Problem& problem, std::span<const double> direction)
{
    if (!problem.is_linear ())
        return std::nullopt;
    std::optional<Proof> proof =
        prove (Direction{problem}, direction, static_cast<std::size_t> (problem.variables ()));
    if (!proof)
        return std::nullopt;
    Solution certificate = zero_solution (problem);
    certificate.problem_status = KLV_PRO_DUAL_INFEASIBLE;
    certificate.solution_status = KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE;
    certificate.primal_objective = problem.sense == KLV_SENSE_MAXIMIZE ? 1 : -1;
    certificate.xx = times (1, std::move (proof->ray));
    certificate.xc = times (1, std::move (proof->products));
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
    if (!stored.xx.empty ())
        return certify_unbounded (problem, stored.xx);
    if (std::ranges::any_of (stored.y, [] (double multiplier) { return multiplier != 0; }))
        return certify_infeasible (problem, stored.y);
    if (const CrossedBounds crossed = find_crossed (problem, tolerance); crossed.count > 0)
        return certify_crossed (problem, crossed);
    return std::nullopt;
}

}
