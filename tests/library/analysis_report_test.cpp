// What is said of a problem, and that saying it can be stopped.
#include "kalvo/task/task.h"
#include "tests/library/model.h"

#include <thread>

namespace {

// What a call prints, with one blank between words.
std::string printed (KLVtask_t task, KLVrescode_t (*call) (KLVtask_t, std::int32_t), int code = KLV_RES_OK)
{
    std::string text, words;
    files::collect (task, KLV_STREAM_MESSAGES, text);
    EXPECT_EQ (call (task, KLV_STREAM_MESSAGES), code);
    std::istringstream in (text);
    for (std::string word; in >> word;)
        words += word + ' ';
    return words;
}

const char* const mixture =
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
        "Constraint bounds 2.00e+00 8.00e+00 4.0e+00 Variable bounds 1.00e+00 5.00e+02 5.0e+02 ");
    EXPECT_EQ (printed (task, KLV_readsummary),
               "Problem 'mixture' Objective maximize Constraints 4 Variables 5 "
               "Integer variables 2 Matrix entries 4 ");
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

TEST (Analysis, OfALargeProblemCanBeStopped)
{
    model::Task task;
    KLV_appendvars (task, 2'000'000);
    task.on_progress ([] (std::uint32_t caller) { return caller == KLV_CALLER_ANALYZE ? 1 : 0; });
    std::this_thread::sleep_for (std::chrono::milliseconds (25));
    EXPECT_EQ (printed (task, KLV_analyzeproblem, KLV_RES_USER_STOP), "");
}

}
