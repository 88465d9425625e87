// What is put into a task and read back: refusals name what is wrong and change nothing, also when memory runs out.
#include "tests/support/failing_new.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <limits>
#include <thread>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN ();
constexpr double inf = std::numeric_limits<double>::infinity ();

// Three variables, the last without a name, and two constraints.
struct SmallTask : files::Task {
    SmallTask ()
    {
        const std::int32_t rows[] = {1, 0};
        const double values[] = {2, -1};
        KLV_appendvars (*this, 3);
        KLV_appendcons (*this, 2);
        KLV_putacol (*this, 0, 2, rows, values);
        KLV_putvarname (*this, 0, "steel");
        KLV_putvarname (*this, 1, "coal");
        KLV_putconname (*this, 1, "mine");
    }
};

klv::Problem copy_of (KLVtask_t task)
{
    return task->problem ();
}

// ---- Refusals -------------------------------------------------------------------------------------------------------

struct Refused {
    const char* fault;
    KLVrescode_t code;
    const char* message;
    KLVrescode_t (*call) (KLVtask_t task);
};

std::ostream& operator<< (std::ostream& out, const Refused& c)
{
    return out << c.fault;
}

class Refusals : public testing::TestWithParam<Refused> {};

TEST_P (Refusals, NameTheFaultAndChangeNothing)
{
    const SmallTask task;
    const klv::Problem before = copy_of (task);
    EXPECT_EQ (GetParam ().call (task), GetParam ().code);
    EXPECT_NE (task.last_error ().find (GetParam ().message), std::string::npos) << task.last_error ();
    EXPECT_EQ (task.printed, "Error " + std::to_string (GetParam ().code) + ": " + task.last_error () + "\n");
    EXPECT_EQ (files::difference (before, task.problem ()), std::nullopt);
}

KLVrescode_t put_column (KLVtask_t task, std::int32_t j, std::vector<std::int32_t> rows,
                         std::vector<double> values)
{
    return KLV_putacol (task, j, static_cast<std::int32_t> (rows.size ()), rows.data (), values.data ());
}

KLVrescode_t put_bound (KLVtask_t task, std::int32_t key, double lower, double upper)
{
    const std::int32_t keys[] = {KLV_BK_FR, key};
    const double lowers[] = {nan, lower}, uppers[] = {nan, upper};
    return KLV_putvarboundslice (task, 0, 2, keys, lowers, uppers);
}

const Refused matrix_refusals[] = {
    {"column after the last", KLV_RES_INDEX_RANGE, "no variable with index 3: indices are 0 to 2",
     [] (KLVtask_t t) { return put_column (t, 3, {}, {}); }},
    {"negative column", KLV_RES_INDEX_RANGE, "index -1",
     [] (KLVtask_t t) { return put_column (t, -1, {}, {}); }},
    {"negative count", KLV_RES_INDEX_RANGE, "variable 2 (index 1, 'coal') is negative: -4",
     [] (KLVtask_t t) { return KLV_putacol (t, 1, -4, nullptr, nullptr); }},
    {"rows are null", KLV_RES_NULL_POINTER, "'rows'",
     [] (KLVtask_t t) {
         const double value = 1;
         return KLV_putacol (t, 1, 1, nullptr, &value);
     }},
    {"values are null", KLV_RES_NULL_POINTER, "'values'",
     [] (KLVtask_t t) {
         const std::int32_t row = 1;
         return KLV_putacol (t, 1, 1, &row, nullptr);
     }},
    {"row after the last", KLV_RES_INDEX_RANGE,
     "Entry 2 of the matrix column of variable 3 (index 2) has the "
     "row index 2, but there are 2 constraints",
     [] (KLVtask_t t) { return put_column (t, 2, {0, 2}, {1, 1}); }},
    {"negative row", KLV_RES_INDEX_RANGE, "row index -1",
     [] (KLVtask_t t) { return put_column (t, 0, {-1}, {1}); }},
    {"a row twice", KLV_RES_DUPLICATE_ENTRY, "names constraint 2 (index 1, 'mine') twice",
     [] (KLVtask_t t) { return put_column (t, 0, {1, 0, 1}, {1, 1, 1}); }},
    {"not a number", KLV_RES_VALUE_NOT_FINITE,
     "constraint 2 (index 1, 'mine') and variable 1 (index 0, 'steel') is NaN",
     [] (KLVtask_t t) { return put_column (t, 0, {0, 1}, {1, nan}); }},
    {"infinite", KLV_RES_VALUE_NOT_FINITE, "is -Inf",
     [] (KLVtask_t t) { return put_column (t, 0, {0}, {-inf}); }}};

const Refused bound_refusals[] = {
    {"unknown key", KLV_RES_VALUE_UNKNOWN, "bound key of variable 2 (index 1, 'coal') is 5",
     [] (KLVtask_t t) { return put_bound (t, 5, 0, 0); }},
    {"negative key", KLV_RES_VALUE_UNKNOWN, "is -1", [] (KLVtask_t t) { return put_bound (t, -1, 0, 0); }},
    {"lower is no number", KLV_RES_VALUE_NOT_FINITE, "'coal'",
     [] (KLVtask_t t) { return put_bound (t, KLV_BK_LO, nan, 0); }},
    {"upper is no number", KLV_RES_VALUE_NOT_FINITE, "'coal'",
     [] (KLVtask_t t) { return put_bound (t, KLV_BK_RA, 0, nan); }},
    {"lower is infinite", KLV_RES_BOUND_BEYOND_INFINITY, "lower Inf",
     [] (KLVtask_t t) { return put_bound (t, KLV_BK_LO, inf, 0); }},
    {"upper is -infinite", KLV_RES_BOUND_BEYOND_INFINITY, "upper -Inf",
     [] (KLVtask_t t) { return put_bound (t, KLV_BK_UP, 0, -inf); }},
    {"fixed at infinity", KLV_RES_BOUND_BEYOND_INFINITY, "Inf",
     [] (KLVtask_t t) { return put_bound (t, KLV_BK_FX, inf, inf); }},
    {"fixed at two values", KLV_RES_ARGUMENT, "lower 1, upper 2",
     [] (KLVtask_t t) { return put_bound (t, KLV_BK_FX, 1, 2); }},
    {"slice too long", KLV_RES_INDEX_RANGE, "from 0 to 4 is not part of the 3 variables",
     [] (KLVtask_t t) { return KLV_putvarboundslice (t, 0, 4, nullptr, nullptr, nullptr); }},
    {"slice backwards", KLV_RES_INDEX_RANGE, "from 2 to 1",
     [] (KLVtask_t t) { return KLV_putconboundslice (t, 2, 1, nullptr, nullptr, nullptr); }},
    {"arrays are null", KLV_RES_NULL_POINTER, "'keys'",
     [] (KLVtask_t t) { return KLV_putconboundslice (t, 0, 2, nullptr, nullptr, nullptr); }}};

const Refused other_refusals[] = {
    {"cost is no number", KLV_RES_VALUE_NOT_FINITE, "cost of variable 3 (index 2) is NaN",
     [] (KLVtask_t t) {
         const double costs[] = {5, nan};
         return KLV_putcslice (t, 1, 3, costs);
     }},
    {"cost is infinite", KLV_RES_VALUE_NOT_FINITE, "'steel') is Inf",
     [] (KLVtask_t t) { return KLV_putcslice (t, 0, 1, &inf); }},
    {"constant is infinite", KLV_RES_VALUE_NOT_FINITE, "constant",
     [] (KLVtask_t t) { return KLV_putcfix (t, -inf); }},
    {"sense", KLV_RES_VALUE_UNKNOWN, "is 2", [] (KLVtask_t t) { return KLV_putobjsense (t, 2); }},
    {"type", KLV_RES_VALUE_UNKNOWN, "'coal') is 2", [] (KLVtask_t t) { return KLV_putvartype (t, 1, 2); }},
    {"fewer variables", KLV_RES_INDEX_RANGE, "-1", [] (KLVtask_t t) { return KLV_appendvars (t, -1); }},
    {"fewer constraints", KLV_RES_INDEX_RANGE, "-1", [] (KLVtask_t t) { return KLV_appendcons (t, -1); }},
    {"more variables than can be counted", KLV_RES_TOO_LARGE, "3 variables and 2147483645 more",
     [] (KLVtask_t t) { return KLV_appendvars (t, 2147483645); }},
    {"affine expressions", KLV_RES_NOT_AVAILABLE, "affine",
     [] (KLVtask_t t) { return KLV_appendafes (t, 1); }},
    {"room for less than nothing", KLV_RES_INDEX_RANGE, "-1",
     [] (KLVtask_t t) { return KLV_putmaxnumanz (t, -1); }},
    {"name of no variable", KLV_RES_INDEX_RANGE, "variable with index 3",
     [] (KLVtask_t t) { return KLV_putvarname (t, 3, "x"); }},
    {"name is null", KLV_RES_NULL_POINTER, "'name'",
     [] (KLVtask_t t) { return KLV_putconname (t, 0, nullptr); }},
    {"cones have no names", KLV_RES_INDEX_RANGE, "cone with index 0: there is none",
     [] (KLVtask_t t) { return KLV_putconename (t, 0, "x"); }},
    {"a server", KLV_RES_NOT_AVAILABLE, "'far away'",
     [] (KLVtask_t t) { return KLV_putoptserverhost (t, "far away"); }},
    {"a repair", KLV_RES_NOT_AVAILABLE, "repair",
     [] (KLVtask_t t) { return KLV_primalrepair (t, nullptr, nullptr, nullptr, nullptr); }},
    {"a file without a name", KLV_RES_FILE_NAME_MISSING, "No problem file",
     [] (KLVtask_t t) { return KLV_readdata (t, nullptr); }},
    {"a stream", KLV_RES_STREAM_UNKNOWN, "stream 4", [] (KLVtask_t t) { return KLV_analyzeproblem (t, 4); }},
    {"solution number 3", KLV_RES_INDEX_RANGE, "solution with index 3",
     [] (KLVtask_t t) {
         std::int32_t defined = 0;
         return KLV_solutiondef (t, 3, &defined);
     }},
    {"no solution", KLV_RES_SOLUTION_UNDEFINED, "no basic solution", [] (KLVtask_t t) {
         double value = 0;
         return KLV_getprimalobj (t, KLV_SOL_BAS, &value);
     }}};

INSTANTIATE_TEST_SUITE_P (Matrix, Refusals, testing::ValuesIn (matrix_refusals));
INSTANTIATE_TEST_SUITE_P (Bounds, Refusals, testing::ValuesIn (bound_refusals));
INSTANTIATE_TEST_SUITE_P (Others, Refusals, testing::ValuesIn (other_refusals));

// ---- What is kept ---------------------------------------------------------------------------------------------------

struct BoundCase {
    const char* fault;
    std::int32_t key;
    double lower, upper;
    std::int32_t kept_key;
    double kept_lower, kept_upper;
};

TEST (Bounds, ComeBackAsTheyArePut)
{
    for (const BoundCase& c : {
             BoundCase{"absent values are not looked at", KLV_BK_FR, nan, nan, KLV_BK_FR, -1e30, 0},
             BoundCase{"lower", KLV_BK_LO, -4, nan, KLV_BK_LO, -4, 0},
             BoundCase{"upper", KLV_BK_UP, inf, 4, KLV_BK_UP, -1e30, 4},
             BoundCase{"both", KLV_BK_RA, -4, 4, KLV_BK_RA, -4, 4},
             BoundCase{"fixed", KLV_BK_FX, 3, 3, KLV_BK_FX, 3, 3},
             BoundCase{"crossed bounds are a statement", KLV_BK_RA, 5, 1, KLV_BK_RA, 5, 1},
             BoundCase{"equal bounds stay two", KLV_BK_RA, 1, 1, KLV_BK_RA, 1, 1},
             BoundCase{"huge is finite", KLV_BK_RA, -1e300, 1e300, KLV_BK_RA, -1e300, 1e300},
             BoundCase{"infinite lower is none", KLV_BK_LO, -inf, nan, KLV_BK_FR, -1e30, 0},
             BoundCase{"infinite upper is none", KLV_BK_RA, 2, inf, KLV_BK_LO, 2, 0},
             BoundCase{"infinite lower of two", KLV_BK_RA, -inf, 2, KLV_BK_UP, -1e30, 2},
         }) {
        const SmallTask task;
        ASSERT_EQ (put_bound (task, c.key, c.lower, c.upper), KLV_RES_OK) << c.fault;
        std::int32_t key = -1;
        double lower = nan, upper = nan;
        EXPECT_EQ (KLV_getvarbound (task, 1, &key, &lower, &upper), KLV_RES_OK);
        EXPECT_EQ (key, c.kept_key) << c.fault;
        EXPECT_EQ (lower, c.kept_lower) << c.fault;
        EXPECT_EQ (upper, c.kept_upper) << c.fault;
        EXPECT_EQ (KLV_getvarbound (task, 2, &key, &lower, &upper), KLV_RES_OK);
        EXPECT_EQ (key, KLV_BK_FR) << "a neighbour changed: " << c.fault;
    }
}

TEST (Columns, ComeBackInTheOrderInWhichTheyWerePut)
{
    const SmallTask task;
    std::int32_t count = -1, rows[2] = {-1, -1};
    double values[2] = {nan, nan};
    EXPECT_EQ (KLV_getacol (task, 0, &count, rows, values), KLV_RES_OK);
    EXPECT_EQ (count, 2);
    EXPECT_EQ (rows[0], 1);
    EXPECT_EQ (values[0], 2);
    EXPECT_EQ (rows[1], 0);
    EXPECT_EQ (values[1], -1);
    EXPECT_EQ (put_column (task, 0, {0}, {0}), KLV_RES_OK);
    std::int64_t entries = -1;
    EXPECT_EQ (KLV_getnumanz (task, &entries), KLV_RES_OK);
    EXPECT_EQ (entries, 1) << "a zero is an entry";
    EXPECT_EQ (KLV_putacol (task, 0, 0, nullptr, nullptr), KLV_RES_OK);
    EXPECT_EQ (KLV_getacol (task, 0, &count, nullptr, nullptr), KLV_RES_OK);
    EXPECT_EQ (count, 0);
}

TEST (Types, AreCountedOnce)
{
    const SmallTask task;
    const auto integers = [&] {
        std::int32_t count = -1;
        KLV_getnumintvar (task, &count);
        return count;
    };
    KLV_putvartype (task, 1, KLV_VAR_INTEGER);
    KLV_putvartype (task, 1, KLV_VAR_INTEGER);
    EXPECT_EQ (integers (), 1);
    KLV_putvartype (task, 0, KLV_VAR_CONTINUOUS);
    EXPECT_EQ (integers (), 1);
    KLV_putvartype (task, 1, KLV_VAR_CONTINUOUS);
    EXPECT_EQ (integers (), 0);
}

TEST (Solutions, StayUntilSizesChange)
{
    const SmallTask task;
    auto& slot = static_cast<KLVtask_t> (task)->solutions[KLV_SOL_BAS];
    slot.emplace ();
    KLV_putcfix (task, 3);
    KLV_appendvars (task, 0);
    EXPECT_TRUE (slot.has_value ());
    KLV_appendcons (task, 1);
    EXPECT_FALSE (slot.has_value ());
}

// ---- Memory -----------------------------------------------------------------------------------------------------------

struct Step {
    const char* what;
    std::function<KLVrescode_t (KLVtask_t)> call;
    KLVrescode_t code = KLV_RES_OK;
};

std::vector<Step> steps ()
{
    static const std::string name (100, 'n');
    static const std::int32_t rows[] = {2, 0, 1};
    static const double values[] = {1, 2, 3};
    static const std::int32_t keys[] = {KLV_BK_LO, KLV_BK_UP, KLV_BK_FX};
    return {
        {"variables", [] (KLVtask_t t) { return KLV_appendvars (t, 50); }},
        {"constraints", [] (KLVtask_t t) { return KLV_appendcons (t, 3); }},
        {"room", [] (KLVtask_t t) { return KLV_putmaxnumanz (t, 20); }},
        {"a column", [] (KLVtask_t t) { return KLV_putacol (t, 30, 3, rows, values); }},
        {"more columns",
         [] (KLVtask_t t) {
             for (std::int32_t j = 49; j > 40; --j)
                 if (const KLVrescode_t code = KLV_putacol (t, j, 3, rows, values))
                     return code;
             return KLV_RES_OK + 0;
         }},
        {"a repeated row",
         [] (KLVtask_t t) {
             const std::int32_t twice[] = {1, 1};
             return KLV_putacol (t, 0, 2, twice, values);
         },
         KLV_RES_DUPLICATE_ENTRY},
        {"a wrong row",
         [] (KLVtask_t t) {
             const std::int32_t row = 3;
             return KLV_putacol (t, 0, 1, &row, values);
         },
         KLV_RES_INDEX_RANGE},
        {"bounds of variables",
         [] (KLVtask_t t) { return KLV_putvarboundslice (t, 7, 10, keys, values, values); }},
        {"bounds of constraints",
         [] (KLVtask_t t) { return KLV_putconboundslice (t, 0, 3, keys, values, values); }},
        {"costs", [] (KLVtask_t t) { return KLV_putcslice (t, 2, 5, values); }},
        {"a type", [] (KLVtask_t t) { return KLV_putvartype (t, 4, KLV_VAR_INTEGER); }},
        {"the task's name", [] (KLVtask_t t) { return KLV_puttaskname (t, name.c_str ()); }},
        {"the objective's name", [] (KLVtask_t t) { return KLV_putobjname (t, name.c_str ()); }},
        {"a variable's name", [] (KLVtask_t t) { return KLV_putvarname (t, 3, name.c_str ()); }},
        {"a constraint's name", [] (KLVtask_t t) { return KLV_putconname (t, 2, name.c_str ()); }},
        {"more variables", [] (KLVtask_t t) { return KLV_appendvars (t, 500); }},
        {"more constraints", [] (KLVtask_t t) { return KLV_appendcons (t, 500); }},
        {"a change while a run holds the problem",
         [] (KLVtask_t t) {
             const auto held = t->share_problem ();
             return KLV_putcfix (t, 4);
         }},
        {"a text parameter", [] (KLVtask_t t) { return KLV_putstrparam (t, 1, name.c_str ()); }},
        {"a summary", [] (KLVtask_t t) { return KLV_readsummary (t, KLV_STREAM_MESSAGES); }},
        {"an analysis", [] (KLVtask_t t) { return KLV_analyzeproblem (t, KLV_STREAM_MESSAGES); }},
    };
}

// A file instead of a collecting function: the test's own text would be among the allocations.
TEST (Memory, EachAllocationOfEachOperationMayFail)
{
    const files::Task task;
    KLV_linkfunctotaskstream (task, KLV_STREAM_WARNINGS, nullptr, nullptr);
    KLV_linkfiletotaskstream (task, KLV_STREAM_ALL, "/dev/null", 0);
    const klv::Parameters& parameters = static_cast<KLVtask_t> (task)->parameters;
    int failures = 0;
    for (const Step& step : steps ())
        for (std::size_t n = 0;; ++n) {
            const klv::Problem before = copy_of (task);
            const auto texts = parameters.texts;
            KLVrescode_t code = -1;
            bool failed = false;
            {
                const FailingNew failing (n);
                code = step.call (task);
                failed = failing.has_failed ();
            }
            if (!failed) {
                EXPECT_EQ (code, step.code) << step.what;
                break;
            }
            ++failures;
            ASSERT_EQ (code, KLV_RES_OUT_OF_MEMORY) << step.what << ' ' << n;
            EXPECT_EQ (task.last_error (), "There is not enough memory.");
            if (step.what == std::string ("more columns"))
                continue;    // those before the failure are there
            EXPECT_EQ (files::difference (before, task.problem ()), std::nullopt) << step.what << ' ' << n;
            EXPECT_EQ (parameters.texts, texts) << step.what;
        }
    EXPECT_GT (failures, 40);
    EXPECT_EQ (task.problem ().variables (), 550);
}

TEST (Memory, ATaskThatCannotBeMadeIsNull)
{
    for (std::size_t n = 0;; ++n) {
        KLVtask_t task = reinterpret_cast<KLVtask_t> (&n);
        const FailingNew failing (n);
        const KLVrescode_t code = KLV_makeemptytask (nullptr, &task);
        if (!failing.has_failed ()) {
            EXPECT_GT (n, 1u);
            KLV_deletetask (&task);
            return;
        }
        EXPECT_EQ (code, KLV_RES_OUT_OF_MEMORY);
        EXPECT_EQ (task, nullptr);
    }
}

TEST (Memory, RoomForMoreThanThereIs)
{
    const SmallTask task;
    for (const std::int64_t entries : {std::int64_t{1} << 50, std::numeric_limits<std::int64_t>::max ()})
        EXPECT_EQ (KLV_putmaxnumanz (task, entries), KLV_RES_OUT_OF_MEMORY) << entries;
    EXPECT_EQ (put_column (task, 1, {0}, {1}), KLV_RES_OK);
}

// ---- Large loads ------------------------------------------------------------------------------------------------------

struct Asked {
    int times = 0;
    std::uint32_t caller = 0;
    std::int32_t answer = 0;
};

std::int32_t ask (KLVtask_t, void* handle, std::uint32_t caller, const double*, const std::int32_t*,
                  const std::int64_t*)
{
    auto& asked = *static_cast<Asked*> (handle);
    ++asked.times;
    asked.caller = caller;
    return asked.answer;
}

TEST (Load, AsksTheCallbackAndStops)
{
    for (const auto& [answer, code] :
         {std::pair{0, +KLV_RES_OK}, std::pair{1, +KLV_RES_USER_STOP}, std::pair{-5, +KLV_RES_USER_STOP},
          std::pair{1051, +KLV_RES_OUT_OF_MEMORY}}) {
        const SmallTask task;
        Asked asked;
        asked.answer = answer;
        KLV_putcallbackfunc (task, ask, &asked);
        KLVrescode_t last = KLV_RES_OK;
        const auto begin = std::chrono::steady_clock::now ();
        const std::int32_t row = 1;
        const double first = 1, later = 2;
        EXPECT_EQ (KLV_putacol (task, 2, 1, &row, &first), KLV_RES_OK);
        while (asked.times == 0 && std::chrono::steady_clock::now () - begin < std::chrono::seconds (5))
            last = KLV_putacol (task, 2, 1, &row, asked.times == 0 ? &later : &first);
        EXPECT_EQ (last, code) << answer;
        EXPECT_EQ (asked.times, 1);
        EXPECT_EQ (asked.caller, static_cast<std::uint32_t> (KLV_CALLER_LOAD));
    }
}

}
