// What information tells of a run: read from the engine's log, counted by its calls, measured here.
#include "kalvo/engines/highs/lines.h"
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

namespace {

using model::Task;

// ---- Lines of the engine ----------------------------------------------------------------------------------------------

std::string read (const std::string& line)
{
    std::ostringstream told;
    const auto tell = [&] (const char* what, const auto&... numbers) {
        told << what;
        (..., (told << ' ' << numbers));
    };
    if (const auto step = klv::highs::read_simplex_iteration (line))
        tell ("simplex", step->number, step->first_phase, step->objective, step->primal_violation,
              step->dual_violation);
    if (const auto point = klv::highs::read_interior_iteration (line))
        tell ("interior", point->number, point->objective, point->dual_objective, point->primal_violation,
              point->dual_violation);
    if (const auto left = klv::highs::read_presolved (line))
        tell ("left", left->rows, left->columns, left->entries);
    if (const auto integers = klv::highs::read_integers (line))
        tell ("integers", *integers);
    klv::Search search;
    const bool is_row = klv::highs::read_search (line, search);
    const klv::Search& s = search;
    if (is_row || s.restarts + s.strong_branching + s.heuristics > 0 || s.integral > 0)
        tell (is_row ? "row" : "search", s.nodes, s.open_nodes, s.cuts, s.cuts_in_use, s.conflicts,
              s.restarts, s.strong_branching, s.separation, s.heuristics, s.integral);
    return told.str ();
}

TEST (EngineLines, SayWhatTheySayOrNothing)
{
    const std::pair<const char*, const char*> lines[] = {
        {"  133    -8.9e+05 Pr: 0(0); Du: 2(1.5e-14) 0.0s", "simplex 133 0 -890000 0 1.5e-14"},
        {"    0    -1.5 Ph1: 4(4.5); Du: 2(1.75) 0.0s", "simplex 0 1 -1.5 4.5 1.75"},
        {"   17*  -1.5e+00  -2.5e+00  7e-16  6e-12  4e-04   0.0", "interior 17 -1.5 -2.5 7e-16 6e-12"},
        {"Presolve reductions: rows 163(-11); columns 141(-1); nonzeros 2256(+13) ", "left 163 141 2256"},
        {"   25 cols (21 binary, 4 integer, 0 implied int., 7 continuous)", "integers 25"},
        {" L      15       3      7  43.75%   3019.6      3095   2.44%   202   20   30   41   0.0s",
         "row 15 3 202 20 30 0 0 0 0 0"},
        {"    1234k      12m    99   0.00%   -inf     inf    Large    1   2   3   1234m   9999.9s",
         "row 1234000 12000000 1 2 3 0 0 0 0 0"},
        {"25.0% inactive integer columns, restarting", "search 0 0 0 0 0 1 0 0 0 0"},
        {"  P-D integral      0.25", "search 0 0 0 0 0 0 0 0 0 0.25"},
        {"      2030 (strong br.)", "search 0 0 0 0 0 0 2030 0 0 0"},
        {"       813 (heuristics)", "search 0 0 0 0 0 0 0 0 813 0"},
    };
    for (const auto& [line, meaning] : lines) {
        EXPECT_EQ (read (line), meaning);
        EXPECT_EQ (read (std::string ("x: ") + line), "");
    }
    for (const char* line : {"1 2 3", "133 -8.9e+05 Pr: 0(0); Du: 2", "17* -1.5 -2.5 7e-16 6e-12",
                             "25 cols (21 binary, 4 columns)", "P-D integral -",
                             "LL 15 3 7 43.75% 3019 3095 2% 202 20 30 41 0.0s"})
        EXPECT_EQ (read (line), "") << line;
}

// ---- Items ------------------------------------------------------------------------------------------------------------

TEST (Information, HoldsTheFiguresOfASearch)
{
    const auto begin = klv::Clock::now ();
    const scripted::InFront front ([&] (auto&, auto&, auto& channel) {
        channel.progress (
            {.caller = KLV_CALLER_MIXED_INTEGER,
             .presolved = {{21, 22, 23, 24}},
             .search = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11.5, 12.5, begin, begin + std::chrono::hours (1)}});
        return scripted::claims (scripted::right);
    });
    const Task task (scripted::small_integers);
    EXPECT_EQ (model::optimized (task), "OK int INTEGER_OPTIMAL");
    double value = 0;
    for (const char* item :
         {"NODES", "OPEN_NODES", "SOLUTIONS", "RESTARTS", "CUTS", "CUTS_IN_USE", "CONFLICTS",
          "STRONG_BRANCHING_ITERATIONS", "SEPARATION_ITERATIONS", "HEURISTIC_ITERATIONS"})
        EXPECT_EQ (task.information (std::string ("MIP_") + item), ++value) << item;
    value = 20;
    for (const char* item : {"CONSTRAINTS", "VARIABLES", "MATRIX_ENTRIES", "INTEGER_VARIABLES"})
        EXPECT_EQ (task.information (std::string ("PRESOLVED_") + item), ++value) << item;
    EXPECT_EQ (task.information ("MIP_ROOT_BOUND"), 11.5);
    EXPECT_EQ (task.information ("MIP_INTEGRAL"), 12.5);
    EXPECT_LT (task.information ("TIME_MIP_FIRST_SOLUTION"), task.information ("TIME_OPTIMIZE"));
    EXPECT_GT (task.information ("TIME_MIP_BEST_SOLUTION"), 1000);
}

struct Solved : Task {
    explicit Solved (const std::string& problem, const std::string& settings = "")
        : Task (problem, "MAX_THREADS 1 " + settings)
    {
        EXPECT_EQ (KLV_optimize (*this), 0);
    }
};

TEST (Information, TellsWhatPresolveLeft)
{
    for (const auto& [file, settings] : {std::pair{"lp/israel.mps", "OPTIMIZER 1 PRESOLVE "},
                                         {"lp/israel.mps", "OPTIMIZER 3 PRESOLVE "},
                                         {"lp/israel.mps", "OPTIMIZER 3 INTPNT_METHOD 2 PRESOLVE "},
                                         {"milp/p0033.mps", "PRESOLVE "}}) {
        const Solved task (file, settings + std::string ("1")), plain (file, settings + std::string ("0"));
        for (const std::string item : {"VARIABLES", "CONSTRAINTS", "MATRIX_ENTRIES", "INTEGER_VARIABLES"}) {
            const double stated = task.information (item), left = task.information ("PRESOLVED_" + item);
            EXPECT_EQ (plain.information ("PRESOLVED_" + item), stated) << settings << item;
            EXPECT_TRUE (left < stated ? left > 0 : stated == 0) << settings << item;
        }
    }
}

TEST (Information, TellsHowASearchWent)
{
    const Solved task ("milp/stein27.mps"), relaxed ("milp/stein27.mps", "RELAX_INTEGERS 1");
    const auto of = [&] (const std::string& item) { return task.information (item); };
    EXPECT_NEAR (of ("MIP_ROOT_BOUND"), relaxed.information ("PRIMAL_OBJECTIVE"), 1e-6);
    double parts = 0;
    for (const char* part : {"STRONG_BRANCHING", "SEPARATION", "HEURISTIC"}) {
        const double iterations = of (std::string ("MIP_") + part + "_ITERATIONS");
        EXPECT_GT (iterations, 0) << part;
        parts += iterations;
    }
    EXPECT_LT (parts, of ("SIMPLEX_ITERATIONS"));
    EXPECT_TRUE (0 < of ("TIME_MIP_FIRST_SOLUTION") &&
                 of ("TIME_MIP_FIRST_SOLUTION") < of ("TIME_MIP_BEST_SOLUTION") &&
                 of ("TIME_MIP_BEST_SOLUTION") < of ("TIME_OPTIMIZE"));
    EXPECT_GT (of ("MIP_CUTS"), of ("MIP_CUTS_IN_USE"));
    EXPECT_GT (of ("MIP_INTEGRAL"), 0);
    EXPECT_EQ (of ("MIP_OPEN_NODES"), 0);
    const Task limited (model::knapsack (10, 60), "MIP_NODE_LIMIT 20 MAX_THREADS 1");
    EXPECT_EQ (KLV_optimize (limited), KLV_RES_NODE_LIMIT);
    EXPECT_GT (limited.information ("MIP_OPEN_NODES"), 0);
    EXPECT_GT (limited.information ("MIP_ROOT_BOUND"), limited.information ("MIP_BOUND"));    // maximised
    EXPECT_GT (Solved ("milp/infeasible-mip1.mps").information ("MIP_RESTARTS"), 0);
}

TEST (Information, HasFiguresOfEachSolutionAndOfWhatMadeThem)
{
    for (const auto& [settings, method, finish] :
         {std::tuple{"OPTIMIZER 1", KLV_INTPNT_METHOD_AUTOMATIC, false},
          {"OPTIMIZER 3", KLV_INTPNT_METHOD_ITERATIVE, true},
          {"OPTIMIZER 3 INTPNT_METHOD 2", KLV_INTPNT_METHOD_FACTORIZATION, true},
          {"OPTIMIZER 3 INTPNT_BASIS 0", KLV_INTPNT_METHOD_ITERATIVE, false}}) {
        SCOPED_TRACE (settings);
        const Solved task ("lp/share2b.mps", settings);
        const auto of = [&] (const std::string& item) { return task.information (item); };
        EXPECT_EQ (of ("INTPNT_METHOD"), method);
        EXPECT_EQ (of ("TIME_CROSSOVER") > 0, finish);
        for (const auto& [which, name] :
             {std::pair{KLV_SOL_ITR, std::string ("ITR_")}, {KLV_SOL_BAS, "BAS_"}}) {
            const model::Slot slot = model::slot (task, which);    // of zeros where it is not defined
            EXPECT_EQ (of (name + "PRIMAL_OBJECTIVE"), slot.primal);
            EXPECT_EQ (of (name + "DUAL_OBJECTIVE"), slot.dual);
            for (const char* what : {"PRIMAL_VIOLATION", "DUAL_VIOLATION", "COMPLEMENTARITY_VIOLATION"})
                EXPECT_LE (of (name + what), slot.defined ? 1e-6 : 0) << name << what;
        }
        // An interior solution is not quite complementary, a basic one is.
        EXPECT_TRUE (!finish ||
                     of ("ITR_COMPLEMENTARITY_VIOLATION") > 10 * of ("BAS_COMPLEMENTARITY_VIOLATION"));
    }
    EXPECT_EQ (
        Solved ("min 1 1; 0..9 0..9; 1 1e-12 in 2..; 1e-13 1 in 2..").information ("ENTRIES_TAKEN_AS_ZERO"),
        2);
}

}
