// How far points are from cones.
#pragma once

#include "kalvo/model/domain.h"
#include "kalvo/model/problem.h"

#include <array>
#include <span>
#include <vector>

namespace klv {

// A domain without its size. Exponents are as stated, and need not add up to 1; other domains than power cones do not look at them.
struct Shape {
    KLVdomaintype type = KLV_DOMAIN_FREE;
    std::span<const double> exponents = {};
};

Shape shape_of (const Problem& problem, std::int32_t affine_constraint);
Shape dual (const Shape& shape);

// A cone of variables.
class ConeOfVariables {
public:
    ConeOfVariables (const Problem& problem, std::int32_t cone);
    ConeOfVariables (const ConeOfVariables&) = delete;
    ConeOfVariables& operator= (const ConeOfVariables&) = delete;

    std::span<const std::int32_t> members () const { return members_; }
    Shape shape () const { return {type_, exponents_}; }
    std::vector<double> block (std::span<const double> of_variables) const;

private:
    std::span<const std::int32_t> members_;
    KLVdomaintype type_;
    std::array<double, 2> exponents_;
};

// The smallest amount by which sign * block has to move along a direction inside the cone to be in it, negative for what is
// inside (for matrices 0); in free and zero domains, which have no such direction, the largest magnitude that should be 0.
// Infinite for a block that is not finite. Directions: (1, 0 ...) quadratic; (1, 1, 0 ...) rotated; the identity; 1 for each
// entry of R+ and R-, for each factor of power cones and geometric means, and 0 for the rest; exponential_direction.
double distance (const Shape& shape, double sign, std::span<const double> block);
constexpr double exponential_direction[] = {1.258967, 0.556409, -1.051383};

// The direction for a block of this size (1 in free and zero domains), and that of a packed triangle.
std::vector<double> direction (const Shape& shape, std::size_t size);
std::vector<double> identity (std::size_t size);

// The same as `distance` for a symmetric matrix, given as its packed lower triangle.
double matrix_distance (std::int32_t order, double sign, std::span<const double> triangle);

double largest_magnitude (std::span<const double> block);

}
