// Duals are what they say: the change of the optimum for a change of a bound or a cost, against central differences.
#include "tests/library/model.h"

#include <random>

using model::inf;
using model::Model;
using model::Range;
using model::Values;

namespace {

// A random problem whose optimum is a vertex without ties, with rows and variables of every bound key.
Model random_problem (unsigned seed, bool maximize)
{
    std::mt19937 random (seed);
    std::uniform_real_distribution<double> entry (-1, 1), width (0.5, 2);
    constexpr std::size_t n = 10;
    Model problem{.maximize = maximize, .constant = entry (random)};
    Values center;
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
        problem.row_bounds.push_back (around (
            std::inner_product (center.begin (), center.end (), problem.rows.back ().begin (), 0.0), j));
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
    EXPECT_EQ (model::optimized (task), "OK bas OPTIMAL");
    return model::slot (task, KLV_SOL_BAS).primal;
}

// Whether the optimum has one slope as these numbers of the problem move together, and then the one that is said.
bool compare (Model& problem, double at_rest, const std::vector<double*>& numbers, double said)
{
    constexpr double h = 1e-5;
    const auto move = [&] (double by) {
        for (double* number : numbers)
            *number += by;
    };
    move (h);
    const double forward = (optimum (problem) - at_rest) / h;
    move (-2 * h);
    const double backward = (at_rest - optimum (problem)) / h;
    move (h);
    const bool smooth = std::abs (forward - backward) < 1e-4;
    EXPECT_TRUE (!smooth || std::abs (forward - said) < 1e-4) << "slope " << forward << ", said " << said;
    return smooth;
}

int compare_bounds (Model& problem, double at_rest, std::vector<Range>& bounds, const Values& lower,
                    const Values& upper)
{
    int compared = 0;
    for (std::size_t i = 0; i < lower.size (); ++i) {
        double &below = bounds[i].lower, &above = bounds[i].upper;
        if (below == above)
            compared += compare (problem, at_rest, {&below, &above}, lower[i] - upper[i]);
        else
            compared += compare (problem, at_rest, {&below}, lower[i]) +
                        compare (problem, at_rest, {&above}, -upper[i]);
    }
    return compared;
}

TEST (Duals, AreSlopesOfTheOptimum)
{
    for (const bool maximize : {false, true})
        for (unsigned seed = 1; seed < 5; ++seed) {
            SCOPED_TRACE (testing::Message () << "seed " << seed << (maximize ? ", maximising" : ""));
            Model problem = random_problem (seed, maximize);
            const model::Task task (problem);
            ASSERT_EQ (model::optimized (task), "OK itr OPTIMAL bas OPTIMAL");
            const model::Slot point = model::slot (task, KLV_SOL_BAS);
            int compared = compare_bounds (problem, point.primal, problem.row_bounds, point.slc, point.suc) +
                           compare_bounds (problem, point.primal, problem.bounds, point.slx, point.sux);
            for (std::size_t j = 0; j < problem.cost.size (); ++j)
                compared += compare (problem, point.primal, {&problem.cost[j]}, point.xx[j]);
            EXPECT_GE (compared, 50);
        }
}

}
