// What is put into a task and read back: refusals name what is wrong and change nothing.
#include "tests/library/model.h"

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN ();
constexpr double inf = model::inf;
using T = KLVtask_t;

KLVrescode_t column (T task, std::int32_t j, const std::vector<std::int32_t>& rows = {}, double last = 1)
{
    std::vector<double> values (rows.size (), 1);
    if (!values.empty ())
        values.back () = last;
    return KLV_putacol (task, j, static_cast<std::int32_t> (rows.size ()), rows.data (), values.data ());
}

KLVrescode_t bound (T task, std::int32_t key, double lower, double upper)
{
    const std::int32_t keys[] = {KLV_BK_FR, key};
    const double lowers[] = {nan, lower}, uppers[] = {nan, upper};
    return KLV_putvarboundslice (task, 0, 2, keys, lowers, uppers);
}

KLVrescode_t cost (T task, std::int32_t j, double value)
{
    const double costs[] = {5, value};
    return KLV_putcslice (task, j - 1, j + 1, costs);
}

// Three variables, the last without a name, and two constraints.
struct SmallTask : files::Task {
    SmallTask ()
    {
        KLV_appendvars (*this, 3);
        KLV_appendcons (*this, 2);
        column (*this, 0, {1, 0}, -1);
        KLV_putvarname (*this, 0, "steel");
        KLV_putvarname (*this, 1, "coal");
        KLV_putconname (*this, 1, "mine");
    }
};

struct Refusal {
    KLVrescode_t code;
    const char* message;
    KLVrescode_t (*call) (T task);
};

const std::int32_t one = 1;

const Refusal refusals[] = {
    {KLV_RES_INDEX_RANGE, "no variable with index 3: indices are 0 to 2", [] (T t) { return column (t, 3); }},
    {KLV_RES_INDEX_RANGE, "index -1", [] (T t) { return column (t, -1); }},
    {KLV_RES_INDEX_RANGE, "variable 2 (index 1, 'coal') is negative: -4",
     [] (T t) { return KLV_putacol (t, 1, -4, nullptr, nullptr); }},
    {KLV_RES_NULL_POINTER, "'rows'", [] (T t) { return KLV_putacol (t, 1, 1, nullptr, &inf); }},
    {KLV_RES_NULL_POINTER, "'values'", [] (T t) { return KLV_putacol (t, 1, 1, &one, nullptr); }},
    {KLV_RES_INDEX_RANGE,
     "Entry 2 of the matrix column of variable 3 (index 2) has the row index 2, but there are 2 constraints",
     [] (T t) { return column (t, 2, {0, 2}); }},
    {KLV_RES_DUPLICATE_ENTRY, "constraint 2 (index 1, 'mine') twice",
     [] (T t) { return column (t, 0, {1, 0, 1}); }},
    {KLV_RES_VALUE_NOT_FINITE, "constraint 2 (index 1, 'mine') and variable 1 (index 0, 'steel') is NaN",
     [] (T t) { return column (t, 0, {0, 1}, nan); }},
    {KLV_RES_VALUE_UNKNOWN, "bound key of variable 2 (index 1, 'coal') is 5",
     [] (T t) { return bound (t, 5, 0, 0); }},
    {KLV_RES_VALUE_NOT_FINITE, "'coal'", [] (T t) { return bound (t, KLV_BK_LO, nan, 0); }},
    {KLV_RES_BOUND_BEYOND_INFINITY, "lower Inf", [] (T t) { return bound (t, KLV_BK_LO, inf, 0); }},
    {KLV_RES_BOUND_BEYOND_INFINITY, "upper -Inf", [] (T t) { return bound (t, KLV_BK_UP, 0, -inf); }},
    {KLV_RES_BOUND_BEYOND_INFINITY, "Inf", [] (T t) { return bound (t, KLV_BK_FX, inf, inf); }},
    {KLV_RES_ARGUMENT, "lower 1, upper 2", [] (T t) { return bound (t, KLV_BK_FX, 1, 2); }},
    {KLV_RES_INDEX_RANGE, "from 0 to 4 is not part of the 3 variables",
     [] (T t) { return KLV_putvarboundslice (t, 0, 4, nullptr, nullptr, nullptr); }},
    {KLV_RES_INDEX_RANGE, "from 2 to 1", [] (T t) { return KLV_putcslice (t, 2, 1, nullptr); }},
    {KLV_RES_NULL_POINTER, "'keys'",
     [] (T t) { return KLV_putconboundslice (t, 0, 2, nullptr, nullptr, nullptr); }},
    {KLV_RES_VALUE_NOT_FINITE, "cost of variable 3 (index 2) is NaN", [] (T t) { return cost (t, 2, nan); }},
    {KLV_RES_VALUE_NOT_FINITE, "constant", [] (T t) { return KLV_putcfix (t, -inf); }},
    {KLV_RES_VALUE_UNKNOWN, "is 2", [] (T t) { return KLV_putobjsense (t, 2); }},
    {KLV_RES_VALUE_UNKNOWN, "'coal') is 2", [] (T t) { return KLV_putvartype (t, 1, 2); }},
    {KLV_RES_INDEX_RANGE, "-1", [] (T t) { return KLV_appendvars (t, -1); }},
    {KLV_RES_TOO_LARGE, "3 variables and 2147483645 more",
     [] (T t) { return KLV_appendvars (t, 2147483645); }},
    {KLV_RES_INDEX_RANGE, "-1", [] (T t) { return KLV_putmaxnumanz (t, -1); }},
    {KLV_RES_NOT_AVAILABLE, "'far away'", [] (T t) { return KLV_putoptserverhost (t, "far away"); }},
    {KLV_RES_STREAM_UNKNOWN, "stream 4", [] (T t) { return KLV_analyzeproblem (t, 4); }},
    {KLV_RES_INDEX_RANGE, "solution with index 3", [] (T t) { return KLV_solutiondef (t, 3, nullptr); }},
    {KLV_RES_STATUS_KEY_UNKNOWN, "1 of skc",
     [] (T t) { return model::put_start (t, KLV_SOL_BAS, {7, 1}, {}, {}); }},
    {KLV_RES_STATUS_KEY_UNKNOWN, "Entry 2 of skx is -1, which is no status key.",
     [] (T t) { return model::put_start (t, KLV_SOL_BAS, {}, {1, -1, 1}, {}); }},
    {KLV_RES_VALUE_NOT_FINITE, "xx", [] (T t) { return model::put_start (t, 0, {}, {}, {1, inf, 1}); }},
    {KLV_RES_VALUE_NOT_FINITE, "y", [] (T t) { return model::put_start (t, 0, {}, {}, {}, {-inf, 0}); }},
    {KLV_RES_INDEX_RANGE, "index 3", [] (T t) { return model::put_start (t, 3, {}, {}, {}); }},
    {KLV_RES_SOLUTION_UNDEFINED, "no basic solution",
     [] (T t) { return KLV_getskn (t, KLV_SOL_BAS, nullptr); }},
};

TEST (Refusals, NameTheFaultAndChangeNothing)
{
    for (const Refusal& refusal : refusals) {
        const SmallTask task;
        const klv::Problem before = task.problem ();
        EXPECT_EQ (refusal.call (task), refusal.code) << refusal.message;
        EXPECT_NE (task.last_error ().find (refusal.message), std::string::npos) << task.last_error ();
        EXPECT_EQ (task.printed, "Error " + std::to_string (refusal.code) + ": " + task.last_error () + "\n");
        EXPECT_EQ (model::difference (before, task.problem ()), std::nullopt) << refusal.message;
        EXPECT_EQ (model::proved (task), "");
    }
}

TEST (Bounds, ComeBackAsTheyArePut)
{
    constexpr std::int32_t lo = KLV_BK_LO, up = KLV_BK_UP, fr = KLV_BK_FR, ra = KLV_BK_RA;
    for (const auto& [fault, key, lower, upper, kept] : {
             std::tuple{"absent values are not looked at", fr, nan, nan, ".."},
             {"nor absent ones above", lo, -4.0, nan, "-4.."},
             {"nor absent ones below", up, inf, 4.0, "..4"},
             {"crossed bounds are a statement", ra, 5.0, 1.0, "5..1"},
             {"equal bounds stay two", ra, 1.0, 1.0, "1..1"},
             {"infinite lower is none", lo, -inf, nan, ".."},
             {"infinite upper is none", ra, 2.0, inf, "2.."},
             {"infinite lower of two", ra, -inf, 2.0, "..2"},
         }) {
        const SmallTask task;
        EXPECT_EQ (bound (task, key, lower, upper), KLV_RES_OK) << fault;
        EXPECT_PRED_FORMAT2 (testing::IsSubstring, "; steel .. coal " + std::string (kept) + " C3 ..;",
                             model::text_of (task.problem ()));
    }
}

TEST (Store, KeepsOrderZerosAndCounts)
{
    const SmallTask task;
    std::int32_t count = -1, rows[2] = {-1, -1};
    double values[2] = {nan, nan};
    std::int64_t entries = -1;
    EXPECT_EQ (KLV_getacol (task, 0, &count, rows, values), KLV_RES_OK);
    EXPECT_TRUE (count == 2 && rows[0] == 1 && values[0] == 1 && rows[1] == 0 && values[1] == -1);
    EXPECT_EQ (column (task, 0, {1, 0, 1}), KLV_RES_DUPLICATE_ENTRY);
    EXPECT_EQ (column (task, 1, {1, 0}), KLV_RES_OK) << "rows of an earlier column are no repetition";
    EXPECT_EQ (column (task, 1), KLV_RES_OK);
    EXPECT_EQ (column (task, 0, {0}, 0), KLV_RES_OK);
    EXPECT_EQ (KLV_getnumanz (task, &entries), KLV_RES_OK);
    EXPECT_EQ (entries, 1) << "a zero is an entry";
    for (const auto& [j, type, integers] : {std::tuple{1, 1, 1}, {1, 1, 1}, {0, 0, 1}, {1, 0, 0}}) {
        KLV_putvartype (task, j, type);
        KLV_getnumintvar (task, &count);
        EXPECT_EQ (count, integers);
    }
    auto& slot = task->solutions[KLV_SOL_BAS];
    slot.emplace ();
    KLV_putcfix (task, 3);
    KLV_appendvars (task, 0);
    EXPECT_TRUE (slot.has_value ());
    KLV_appendcons (task, 1);
    EXPECT_FALSE (slot.has_value ()) << "a solution of other sizes";
}

TEST (LoadAndAnalysis, AskTheCallbackAndStop)
{
    using Call = KLVrescode_t (*) (T task);
    const Call load = [] (T t) { return column (t, 2, {1}); };
    const Call analyze = [] (T t) { return KLV_analyzeproblem (t, KLV_STREAM_MESSAGES); };
    for (const auto& [call, caller, answer, code] : {std::tuple{load, +KLV_CALLER_LOAD, 0, +KLV_RES_OK},
                                                     {load, KLV_CALLER_LOAD, -5, KLV_RES_USER_STOP},
                                                     {load, KLV_CALLER_LOAD, 1051, KLV_RES_OUT_OF_MEMORY},
                                                     {analyze, KLV_CALLER_ANALYZE, 1, KLV_RES_USER_STOP}}) {
        SmallTask task;
        std::int32_t asked = 0;
        KLV_appendvars (task, call == load ? 0 : 2'000'000);
        task.on_progress ([&, answer = answer] (std::uint32_t from) {
            asked = static_cast<std::int32_t> (from);
            return answer;
        });
        KLVrescode_t last = KLV_RES_OK;
        for (int i = 0; asked == 0 && i < 100'000'000; ++i)
            last = call (task);
        EXPECT_EQ (last, code);
        EXPECT_EQ (asked, caller);
    }
}

// Names never overrun a buffer.
TEST (Names, AreCutBetweenCharactersWithAFault)
{
    const files::Task task;
    for (const auto& [text, capacity, kept] : {std::tuple{"abc", 4, "abc"},
                                               {"abc", 3, "ab"},
                                               {"abc", 1, ""},
                                               {"a\xC3\xBC", 3, "a"},
                                               {"\xF0\x9F\x98\x80", 4, ""},
                                               {"\x80\x80\x80\x80\x80\x80", 6, "\x80\x80"},
                                               {"abc", 0, "????????"},
                                               {"abc", -1, "????????"}}) {
        std::string buffer (8, '?');
        KLV_puttaskname (task, text);
        const KLVrescode_t code = KLV_gettaskname (task, capacity, buffer.data ());
        EXPECT_EQ (code, kept == std::string (text) ? KLV_RES_OK : KLV_RES_BUFFER_TOO_SMALL) << text;
        EXPECT_STREQ (buffer.c_str (), kept);
        EXPECT_EQ (buffer[static_cast<std::size_t> (std::max (capacity, 0))], '?') << "overrun: " << text;
    }
}

}
