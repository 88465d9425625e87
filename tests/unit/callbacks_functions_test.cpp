// Functions of the session as receivers of log text and progress.

#include <cmath>
#include <limits>

#include "tests/unit/gateway_call.h"

namespace {

Value iter_record ()
{
    return record ({{"iter", text ("progress")}, {"iterhandle", text ("mine")}});
}
Value log_record ()
{
    return record ({{"log", text ("receive")}, {"loghandle", scalar (42)}});
}

Call solve (const std::string& command, const Value& callback, int outputs = 2)
{
    return call (outputs, {text (command), small_problem (), absent (), callback});
}

// ---- The answer of a progress function ----

struct Answer {
    const char* fault;
    std::function<Value ()> value;
    double code;
};

class AnswerTest : public HostTest, public testing::WithParamInterface<Answer> {};

TEST_P (AnswerTest, StopsOrNot)
{
    int calls = 0;
    session ().define ("progress", [&] (int, const std::vector<View>&) {
        ++calls;
        return std::vector<Value>{GetParam ().value ()};
    });
    const Call result = solve ("minimize echo(0)", iter_record ());
    EXPECT_EQ (result[0].number (), GetParam ().code);
    EXPECT_EQ (session ().printed, "");
    EXPECT_GE (calls, 1);
    EXPECT_EQ (result.left_arrays + result.left_blocks, 0U);
}

constexpr double nan = std::numeric_limits<double>::quiet_NaN ();

INSTANTIATE_TEST_SUITE_P (
    Answers, AnswerTest,
    testing::Values (Answer{"zero stops", [] { return scalar (0); }, 0},
                     Answer{"a fraction stops", [] { return scalar (0.5); }, 0},
                     Answer{"a negative fraction stops", [] { return scalar (-0.9); }, 0},
                     Answer{"one goes on", [] { return scalar (1); }, 100007},
                     Answer{"a negative number goes on", [] { return scalar (-1); }, 100007},
                     Answer{"a number with fraction goes on", [] { return scalar (2.5); }, 100007},
                     Answer{"a number beyond 32 bits is 0", [] { return scalar (4294967296.0); }, 100007},
                     Answer{"NaN is 0", [] { return scalar (nan); }, 100007},
                     Answer{"not the first element counts", [] { return row ({0, 1}); }, 0},
                     Answer{"an empty sparse array is read", [] { return sparse (1, 1, {}); }, 0},
                     Answer{"an element further on counts", [] { return sparse (2, 1, {{1, 0, 3}}); }, 0},
                     Answer{"a sparse one goes on", [] { return sparse (1, 1, {{0, 0, 1}}); }, 100007},
                     Answer{"an empty array is read", [] { return absent (); }, 0},
                     Answer{"true stops", [] { return array (mxLOGICAL_CLASS, {1, 1}, {1}); }, 0},
                     Answer{"an integer stops", [] { return array (mxINT32_CLASS, {1, 1}, {1}); }, 0},
                     Answer{"a text is read as a number", [] { return text ("stop"); }, 0},
                     Answer{"a cell is read as a number", [] { return cell ({scalar (1)}); }, 0},
                     Answer{"a record is read as a number", [] { return small_problem (); }, 0},
                     Answer{"a handle is read as a number", [] { return function_handle (); }, 0}),
    by_fault);

// ---- What goes wrong ----

struct Fault {
    const char* fault;
    std::function<Value ()> callback;
    double code;
    const char* line;
};

class CallbackFaultTest : public HostTest, public testing::WithParamInterface<Fault> {};

TEST_P (CallbackFaultTest, EndsAsItShould)
{
    session ().define ("failing", [] (int, const std::vector<View>&) -> std::vector<Value> {
        throw MatlabError ("on purpose");
    });
    const Call result = solve ("minimize echo(0)", GetParam ().callback ());
    const double code = GetParam ().code;
    EXPECT_EQ (result[0].number (), code);
    const std::string last = code == 1200 ? set_up_line (1200) : "";
    EXPECT_EQ (session ().printed, GetParam ().line + last);
    EXPECT_EQ (result.left_arrays + result.left_blocks, 0U);
}

INSTANTIATE_TEST_SUITE_P (
    Records, CallbackFaultTest,
    testing::Values (
        Fault{"a record without functions is refused", [] { return record ({{"other", scalar (1)}}); }, 0,
              ""},
        Fault{"a function that is no name is refused", [] { return record ({{"iter", scalar (1)}}); }, 0, ""},
        Fault{"a function handle is taken for a name",
              [] { return record ({{"log", function_handle ()}, {"iter", function_handle ()}}); }, 0, ""},
        Fault{"a log function without handle passes", [] { return record ({{"log", text ("x")}}); }, 1200,
              "*** Error(1200): callback.loghandle\n"},
        Fault{"a progress function without handle passes", [] { return record ({{"iter", text ("x")}}); },
              1200, "*** Error(1200): callback.iterhandle\n"},
        Fault{"a function that does not exist is ignored",
              [] { return record ({{"iter", text ("nowhere")}, {"iterhandle", absent ()}}); }, 100007,
              "*** Error(100007): \n"},
        Fault{"an error in a progress function is ignored",
              [] { return record ({{"iter", text ("failing")}, {"iterhandle", absent ()}}); }, 100007,
              "*** Error(100007): \n"},
        Fault{"an error in a log function ends the run",
              [] { return record ({{"log", text ("failing")}, {"loghandle", absent ()}}); }, 0, ""}),
    by_fault);

// ---- What the functions receive ----

using FunctionTest = HostTest;

TEST_F (FunctionTest, ProgressCarriesTheHandleTheCallerAndTheRecordOfTheMoment)
{
    std::vector<Value> records;
    std::vector<double> callers;
    session ().define ("progress", [&] (int outputs, const std::vector<View>& inputs) {
        EXPECT_EQ (outputs, 1);
        EXPECT_EQ (inputs.size (), 3U);
        EXPECT_EQ (inputs[0].text (), "mine");
        callers.push_back (inputs[1].number ());
        records.push_back (Value (mxDuplicateArray (inputs[2].get ())));
        return std::vector<Value>{scalar (0)};
    });
    const Call result = solve ("minimize info echo(0)", iter_record ());
    ASSERT_GE (records.size (), 2U);
    EXPECT_EQ (callers.front (), KLV_CALLER_BEGIN_OPTIMIZE);
    EXPECT_EQ (callers.back (), KLV_CALLER_END_OPTIMIZE);
    const std::vector<std::string> names = result[1]["info"].field_names ();
    ASSERT_EQ (names.size (), 228U);
    bool changed = false;
    for (const std::string& name : names) {
        EXPECT_EQ (records.front ()[name.c_str ()].class_id (), mxDOUBLE_CLASS) << name;
        changed |= records.front ()[name.c_str ()].number () != records.back ()[name.c_str ()].number ();
    }
    EXPECT_EQ (records.front ().field_names (), names);
    EXPECT_TRUE (changed) << "the record is never refreshed";
}

// What each level lets through is the same text for the console and for a log function.
TEST_F (FunctionTest, LogReceivesWhatTheConsoleWouldShow)
{
    for (const char* level : {"echo(0)", "echo(1)", "echo(2)", "echo(3)", "echo(4)"}) {
        const std::string command = std::string ("minimize ") + level;
        const std::string intro = std::string (level) == "echo(0)" ? "" : banner ();
        const std::string shown = printed_by ({text (command), small_problem ()});
        std::string received;
        session ().define ("receive", [&] (int outputs, const std::vector<View>& inputs) {
            EXPECT_EQ (outputs, 0);
            EXPECT_EQ (inputs[0].number (), 42);
            received += inputs[1].text ();
            return std::vector<Value>{};
        });
        session ().printed.clear ();
        solve (command, log_record ());
        EXPECT_EQ (session ().printed, intro) << level;
        // Times differ from run to run.
        EXPECT_EQ (received.empty (), shown == intro) << level;
        EXPECT_EQ (std::count (received.begin (), received.end (), '\n'),
                   std::count (shown.begin (), shown.end (), '\n') -
                       std::count (intro.begin (), intro.end (), '\n'))
            << level;
    }
}

TEST_F (FunctionTest, InterruptStopsBeforeTheFunctionIsCalled)
{
    std::vector<double> callers;
    session ().define ("progress", [&] (int, const std::vector<View>& inputs) {
        callers.push_back (inputs[1].number ());
        return std::vector<Value>{scalar (0)};
    });
    session ().interrupt_pending = true;
    EXPECT_EQ (solve ("minimize echo(0)", iter_record ())[0].number (), 100007);
    EXPECT_EQ (std::count (callers.begin (), callers.end (), KLV_CALLER_BEGIN_OPTIMIZE), 0);
    EXPECT_FALSE (session ().interrupt_pending);
    EXPECT_EQ (solve ("minimize echo(0)", iter_record ())[0].number (), 0);
}

TEST_F (FunctionTest, CallsOfKalvooptNest)
{
    double inner = 0;
    int depth = 0;
    session ().define ("progress", [&] (int, const std::vector<View>&) {
        if (depth++ == 0)
            inner = solve ("minimize echo(0)", iter_record ())[1]["sol"]["bas"]["pobjval"].number ();
        --depth;
        return std::vector<Value>{scalar (0)};
    });
    const Call result = solve ("minimize echo(0)", iter_record ());
    EXPECT_EQ (result[0].number (), 0);
    EXPECT_NEAR (inner, 3, 1e-6);
    EXPECT_NEAR (result[1]["sol"]["bas"]["pobjval"].number (), 3, 1e-6);
}

}
