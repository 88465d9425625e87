#include "kalvo/verify/proof.h"

#include "kalvo/sparse/index.h"
#include "kalvo/verify/cone_part.h"
#include "kalvo/verify/products.h"
#include "kalvo/verify/refinement.h"
#include "kalvo/verify/sum.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace klv {

// Noise is at most this part of the terms that it is left of: a few units of rounding, as a ray of double precision leaves, for a matrix
// times its order. The value must exceed what its terms can hide.
constexpr double noise_tolerance = 2e-15;
constexpr double value_tolerance = 1e-9;

void append (std::span<const double> values, std::vector<double>& ray)
{
    ray.insert (ray.end (), values.begin (), values.end ());
}

template <class Kind>
std::vector<double> products_of (const Kind& kind, std::span<const double> ray)
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
std::vector<double> own_terms (const Kind& kind, std::span<const double> ray)
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

template <class Kind>
bool should_be_zero (const Kind& kind, std::size_t i, double product, double terms)
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

template <class Kind>
std::optional<Proof> prove (const Kind& kind, std::span<const double> claimed)
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

template std::vector<double> products_of (const Multipliers& kind, std::span<const double> ray);
template std::vector<double> own_terms (const Multipliers& kind, std::span<const double> ray);
template bool should_be_zero (const Multipliers& kind, std::size_t i, double product, double terms);
template std::optional<Proof> prove (const Multipliers& kind, std::span<const double> claimed);
template std::optional<Proof> prove (const Direction& kind, std::span<const double> claimed);

}
