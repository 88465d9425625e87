// Each setting does something: the row tells what would be the same if it did not.
#include "tests/library/model.h"

#include <algorithm>
#include <map>
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
                               {"OPTIMIZER 3 INTPNT_METHOD 2 INTPNT_ITERATION_LIMIT 2", "ITERATION_LIMIT"},
                               {"OPTIMIZER 3 INTPNT_METHOD 2 TIME_LIMIT 0", "TIME_LIMIT"},
                               {"OPTIMIZER 1 TIME_LIMIT 0", "TIME_LIMIT"},
                               {"OPTIMIZER 3 TIME_LIMIT 0", "TIME_LIMIT"},
                               {"TIME_LIMIT 0", "TIME_LIMIT", true},
                               {"TIME_LIMIT 0.1 MIP_RELATIVE_GAP 0", "TIME_LIMIT", true},
                               {"MIP_NODE_LIMIT 1", "NODE_LIMIT", true},
                               {"MIP_LEAF_LIMIT 3", "NODE_LIMIT", true},
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
              {"PRESOLVE 0", "PRESOLVE 1"});
    EXPECT_GT (chain[0], 0);
    EXPECT_EQ (chain[1], 0);

    Model badly_scaled = dense (60, 90);
    for (std::size_t i = 0; i < badly_scaled.rows.size (); ++i) {
        const double factor = std::pow (10.0, static_cast<double> (i % 7) - 3);
        for (double& value : badly_scaled.rows[i])
            value *= factor;
        badly_scaled.row_bounds[i].upper *= factor;
    }
    Model integer = knapsack (10, 40);
    for (const auto& [problem, setting, values] : {std::tuple{&badly_scaled, "SIMPLEX_PRICING ", "123"},
                                                   {&badly_scaled, "SCALING ", "034"},
                                                   {&integer, "RANDOM_SEED ", "1234"}}) {
        std::set<double> counts;
        for (const char value : std::string (values))
            counts.insert (work (*problem, {std::string (setting) + value})[0]);
        EXPECT_GT (counts.size (), 1U) << setting;
    }
    const auto same = work (integer, {"RANDOM_SEED 1", "RANDOM_SEED 1"});
    EXPECT_EQ (same[0], same[1]);
    const std::string exact = "MIP_RELATIVE_GAP 0 MIP_ABSOLUTE_GAP 0 ";
    const auto gaps = work (integer, {exact, exact + "MIP_RELATIVE_GAP 0.5", exact + "MIP_ABSOLUTE_GAP 1e4"});
    EXPECT_LT (gaps[1], gaps[0]);
    EXPECT_LT (gaps[2], gaps[0]);
}

// How a run of a published problem went: every count that tells of its way.
std::string way_of (const std::string& file, const std::string& settings)
{
    Task task;
    EXPECT_EQ (KLV_readdata (task, (KALVO_TEST_DATA "/" + file).c_str ()), KLV_RES_OK);
    task.set ("MAX_THREADS 1 " + settings);
    std::string way = model::optimized (task);
    for (const char* item : {"SIMPLEX_ITERATIONS", "INTPNT_ITERATIONS", "CROSSOVER_ITERATIONS", "MIP_NODES"})
        way += ' ' + std::to_string (std::lround (task.information (item)));
    return way;
}

// Each of them decides how the answer is found, and an answer it is all the same.
TEST (Settings, ChangeTheWayThroughPublishedProblems)
{
    const std::string dual = "OPTIMIZER 1 ", primal = "OPTIMIZER 0 ", interior = "OPTIMIZER 3 ",
                      factorized = interior + "INTPNT_METHOD 2 ";
    std::map<std::string, std::string> plain;
    for (const auto& [file, method, setting] : {
             std::tuple{std::string ("lp/israel.mps"), dual + "PRESOLVE 1 ", "PRESOLVE_REDUCTION_LIMIT 0"},
             {"lp/share2b.mps", dual + "PRESOLVE 1 ", "PRESOLVE_FILL_LIMIT 0"},
             {"lp/israel.mps", dual, "SCALING_LIMIT 2"},
             {"lp/israel.mps", dual, "SIMPLEX_PARALLEL 1"},
             {"lp/israel.mps", dual, "SIMPLEX_UPDATE_LIMIT 1"},
             {"lp/israel.mps", dual, "SIMPLEX_COST_PERTURBATION 0"},
             {"lp/israel.mps", primal + "PRESOLVE 1 ", "SIMPLEX_BOUND_PERTURBATION 0"},
             {"lp/israel.mps", dual + "PRESOLVE 0 ", "SIMPLEX_PIVOT_THRESHOLD 0.5"},
             {"lp/israel.mps", interior, "INTPNT_METHOD 2"},
             {"lp/israel.mps", interior, "INTPNT_DUALIZE 1"},
             {"lp/share2b.mps", interior, "INTPNT_TOLERANCE 1e-11"},
             {"lp/adlittle.mps", factorized, "INTPNT_SYSTEM 1"},
             {"lp/israel.mps", factorized, "INTPNT_ORDERING 1"},
             {"milp/stein27.mps", dual + "MAX_THREADS 2 ", "MIP_PARALLEL 1"},
             {"milp/stein27.mps", dual, "MIP_SYMMETRY 0"},
             {"milp/flugpl.mps", dual, "MIP_CUTS_AT_NODES 0"},
             {"milp/flugpl.mps", dual, "MIP_CUT_AGE_LIMIT 0"},
             {"milp/flugpl.mps", dual, "MIP_CUT_POOL_SIZE 1"},
             {"milp/flugpl.mps", dual, "MIP_ROW_AGE_LIMIT 0"},
             {"milp/flugpl.mps", dual, "MIP_BRANCHING_RELIABILITY 0"},
             {"milp/flugpl.mps", dual, "MIP_RELAXATION_METHOD 2"},
             {"milp/flugpl.mps", dual, "MIP_HEURISTIC_EFFORT 1"},
             {"milp/gt2.mps", dual, "MIP_FEASIBILITY_JUMP 0"},
             {"milp/flugpl.mps", dual, "MIP_RENS 0"},
             {"milp/stein27.mps", dual, "MIP_RINS 0"},
             {"milp/gt2.mps", dual, "MIP_ROOT_REDUCED_COST 0"},
             {"milp/stein27.mps", dual, "MIP_ZI_ROUND 1"},
             {"milp/flugpl.mps", dual, "MIP_SHIFTING 1"},
             {"milp/infeasible-mip1.mps", dual, "MIP_RESTARTS 0"},
         }) {
        std::string& without = plain[file + method];
        if (without.empty ())
            without = way_of (file, method);
        const std::string with = way_of (file, method + setting);
        EXPECT_NE (without, with) << setting;
        EXPECT_TRUE (without.starts_with ("OK ") && with.starts_with ("OK ")) << with << ' ' << setting;
    }
}

TEST (Settings, LetNoEngineWriteOnStandardOutput)
{
    testing::internal::CaptureStdout ();
    for (const char* optimizer : {"OPTIMIZER 0", "OPTIMIZER 1", "OPTIMIZER 3"})
        for (const char* pricing : {" SIMPLEX_PRICING 1", " SIMPLEX_PRICING 3"})
            EXPECT_EQ (
                model::optimized (Task (dense (20, 30), std::string (optimizer) + pricing + " PRESOLVE 0"))
                    .substr (0, 2),
                "OK");
    EXPECT_EQ (testing::internal::GetCapturedStdout (), "");
}

// A limit is passed by a dual objective that is worse, and by an integer point that is better.
TEST (Settings, TheObjectiveLimitKnowsTheSense)
{
    for (const auto& [what, stated, limit, code] : {
             std::tuple{"the optimum is better than the limit", dense (60, 90), 1e-3, "OK"},
             {"no point reaches the limit", dense (60, 90), 1e4, "OBJECTIVE_LIMIT"},
             {"no point reaches the target", knapsack (10, 40), 1e6, "OK"},
             {"a point reaches the target", knapsack (10, 40), 1, "OBJECTIVE_LIMIT"},
             {"any point does", knapsack (10, 40), -100, "OBJECTIVE_LIMIT"},
         })
        for (const double sign : {-1, 1}) {
            Model problem = stated;
            problem.maximize = sign > 0;
            for (double& cost : problem.cost)
                cost *= sign;
            const std::string settings = "OPTIMIZER 1 PRESOLVE 0 OBJECTIVE_LIMIT ";
            const Task task (problem, settings + std::to_string (sign * limit));
            EXPECT_TRUE (model::optimized (task).starts_with (code)) << what;
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
        files::collect (task, KLV_STREAM_MESSAGES, log);
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
    EXPECT_GT (log_of ("OPTIMIZER 5 MIP_LOG_INTERVAL 0", true).size (),
               log_of ("OPTIMIZER 5 MIP_LOG_INTERVAL 1000", true).size ());
}
}
