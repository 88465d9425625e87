// What information tells of a run: read from the engine's log, counted by its calls, measured here.
#include "kalvo/engines/highs/lines.h"
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

namespace {

using klv::Search;
using model::Task;

// ---- Lines of the engine ----------------------------------------------------------------------------------------------

std::string read (const std::string& line)
{
    std::ostringstream told;
    if (const auto step = klv::highs::read_simplex_iteration (line))
        told << "simplex " << step->number << ' ' << step->first_phase << ' ' << step->objective << ' '
             << step->primal_violation << ' ' << step->dual_violation;
    else if (const auto point = klv::highs::read_interior_iteration (line))
        told << "interior " << point->number << ' ' << point->objective << ' ' << point->dual_objective << ' '
             << point->primal_violation << ' ' << point->dual_violation;
    if (const auto left = klv::highs::read_presolved (line))
        told << "left " << left->rows << ' ' << left->columns << ' ' << left->entries;
    if (const auto integers = klv::highs::read_integers (line))
        told << "integers " << *integers;
    Search search;
    if (klv::highs::read_search (line, search))
        told << "row ";
    for (const auto count :
         {search.nodes, search.open_nodes, search.cuts, search.cuts_in_use, search.conflicts, search.restarts,
          search.strong_branching, search.separation, search.heuristics})
        told << (count != 0 ? std::to_string (count) + " " : "");
    told << (search.integral != 0 ? std::to_string (search.integral) : "");
    return told.str ();
}

TEST (EngineLines, SayWhatTheySayOrNothing)
{
    const std::pair<const char*, const char*> lines[] = {
        {"  133    -8.9e+05 Pr: 0(0); Du: 2(1.5e-14) 0.0s", "simplex 133 0 -890000 0 1.5e-14"},
        {"    0    -1.5 Ph1: 4(4.5); Du: 2(1.75) 0.0s", "simplex 0 1 -1.5 4.5 1.75"},
        {"    2     2.65 Pr: 1(7)", "simplex 2 0 2.65 7 0"},
        {"   17*  -1.5e+00  -2.5e+00  7e-16  6e-12  4e-04   0.0", "interior 17 -1.5 -2.5 7e-16 6e-12"},
        {"Presolve reductions: rows 163(-11); columns 141(-1); nonzeros 2256(+13) ", "left 163 141 2256"},
        {"Presolve reductions: rows 0(-2); columns 0(-2); nonzeros 0(-4) - Reduced to empty", "left 0 0 0"},
        {"   25 cols (21 binary, 4 integer, 0 implied int., 7 continuous)", "integers 25"},
        {" L      15       3      7  43.75%   3019.6      3095   2.44%   202   20   30   41   0.0s",
         "row 15 3 202 20 30 "},
        {"    1234k      12m    99   0.00%   -inf     inf    Large    1   2   3   1234m   9999.9s",
         "row 1234000 12000000 1 2 3 "},
        {"25.0% inactive integer columns, restarting", "1 "},
        {"Restarting search from the root node", "1 "},
        {"  P-D integral      0.25", "0.250000"},
        {"      2030 (strong br.)", "2030 "},
        {"       628 (separation)", "628 "},
        {"       813 (heuristics)", "813 "},
    };
    for (const auto& [line, meaning] : lines) {
        EXPECT_EQ (read (line), meaning);
        EXPECT_EQ (read (std::string ("x: ") + line), "");
    }
    for (const char* line :
         {"", " ", "-", "1 2 3", "0 (bound viol.)", "22 rows, 29 cols, 74 nonzeros 0s", "133 -8.9e+05 Pr: 0",
          "133 -8.9e+05 Pr: 0(0); Du: 2", "17* -1.5 -2.5 7e-16 6e-12",
          "Presolve reductions: rows 163(-11); columns 141(-1); nonzeros 2256",
          "25 cols (21 binary, 4 columns)", "L 15 3 7 43.75% 3019 3095 2% 202 20 30 41 0.0",
          "LL 15 3 7 43.75% 3019 3095 2% 202 20 30 41 0.0s", "L 15 3 7 43.75 3019 3095 2% 202 20 30 41 0.0s",
          "L 15 3 7 43.75% 3019 3095 2% 202 20 41 0.0s", "P-D integral -"})
        EXPECT_EQ (read (line), "") << line;
}

// ---- Items ------------------------------------------------------------------------------------------------------------

// Every figure of a search, while it runs and after it was abandoned or has ended.
TEST (Information, HoldsTheFiguresOfASearch)
{
    const scripted::InFront front ([] (auto&, auto&, auto& channel) {
        klv::Progress now;
        now.caller = KLV_CALLER_MIXED_INTEGER;
        now.presolved = {21, 22, 23, 24};
        now.search = {.nodes = 1,
                      .open_nodes = 2,
                      .solutions = 3,
                      .restarts = 4,
                      .cuts = 5,
                      .cuts_in_use = 6,
                      .conflicts = 7,
                      .strong_branching = 8,
                      .separation = 9,
                      .heuristics = 10,
                      .root_bound = 1.5,
                      .integral = 2.5,
                      .first_solution = klv::Clock::now (),
                      .best_solution = klv::Clock::now () + std::chrono::seconds (1000)};
        channel.progress (now);
        return scripted::claims (scripted::right);
    });
    const Task task (scripted::small_integers);
    EXPECT_EQ (model::optimized (task), "OK int INTEGER_OPTIMAL");
    for (const auto& [item, value] : {std::pair{"MIP_NODES", 1.0},
                                      {"MIP_OPEN_NODES", 2},
                                      {"MIP_SOLUTIONS", 3},
                                      {"MIP_RESTARTS", 4},
                                      {"MIP_CUTS", 5},
                                      {"MIP_CUTS_IN_USE", 6},
                                      {"MIP_CONFLICTS", 7},
                                      {"MIP_STRONG_BRANCHING_ITERATIONS", 8},
                                      {"MIP_SEPARATION_ITERATIONS", 9},
                                      {"MIP_HEURISTIC_ITERATIONS", 10},
                                      {"PRESOLVED_CONSTRAINTS", 21},
                                      {"PRESOLVED_VARIABLES", 22},
                                      {"PRESOLVED_MATRIX_ENTRIES", 23},
                                      {"PRESOLVED_INTEGER_VARIABLES", 24},
                                      {"MIP_ROOT_BOUND", 1.5},
                                      {"MIP_INTEGRAL", 2.5}})
        EXPECT_EQ (task.information (item), value) << item;
    EXPECT_LT (task.information ("TIME_MIP_FIRST_SOLUTION"), task.information ("TIME_OPTIMIZE"));
    EXPECT_GT (task.information ("TIME_MIP_BEST_SOLUTION"), 1000);
}

Task& read_file (Task& task, const char* file, const std::string& settings)
{
    EXPECT_EQ (KLV_readdata (task, (KALVO_TEST_DATA "/" + std::string (file)).c_str ()), 0);
    task.set ("MAX_THREADS 1 " + settings);
    EXPECT_EQ (KLV_optimize (task), 0);
    return task;
}

TEST (Information, TellsWhatPresolveLeft)
{
    for (const auto& [file, settings] : {std::pair{"lp/israel.mps", "OPTIMIZER 1 "},
                                         {"lp/israel.mps", "OPTIMIZER 0 "},
                                         {"lp/israel.mps", "OPTIMIZER 3 "},
                                         {"lp/israel.mps", "OPTIMIZER 3 INTPNT_METHOD 2 "},
                                         {"milp/p0033.mps", ""}}) {
        SCOPED_TRACE (std::string (file) + ' ' + settings);
        Task task, plain;
        read_file (task, file, std::string (settings) + "PRESOLVE 1");
        read_file (plain, file, std::string (settings) + "PRESOLVE 0");
        for (const std::string item : {"VARIABLES", "CONSTRAINTS", "MATRIX_ENTRIES", "INTEGER_VARIABLES"}) {
            const double stated = task.information (item.c_str ());
            const std::string left = "PRESOLVED_" + item;
            EXPECT_EQ (plain.information (left.c_str ()), stated) << item;
            if (stated > 0) {
                EXPECT_GT (task.information (left.c_str ()), 0) << item;
                EXPECT_LT (task.information (left.c_str ()), stated) << item;
            }
        }
    }
}

TEST (Information, TellsHowASearchWent)
{
    Task task, relaxed, restarted, steady;
    const double iterations = read_file (task, "milp/stein27.mps", "").information ("SIMPLEX_ITERATIONS");
    double part = 0;
    for (const char* item :
         {"MIP_STRONG_BRANCHING_ITERATIONS", "MIP_SEPARATION_ITERATIONS", "MIP_HEURISTIC_ITERATIONS"}) {
        EXPECT_GT (task.information (item), 0) << item;
        part += task.information (item);
    }
    EXPECT_LT (part, iterations);
    read_file (relaxed, "milp/stein27.mps", "RELAX_INTEGERS 1");
    EXPECT_NEAR (task.information ("MIP_ROOT_BOUND"), relaxed.information ("PRIMAL_OBJECTIVE"), 1e-6);
    EXPECT_GT (task.information ("TIME_MIP_FIRST_SOLUTION"), 0);
    EXPECT_LT (task.information ("TIME_MIP_FIRST_SOLUTION"), task.information ("TIME_MIP_BEST_SOLUTION"));
    EXPECT_LT (task.information ("TIME_MIP_BEST_SOLUTION"), task.information ("TIME_OPTIMIZE"));
    EXPECT_GT (task.information ("MIP_CUTS"), task.information ("MIP_CUTS_IN_USE"));
    EXPECT_GT (task.information ("MIP_INTEGRAL"), 0);
    EXPECT_EQ (task.information ("MIP_OPEN_NODES"), 0);
    const Task limited (model::knapsack (10, 60), "MIP_NODE_LIMIT 20 MAX_THREADS 1");
    EXPECT_EQ (KLV_optimize (limited), KLV_RES_NODE_LIMIT);
    EXPECT_GT (limited.information ("MIP_OPEN_NODES"), 0);
    EXPECT_GT (limited.information ("MIP_ROOT_BOUND"), limited.information ("MIP_BOUND"));    // maximised
    EXPECT_GT (read_file (restarted, "milp/infeasible-mip1.mps", "").information ("MIP_RESTARTS"), 0);
    EXPECT_EQ (read_file (steady, "milp/infeasible-mip1.mps", "MIP_RESTARTS 0").information ("MIP_RESTARTS"),
               0);
}

TEST (Information, HasFiguresOfEachSolutionAndOfWhatMadeThem)
{
    for (const auto& [settings, method, finish] :
         {std::tuple{"OPTIMIZER 1", KLV_INTPNT_METHOD_AUTOMATIC, false},
          {"OPTIMIZER 3", KLV_INTPNT_METHOD_ITERATIVE, true},
          {"OPTIMIZER 3 INTPNT_METHOD 2", KLV_INTPNT_METHOD_FACTORIZATION, true},
          {"OPTIMIZER 3 INTPNT_BASIS 0", KLV_INTPNT_METHOD_ITERATIVE, false}}) {
        SCOPED_TRACE (settings);
        Task task;
        read_file (task, "lp/share2b.mps", settings);
        EXPECT_EQ (task.information ("INTPNT_METHOD"), method);
        EXPECT_EQ (task.information ("TIME_CROSSOVER") > 0, finish);
        for (const auto& [which, name] : {std::pair{KLV_SOL_ITR, "ITR"}, {KLV_SOL_BAS, "BAS"}}) {
            const model::Slot slot = model::slot (task, which);
            const auto item = [&] (const char* what) {
                return task.information ((name + std::string ("_") + what).c_str ());
            };
            EXPECT_EQ (item ("PRIMAL_OBJECTIVE"), slot.defined ? slot.primal : 0);
            EXPECT_EQ (item ("DUAL_OBJECTIVE"), slot.defined ? slot.dual : 0);
            for (const char* what : {"PRIMAL_VIOLATION", "DUAL_VIOLATION", "COMPLEMENTARITY_VIOLATION"})
                EXPECT_LE (item (what), slot.defined ? 1e-6 : 0) << name << what;
        }
        // An interior solution is not quite complementary, a basic one is.
        if (finish) {
            EXPECT_GT (task.information ("ITR_COMPLEMENTARITY_VIOLATION"),
                       10 * task.information ("BAS_COMPLEMENTARITY_VIOLATION"));
        }
    }
    const Task tiny ("min 1 1; 0..9 0..9; 1 1e-12 in 2..; 1e-13 1 in 2..");
    EXPECT_EQ (KLV_optimize (tiny), 0);
    EXPECT_EQ (tiny.information ("ENTRIES_TAKEN_AS_ZERO"), 2);
}

}
