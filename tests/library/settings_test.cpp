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
        const char *settings, *code;
        bool integer = false;
    };
    for (const Limit& limit : {Limit{"OPTIMIZER 1 SIMPLEX_ITERATION_LIMIT 0", "ITERATION_LIMIT"},
                               {"OPTIMIZER 1 SIMPLEX_ITERATION_LIMIT 5", "ITERATION_LIMIT"},
                               {"OPTIMIZER 0 SIMPLEX_ITERATION_LIMIT 5", "ITERATION_LIMIT"},
                               {"OPTIMIZER 3 INTPNT_ITERATION_LIMIT 2", "ITERATION_LIMIT"},
                               {"OPTIMIZER 1 TIME_LIMIT 0", "TIME_LIMIT"},
                               {"OPTIMIZER 3 TIME_LIMIT 0", "TIME_LIMIT"},
                               {"TIME_LIMIT 0", "TIME_LIMIT", true},
                               {"TIME_LIMIT 0.1 MIP_RELATIVE_GAP 0", "TIME_LIMIT", true},
                               {"MIP_NODE_LIMIT 1", "NODE_LIMIT", true},
                               {"MIP_SOLUTION_LIMIT 0", "SOLUTION_LIMIT", true},
                               {"MIP_SOLUTION_LIMIT 2", "SOLUTION_LIMIT int PRIMAL_FEASIBLE", true},
                               {"OBJECTIVE_LIMIT 10", "OBJECTIVE_LIMIT", true}}) {
        SCOPED_TRACE (limit.settings);
        const Task task (limit.integer ? knapsack (10, 60) : dense (60, 90), limit.settings);
        const std::string found = model::optimized (task);
        EXPECT_TRUE (found.starts_with (limit.code)) << found << task.last_error ();
        EXPECT_EQ (found.find ("OPTIMAL"), found.npos);
        if (found.ends_with ("int PRIMAL_FEASIBLE")) {
            const double incumbent = model::slot (task, KLV_SOL_INT).primal;
            EXPECT_GE (task.information ("MIP_SOLUTIONS"), 1);
            EXPECT_GT (task.information ("MIP_BOUND"), incumbent);
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
        const bool integer = std::ranges::count (problem.integer, true) > 0;
        EXPECT_EQ (model::optimized (task), integer ? "OK int INTEGER_OPTIMAL" : "OK bas OPTIMAL");
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

TEST (Settings, DecideWhatIsFeasibleAndWhichSlotsAreFilled)
{
    const std::string contradiction = "OK bas PRIMAL_INFEASIBLE_CERTIFICATE", optimum = "OK bas OPTIMAL";
    for (const auto& [problem, settings, result, tolerance] :
         {std::tuple{"min 1; 0..0.9999; 1 in 1..", "OPTIMIZER 1", contradiction, 1e-6},
          {"min 1; 0..0.9999; 1 in 1..", "OPTIMIZER 1 PRIMAL_TOLERANCE 1e-2", optimum, 1e-2},
          {"min 1; 0..9; 1 in 2..1.999", "OPTIMIZER 1", contradiction, 1e-6}}) {
        const Task task (problem, settings);
        EXPECT_EQ (model::optimized (task, tolerance), result) << settings;
    }
    const Task fixing ("min 1; 0..9; 1 in 2..1.999", "FIXING_TOLERANCE 1e-2");
    EXPECT_EQ (KLV_optimize (fixing), 0);
    EXPECT_NEAR (model::slot (fixing, KLV_SOL_BAS).primal, 1.999, 1e-9);
    // Asked to choose, the library leaves an interior solution where an interior-point run would leave a basic one.
    constexpr int simplex = 1 + KLV_OPTIMIZER_DUAL_SIMPLEX, interior = 1 + KLV_OPTIMIZER_INTERIOR_POINT;
    for (const auto& [settings, result, source] :
         {std::tuple{"OPTIMIZER 3", "OK itr OPTIMAL bas OPTIMAL", interior},
          {"OPTIMIZER 3 INTPNT_BASIS 0", "OK itr OPTIMAL", interior},
          {"OPTIMIZER 2", "OK itr OPTIMAL bas OPTIMAL", simplex},
          {"OPTIMIZER 2 INTPNT_BASIS 0", "OK bas OPTIMAL", 0}}) {
        const Task task (dense (20, 30), settings);
        EXPECT_EQ (model::optimized (task), result) << settings;
        EXPECT_EQ (task.information ("INTERIOR_SOURCE"), source) << settings;
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
