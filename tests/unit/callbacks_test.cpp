// Functions of the session as receivers of progress and log text.

#include "tests/unit/gateway_test.h"

namespace {

using Callbacks = GatewayTest;

Call solve (const std::string& callback = "(iter='progress', iterhandle='mine')")
{
    return ask ("minimize info echo(0)", {small_problem, "[]", callback});
}

void define_progress (const std::function<Value (const std::vector<View>&)>& function)
{
    session ().define ("progress",
                       [=] (int, const std::vector<View>& inputs) { return std::vector{function (inputs)}; });
}

TEST_F (Callbacks, ThatAreWrongOrFailEndAsTheyShould)
{
    const std::string stopped = std::to_string (KLV_RES_USER_STOP), set_up = set_up_line (1200) + "1200";
    const std::pair<const char*, std::string> cases[] = {
        {"(other=1)", "0"},
        {"(log=1, iter=string)", "0"},
        {"(log=@, iter='')", "0"},
        {"(log='x')", "1200 callback.loghandle; " + set_up},
        {"(iter='x')", "1200 callback.iterhandle; " + set_up},
        {"(iter='nowhere', iterhandle=[])", "100007 ; " + stopped},
        {"(iter='failing', iterhandle=[])", "100007 ; " + stopped},
        {"(iter='interrupted', iterhandle=[])", stopped},
        {"(log='failing', loghandle=[])", "0"},
    };
    const auto failing = [] (bool interrupts) {
        return [=] (int, const std::vector<View>&) -> std::vector<Value> {
            session ().interrupt_pending = interrupts;
            throw MatlabError ("on purpose");
        };
    };
    session ().define ("failing", failing (false));
    session ().define ("interrupted", failing (true));
    for (const auto& [callback, text] : cases) {
        EXPECT_EQ (outcome ("minimize echo(0)", {small_problem, "[]", callback}), text) << callback;
        EXPECT_FALSE (session ().interrupt_pending) << callback;
    }
}

TEST_F (Callbacks, ReceiveTheHandleTheCallerAndTheRecordOfTheMoment)
{
    std::vector<Value> records;
    std::vector<double> callers;
    define_progress ([&] (const std::vector<View>& inputs) {
        EXPECT_EQ (inputs.size (), 3U);
        EXPECT_EQ (inputs[0].text (), "mine");
        EXPECT_FALSE (session ().interrupt_enabled);
        callers.push_back (inputs[1].number ());
        records.emplace_back (mxDuplicateArray (inputs[2].get ()));
        return value ("0");
    });
    const Call result = solve ();
    ASSERT_GE (records.size (), 2U);
    EXPECT_EQ (callers.front (), KLV_CALLER_BEGIN_OPTIMIZE);
    EXPECT_EQ (callers.back (), KLV_CALLER_END_OPTIMIZE);
    EXPECT_NE (show (records.front ()), show (records.back ())) << "never refreshed";
    EXPECT_EQ (records.back ().field_names (), result[1]["info"].field_names ());
}

TEST_F (Callbacks, NestAndAnInterruptStopsTheInnerCallOnce)
{
    for (const bool interrupted : {false, true}) {
        double outer_calls = 0;
        KLVrescode_t inner = -1;
        define_progress ([&] (const std::vector<View>&) {
            if (outer_calls++ == 0) {
                session ().interrupt_pending = interrupted;
                inner = code_of (solve ());
            }
            return value ("0");
        });
        const Call result = solve ();
        EXPECT_EQ (inner, interrupted ? KLV_RES_USER_STOP : 0);
        EXPECT_EQ (code_of (result), 0);
        EXPECT_NEAR (result[1]["sol"]["bas"]["pobjval"].number (), 3, 1e-6);
    }
}

}
