// Parts of a ray that lie in a cone.
#pragma once

#include "kalvo/verify/distance.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace klv {

// Entries and products that lie in a cone, by their places: products stand after all entries.
struct ConePart {
    KLVdomaintype type = KLV_DOMAIN_SEMIDEFINITE_CONE;
    std::vector<double> exponents = {};
    std::int32_t order = -1;    // of the matrix whose packed triangle this is
    std::vector<std::size_t> places = {};

    ConePart (const Shape& shape, std::vector<std::size_t> where)
        : type (shape.type),
          exponents (shape.exponents.begin (), shape.exponents.end ()),
          places (std::move (where))
    {}
    ConePart (std::int32_t matrix_order, std::vector<std::size_t> where)
        : order (matrix_order), places (std::move (where))
    {}
    Shape shape () const { return {type, exponents}; }
    // Not positive only where the block is inside beyond doubt, however its members differ in size.
    double distance_of (std::span<const double> block) const;
    // Whether the block stays inside whatever its members change by, each at most this share of its magnitude. Cones with flat sides only
    // are left out: there it always does but for noise.
    bool holds_beside (double share, std::span<const double> block, std::span<const double> magnitudes) const;
    std::vector<double> direction_of () const
    {
        return order < 0 ? direction (shape (), places.size ()) : identity (places.size ());
    }

    // Function: of each product that is an entry of a matrix, off the diagonal, in a row or column without terms on the diagonal.
    template <class Function>
    void each_flat_entry (std::size_t entries, std::span<const double> terms, const Function& function) const
    {
        if (order <= 1 || places.front () < entries)
            return;
        const auto n = static_cast<std::size_t> (order);
        std::vector<bool> flat (n);
        for (std::size_t j = 0, k = 0; j < n; k += n - j++)
            flat[j] = terms[places[k] - entries] == 0;
        for (std::size_t j = 0, k = 0; j < n; ++j)
            for (std::size_t i = j; i < n; ++i, ++k)
                if (i != j && (flat[i] || flat[j]))
                    function (places[k] - entries);
    }
};

// The parts of affine conic constraints (their duals), and of semidefinite variables, whose places begin at `first`.
std::vector<ConePart> affine_parts (const Problem& problem, std::size_t first, bool duals);
void add_matrix_parts (const SemidefiniteVariables& matrices, std::size_t first,
                       std::vector<ConePart>& parts);

// Moves the parts that are entries alone into their cones, and no less: a member that is small beside the others may be what a proof
// needs.
void move_inside (const std::vector<ConePart>& parts, std::vector<double>& ray);

// Moves these parts away from their cones' boundaries, by little beside their largest members.
void push_inside (const std::vector<ConePart>& parts, std::vector<double>& ray);

// How far a matrix, given as its packed lower triangle, is from being positive semidefinite, each diagonal entry relative to its terms.
// Rows without such terms must be 0, but for noise, at most this share of their entries' terms, and are left out.
double relative_distance (std::int32_t order, std::span<const double> triangle, std::span<const double> terms,
                          double noise_share);

}
