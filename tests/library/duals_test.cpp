// Duals are what they say: the change of the optimum for a change of a bound or a cost, against central differences.
#include "tests/library/model.h"

#include <random>

using model::Values;

namespace {

// A random problem whose optimum is a vertex without ties, with rows and variables of every bound key.
klv::Problem random_problem (unsigned seed, bool maximize)
{
    std::mt19937 random (seed);
    std::uniform_real_distribution<double> entry (-1, 1), width (0.5, 2);
    constexpr int n = 10;
    const auto around = [&] (double value, int kind) {
        const std::string lower = std::to_string (value - width (random)),
                          upper = std::to_string (value + width (random));
        const std::string kinds[] = {lower + "..", ".." + upper, "=" + std::to_string (value), "..",
                                     lower + ".." + upper};
        return ' ' + kinds[kind % 5];
    };
    std::string costs, variables, rows, box, place;
    Values center;
    for (int j = 0; j < n; ++j, place += " 0") {
        center.push_back (entry (random));
        costs += ' ' + std::to_string (3 * entry (random));
        variables += around (center.back (), j);
        // A box around everything keeps it bounded.
        box += ";" + place + " 1 in " + std::to_string (center.back () - 3) + ".." +
               std::to_string (center.back () + 3);
    }
    for (int i = 0; i < n; ++i) {
        double value = 0;
        rows += ';';
        for (const double at : center) {
            rows += ' ' + std::to_string (entry (random));
            value += at * std::stod (rows.substr (rows.rfind (' ')));
        }
        rows += " in" + around (value, i);
    }
    return model::parse ((maximize ? "max" : "min") + costs + " +0.25;" + variables + rows + box);
}

double optimum (const klv::Problem& problem)
{
    const model::Task task (problem, "OPTIMIZER 1");
    EXPECT_EQ (model::optimized (task), "OK bas OPTIMAL");
    return model::slot (task, KLV_SOL_BAS).primal;
}

// Whether the optimum has one slope as these numbers of the problem move together, and then the one that is said.
bool compare (klv::Problem& problem, double at_rest, const std::vector<double*>& numbers, double said)
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

int compare_bounds (klv::Problem& problem, double at_rest, klv::Bounds& bounds, const Values& lower,
                    const Values& upper)
{
    int compared = 0;
    for (std::size_t i = 0; i < lower.size (); ++i) {
        double &below = bounds.lower[i], &above = bounds.upper[i];
        if (bounds.key[i] == KLV_BK_FX)
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
            klv::Problem problem = random_problem (seed, maximize);
            const model::Task task (problem);
            ASSERT_EQ (model::optimized (task), "OK itr OPTIMAL bas OPTIMAL");
            const model::Slot point = model::slot (task, KLV_SOL_BAS);
            int compared = compare_bounds (problem, point.primal, problem.constraint, point.slc, point.suc) +
                           compare_bounds (problem, point.primal, problem.variable, point.slx, point.sux);
            for (std::size_t j = 0; j < problem.cost.size (); ++j)
                compared += compare (problem, point.primal, {&problem.cost[j]}, point.xx[j]);
            EXPECT_GE (compared, 50);
        }
}

}
