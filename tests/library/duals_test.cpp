// Duals are what they say: the change of the optimum for a change of a bound or a cost, against central differences.
#include "tests/library/model.h"

#include <random>

using model::inf;
using model::Model;
using model::Range;
using model::Slot;

namespace {

// A random problem whose optimum is a vertex without ties, with rows and variables of every bound key.
Model random_problem (unsigned seed, bool maximize)
{
    std::mt19937 random (seed);
    std::uniform_real_distribution<double> entry (-1, 1), width (0.5, 2);
    constexpr std::size_t n = 10;
    Model problem{.maximize = maximize, .constant = entry (random)};
    model::Values center;
    for (std::size_t j = 0; j < n; ++j) {
        center.push_back (entry (random));
        problem.cost.push_back (3 * entry (random));
    }
    const auto around = [&] (double value, std::size_t kind) {
        const double lower = value - width (random), upper = value + width (random);
        const Range kinds[] = {{lower, inf}, {-inf, upper}, {value, value}, {}, {lower, upper}};
        return kinds[kind % 5];
    };
    for (std::size_t j = 0; j < n; ++j) {
        problem.bounds.push_back (around (center[j], j));
        problem.rows.emplace_back ();
        for (std::size_t k = 0; k < n; ++k)
            problem.rows.back ().push_back (entry (random));
        problem.row_bounds.push_back (around (model::product (problem.rows.back (), center), j));
    }
    // A box around everything keeps it bounded.
    for (std::size_t j = 0; j < n; ++j) {
        problem.rows.emplace_back (n)[j] = 1;
        problem.row_bounds.push_back ({center[j] - 3, center[j] + 3});
    }
    return problem;
}

double optimum (const Model& problem)
{
    const model::Task task (problem, "OPTIMIZER 1");
    EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
    const Slot point = model::slot (task, KLV_SOL_BAS);
    EXPECT_EQ (point.solution, KLV_SOLSTA_OPTIMAL);
    return point.primal;
}

// Compares the slope of the optimum, as `change` moves the problem, where it is one slope on both sides.
template <class Change>
int compare (const Model& problem, double at_rest, Change change, double multiplier, const char* what)
{
    constexpr double h = 1e-5;
    Model above = problem, below = problem;
    change (above, h);
    change (below, -h);
    const double forward = (optimum (above) - at_rest) / h, backward = (at_rest - optimum (below)) / h;
    if (std::abs (forward - backward) > 1e-4)
        return 0;
    EXPECT_NEAR ((forward + backward) / 2, multiplier, 1e-4) << what;
    return 1;
}

void expect_slopes (const Model& problem)
{
    const model::Task task (problem);
    ASSERT_EQ (KLV_optimize (task), KLV_RES_OK);
    const Slot point = model::slot (task, KLV_SOL_BAS);
    model::expect_optimal (task, KLV_SOL_BAS);

    int compared = 0;
    const auto note = [&] (auto change, double multiplier, const char* what) {
        compared += compare (problem, point.primal, change, multiplier, what);
    };
    const auto compare_bounds = [&] (auto bounds, const model::Values& lower, const model::Values& upper) {
        for (std::size_t i = 0; i < lower.size (); ++i) {
            const auto move = [=] (double below, double above) {
                return [=] (Model& p, double h) {
                    (p.*bounds)[i].lower += below * h;
                    (p.*bounds)[i].upper += above * h;
                };
            };
            const Range bound = (problem.*bounds)[i];
            if (bound.lower == bound.upper)
                note (move (1, 1), lower[i] - upper[i], "fixed");
            else {
                note (move (1, 0), lower[i], "lower");
                note (move (0, 1), -upper[i], "upper");
            }
        }
    };
    compare_bounds (&Model::row_bounds, point.slc, point.suc);
    compare_bounds (&Model::bounds, point.slx, point.sux);
    for (std::size_t j = 0; j < problem.cost.size (); ++j)
        note ([&] (Model& p, double h) { p.cost[j] += h; }, point.xx[j], "cost");
    EXPECT_GE (compared, 50);
}

TEST (Duals, AreSlopesOfTheOptimum)
{
    for (const bool maximize : {false, true})
        for (unsigned seed = 1; seed < 5; ++seed) {
            SCOPED_TRACE (testing::Message () << "seed " << seed << (maximize ? ", maximising" : ""));
            expect_slopes (random_problem (seed, maximize));
        }
}

}
