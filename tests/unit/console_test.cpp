// What whole calls print, in order, at each level of "echo" and "debug". At level 1 and below the library
// prints nothing but its banner, so that the lines can be compared to the letter.

#include "common/console.h"
#include "gateway/frame.h"
#include "tests/unit/gateway_test.h"

namespace {

using Console = GatewayTest;

TEST_F (Console, LinesComeInOrder)
{
    const std::string open = "Kalvo: Open\nKalvo: Using matlab (1) or system calloc (0) ? ";
    const std::string failed = set_up_line (1200);
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, banner () + "\nFor help type: help kalvoopt.\n"},
        {{"[]"}, banner ()},
        {{"'echo(0) minimize'", small_problem}, ""},
        {{"'echo(2) minimize'", small_problem}, banner ()},
        {{"'echo(0) debug(1)'"}, open + "0\nKalvo: Echo intro\n" + banner (1)},
        {{"'echo(0) debug(-1)'"}, banner (-1)},
        {{"'debug(1) use_matlab_calloc echo(0) bogus'"},
         "Error in KALVO command argument. cmd at -> bogus\n" + open + "1\n" + failed},
        {{"5"}, failed},
        {{"string"}, failed},
        {{"'echo(1)'", "5"}, banner () + "1200 prob; " + failure_line (1200)},
        {{"'echo(0)'", "5"}, "1200 prob; "},
        {{"'echo(1)'", "[]", "5"}, "1200 param; " + failed},
        {{"'echo(0)'", "[]", "[]", "5"}, "1200 callback; " + failed},
        {{"'echo(0)'", "[]", "[]", "[]", "5"}, "1200 optserver; " + failed},
        {{"'echo(0)'", "[]", "[]", "[]", "(host=string)"}, "1200 optserver.host; " + failed},
        {{"'echo(0)'", "[]", "[]", "[]", "(host='')"}, ""},
        {{"'echo(0)'", "[]", "[]", "[]", "[]", "5"}, ""},
    };
    for (const auto& [inputs, lines] : cases) {
        EXPECT_EQ (code_of (ask_with (inputs, 1)), lines.find ("1200") == lines.npos ? 0 : 1200) << lines;
        EXPECT_EQ (printed (), lines);
    }
    EXPECT_EQ (code_of (ask_with ({"[]", "[]", "[]", "[]", "(host='solver.example')"})),
               KLV_RES_NOT_AVAILABLE);
}

// Crossed bounds give a warning, and every run a summary, each once.
TEST_F (Console, AndTheLogFunctionShowWhatTheLevelLetsThrough)
{
    const char* const crossed = "(a=[1 1], c=[1 1], blx=[2 0], bux=[1 1])";
    std::string received;
    session ().define ("receive", [&] (int outputs, const std::vector<View>& inputs) {
        EXPECT_EQ (outputs, 0);
        EXPECT_EQ (inputs[0].number (), 42);
        received += inputs[1].text ();
        return std::vector<Value>{};
    });
    const auto count = [] (const std::string& text, const char* word) {    // 2: more than once
        const std::size_t first = text.find (word);
        return (first != text.npos) + (text.rfind (word) != first);
    };
    for (int level = 0; level <= 5; ++level) {
        SCOPED_TRACE (level);
        const std::string command = "minimize echo(" + std::to_string (level) + ")";
        const std::string intro = level > 0 ? banner () : "";
        ask (command, {crossed});
        const std::string shown = printed ();
        received = "";
        ask (command, {crossed, "[]", "(log='receive', loghandle=42)"});
        EXPECT_EQ (printed (), intro);
        EXPECT_TRUE (shown.starts_with (intro));
        for (const std::string& text : {shown, received}) {
            EXPECT_EQ (count (text, "Warning"), level >= 2) << text;
            EXPECT_EQ (count (text, "The basic solution"), level >= 3) << text;
        }
        EXPECT_EQ (level < 2, shown == intro);
    }
}

TEST_F (Console, ShowsWhatWordsAskFor)
{
    const std::string file = KALVO_TEST_DATA "/lp/afiro.mps";
    const std::pair<std::string, const char*> cases[] = {{"anapro", "Analysis of the problem"},
                                                         {"minimize", "simplex iterations"},
                                                         {"echo(4) read(" + file + ")", "Problem 'AFIRO'"}};
    for (const auto& [command, words] : cases) {
        EXPECT_EQ (code_of (ask (command, {small_problem})), 0) << command;
        EXPECT_NE (printed ().find (words), std::string::npos) << command << printed ();
    }
    ask ("read(" + file + ")");
    EXPECT_EQ (printed (), banner () + "0\n");    // the summary of what was read is not for level 3
}

// Environment text reaches the console only while the link stands, and nothing unlocks the module.
TEST_F (Console, StaysLinkedUnlessToldOtherwise)
{
    for (const auto& [command, stays] :
         {std::pair ("echo(0)", true), std::pair ("echo(0) nokeepenv", false)}) {
        ask (command);
        KLV_echointro (nullptr, 0);
        EXPECT_EQ (!session ().printed.empty (), stays) << command;
    }
    EXPECT_LE (session ().lock_count, 1);
}

TEST_F (Console, TextIsPrintedAsItIsAndCutToFit)
{
    mx_printf ("%s", "100% of %s\n");
    mx_error (1200, "prob.%d");
    mx_printf ("%s|", std::string (5000, 'x').c_str ());
    EXPECT_EQ (printed (), "100% of %s\n1200 prob.%d; " + std::string (2047, 'x'));
    EXPECT_EQ (session ().evaluated, std::vector<std::string> (3, "drawnow"));
    const Call fatal = call (
        0, {}, [] (int, mxArray**, int, const mxArray**) { mx_exitfunc (nullptr, "100%d.cpp", 7, ""); });
    EXPECT_EQ (fatal.error, "Fatal KALVO error in 100%d.cpp line 7.\n");
}

}
