// What is said of a problem, and that saying it can be stopped.
#include "kalvo/task/task.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <chrono>
#include <sstream>
#include <thread>

namespace {

struct Report {
    klv::Task task;
    std::string text;

    explicit Report (klv::Problem problem)
    {
        task.replace_problem (std::move (problem));
        KLV_linkfunctotaskstream (&task, KLV_STREAM_MESSAGES, &text, [] (void* handle, const char* line) {
            *static_cast<std::string*> (handle) += line;
        });
    }

    std::string analysis ()
    {
        EXPECT_EQ (KLV_analyzeproblem (&task, KLV_STREAM_MESSAGES), KLV_RES_OK);
        return text;
    }
};

// A text's words with one blank between them.
std::string squeezed (const std::string& text)
{
    std::istringstream in (text);
    std::string words, word;
    while (in >> word)
        words += words.empty () ? word : " " + word;
    return words;
}

bool has_line (const std::string& text, const std::string& words)
{
    std::istringstream lines (text);
    for (std::string line; std::getline (lines, line);)
        if (squeezed (line) == words)
            return true;
    return false;
}

void put_bound (klv::Bounds& bounds, std::size_t i, int key, double lower, double upper)
{
    bounds.key[i] = static_cast<std::uint8_t> (key);
    bounds.lower[i] = lower;
    bounds.upper[i] = upper;
}

void put_entry (klv::Problem& problem, double value)
{
    const std::int32_t row = 3;
    problem.matrix.put (1, {&row, 1}, {&value, 1});
}

klv::Problem mixture ()
{
    klv::Problem problem;
    problem.name = "mixture";
    problem.sense = KLV_SENSE_MAXIMIZE;
    problem.append_variables (5);
    problem.append_constraints (4);
    put_bound (problem.variable, 0, KLV_BK_LO, 0, klv::infinity);
    put_bound (problem.variable, 1, KLV_BK_RA, 0, 1);
    put_bound (problem.variable, 2, KLV_BK_FX, 20, 20);
    put_bound (problem.variable, 3, KLV_BK_UP, -klv::infinity, -500);
    put_bound (problem.constraint, 0, KLV_BK_FX, 0, 0);
    put_bound (problem.constraint, 1, KLV_BK_UP, -klv::infinity, 8);
    put_bound (problem.constraint, 2, KLV_BK_UP, -klv::infinity, 2);
    problem.integer[1] = problem.integer[2] = KLV_VAR_INTEGER;
    problem.integers = 2;
    problem.cost = {0, 4, -0.25, 0, 0};
    const std::int32_t rows[] = {2, 0, 1};
    const double values[] = {1e3, -0.5, 3};
    problem.matrix.put (0, rows, values);
    problem.matrix.put (4, std::span (rows).first (1), std::span (values).first (1));
    return problem;
}

TEST (Analysis, CountsWhatIsThere)
{
    Report report (mixture ());
    const std::string text = report.analysis ();
    for (const char* line :
         {"Analysis of the problem 'mixture'", "Objective maximize", "All 4 5", "lower bound only 0 1",
          "upper bound only 2 1", "both bounds 0 1", "fixed, or equality 1 1", "no bound 1 1",
          "Without entries 1 3", "Most entries of one 2 3", "Integer 2", "of them binary 1",
          "Matrix entries 4", "of all places 20%", "Matrix 5.00e-01 1.00e+03 2.0e+03",
          "Costs 2.50e-01 4.00e+00 1.6e+01", "Constraint bounds 2.00e+00 8.00e+00 4.0e+00",
          "Variable bounds 1.00e+00 5.00e+02 5.0e+02"})
        EXPECT_TRUE (has_line (text, line)) << line << "\n" << text;
    EXPECT_EQ (text.find ("Warning"), text.npos) << text;
    EXPECT_EQ (report.task.information.get (klv::RealItem::largest_matrix_value), 1e3);
    EXPECT_EQ (report.task.information.get (klv::RealItem::smallest_bound), 1);
}

TEST (Analysis, AnEmptyProblemHasNoRanges)
{
    const std::string text = Report (klv::Problem ()).analysis ();
    EXPECT_TRUE (has_line (text, "Matrix - - -")) << text;
    EXPECT_TRUE (has_line (text, "of all places 0%")) << text;
    EXPECT_EQ (text.find ("nan"), text.npos);
}

struct Odd {
    const char* warning;
    void (*make) (klv::Problem& problem);
};

TEST (Analysis, WarnsOfWhatLooksBad)
{
    for (const Odd& odd : {
             Odd{"Warning: magnitudes in the matrix differ", [] (klv::Problem& p) { put_entry (p, 1e10); }},
             Odd{"Warning: 1 matrix entries of at most 1e-9", [] (klv::Problem& p) { put_entry (p, -1e-9); }},
             Odd{"Warning: 1 matrix entries of 1e15 and more", [] (klv::Problem& p) { put_entry (p, 1e15); }},
             Odd{"Note: 1 matrix entries are 0", [] (klv::Problem& p) { put_entry (p, 0); }},
             Odd{"Warning: magnitudes of costs", [] (klv::Problem& p) { p.cost[0] = 1e-9; }},
             Odd{"Warning: costs of 1e20 and more", [] (klv::Problem& p) { p.cost[0] = -1e20; }},
             Odd{"Warning: magnitudes of variable bounds",
                 [] (klv::Problem& p) { put_bound (p.variable, 0, KLV_BK_LO, 1e-7, klv::infinity); }},
             Odd{"Warning: bounds of 1e20 and more",
                 [] (klv::Problem& p) { put_bound (p.constraint, 1, KLV_BK_UP, -klv::infinity, 1e20); }},
             Odd{"Warning: 1 variables have crossed bounds, the first is variable 2 (index 1).",
                 [] (klv::Problem& p) { put_bound (p.variable, 1, KLV_BK_RA, 1, 0); }},
             Odd{"Warning: 1 constraints have crossed bounds, the first is constraint 4",
                 [] (klv::Problem& p) { put_bound (p.constraint, 3, KLV_BK_RA, 1, 0); }},
         }) {
        klv::Problem problem = mixture ();
        odd.make (problem);
        const std::string text = Report (std::move (problem)).analysis ();
        EXPECT_NE (text.find (odd.warning), text.npos) << odd.warning << "\n" << text;
    }
}

TEST (Analysis, BoundsCrossedWithinTheFixingToleranceAreFine)
{
    klv::Problem problem = mixture ();
    put_bound (problem.variable, 1, KLV_BK_RA, 1 + 1e-12, 1);
    EXPECT_EQ (Report (std::move (problem)).analysis ().find ("crossed"), std::string::npos);
}

TEST (Analysis, OfALargeProblemCanBeStopped)
{
    klv::Problem problem;
    problem.append_variables (2'000'000);
    Report report (std::move (problem));
    KLV_putcallbackfunc (
        &report.task,
        [] (KLVtask_t, void*, std::uint32_t caller, const double*, const std::int32_t*, const std::int64_t*) {
            return caller == KLV_CALLER_ANALYZE ? 1 : 0;
        },
        nullptr);
    std::this_thread::sleep_for (std::chrono::milliseconds (25));
    EXPECT_EQ (KLV_analyzeproblem (&report.task, KLV_STREAM_MESSAGES), KLV_RES_USER_STOP);
    EXPECT_EQ (report.text, "");
}

TEST (Summary, IsShort)
{
    Report report (mixture ());
    EXPECT_EQ (KLV_readsummary (&report.task, KLV_STREAM_MESSAGES), KLV_RES_OK);
    for (const char* line :
         {"Problem 'mixture'", "Constraints 4", "Variables 5", "Integer variables 2", "Matrix entries 4"})
        EXPECT_TRUE (has_line (report.text, line)) << line << "\n" << report.text;
    EXPECT_LE (std::ranges::count (report.text, '\n'), 8);
}

}
