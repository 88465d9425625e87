#include "kalvo/verify/certificate.h"

#include "kalvo/forms/curvature.h"
#include "kalvo/sparse/index.h"
#include "kalvo/verify/cone_part.h"
#include "kalvo/verify/products.h"
#include "kalvo/verify/quality.h"
#include "kalvo/verify/rays.h"
#include "kalvo/verify/refinement.h"
#include "kalvo/verify/sum.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace klv {

// Noise is at most this part of the terms that it is left of: a few units of rounding, as a ray of double precision leaves, for a matrix
// times its order. The value must exceed what its terms can hide.
constexpr double noise_tolerance = 2e-15;
constexpr double value_tolerance = 1e-9;

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

// A ray with its products, noise taken out of them, and what they add up to.
struct Proof {
    std::vector<double> ray = {}, products = {};
    long double value = 0, terms = 0;
    std::vector<bool> noisy = {};    // products that hold but for noise
    double noise_share = 0, noise_sum = 0;
};

static void append (std::span<const double> values, std::vector<double>& ray)
{
    ray.insert (ray.end (), values.begin (), values.end ());
}

template <class Kind>
static std::vector<double> products_of (const Kind& kind, std::span<const double> ray)
{
    std::vector<Sum> sums (kind.products ());
    kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
        if (ray[from] != 0)
            sums[to].add_product (kind.sign * value, ray[from]);
    });
    std::vector<double> products (sums.size ());
    std::ranges::transform (sums, products.begin (), &Sum::value);
    return products;
}

template <class Kind>
static std::vector<double> own_terms (const Kind& kind, std::span<const double> ray)
{
    std::vector<double> terms (kind.products ());
    kind.each_value (
        [&] (std::size_t to, std::size_t from, double value) { terms[to] += std::abs (value * ray[from]); });
    return terms;
}

// Whether the part is in its cone, but for noise of its products, which is noted.
static bool is_inside (const ConePart& part, std::span<const double> terms, Proof& proof)
{
    const std::size_t entries = proof.ray.size ();
    std::vector<double> block, own;
    for (const std::size_t place : part.places) {
        block.push_back (place < entries ? proof.ray[place] : proof.products[place - entries]);
        own.push_back (place < entries ? 0 : terms[place - entries]);
    }
    const bool products =
        std::ranges::all_of (part.places, [&] (std::size_t place) { return place >= entries; });
    if (part.order >= 0 && products) {
        const double share = relative_distance (part.order, block, own, noise_tolerance);
        proof.noise_share = std::max (proof.noise_share, share);
        const std::vector<double> towards = part.direction_of ();
        for (std::size_t i = 0; i < block.size () && share > 0; ++i) {
            proof.noise_sum += share * own[i] * towards[i];
            proof.noisy[part.places[i] - entries] = true;
        }
        return share <= noise_tolerance * part.order;
    }
    const double outside = part.distance_of (block);
    if (outside <= 0)
        return true;
    const std::vector<double> towards = part.direction_of ();
    for (std::size_t i = 0; i < block.size (); ++i) {
        const double noise =
            part.type == KLV_DOMAIN_ZERO ? std::abs (block[i]) : outside * std::abs (towards[i]);
        if (!(noise <= noise_tolerance * own[i]))
            return false;
        if (noise > 0) {
            proof.noisy[part.places[i] - entries] = true;
            proof.noise_sum += noise;
            proof.noise_share = std::max (proof.noise_share, noise / own[i]);
        }
    }
    return true;
}

// Whether a product should be 0: it has the wrong sign, or comes near to 0 and may have one sign at most.
template <class Kind>
static bool should_be_zero (const Kind& kind, std::size_t i, double product, double terms)
{
    constexpr double near_zero = 1e-6;
    return !kind.allows_product (i, product) ||
           (std::abs (product) <= near_zero * terms &&
            !(kind.trusts_product (i, 1) && kind.trusts_product (i, -1)));
}

// The terms of those products that should be 0, so those of a matrix in a row or column without terms on the diagonal. Empty where one
// that must be 0 is far from it.
template <class Kind>
static std::vector<double> terms_of_zeros (const Kind& kind, std::span<const double> ray)
{
    constexpr double far = 0.01;
    const std::vector<double> products = products_of (kind, ray);
    std::vector<double> terms = own_terms (kind, ray);
    std::vector<bool> flat (products.size ());
    for (const ConePart& part : kind.parts)
        part.each_flat_entry (ray.size (), terms, [&] (std::size_t product) { flat[product] = true; });
    for (std::size_t i = 0; i < products.size (); ++i) {
        if (!kind.allows_product (i, products[i]) && std::abs (products[i]) > far * terms[i])
            return {};
        if (!flat[i] && !should_be_zero (kind, i, products[i], terms[i]))
            terms[i] = 0;
    }
    return terms;
}

// The entries that noisy products come from, and behind them all products of these.
template <class Kind>
static std::vector<bool> reached_by_noise (const Kind& kind, const Proof& proof)
{
    const std::size_t entries = proof.ray.size ();
    std::vector<bool> reached (entries + proof.products.size ());
    kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
        if (value != 0 && proof.ray[from] != 0 && proof.noisy[to])
            reached[from] = true;
    });
    kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
        if (value != 0 && proof.ray[from] != 0 && reached[from])
            reached[entries + to] = true;
    });
    return reached;
}

// Parts that noise reaches and whose boundaries are too near for members to change by as much as noise. `all` are entries and products.
template <class Kind>
static std::vector<const ConePart*> parts_without_room (const Kind& kind, std::span<const double> terms,
                                                        const Proof& proof, std::span<const double> all)
{
    constexpr double room = 5 * noise_tolerance;
    const std::size_t entries = proof.ray.size ();
    const std::vector<bool> reached = reached_by_noise (kind, proof);
    std::vector<const ConePart*> without_room;
    std::vector<double> block, magnitudes;
    for (const ConePart& part : kind.parts) {
        if (std::ranges::none_of (part.places, [&] (std::size_t place) { return reached[place]; }))
            continue;
        block.clear ();
        magnitudes.clear ();
        for (const std::size_t place : part.places) {
            block.push_back (all[place]);
            magnitudes.push_back (place < entries ? std::abs (all[place]) : terms[place - entries]);
        }
        if (!part.holds_beside (room, block, magnitudes))
            without_room.push_back (&part);
    }
    return without_room;
}

// Whether some small change takes the noise away, cones being kept: those whose boundaries are too near may only be scaled, as a whole.
// At a curved boundary, entries of 1e8 come as near to a ray as rounding tells where there is none.
template <class Kind>
static bool noise_can_be_mended (const Kind& kind, std::span<const double> terms, const Proof& proof)
{
    constexpr long double gone = 1e-18L;
    const std::size_t entries = proof.ray.size ();
    std::vector<double> all (proof.ray);
    append (proof.products, all);
    move_inside (kind.parts, all);
    const std::vector<const ConePart*> scaled_only = parts_without_room (kind, terms, proof, all);
    if (scaled_only.empty ())
        return true;
    std::vector<double> scale = terms_of_zeros (kind, proof.ray);
    if (scale.empty ())
        return false;
    std::vector<std::size_t> unknown (
        entries);    // of each entry; scaled blocks of products have one of their own
    std::iota (unknown.begin (), unknown.end (), std::size_t{0});
    struct Target {
        std::size_t product, unknown;
        double value;
    };
    std::vector<Target> targets;
    for (std::size_t k = 0; k < scaled_only.size (); ++k)
        for (const std::size_t place : scaled_only[k]->places)
            if (place < entries)
                unknown[place] = scaled_only[k]->places.front ();
            else {
                targets.push_back ({place - entries, entries + k, all[place]});
                scale[place - entries] = terms[place - entries];
            }
    LeastChange system (entries + scaled_only.size (), scale.size ());
    const auto each_share = [&] (const auto& function) {
        kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
            if (scale[to] > 0 && proof.ray[from] != 0)
                function (to, unknown[from],
                          static_cast<long double> (kind.sign * value) * proof.ray[from] / scale[to]);
        });
        for (const Target& target : targets)
            if (scale[target.product] > 0)
                function (target.product, target.unknown,
                          -static_cast<long double> (target.value) / scale[target.product]);
    };
    each_share ([&] (std::size_t to, std::size_t from, long double share) { system.add (to, from, share); });
    const std::vector<long double> change = system.solve ();
    if (change.empty ())
        return false;
    std::vector<long double> left (scale.size ());
    each_share ([&] (std::size_t to, std::size_t from, long double share) {
        left[to] += share * (1 + change[from]);
    });
    return std::ranges::all_of (left, [] (long double value) { return std::abs (value) <= gone; });
}

// Written so that a NaN proves nothing.
template <class Kind>
static std::optional<Proof> verify (const Kind& kind, std::vector<double> ray)
{
    if (!std::ranges::all_of (ray, [] (double entry) { return std::isfinite (entry); }))
        return std::nullopt;
    move_inside (kind.parts, ray);
    for (std::size_t i = 0; i < ray.size (); ++i)
        if (!std::isfinite (ray[i]) || !kind.allows_entry (i, ray[i]))
            return std::nullopt;
    Proof proof{.ray = std::move (ray)};
    proof.products = products_of (kind, proof.ray);
    proof.noisy.resize (proof.products.size ());
    std::vector<double> terms;
    if (!kind.parts.empty ())
        terms = own_terms (kind, proof.ray);
    for (std::size_t i = 0; i < proof.products.size (); ++i) {
        if (kind.trusts_product (i, proof.products[i]))
            continue;
        if (terms.empty ())
            terms = own_terms (kind, proof.ray);
        const double noise = std::abs (proof.products[i]);
        if (!(noise <= noise_tolerance * terms[i])) {
            if (kind.allows_product (i, proof.products[i]))
                continue;
            return std::nullopt;
        }
        proof.products[i] = 0;
        proof.noisy[i] = true;
        proof.noise_sum += noise;
        proof.noise_share = std::max (proof.noise_share, noise / terms[i]);
    }
    for (const ConePart& part : kind.parts)
        if (!is_inside (part, terms, proof))
            return std::nullopt;
    if (proof.noise_share > 0 && !noise_can_be_mended (kind, terms, proof))
        return std::nullopt;
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

// The ray after the least relative change of its entries that makes 0 what should be 0, each product taken relative to its terms. What
// is wrong by more than noise stays as it is.
template <class Kind>
static std::vector<double> refined (const Kind& kind, std::vector<double> ray)
{
    const std::vector<double> terms = terms_of_zeros (kind, ray);
    if (terms.empty ())
        return ray;
    LeastChange system (ray.size (), terms.size ());
    kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
        if (terms[to] > 0 && ray[from] != 0)
            system.add (to, from, static_cast<long double> (value) * ray[from] / terms[to]);
    });
    const std::vector<long double> change = system.solve ();
    for (std::size_t i = 0; i < change.size (); ++i)
        ray[i] = static_cast<double> (ray[i] * (1 + change[i]));
    return ray;
}

// The ray away from the boundaries of its cones, as far as its products can follow: refined, what was on a boundary by the way that it
// was found is inside then.
template <class Kind>
static std::vector<double> pushed (const Kind& kind, std::span<const double> ray)
{
    const std::size_t entries = ray.size ();
    const std::vector<double> terms = own_terms (kind, ray);
    std::vector<double> all (ray.begin (), ray.end ());
    append (products_of (kind, ray), all);
    push_inside (kind.parts, all);
    std::vector<double> inside (all.begin (), all.begin () + static_cast<std::ptrdiff_t> (entries));
    std::vector<bool> in_cone (terms.size ());
    LeastChange system (entries + 1, terms.size ());    // the last unknown scales all blocks
    for (const ConePart& part : kind.parts)
        for (const std::size_t place : part.places)
            if (place >= entries && terms[place - entries] > 0) {
                in_cone[place - entries] = true;
                system.add (place - entries, entries,
                            -static_cast<long double> (all[place]) / terms[place - entries]);
            }
    kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
        if (in_cone[to] && inside[from] != 0)
            system.add (to, from, static_cast<long double> (kind.sign * value) * inside[from] / terms[to]);
    });
    const std::vector<long double> change = system.solve ();
    for (std::size_t i = 0; i < entries && !change.empty (); ++i)
        inside[i] = static_cast<double> (inside[i] * (1 + change[i]));
    return inside;
}

// A ray is one up to its sign, and engines do not agree on it.
template <class Kind>
static std::optional<Proof> prove (const Kind& kind, std::span<const double> claimed)
{
    if (claimed.size () != kind.entries () ||
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
    constexpr double simplex = 1e-12, interior = 1e-7, face_of_matrices = 1e-4;
    for (const double small : {simplex, interior, face_of_matrices})
        for (const auto* way : ways) {
            const std::vector<double> clean = cleaned (kind, *way, small);
            if (std::optional<Proof> proof = verify_scaled (kind, clean))
                return proof;
            if (std::optional<Proof> proof =
                    verify_scaled (kind, cleaned (kind, refined (kind, clean), small)))
                return proof;
        }
    for (const auto* way : ways)
        if (std::optional<Proof> proof = verify_scaled (kind, refined (kind, pushed (kind, *way))))
            return proof;
    return std::nullopt;
}

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
