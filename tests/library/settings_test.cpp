// Each setting does something: the row tells what would be the same if it did not.
#include "kalvo/tables/parameters.h"
#include "tests/library/every_class.h"

namespace {

using model::dense;
using model::knapsack;
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
            EXPECT_GE (task.information ("MIP_SOLUTIONS"), 1);
            EXPECT_GT (task.information ("MIP_BOUND"), model::slot (task, KLV_SOL_INT).primal);
            EXPECT_GT (task.information ("MIP_RELATIVE_GAP"), 1e-4);
        }
    }
}

// A name, a kind or a range that the engine does not know fails every run with that value.
TEST (Settings, OfEveryAllowedValueSuitTheEngine)
{
    const auto runs = [] (auto put, const auto& row, auto value) {
        for (const char* settings : {"OPTIMIZER 0", "OPTIMIZER 1", "OPTIMIZER 3", "INTPNT_METHOD 2"}) {
            const Task task (dense (5, 8, settings[0] == 'I'), settings);
            EXPECT_EQ (put (task, row.number, value), 0);
            const KLVrescode_t code = KLV_optimize (task);
            EXPECT_TRUE (code == 0 || code >= KLV_FIRST_TERMINATION)
                << row.name << ' ' << value << task.last_error ();
        }
    };
    testing::internal::CaptureStdout ();
    for (const klv::IntParameter& row : klv::int_parameters)
        for (const std::int32_t value : {row.smallest, row.largest})
            if (!row.reserved ())
                runs (KLV_putintparam, row, value);
    for (const klv::RealParameter& row : klv::real_parameters)
        for (const double value : {row.smallest, row.largest})
            if (!row.reserved ())
                runs (KLV_putdouparam, row, value);
    EXPECT_EQ (testing::internal::GetCapturedStdout (), "") << "which is the session's";
}

// Fewer nodes and iterations; or as many, and fewer lines of the log.
TEST (Settings, SpareWorkAndWords)
{
    const auto work = [] (const std::string& problem, const std::string& settings) {
        const Task task (problem,
                         "MAX_THREADS 1 PRESOLVE 0 MIP_RELATIVE_GAP 0 MIP_LOG_INTERVAL 0 " + settings);
        std::string log;
        files::collect (task, KLV_STREAM_MESSAGES, log);
        EXPECT_EQ (KLV_optimize (task), 0);
        return std::pair (1e6 * task.information ("MIP_NODES") + task.information ("SIMPLEX_ITERATIONS"),
                          std::ranges::count (log, '\n'));
    };
    const std::string chain = "min 1 1 1; .. .. ..; 1 in =1; -2 1 in =0; 0 -2 1 in =0";
    for (const auto& [problem, settings, less] :
         {std::tuple{chain, "OPTIMIZER 1 ", "PRESOLVE 1"},
          {knapsack (10, 40), "", "MIP_RELATIVE_GAP 0.5"},
          {knapsack (10, 40), "", "MIP_ABSOLUTE_GAP 1e4"},
          {knapsack (5, 30), "", "MIP_LOG_INTERVAL 1000"},
          {dense (20, 30), "OPTIMIZER 0 ", "LOG_SIMPLEX 0"},
          {dense (20, 30), "OPTIMIZER 3 INTPNT_BASIS 0 ", "LOG_INTPNT 0"}}) {
        const auto all = work (problem, settings);
        EXPECT_EQ (work (problem, settings).first, all.first) << "runs of one thread repeat";
        EXPECT_LT (work (problem, settings + std::string (less)), all) << less;
    }
}

TEST (Settings, SayHowConvexProblemsAreFactorised)
{
    Task cone ("min -1 -2 -3; 0.. 0..1 0..; 1 1 1 in ..4", "LOG 3");
    EXPECT_EQ (model::append_cone (cone, KLV_CONE_QUADRATIC, 0, {0, 1, 2}), 0);
    for (const auto& [settings, told] : {std::pair{"INTPNT_FACTORIZATION 1", "direct / qdldl"},
                                         {"INTPNT_FACTORIZATION 2", "direct / faer"},
                                         {"INTPNT_REGULARIZATION 1e-6", "= 1.0e-6"}}) {
        std::string log;
        files::collect (cone, KLV_STREAM_MESSAGES, log);
        cone.set (settings);
        EXPECT_EQ (KLV_optimize (cone), 0);
        EXPECT_NE (log.find (told), std::string::npos) << settings;
    }
    const auto third_iterate = [] (const std::string& settings) {
        const Task task ("min -1 -2 -3; 0.. 0..1 0..; 1 1 1 in ..4", "INTPNT_ITERATION_LIMIT 3 " + settings);
        EXPECT_EQ (model::put_objective (task, {0, 1, 2}, {0, 1, 2}, {2, 4, 0.5}), 0);
        KLV_optimize (task);
        return model::slot (task, KLV_SOL_ITR).xx;
    };
    EXPECT_EQ (third_iterate (""), third_iterate (""));
    EXPECT_NE (third_iterate (""), third_iterate ("INTPNT_REGULARIZATION 1e-4"));
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
            klv::Problem problem = model::parse (stated);
            problem.sense = sign > 0 ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE;
            for (double& cost : problem.cost)
                cost *= sign;
            const std::string settings = "OPTIMIZER 1 PRESOLVE 0 OBJECTIVE_LIMIT ";
            const Task task (problem, settings + std::to_string (sign * limit));
            EXPECT_TRUE (model::optimized (task).starts_with (code)) << what;
        }
}

TEST (Settings, DecideWhatIsFeasibleAndWhichSlotsAreFilled)
{
    const char *slightly = "min 1; 0..0.9999; 1 in 1..", *crossed = "min 1; 0..9; 1 in 2..1.999";
    for (const auto& [problem, settings, result, tolerance] :
         {std::tuple{slightly, "", "OK bas PRIMAL_INFEASIBLE_CERTIFICATE", 1e-6},
          {slightly, "PRIMAL_TOLERANCE 1e-2", "OK bas OPTIMAL", 1e-2},
          {crossed, "", "OK bas PRIMAL_INFEASIBLE_CERTIFICATE", 1e-6}}) {
        const Task task (problem, std::string ("OPTIMIZER 1 ") + settings);
        EXPECT_EQ (model::optimized (task, tolerance), result) << settings;
    }
    const Task fixing (crossed, "FIXING_TOLERANCE 1e-2");
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

}
