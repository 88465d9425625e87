// What MATLAB does and Octave does not: errors that end a call in the middle, characters of 16 bits, presses of Ctrl-C that only raise a flag.

#include "tests/support/problem_file.h"
#include "tests/unit/gateway_test.h"

namespace {

using Matlab = GatewayTest;

// Also from within the library, which then ends the call as it ends every call that fails inside it. Records of
// information hold so many arrays that not each one is tried.
TEST_F (Matlab, EndsACallWithoutMemoryAndNothingIsLeftBehind)
{
    session ().define ("receive", [] (int, const std::vector<View>&) { return std::vector<Value>{}; });
    session ().define ("progress", [] (int, const std::vector<View>&) { return std::vector{value ("0")}; });
    for (const auto& [command, functions, step] :
         {std::tuple ("'minimize prob version'", "(log='receive', loghandle=1)", 1),
          std::tuple ("'minimize info'", "(iter='progress', iterhandle={2, 'two'})", 23)}) {
        std::vector<Value> inputs;
        for (const char* input :
             {command,
              "(a=sparse [1 2; 2 1], c=[1 2], blc=[3 3], blx=[0;0], ints=(sub=2), names=(con={'r1', 'r2'}))",
              "(KLV_DPAR_TIME_LIMIT=60, KLV_SPAR_DATA_FILE='x')", functions, "(host='')"})
            inputs.push_back (value (input));
        const char* const fields = "sol prob version";
        const std::string whole = show (call (2, inputs)[1], fields);
        session ().failure_ends_call = true;
        int ended_inside = 0;
        for (long n = 1;; n += step) {
            SCOPED_TRACE (n);
            session ().allocations = 0;
            session ().failing_allocation = n;
            const Call result = call (2, inputs);
            session ().failing_allocation = 0;
            if (session ().allocations < n)
                break;
            ASSERT_TRUE (result.error);
            if (result.error != "Out of memory.") {
                EXPECT_TRUE (result.error->starts_with ("Fatal KALVO error in ")) << *result.error;
                ++ended_inside;
            }
            EXPECT_EQ (result.left_arrays + result.left_blocks, 0U);
        }
        EXPECT_GT (ended_inside, 0);
        EXPECT_EQ (show (call (2, inputs)[1], fields), whole);
    }
}

// Letters of two and of three bytes in UTF-8, and one that takes two characters.
TEST_F (Matlab, TextsOfAnyLettersComeThrough)
{
    const std::string letters = "zé-木-𝔘";
    const files::Folder folder;
    const std::string file = folder / (letters + ".mps");
    std::string received;
    session ().define ("receive", [&] (int, const std::vector<View>& inputs) {
        received += inputs[0].text () + inputs[1].text ();
        return std::vector<Value>{};
    });
    const std::string problem =
        "(a=[1 2; 2 1], c=[1 2], names=(name='" + letters + "', var={'" + letters + "', 'x'}))";
    ask ("min echo(0) write(" + file + ")", {problem});
    const Call read = ask ("echo(4) read(" + file + ")", {"[]", "(KLV_SPAR_DATA_FILE='" + letters + "')",
                                                          "(log='receive', loghandle='" + letters + "')"});
    EXPECT_EQ (code_of (read), 0);
    EXPECT_EQ (show (read[1]["prob"]["names"], "name var"),
               "name='" + letters + "', var=['" + letters + "';'x']");
    EXPECT_NE (received.find (letters + "Problem '" + letters + "'"), std::string::npos) << received;
    EXPECT_NE (ask ("echo(0) read(" + letters + ")")[1]["rmsg"].text ().find (letters), std::string::npos);
}

// It stops the run that finds it, is taken, and is left to the session after a call that did not look.
TEST_F (Matlab, RaisesAFlagAtCtrlC)
{
    session ().interrupt_pending = true;
    EXPECT_EQ (code_of (ask ("echo(0) version")), 0);
    EXPECT_TRUE (session ().interrupt_pending);
    EXPECT_EQ (code_of (ask ("minimize echo(0)", {small_problem})), KLV_RES_USER_STOP);
    EXPECT_FALSE (session ().interrupt_pending);
    EXPECT_EQ (code_of (ask ("minimize echo(0)", {small_problem})), 0);
}

}
