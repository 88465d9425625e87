#include "kalvo/verify/distance.h"

#include "kalvo/verify/sum.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

extern "C" {    // NOLINTBEGIN(readability-identifier-naming): names of LAPACK
void dpotrf_ (const char* triangle, const int* n, double* a, const int* rows, int* info, std::size_t);
void dsyev_ (const char* job, const char* triangle, const int* n, double* a, const int* rows,
             double* eigenvalues, double* work, const int* length, int* info, std::size_t, std::size_t);
}    // NOLINTEND(readability-identifier-naming)

namespace klv {

Shape shape_of (const Problem& problem, std::int32_t affine_constraint)
{
    const std::int32_t domain =
        problem.affine_constraint.domain[static_cast<std::size_t> (affine_constraint)];
    return {static_cast<KLVdomaintype> (problem.domain.type[static_cast<std::size_t> (domain)]),
            problem.domain.exponents (domain)};
}

Shape dual (const Shape& shape)
{
    const auto type = [&] {
        switch (shape.type) {
        case KLV_DOMAIN_FREE:
            return KLV_DOMAIN_ZERO;
        case KLV_DOMAIN_ZERO:
            return KLV_DOMAIN_FREE;
        case KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE:
            return KLV_DOMAIN_DUAL_EXPONENTIAL_CONE;
        case KLV_DOMAIN_DUAL_EXPONENTIAL_CONE:
            return KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE;
        case KLV_DOMAIN_PRIMAL_POWER_CONE:
            return KLV_DOMAIN_DUAL_POWER_CONE;
        case KLV_DOMAIN_DUAL_POWER_CONE:
            return KLV_DOMAIN_PRIMAL_POWER_CONE;
        case KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE:
            return KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE;
        case KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE:
            return KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE;
        default:
            return shape.type;    // its own dual
        }
    };
    return {type (), shape.exponents};
}

ConeOfVariables::ConeOfVariables (const Problem& problem, std::int32_t cone)
    : members_ (problem.cone.members (cone)),
      type_ (domain_of_cone[problem.cone.type[static_cast<std::size_t> (cone)]])
{
    const double parameter = problem.cone.parameter[static_cast<std::size_t> (cone)];
    exponents_ = {parameter, 1 - parameter};
}

std::vector<double> ConeOfVariables::block (std::span<const double> of_variables) const
{
    std::vector<double> values;
    values.reserve (members_.size ());
    for (const std::int32_t member : members_)
        values.push_back (of_variables[static_cast<std::size_t> (member)]);
    return values;
}

double largest_magnitude (std::span<const double> block)
{
    double largest = 0;
    for (const double value : block)
        largest = std::isnan (value) ? infinity : std::max (largest, std::abs (value));
    return largest;
}

// Distances are computed on blocks times a power of two, so that no entry is larger than 1.
class Scaled {
public:
    Scaled (std::span<const double> block, double factor) : block_ (block), factor_ (factor) {}

    std::size_t size () const { return block_.size (); }
    double operator[] (std::size_t i) const { return factor_ * block_[i]; }
    double norm_from (std::size_t first) const
    {
        double squares = 0;
        for (std::size_t i = first; i < size (); ++i)
            squares += (*this)[i] * (*this)[i];
        return std::sqrt (squares);
    }
    double smallest (std::size_t count) const
    {
        double least = infinity;
        for (std::size_t i = 0; i < count; ++i)
            least = std::min (least, (*this)[i]);
        return least;
    }
    double largest () const
    {
        double most = -infinity;
        for (std::size_t i = 0; i < size (); ++i)
            most = std::max (most, (*this)[i]);
        return most;
    }

private:
    std::span<const double> block_;
    double factor_;
};

// Both take squares from each other without error, so that a small member counts beside large ones.
static double quadratic_distance (const Scaled& x)
{
    const double norm = x.norm_from (1);
    if (x[0] <= 0)
        return norm - x[0];
    Sum excess;
    for (std::size_t i = 1; i < x.size (); ++i)
        excess.add_product (x[i], x[i]);
    excess.add_product (-x[0], x[0]);
    return excess.value () / (norm + x[0]);
}

static double rotated_distance (const Scaled& x)
{
    const double middle = (x[0] + x[1]) / 2, half = (x[0] - x[1]) / 2, norm = x.norm_from (2);
    const double root = std::hypot (half, norm / std::numbers::sqrt2);
    if (middle <= 0)
        return root - middle;
    Sum excess;    // root^2 - middle^2
    for (std::size_t i = 2; i < x.size (); ++i)
        excess.add_product (x[i] / 2, x[i]);
    excess.add_product (-x[0], x[1]);
    return excess.value () / (root + middle);
}

// The smallest t for which x + t d is in the primal exponential cone. The log of the cone's inequality is concave and rises along
// d; 16 d is inside by more than any x of entries up to 4 can change.
static double exponential_distance (const double (&x)[3], const double (&d)[3])
{
    const auto is_inside = [&] (double t) {
        const double x1 = x[0] + t * d[0], x2 = x[1] + t * d[1], x3 = x[2] + t * d[2];
        if (x2 <= 0)
            return x2 == 0 && x1 >= 0 && x3 <= 0;
        return x1 > 0 && x2 * (std::log (x1) - std::log (x2)) >= x3;
    };
    double outside = -16, inside = 16;
    for (const double edge : {-x[0] / d[0], -x[1] / d[1]})
        outside = std::max (outside, edge);
    if (is_inside (outside))
        return outside;
    for (;;) {
        const double middle = std::midpoint (outside, inside);
        if (middle == outside || middle == inside)
            return inside;
        (is_inside (middle) ? inside : outside) = middle;
    }
}

static double primal_exponential_distance (const Scaled& x)
{
    return exponential_distance ({x[0], x[1], x[2]}, exponential_direction);
}

// (a, b, c) is in the dual cone when (a, -c, c - b) is in the primal one.
static double dual_exponential_distance (const Scaled& z)
{
    constexpr auto& d = exponential_direction;
    return exponential_distance ({z[0], -z[2], z[2] - z[1]}, {d[0], -d[2], d[2] - d[1]});
}

// For the product of powers of the factors, each divided by its exponent in a dual cone. With v the log of what the smallest
// factor is moved to, the log of the product is convex in v and rises: from the right Newton's steps never pass the root.
template <class Exponent>
static double power_distance (const Scaled& x, std::size_t factors, bool is_dual, const Exponent& exponent)
{
    const double norm = x.norm_from (factors), smallest = x.smallest (factors);
    if (norm == 0)
        return -smallest;
    double constant = -std::log (norm);
    for (std::size_t i = 0; i < factors && is_dual; ++i)
        if (exponent (i) > 0)    // not too small for a number
            constant -= exponent (i) * std::log (exponent (i));
    double v = std::log (norm);
    for (int round = 0; round < 100; ++round) {
        const double moved = std::exp (v);
        double excess = constant, slope = 0;
        for (std::size_t i = 0; i < factors; ++i) {
            const double factor = x[i] - smallest + moved;
            excess += exponent (i) * (factor > 0 ? std::log (factor) : v);
            slope += exponent (i) * (factor > 0 ? moved / factor : 1);
        }
        const double step = excess / slope;
        if (!(step > 0))
            break;
        v -= step;
        if (step < 1e-15 * (1 - v))
            break;
    }
    return std::exp (v) - smallest;
}

// The smallest eigenvalue, negated; 0 for what Cholesky's factorisation shows to be positive definite.
static double eigenvalue_distance (std::int32_t order, std::vector<double>&& lower)
{
    if (order <= 1)
        return order == 0 ? 0 : -lower[0];
    std::vector<double> matrix = lower;
    int info = 0;
    dpotrf_ ("L", &order, matrix.data (), &order, &info, 1);
    if (info == 0)
        return 0;
    const std::size_t n = static_cast<std::size_t> (order);
    constexpr std::size_t block = 64;
    std::vector<double> eigenvalues (n), work ((block + 2) * n);
    const int length = static_cast<int> (work.size ());
    dsyev_ ("N", "L", &order, lower.data (), &order, eigenvalues.data (), work.data (), &length, &info, 1, 1);
    return info == 0 && !std::isnan (eigenvalues[0]) ? std::max (-eigenvalues[0], 0.0) : infinity;
}

static double packed_distance (std::int32_t order, const Scaled& x, double off_diagonal)
{
    const auto n = static_cast<std::size_t> (order);
    std::vector<double> lower (n * n);
    std::size_t k = 0;
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = j; i < n; ++i)
            lower[j * n + i] = (i == j ? 1 : off_diagonal) * x[k++];
    return eigenvalue_distance (order, std::move (lower));
}

static std::int32_t order_of (std::size_t size)
{
    return static_cast<std::int32_t> (std::lround ((std::sqrt (8 * static_cast<double> (size) + 1) - 1) / 2));
}

static double scaled_distance (const Shape& shape, const Scaled& x)
{
    const bool is_dual =
        shape.type == KLV_DOMAIN_DUAL_POWER_CONE || shape.type == KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE;
    switch (shape.type) {
    case KLV_DOMAIN_FREE:
        return 0;
    case KLV_DOMAIN_NONNEGATIVE:
        return -x.smallest (x.size ());
    case KLV_DOMAIN_NONPOSITIVE:
        return x.largest ();
    case KLV_DOMAIN_QUADRATIC_CONE:
        return quadratic_distance (x);
    case KLV_DOMAIN_ROTATED_QUADRATIC_CONE:
        return rotated_distance (x);
    case KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE:
        return primal_exponential_distance (x);
    case KLV_DOMAIN_DUAL_EXPONENTIAL_CONE:
        return dual_exponential_distance (x);
    case KLV_DOMAIN_PRIMAL_POWER_CONE:
    case KLV_DOMAIN_DUAL_POWER_CONE: {
        const double sum = std::accumulate (shape.exponents.begin (), shape.exponents.end (), 0.0);
        return power_distance (x, shape.exponents.size (), is_dual,
                               [&] (std::size_t i) { return shape.exponents[i] / sum; });
    }
    case KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE:
    case KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE: {
        const std::size_t factors = x.size () - 1;
        return power_distance (x, factors, is_dual,
                               [&] (std::size_t) { return 1 / static_cast<double> (factors); });
    }
    case KLV_DOMAIN_SEMIDEFINITE_CONE:
        return packed_distance (order_of (x.size ()), x, 1 / std::numbers::sqrt2);
    default:
        return std::max (x.largest (), -x.smallest (x.size ()));
    }
}

// The distance of the block after scaling it; distances grow with their block.
template <class Function>
static double by_scaling (double sign, std::span<const double> block, const Function& function)
{
    const double largest = largest_magnitude (block);
    if (!(largest < infinity))
        return infinity;
    if (largest == 0)
        return 0;
    const int exponent = std::clamp (std::ilogb (largest) + 1, -1000, 1023);
    const double scaled = function (Scaled (block, sign * std::ldexp (1.0, -exponent)));
    return std::isnan (scaled) ? infinity : std::ldexp (scaled, exponent);
}

double distance (const Shape& shape, double sign, std::span<const double> block)
{
    return by_scaling (sign, block, [&] (const Scaled& x) { return scaled_distance (shape, x); });
}

double matrix_distance (std::int32_t order, double sign, std::span<const double> triangle)
{
    return by_scaling (sign, triangle, [&] (const Scaled& x) { return packed_distance (order, x, 1); });
}

static std::vector<double> leading_ones (std::size_t size, std::size_t ones)
{
    std::vector<double> direction (size);
    std::fill_n (direction.begin (), ones, 1.0);
    return direction;
}

std::vector<double> identity (std::size_t size)
{
    std::vector<double> direction (size);
    std::size_t k = 0;
    for (auto left = static_cast<std::size_t> (order_of (size)); left > 0; k += left--)
        direction[k] = 1;
    return direction;
}

std::vector<double> direction (const Shape& shape, std::size_t size)
{
    switch (shape.type) {
    case KLV_DOMAIN_NONPOSITIVE:
        return std::vector<double> (size, -1.0);
    case KLV_DOMAIN_QUADRATIC_CONE:
        return leading_ones (size, 1);
    case KLV_DOMAIN_ROTATED_QUADRATIC_CONE:
        return leading_ones (size, 2);
    case KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE:
    case KLV_DOMAIN_DUAL_EXPONENTIAL_CONE:
        return {std::begin (exponential_direction), std::end (exponential_direction)};
    case KLV_DOMAIN_PRIMAL_POWER_CONE:
    case KLV_DOMAIN_DUAL_POWER_CONE:
        return leading_ones (size, shape.exponents.size ());
    case KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE:
    case KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE:
        return leading_ones (size, size - 1);
    case KLV_DOMAIN_SEMIDEFINITE_CONE:
        return identity (size);
    default:
        return leading_ones (size, size);
    }
}

}
