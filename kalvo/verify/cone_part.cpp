#include "kalvo/verify/cone_part.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace klv {

static std::vector<std::size_t> consecutive (std::size_t first, std::size_t count)
{
    std::vector<std::size_t> places (count);
    std::iota (places.begin (), places.end (), first);
    return places;
}

std::vector<ConePart> affine_parts (const Problem& problem, std::size_t first, bool duals)
{
    std::vector<ConePart> parts;
    std::size_t begin = 0;
    for (std::int32_t k = 0; k < problem.affine_constraint.count (); ++k) {
        const auto end =
            static_cast<std::size_t> (problem.affine_constraint.end[static_cast<std::size_t> (k)]);
        const Shape shape = shape_of (problem, k);
        parts.emplace_back (duals ? dual (shape) : shape, consecutive (first + begin, end - begin));
        begin = end;
    }
    return parts;
}

void add_matrix_parts (const SemidefiniteVariables& matrices, std::size_t first, std::vector<ConePart>& parts)
{
    for (std::int32_t j = 0; j < matrices.count (); ++j) {
        const auto begin = static_cast<std::size_t> (matrices.begin_of (j));
        parts.emplace_back (
            matrices.order[static_cast<std::size_t> (j)],
            consecutive (first + begin, static_cast<std::size_t> (matrices.begin_of (j + 1)) - begin));
    }
}

double ConePart::distance_of (std::span<const double> block) const
{
    constexpr double rounding = 2e-15;
    const double outside = order < 0 ? distance (shape (), 1, block) : matrix_distance (order, 1, block);
    if (outside > 0 || type != KLV_DOMAIN_SEMIDEFINITE_CONE)
        return outside;
    const std::vector<double> ones = identity (block.size ());
    const auto n = static_cast<std::int32_t> (std::ranges::count (ones, 1.0));
    std::vector<double> triangle (block.begin (), block.end ()), magnitudes (block.size ());
    for (std::size_t k = 0; k < triangle.size (); ++k) {
        triangle[k] /= order < 0 && ones[k] == 0 ? std::numbers::sqrt2 : 1;
        magnitudes[k] = std::abs (triangle[k]);
    }
    return relative_distance (n, triangle, magnitudes, 0) > rounding * n
               ? rounding * largest_magnitude (block)
               : outside;
}

// The worst change is known: against the direction that leads inside, and outward for the rest. An exponential cone's second factor may
// change for the worse either way.
bool ConePart::holds_beside (double share, std::span<const double> block,
                             std::span<const double> magnitudes) const
{
    const bool flat = type == KLV_DOMAIN_FREE || type == KLV_DOMAIN_ZERO || type == KLV_DOMAIN_NONNEGATIVE ||
                      type == KLV_DOMAIN_NONPOSITIVE || block.size () <= 2;
    if (flat)
        return true;
    std::vector<double> worst (block.begin (), block.end ());
    if (type == KLV_DOMAIN_SEMIDEFINITE_CONE) {
        const std::vector<double> ones = identity (block.size ());
        const auto n = static_cast<std::int32_t> (std::ranges::count (ones, 1.0));
        std::vector<double> terms (magnitudes.begin (), magnitudes.end ());
        for (std::size_t k = 0; k < worst.size (); ++k) {
            worst[k] -= ones[k] * n * share * terms[k];
            if (order < 0 && ones[k] == 0) {
                worst[k] /= std::numbers::sqrt2;
                terms[k] /= std::numbers::sqrt2;
            }
        }
        return relative_distance (n, worst, terms, share) <= 0;
    }
    const bool primal = type == KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE,
               exponential = primal || type == KLV_DOMAIN_DUAL_EXPONENTIAL_CONE;
    const std::vector<double> towards = !exponential ? direction_of ()
                                        : primal     ? std::vector{1.0, 0.0, -1.0}
                                                     : std::vector{1.0, 1.0, 0.0};
    for (std::size_t k = 0; k < worst.size (); ++k)
        worst[k] += share * magnitudes[k] *
                    (towards[k] != 0 ? -towards[k]
                     : exponential   ? 0
                                     : std::copysign (1.0, block[k]));
    const std::size_t scale = primal ? 1 : 2;
    if (exponential)
        worst[scale] -= share * magnitudes[scale];
    bool holds = distance (shape (), 1, worst) <= 0;
    if (exponential && magnitudes[scale] > 0) {
        worst[scale] += 2 * share * magnitudes[scale];
        holds = holds && distance (shape (), 1, worst) <= 0;
    }
    return holds;
}

void move_inside (const std::vector<ConePart>& parts, std::vector<double>& ray)
{
    for (const ConePart& part : parts) {
        if (std::ranges::any_of (part.places, [&] (std::size_t place) { return place >= ray.size (); }))
            continue;
        std::vector<double> block;
        for (const std::size_t place : part.places)
            block.push_back (ray[place]);
        const double outside = part.distance_of (block);
        if (part.type == KLV_DOMAIN_ZERO)
            for (const std::size_t place : part.places)
                ray[place] = 0;
        else if (outside > 0 && std::isfinite (outside)) {
            const std::vector<double> towards = part.direction_of ();
            std::vector<double> moved (block);
            for (double by = outside; std::isfinite (by) && part.distance_of (moved) > 0; by *= 2)
                for (std::size_t i = 0; i < block.size (); ++i)
                    moved[i] = block[i] + by * towards[i];
            for (std::size_t i = 0; i < block.size (); ++i)
                ray[part.places[i]] = moved[i];
        }
    }
}

void push_inside (const std::vector<ConePart>& parts, std::vector<double>& ray)
{
    constexpr double little = 1e-6;
    for (const ConePart& part : parts) {
        if (part.type == KLV_DOMAIN_FREE || part.type == KLV_DOMAIN_ZERO ||
            std::ranges::any_of (part.places, [&] (std::size_t place) { return place >= ray.size (); }))
            continue;
        double largest = 0;
        for (const std::size_t place : part.places)
            largest = std::max (largest, std::abs (ray[place]));
        const std::vector<double> towards = part.direction_of ();
        for (std::size_t i = 0; i < towards.size (); ++i)
            ray[part.places[i]] += little * largest * towards[i];
    }
}

double relative_distance (std::int32_t order, std::span<const double> triangle, std::span<const double> terms,
                          double noise_share)
{
    const auto n = static_cast<std::size_t> (order);
    std::vector<double> scale (n), scaled (triangle.size ());
    for (std::size_t j = 0, k = 0; j < n; k += n - j++)
        scale[j] = terms[k] > 0 ? 1 / std::sqrt (terms[k]) : 0;
    for (std::size_t j = 0, k = 0; j < n; ++j)
        for (std::size_t i = j; i < n; ++i, ++k) {
            scaled[k] = triangle[k] * scale[i] * scale[j];
            if ((scale[i] == 0 || scale[j] == 0) && !(std::abs (triangle[k]) <= noise_share * terms[k]))
                return infinity;
        }
    return matrix_distance (order, 1, scaled);
}

}
