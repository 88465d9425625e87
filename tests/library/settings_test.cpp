// Each setting does something: the row tells what would be the same if it did not.
#include "tests/library/model.h"

#include <algorithm>
#include <set>

namespace {

using model::dense;
using model::knapsack;
using model::Model;
using model::Task;

TEST (Settings, LimitsEndTheRunWithTheirCode)
{
    struct Limit {
        const char* settings;
        int code;
        bool integer = false;
    };
    for (const Limit& limit : {Limit{"OPTIMIZER 1 SIMPLEX_ITERATION_LIMIT 0", KLV_RES_ITERATION_LIMIT},
                               {"OPTIMIZER 1 SIMPLEX_ITERATION_LIMIT 5", KLV_RES_ITERATION_LIMIT},
                               {"OPTIMIZER 0 SIMPLEX_ITERATION_LIMIT 5", KLV_RES_ITERATION_LIMIT},
                               {"OPTIMIZER 3 INTPNT_ITERATION_LIMIT 2", KLV_RES_ITERATION_LIMIT},
                               {"OPTIMIZER 1 TIME_LIMIT 0", KLV_RES_TIME_LIMIT},
                               {"OPTIMIZER 3 TIME_LIMIT 0", KLV_RES_TIME_LIMIT},
                               {"TIME_LIMIT 0", KLV_RES_TIME_LIMIT, true},
                               {"TIME_LIMIT 0.1 MIP_RELATIVE_GAP 0", KLV_RES_TIME_LIMIT, true},
                               {"MIP_NODE_LIMIT 1", KLV_RES_NODE_LIMIT, true},
                               {"MIP_SOLUTION_LIMIT 0", KLV_RES_SOLUTION_LIMIT, true},
                               {"MIP_SOLUTION_LIMIT 2", KLV_RES_SOLUTION_LIMIT, true},
                               {"OBJECTIVE_LIMIT 10", KLV_RES_OBJECTIVE_LIMIT, true}}) {
        SCOPED_TRACE (limit.settings);
        const Task task (limit.integer ? knapsack (10, 60) : dense (60, 90), limit.settings);
        EXPECT_EQ (KLV_optimize (task), limit.code) << task.last_error ();
        for (const int which : {KLV_SOL_ITR, KLV_SOL_BAS, KLV_SOL_INT})
            if (const model::Slot found = model::slot (task, which); found.defined) {
                EXPECT_NE (found.solution, KLV_SOLSTA_OPTIMAL);
                EXPECT_NE (found.solution, KLV_SOLSTA_INTEGER_OPTIMAL);
                if (found.solution == KLV_SOLSTA_PRIMAL_FEASIBLE)
                    model::expect_feasible (model::stated (task), found);
            }
        if (limit.settings == std::string ("MIP_SOLUTION_LIMIT 2")) {
            const model::Slot incumbent = model::slot (task, KLV_SOL_INT);
            EXPECT_EQ (incumbent.solution, KLV_SOLSTA_PRIMAL_FEASIBLE);
            EXPECT_GE (task.information ("MIP_SOLUTIONS"), 2);
            EXPECT_GE (task.information ("MIP_BOUND"), incumbent.primal);
            EXPECT_GT (task.information ("MIP_RELATIVE_GAP"), 1e-4);
        }
    }
}

// Iterations and nodes of runs that all find the optimum.
std::vector<double> work (const Model& problem, const std::vector<std::string>& settings)
{
    std::vector<double> found;
    for (const std::string& each : settings) {
        const Task task (problem, "OPTIMIZER 1 MAX_THREADS 1 " + each);
        EXPECT_EQ (KLV_optimize (task), 0) << each;
        if (model::slot (task, KLV_SOL_INT).defined)
            EXPECT_EQ (model::slot (task, KLV_SOL_INT).solution, KLV_SOLSTA_INTEGER_OPTIMAL);
        else
            model::expect_optimal (task, KLV_SOL_BAS);
        found.push_back (task.information ("SIMPLEX_ITERATIONS") + 1e6 * task.information ("MIP_NODES"));
    }
    return found;
}

TEST (Settings, ChangeTheWayAndNotTheAnswer)
{
    // Presolve leaves nothing of a chain to iterate on.
    const auto chain =
        work (model::parse ("min 1 1 1; .. .. ..; 1 0 0 in 1..1; -2 1 0 in 0..0; 0 -2 1 in 0..0"),
              {"PRESOLVE 0", "PRESOLVE 1", "PRESOLVE 2"});
    EXPECT_GT (chain[0], 0);
    EXPECT_EQ (chain[1] + chain[2], 0);

    Model badly_scaled = dense (60, 90);
    for (std::size_t i = 0; i < badly_scaled.rows.size (); ++i) {
        const double factor = std::pow (10.0, static_cast<double> (i % 7) - 3);
        for (double& value : badly_scaled.rows[i])
            value *= factor;
        badly_scaled.row_bounds[i].upper *= factor;
    }
    const auto differ = [] (const std::vector<double>& counts) {
        return std::set (counts.begin (), counts.end ()).size () > 1;
    };
    EXPECT_TRUE (
        differ (work (badly_scaled, {"SIMPLEX_PRICING 1", "SIMPLEX_PRICING 2", "SIMPLEX_PRICING 3"})));
    EXPECT_TRUE (differ (work (badly_scaled, {"SCALING 0", "SCALING 3", "SCALING 4"})));

    const Model integer = knapsack (10, 40);
    EXPECT_TRUE (
        differ (work (integer, {"RANDOM_SEED 1", "RANDOM_SEED 2", "RANDOM_SEED 3", "RANDOM_SEED 4"})));
    EXPECT_FALSE (differ (work (integer, {"RANDOM_SEED 1", "RANDOM_SEED 1"})));
    const std::string exact = "MIP_RELATIVE_GAP 0 MIP_ABSOLUTE_GAP 0 ";
    const auto gaps = work (integer, {exact, exact + "MIP_RELATIVE_GAP 0.5", exact + "MIP_ABSOLUTE_GAP 1e4"});
    EXPECT_LT (gaps[1], gaps[0]);
    EXPECT_LT (gaps[2], gaps[0]);
}

// A limit is passed by a dual objective that is worse, and by an integer point that is better.
TEST (Settings, TheObjectiveLimitKnowsTheSense)
{
    const auto code = [] (Model problem, double sign, double limit) {
        problem.maximize = sign > 0;
        for (double& cost : problem.cost)
            cost *= sign;
        const Task task (problem, "OPTIMIZER 1 PRESOLVE 0 OBJECTIVE_LIMIT " + std::to_string (sign * limit));
        return KLV_optimize (task);
    };
    for (const double sign : {-1, 1}) {
        EXPECT_EQ (code (dense (60, 90), sign, 1e-3), 0) << "the optimum is better than the limit";
        EXPECT_EQ (code (dense (60, 90), sign, 1e4), KLV_RES_OBJECTIVE_LIMIT) << "no point reaches the limit";
        EXPECT_EQ (code (knapsack (10, 40), sign, 1e6), 0) << "no point reaches the target";
        EXPECT_EQ (code (knapsack (10, 40), sign, 1), KLV_RES_OBJECTIVE_LIMIT)
            << "a point reaches the target";
        EXPECT_EQ (code (knapsack (10, 40), sign, -100), KLV_RES_OBJECTIVE_LIMIT) << "any point does";
    }
}

TEST (Settings, TolerancesDecideWhatIsFeasible)
{
    const char *above = "min 1; 0..0.9999; 1 in 1..", *crossed = "min 1; 0..9; 1 in 2..1.999";
    const Task strict (above), loose (above, "PRIMAL_TOLERANCE 1e-2");
    const Task contradicting (crossed), fixing (crossed, "FIXING_TOLERANCE 1e-2");
    for (const Task* task : {&strict, &loose, &contradicting, &fixing})
        EXPECT_EQ (KLV_optimize (*task), 0);
    model::expect_infeasible (strict, KLV_SOL_BAS);
    model::expect_infeasible (contradicting, KLV_SOL_BAS);
    EXPECT_EQ (model::slot (loose, KLV_SOL_BAS).problem, KLV_PRO_FEASIBLE);
    EXPECT_NEAR (model::slot (fixing, KLV_SOL_BAS).primal, 1.999, 1e-9);
    EXPECT_EQ (contradicting.information ("CROSSED_BOUNDS"), 1);
    EXPECT_EQ (fixing.information ("CROSSED_BOUNDS"), 0);
}

// Asked to choose, the library leaves an interior solution where an interior-point run would leave a basic one.
TEST (Settings, ABasisGoesWithAnInteriorSolution)
{
    struct Case {
        const char* settings;
        bool interior, basic;
        int source;
    };
    for (const Case& c : {Case{"OPTIMIZER 3", true, true, 1 + KLV_OPTIMIZER_INTERIOR_POINT},
                          {"OPTIMIZER 3 INTPNT_BASIS 0", true, false, 1 + KLV_OPTIMIZER_INTERIOR_POINT},
                          {"OPTIMIZER 2", true, true, 1 + KLV_OPTIMIZER_DUAL_SIMPLEX},
                          {"OPTIMIZER 2 INTPNT_BASIS 0", false, true, 0}}) {
        SCOPED_TRACE (c.settings);
        const Task task (dense (20, 30), c.settings);
        EXPECT_EQ (KLV_optimize (task), 0);
        EXPECT_EQ (model::slot (task, KLV_SOL_ITR).defined, c.interior);
        EXPECT_EQ (model::slot (task, KLV_SOL_BAS).defined, c.basic);
        if (c.interior)
            model::expect_optimal (task, KLV_SOL_ITR);
        if (c.basic)
            model::expect_optimal (task, KLV_SOL_BAS);
        EXPECT_EQ (task.information ("INTERIOR_SOURCE"), c.source);
    }
}

TEST (Settings, LogLevelsAndSwitchesPrintWhatTheySay)
{
    const auto log_of = [] (const std::string& settings, bool integer) {
        const Task task (integer ? knapsack (5, 30) : dense (20, 30), settings);
        std::string log;
        KLV_linkfunctotaskstream (task, KLV_STREAM_MESSAGES, &log, [] (void* handle, const char* line) {
            *static_cast<std::string*> (handle) += line;
        });
        EXPECT_EQ (KLV_optimize (task), 0);
        return log;
    };
    struct Method {
        std::string settings;
        const char *off, *title;
    };
    for (const Method& method : {Method{"OPTIMIZER 0", " LOG_SIMPLEX 0", "primal objective"},
                                 {"OPTIMIZER 1", " LOG_SIMPLEX 0", "primal objective"},
                                 {"OPTIMIZER 3 INTPNT_BASIS 0", " LOG_INTPNT 0", "primal objective"},
                                 {"OPTIMIZER 5", " LOG_MIP 0", "incumbent"}}) {
        const bool integer = method.title == std::string ("incumbent");
        for (int level = 0; level <= 3; ++level) {
            const std::string log = log_of (method.settings + " LOG " + std::to_string (level), integer);
            EXPECT_EQ (!log.empty (), level >= 1) << log;
            EXPECT_EQ (log.find (method.title) != log.npos, level >= 2) << log;
            EXPECT_EQ (log.find ("  | ") != log.npos, level >= 3) << log;
        }
        const std::string log = log_of (method.settings + method.off, integer);
        EXPECT_TRUE (!log.empty () && log.find (method.title) == log.npos) << log;
    }
}

}
