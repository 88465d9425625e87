// Memory that runs out on the calling thread, at each allocation of each operation: a code, nothing half done, and a task
// that can go on.
#include "tests/library/model.h"
#include "tests/support/failing_new.h"

namespace {

TEST (Memory, MayRunOutInEachOperation)
{
    struct Step {
        const char* what;
        std::function<KLVrescode_t (KLVtask_t)> call;
        KLVrescode_t code = KLV_RES_OK;
    };
    static const std::string text (100, 'n');
    static const char* const name = text.c_str ();
    static const std::int32_t rows[] = {2, 0, 1, 1}, keys[] = {KLV_BK_LO, KLV_BK_UP, KLV_BK_FX};
    static const double values[] = {1, 2, 3, 4};
    // A file instead of a collecting function: the test's own text would be among the allocations.
    const files::Task task;
    KLV_linkfunctotaskstream (task, KLV_STREAM_WARNINGS, nullptr, nullptr);
    KLV_linkfiletotaskstream (task, KLV_STREAM_ALL, "/dev/null", 0);
    const klv::Parameters& parameters = task->parameters;
    int failures = 0;
    for (const Step& step : {
             Step{"variables", [] (auto t) { return KLV_appendvars (t, 50); }},
             {"constraints", [] (auto t) { return KLV_appendcons (t, 3); }},
             {"room", [] (auto t) { return KLV_putmaxnumanz (t, 4); }},
             {"a column", [] (auto t) { return KLV_putacol (t, 30, 3, rows, values); }},
             {"a column before", [] (auto t) { return KLV_putacol (t, 20, 3, rows, values); }},
             {"a repeated row", [] (auto t) { return KLV_putacol (t, 0, 4, rows, values); },
              KLV_RES_DUPLICATE_ENTRY},
             {"bounds", [] (auto t) { return KLV_putvarboundslice (t, 7, 10, keys, values, values); }},
             {"bounds of rows", [] (auto t) { return KLV_putconboundslice (t, 0, 3, keys, values, values); }},
             {"costs", [] (auto t) { return KLV_putcslice (t, 2, 5, values); }},
             {"no such cost", [] (auto t) { return KLV_putcslice (t, 49, 51, values); }, KLV_RES_INDEX_RANGE},
             {"a type", [] (auto t) { return KLV_putvartype (t, 4, KLV_VAR_INTEGER); }},
             {"the task's name", [] (auto t) { return KLV_puttaskname (t, name); }},
             {"a variable's name", [] (auto t) { return KLV_putvarname (t, 3, name); }},
             {"a constraint's name", [] (auto t) { return KLV_putconname (t, 2, name); }},
             {"more variables", [] (auto t) { return KLV_appendvars (t, 500); }},
             {"more constraints", [] (auto t) { return KLV_appendcons (t, 500); }},
             {"a change while a run holds the problem",
              [] (auto t) {
                  const auto held = t->share_problem ();
                  return KLV_putcfix (t, 4);
              }},
             {"a text parameter", [] (auto t) { return KLV_putstrparam (t, 1, name); }},
             {"a summary", [] (auto t) { return KLV_readsummary (t, KLV_STREAM_MESSAGES); }},
             {"an analysis", [] (auto t) { return KLV_analyzeproblem (t, KLV_STREAM_MESSAGES); }},
         }) {
        SCOPED_TRACE (step.what);
        const klv::Problem before = task.problem ();
        const auto texts = parameters.texts;
        failures += fail_each ([&] { return step.call (task); }, step.code,
                               [&] {
                                   EXPECT_EQ (task.last_error (), "There is not enough memory.");
                                   EXPECT_EQ (model::difference (before, task.problem ()), std::nullopt);
                                   EXPECT_EQ (parameters.texts, texts);
                               });
    }
    EXPECT_GT (failures, 30);
    EXPECT_EQ (task.problem ().variables (), 550);
    EXPECT_EQ (task.problem ().matrix.starts ().size (), 551u);
    for (const std::int64_t entries : {std::int64_t{1} << 50, std::numeric_limits<std::int64_t>::max ()})
        EXPECT_EQ (KLV_putmaxnumanz (task, entries), KLV_RES_OUT_OF_MEMORY) << entries;

    KLVtask_t made = task;
    const auto is_null = [&] { EXPECT_EQ (std::exchange (made, task), nullptr); };
    EXPECT_GT (fail_each ([&] { return KLV_makeemptytask (nullptr, &made); }, KLV_RES_OK, is_null), 1);
    KLV_deletetask (&made);
}

TEST (Memory, MayRunOutInAnOptimization)
{
    for (const auto& [problem, settings] :
         {std::pair{"min 1 1; 0.. 0..; 1 2 in 4..; 3 1 in 3..", "OPTIMIZER 1"},
          {"min 1 1; 0.. 0..; 1 2 in 4..; 3 1 in 3..", "OPTIMIZER 3"},
          {"min 1 1; 0..9 0..9; 1 1 in 3..; 1 1 in ..2", ""},
          {"min 1 1; 0..9i 0..9i; 2 3 in 7..", ""}}) {
        SCOPED_TRACE (problem);
        const model::Task task (problem, settings);
        const std::string expected = model::optimized (task);
        const auto goes_on = [&] { EXPECT_EQ (model::optimized (task), expected); };
        EXPECT_GT (fail_each ([&] { return KLV_optimize (task); }, KLV_RES_OK, goes_on), 10);
    }
}

}
