// What MATLAB does and Octave does not: characters of 16 bits, presses of Ctrl-C that only raise a flag.

#include "tests/support/problem_file.h"
#include "tests/unit/gateway_test.h"

namespace {

using Matlab = GatewayTest;

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
