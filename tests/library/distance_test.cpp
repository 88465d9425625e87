// Distances from cones, against membership by definition.
#include "kalvo/verify/distance.h"
#include "tests/library/model.h"

#include <cmath>
#include <random>

namespace {

using klv::Shape;
using model::inf, model::Values;
constexpr double nan = std::numeric_limits<double>::quiet_NaN ();
constexpr double power_of_3[] = {1, 2};

// Membership by definition, in long double.
bool is_member (const Shape& shape, const std::vector<long double>& x)
{
    const auto norm = [&] (std::size_t first) {
        long double squares = 0;
        for (std::size_t i = first; i < x.size (); ++i)
            squares += x[i] * x[i];
        return std::sqrt (squares);
    };
    const auto product = [&] (std::size_t factors, auto exponent, bool dual) {
        long double log = 0;
        for (std::size_t i = 0; i < factors; ++i) {
            if (x[i] < 0)
                return false;
            log += exponent (i) * std::log (x[i] / (dual ? exponent (i) : 1));
        }
        return norm (factors) == 0 || log >= std::log (norm (factors));
    };
    const bool dual =
        shape.type == KLV_DOMAIN_DUAL_POWER_CONE || shape.type == KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE;
    switch (shape.type) {
    case KLV_DOMAIN_QUADRATIC_CONE:
        return x[0] >= norm (1);
    case KLV_DOMAIN_ROTATED_QUADRATIC_CONE:
        return x[0] >= 0 && x[1] >= 0 && 2 * x[0] * x[1] >= norm (2) * norm (2);
    case KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE:
        return x[1] > 0 ? x[0] >= x[1] * std::exp (x[2] / x[1]) : x[1] == 0 && x[0] >= 0 && x[2] <= 0;
    case KLV_DOMAIN_DUAL_EXPONENTIAL_CONE:
        return x[2] < 0 ? x[0] >= -x[2] * std::exp (x[1] / x[2] - 1) : x[2] == 0 && x[0] >= 0 && x[1] >= 0;
    case KLV_DOMAIN_SEMIDEFINITE_CONE:
        return x[0] >= 0 && x[2] >= 0 && 2 * x[0] * x[2] >= x[1] * x[1];
    case KLV_DOMAIN_PRIMAL_POWER_CONE:
    case KLV_DOMAIN_DUAL_POWER_CONE:
        return product (2, [&] (std::size_t i) { return shape.exponents[i] / 3.0L; }, dual);
    default:
        return product (
            x.size () - 1, [&] (std::size_t) { return 1.0L / static_cast<long double> (x.size () - 1); },
            dual);
    }
}

TEST (Distance, IsTheSmallestMoveIntoTheCone)
{
    std::mt19937 random (5);
    std::normal_distribution<double> normal;
    std::uniform_int_distribution<int> pick (0, 9);
    for (int type = KLV_DOMAIN_QUADRATIC_CONE; type < KLV_DOMAIN_COUNT; ++type)
        for (int round = 0; round < 2000; ++round) {
            const Shape shape{static_cast<KLVdomaintype> (type), power_of_3};
            Values x (3);
            const double scales[] = {0, 1e-300, 1e-12, 1e-3, 1, 1, 1, 1e3, 1e12, 1e300};
            const double common = scales[static_cast<std::size_t> (pick (random))];
            for (double& value : x)
                value = normal (random) *
                        (round % 2 != 0 ? common : scales[static_cast<std::size_t> (pick (random))]);
            const double t = klv::distance (shape, 1, x), size = klv::largest_magnitude (x),
                         margin = 1e-13 * size;
            const Values towards = klv::direction (shape, 3);
            const auto moved = [&] (double by) {
                std::vector<long double> y (3);
                for (std::size_t i = 0; i < 3; ++i)
                    y[i] = x[i] + static_cast<long double> (by) * towards[i];
                return is_member (shape, y);
            };
            if (type == KLV_DOMAIN_SEMIDEFINITE_CONE && t == 0) {
                EXPECT_TRUE (moved (margin));
                continue;
            }
            EXPECT_TRUE (size == 0 || (moved (t + margin) && !moved (t - margin)))
                << type << ": " << x[0] << ' ' << x[1] << ' ' << x[2] << " by " << t;
            EXPECT_EQ (klv::distance (shape, -1, Values{-x[0], -x[1], -x[2]}), t);
        }
    for (int type = KLV_DOMAIN_ZERO; type < KLV_DOMAIN_COUNT; ++type)
        for (const double wrong : {nan, inf, -inf})
            for (std::size_t i = 0; i < 3; ++i) {
                Values x{3, 1, 0};
                x[i] = wrong;
                EXPECT_EQ (klv::distance ({static_cast<KLVdomaintype> (type), power_of_3}, 1, x), inf);
            }
    // On the boundary but for the last member, whose square is a part in 1e18 of the others'.
    EXPECT_NEAR (klv::distance ({KLV_DOMAIN_QUADRATIC_CONE, {}}, 1, Values{5e8, 4e8, 3e8, 1}), 1e-9, 1e-15);
    EXPECT_NEAR (klv::distance ({KLV_DOMAIN_ROTATED_QUADRATIC_CONE, {}}, 1, Values{5e8, 5e8, 7e8, 1e8, 1}),
                 5e-10, 1e-15);
    EXPECT_NEAR (klv::matrix_distance (3, 1, Values{1, 2, 0, 1, 0, 5}), 1, 1e-15);
    EXPECT_EQ (klv::matrix_distance (0, 1, {}), 0);
}

}
