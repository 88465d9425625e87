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

// A number whose whole part is not 0 stops; what is no number does not.
TEST_F (Callbacks, StopByTheirAnswer)
{
    const std::pair<const char*, KLVrescode_t> cases[] = {
        {"0", 0},
        {"0.5", 0},
        {"-0.9", 0},
        {"1", KLV_RES_USER_STOP},
        {"-1", KLV_RES_USER_STOP},
        {"2.5", KLV_RES_USER_STOP},
        {"4294967296", KLV_RES_USER_STOP},
        {"nan", KLV_RES_USER_STOP},
        {"[0 1]", 0},
        {"sparse 0", 0},
        {"sparse [0;3]", 0},
        {"sparse 1", KLV_RES_USER_STOP},
        {"[]", 0},
        {"logical 1", 0},
        {"'stop'", 0},
        {"{1}", 0},
        {"@", 0},
    };
    for (const auto& [answer, code] : cases) {
        int calls = 0;
        define_progress ([&] (const std::vector<View>&) { return ++calls, value (answer); });
        EXPECT_EQ (code_of (solve ()), code) << answer;
        EXPECT_EQ (printed (), "") << answer;
        EXPECT_GE (calls, 1) << answer;
    }
}

TEST_F (Callbacks, ThatAreWrongOrFailEndAsTheyShould)
{
    const struct {
        const char *callback, *printed;
        KLVrescode_t code;
    } cases[] = {
        {"(other=1)", "", 0},
        {"(log=1, iter=string)", "", 0},
        {"(log=@, iter=@)", "", 0},
        {"(log='', iter='')", "", 0},
        {"(log='x')", "1200 callback.loghandle; ", 1200},
        {"(iter='x')", "1200 callback.iterhandle; ", 1200},
        {"(iter='nowhere', iterhandle=[])", "100007 ; ", KLV_RES_USER_STOP},
        {"(iter='failing', iterhandle=[])", "100007 ; ", KLV_RES_USER_STOP},
        {"(iter='interrupted', iterhandle=[])", "", KLV_RES_USER_STOP},
        {"(log='failing', loghandle=[])", "", 0},
    };
    session ().define ("failing", [] (int, const std::vector<View>&) -> std::vector<Value> {
        throw MatlabError ("on purpose");
    });
    session ().define ("interrupted", [] (int, const std::vector<View>&) -> std::vector<Value> {
        session ().interrupt_pending = true;
        throw MatlabError ("interrupted");
    });
    for (const auto& c : cases) {
        EXPECT_EQ (code_of (solve (c.callback)), c.code) << c.callback;
        EXPECT_EQ (printed (), c.printed + (c.code == 1200 ? set_up_line (1200) : "")) << c.callback;
        EXPECT_FALSE (session ().interrupt_pending) << c.callback;
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
