// Duals are what they say: the change of the optimum for a change of a bound or a cost, against central differences.
#include "tests/library/model.h"

#include <numeric>
#include <random>

using model::inf;
using model::Model;
using model::Range;
using model::Slot;
using model::Task;

namespace {

// A random problem whose optimum is a vertex without ties, with rows and variables of every bound key.
Model random_problem (unsigned seed, bool maximize)
{
    std::mt19937 random (seed);
    std::uniform_real_distribution<double> entry (-1, 1), width (0.5, 2), price (0.5, 3);
    constexpr std::size_t n = 10, m = 10;
    Model problem;
    problem.maximize = maximize;
    problem.constant = entry (random);
    std::vector<double> center;
    for (std::size_t j = 0; j < n; ++j) {
        center.push_back (entry (random));
        problem.cost.push_back (entry (random) * price (random));
    }
    const auto around = [&] (std::size_t kind, double value) {
        switch (kind) {
        case 0:
            return Range{value - width (random), inf};
        case 1:
            return Range{-inf, value + width (random)};
        case 2:
            return Range{value, value};
        case 3:
            return Range{};
        default:
            return Range{value - width (random), value + width (random)};
        }
    };
    for (std::size_t i = 0; i < m; ++i) {
        std::vector<double> row;
        for (std::size_t j = 0; j < n; ++j)
            row.push_back (entry (random));
        problem.row_bounds.push_back (
            around (i % 5, std::inner_product (row.begin (), row.end (), center.begin (), 0.0)));
        problem.rows.push_back (row);
    }
    for (std::size_t j = 0; j < n; ++j)
        problem.bounds.push_back (around (j % 5, center[j]));
    // A box around everything keeps it bounded: a sum of all variables for the free ones too.
    for (std::size_t j = 0; j < n; ++j) {
        std::vector<double> row (n);
        row[j] = 1;
        problem.rows.push_back (row);
        problem.row_bounds.push_back ({center[j] - 3, center[j] + 3});
    }
    return problem;
}

double optimum (const Model& problem)
{
    Task task (problem);
    task.set ("KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_DUAL_SIMPLEX);
    EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
    const Slot point = model::slot (task, KLV_SOL_BAS);
    EXPECT_EQ (point.solution, KLV_SOLSTA_OPTIMAL);
    return point.primal;
}

// The slope of the optimum as `change` moves the problem by h, and whether it is one slope on both sides.
template <class Change>
double slope (const Model& problem, double at_rest, Change change, bool& smooth)
{
    constexpr double h = 1e-5;
    Model above = problem, below = problem;
    change (above, h);
    change (below, -h);
    const double forward = (optimum (above) - at_rest) / h;
    const double backward = (at_rest - optimum (below)) / h;
    smooth = std::abs (forward - backward) < 1e-4;
    return (forward + backward) / 2;
}

class Duals : public testing::TestWithParam<std::tuple<bool, unsigned>> {};

TEST_P (Duals, AreSlopesOfTheOptimum)
{
    const auto [maximize, seed] = GetParam ();
    const Model problem = random_problem (seed, maximize);
    Task task (problem);
    ASSERT_EQ (KLV_optimize (task), KLV_RES_OK);
    const Slot point = model::slot (task, KLV_SOL_BAS);
    model::expect_optimal (task, KLV_SOL_BAS);

    int compared = 0;
    const auto compare = [&] (auto change, double multiplier, const std::string& what) {
        bool smooth = false;
        const double found = slope (problem, point.primal, change, smooth);
        if (smooth) {
            EXPECT_NEAR (found, multiplier, 1e-4) << what;
            ++compared;
        }
    };
    const auto compare_bounds = [&] (std::vector<Range> Model::*bounds, const std::vector<double>& lower,
                                     const std::vector<double>& upper, const std::string& what) {
        for (std::size_t i = 0; i < lower.size (); ++i) {
            const Range bound = (problem.*bounds)[i];
            const std::string item = what + " " + std::to_string (i);
            if (bound.lower == bound.upper)
                compare ([&] (Model& p, double h) { (p.*bounds)[i] = {bound.lower + h, bound.upper + h}; },
                         lower[i] - upper[i], item + ", fixed");
            else {
                if (bound.lower > -inf)
                    compare ([&] (Model& p, double h) { (p.*bounds)[i].lower += h; }, lower[i],
                             item + ", lower");
                if (bound.upper < inf)
                    compare ([&] (Model& p, double h) { (p.*bounds)[i].upper += h; }, -upper[i],
                             item + ", upper");
            }
        }
    };
    compare_bounds (&Model::row_bounds, point.slc, point.suc, "row");
    compare_bounds (&Model::bounds, point.slx, point.sux, "variable");
    for (std::size_t j = 0; j < problem.cost.size (); ++j)
        compare ([&] (Model& p, double h) { p.cost[j] += h; }, point.xx[j], "cost " + std::to_string (j));
    EXPECT_GE (compared, 40);
}

INSTANTIATE_TEST_SUITE_P (BothSenses, Duals, testing::Combine (testing::Bool (), testing::Range (1u, 5u)));

}
