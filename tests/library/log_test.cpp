// The log: what it says of a run and why, in lines that stay the same and columns that can be read back.
#include "tests/library/every_class.h"
#include "tests/library/scripted_engine.h"

#include <regex>

namespace {

using model::Task;
using scripted::claims;
using scripted::right;
using scripted::small;
using scripted::small_integers;

// The log of an optimisation and of its summaries. Numbers with two decimals are seconds, percentages apart, and told as "T".
std::string log_of (KLVtask_t task)
{
    std::string text;
    files::collect (task, KLV_STREAM_MESSAGES, text);
    KLV_optimize (task);
    KLV_solutionsummary (task, KLV_STREAM_MESSAGES);
    KLV_optimizersummary (task, KLV_STREAM_MESSAGES);
    KLV_linkfunctotaskstream (task, KLV_STREAM_MESSAGES, nullptr, nullptr);
    return std::regex_replace (text, std::regex (R"(\d+\.\d\d(?![\d%]))"), "T");
}

void expect_lines (const std::string& log, const std::vector<std::string>& lines, bool there = true)
{
    for (const std::string& line : lines)
        EXPECT_EQ (('\n' + log).find ('\n' + line) != log.npos, there) << line << "\nin\n" << log;
}

TEST (Log, TellsWhichOptimiserRunsAndWhy)
{
    const scripted::InFront front ([] (auto& job, auto&, auto&) {
        return claims (job.method == klv::Method::primal_simplex && job.reformulate && !job.start ? "unknown"
                                                                                                  : right);
    });
    const std::string run = "Optimiser: ", join = "Joined after T s: ", one = "; scripted, 1 thread\n";
    const struct {
        const char *problem, *settings;
        std::string line;
        bool again = false;    // from the solution of a first run
    } cases[] = {
        {small, "", run + "dual simplex (automatic: continuous variables, no start)" + one},
        {small, "OPTIMIZER 1", run + "dual simplex (asked for)" + one},
        {small, "OPTIMIZER 3", run + "interior point (asked for)" + one},
        {small, "OPTIMIZER 3", join + "interior point with crossover (for a basic solution)" + one},
        {small, "OPTIMIZER 1", run + "dual simplex (asked for, from the given basis)" + one, true},
        {small, "OPTIMIZER 0", run + "primal simplex (because the answer before it does not hold)" + one},
        {small_integers, "MAX_THREADS 3",
         run + "integer search (2 integer variables); scripted, 3 threads\n"},
        {small_integers, "MAX_THREADS 1",
         run + "integer search (2 integer variables, from given values)" + one, true},
        {small_integers, "RELAX_INTEGERS 1",
         run + "dual simplex (automatic: continuous variables, integer ones taken as such, no start)" + one},
        {"min 1 2; 0..10 0..10", "",
         run + "none (no constraint that binds has an entry: each variable goes to its better bound)\n"},
    };
    for (const auto& c : cases) {
        const Task task (c.problem, c.settings);
        if (c.again)
            KLV_optimize (task);
        expect_lines (log_of (task), {c.line});
    }
}

// A search that reports as this test wants it.
klv::Claims tell_a_search (const klv::Job&, const klv::StopFlag&, klv::Events& channel)
{
    klv::Progress now{
        .caller = KLV_CALLER_MIXED_INTEGER, .iterations = 77, .dual_objective = -10.5, .has_dual = true};
    now.search.nodes = 5;
    now.search.open_nodes = 3;
    channel.text ("first\n");
    channel.step ({.caller = KLV_CALLER_PRESOLVE, .presolved = {{1, 1, 1, 1}}});
    channel.step (now);
    channel.step (now);    // nothing new
    channel.text ("second\n");
    now.search.solutions = 1;
    now.primal_objective = 12;
    now.has_primal = true;
    channel.step (now);
    return claims (right);
}

TEST (Log, HasLinesByItsLevel)
{
    const scripted::InFront front (tell_a_search);
    const std::vector<std::string>
        whole = {"  | first\n", "  | second\n"},
        search = {"Optimiser: integer search (2 integer variables); scripted, 1 thread\n",
                  "Presolve: 1 -> 1 constraints, 2 -> 1 variables, 2 -> 1 entries, T s\n",
                  "        5       3                -            -10.5         -         77     T\n",
                  "*       5       3               12            -10.5   187.50%         77     T\n"},
        summary = {"The integer solution: INTEGER_OPTIMAL; the problem: PRIMAL_FEASIBLE\n"
                   "  objective 2.0000000000e+00, bound 2.0000000000e+00, gap 0.00% (the bound is the "
                   "optimiser's word)\n"
                   "  checked: primal violation 0.0e+00, distance from whole numbers 0.0e+00\n",
                   "Time: T s, 5 nodes, 1 improving point\n"};
    for (const auto& [settings, level] :
         {std::pair{"LOG 3", 3}, {"", 2}, {"LOG_MIP 0", 1}, {"LOG 1", 1}, {"LOG 0", 0}}) {
        const std::string log = log_of (Task (small_integers, std::string ("MAX_THREADS 1 ") + settings));
        expect_lines (log, whole, level >= 3);
        expect_lines (log, search, level >= 2);
        expect_lines (log, summary, level >= 1);
    }
}

TEST (Log, SaysWhoseALineOfARaceIs)
{
    const scripted::InFront front ([] (auto& job, auto& stop, auto& channel) {
        if (job.method != klv::Method::crossover) {
            scripted::Gate::wait_for (stop);
            return claims ("stopped");
        }
        channel.step ({.caller = KLV_CALLER_PRESOLVE, .presolved = {{1, 2, 2}}});
        channel.step ({.caller = KLV_CALLER_INTERIOR_POINT, .primal_objective = 1.5, .has_primal = true});
        channel.text ("said\n");
        return claims (right);
    });
    expect_lines (log_of (Task (small, "RACE_SIZE 0 MAX_THREADS 2 LOG 3")),
                  {"Presolve of interior point with crossover: nothing to reduce, T s\n",
                   "         0     1.50000000e+00                  -   0.0e+00   0.0e+00     T  interior "
                   "point with crossover\n",
                   "  interior point with crossover | said\n"});
}

// ---- What is said of a problem

// What a call prints, with one blank between words.
std::string printed (KLVtask_t task, KLVrescode_t (*call) (KLVtask_t, std::int32_t))
{
    std::string text;
    files::collect (task, KLV_STREAM_MESSAGES, text);
    EXPECT_EQ (call (task, KLV_STREAM_MESSAGES), KLV_RES_OK);
    return std::regex_replace (text, std::regex ("\\s+"), " ");
}

constexpr const char* mixture =
    "max 0 4 -0.25 0 0; 0.. 0..1i =20i ..-500 ..; -0.5 0 0 0 0 in =0; 3 0 0 0 0 in ..8; "
    "1e3 0 0 0 1e3 in ..2; 0 0 0 0 0 in ..";

TEST (Analysis, CountsWhatIsThere)
{
    const model::Task task (mixture);
    KLV_puttaskname (task, "mixture");
    EXPECT_EQ (
        printed (task, KLV_analyzeproblem),
        "Analysis of the problem 'mixture' Objective maximize constraints variables All 4 5 "
        "lower bound only 0 1 upper bound only 2 1 both bounds 0 1 fixed, or equality 1 1 no bound 1 1 "
        "Without entries 1 3 Most entries of one 2 3 Integer 2 of them binary 1 Matrix entries 4 of all "
        "places 20% "
        "Magnitudes smallest largest ratio Matrix 5.00e-01 1.00e+03 2.0e+03 Costs 2.50e-01 4.00e+00 1.6e+01 "
        "Constraint bounds 2.00e+00 8.00e+00 4.0e+00 Variable bounds 1.00e+00 5.00e+02 5.0e+02 "
        "The problem is feasible. ");
    const std::string classes =
        "Quadratic objective 3 Quadratic constraints 3 Affine expressions 5 their entries 4 "
        "Affine conic constr. 2 their rows 4 Cones 2 their members 4 Semidefinite matrices 2 "
        "their entries 9 their terms 7 ";
    EXPECT_PRED_FORMAT2 (testing::IsSubstring, "Matrix entries 4 " + classes,
                         printed (model::EveryClass (), KLV_readsummary));
    EXPECT_PRED_FORMAT2 (
        testing::IsSubstring,
        "places 40% " + classes +
            "Magnitudes smallest largest ratio Matrix 1.00e+00 1.00e+00 1.0e+00 Costs 1.00e+00 "
            "5.00e+00 5.0e+00 Quadratic terms 7.50e-01 3.00e+00 4.0e+00 Affine constants 5.00e-01 "
            "1.00e+300 2.0e+300 Semidefinite terms 1.00e+00 7.00e+00 7.0e+00 ",
        printed (model::EveryClass (), KLV_analyzeproblem));
    EXPECT_PRED_FORMAT2 (testing::IsSubstring,
                         "of all places 0% Magnitudes smallest largest ratio Matrix - - -",
                         printed (model::Task (), KLV_analyzeproblem));
}

TEST (Analysis, WarnsOfWhatLooksBad)
{
    for (const auto& [problem, warning] :
         {std::pair{"min 1 1; 0..1 0..1; 1e10 1 in 1..", "Warning: magnitudes in the matrix differ"},
          {"min 1; 0..1; -1e-12 in 1..", "Warning: 1 matrix entries of at most 1e-12"},
          {"min 1; 0..1; 1e15 in 1..", "Warning: 1 matrix entries of 1e+15 and more"},
          {"min 2 1e-9; 0..1 0..1; 1 1 in 1..", "Warning: magnitudes of costs"},
          {"min -1e20; 0..1; 1 in 1..", "Warning: costs of 1e+20 and more"},
          {"min 1; 1e-7..500; 1 in 1..", "Warning: magnitudes of variable bounds"},
          {"min 1; 0..1; 1 in ..1e20", "Warning: bounds of 1e+20 and more"},
          {"min 1 1; 0..1 1..0; 1 1 in 1..",
           "Warning: 1 variables have crossed bounds, the first is variable 2 ("},
          {"min 1; 0..1; 1 in 1..0",
           "Warning: 1 constraints have crossed bounds, the first is constraint 1 ("}}) {
        EXPECT_PRED_FORMAT2 (testing::IsSubstring, warning,
                             printed (model::Task (problem), KLV_analyzeproblem));
    }
    EXPECT_PRED_FORMAT2 (testing::IsNotSubstring, "Warning",
                         printed (model::Task ("min 1; 1.000000000001..1; 1 in 1.."), KLV_analyzeproblem));
}

}
