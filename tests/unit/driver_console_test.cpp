// What whole calls print, in order, at each level of "echo" and "debug". At level 1 and below the library
// prints nothing but its banner, so that the lines can be compared to the letter.

#include "gateway/frame.h"
#include "tests/unit/gateway_call.h"

namespace {

const std::string open_lines = "Kalvo: Open\nKalvo: Using matlab (1) or system calloc (0) ? 0\n";
Value number ()
{
    return scalar (5);
}

std::string error_line (const char* text)
{
    return std::string ("*** Error(1200): ") + text + "\n";
}

struct Row {
    const char* fault;
    std::function<Inputs ()> inputs;
    std::function<std::string ()> printed;
    double code = 0;
};

class ConsoleLinesTest : public HostTest, public testing::WithParamInterface<Row> {};

TEST_P (ConsoleLinesTest, ComeInOrder)
{
    const Row& row = GetParam ();
    const std::string expected = row.printed ();
    session ().printed.clear ();
    const Call result = call (1, row.inputs ());
    EXPECT_EQ (session ().printed, expected);
    EXPECT_EQ (result[0].number (), row.code);
}

INSTANTIATE_TEST_SUITE_P (
    Calls, ConsoleLinesTest,
    testing::Values (
        Row{"help is missing, or not last", [] { return Inputs{}; },
            [] { return banner () + "\nFor help type: help kalvoopt.\n"; }},
        Row{"help for a call with inputs", [] { return Inputs{absent ()}; }, [] { return banner (); }},
        Row{"level 0 is not silent", [] { return Inputs{text ("echo(0) minimize"), small_problem ()}; },
            [] { return std::string (); }},
        Row{"level 1 links a stream", [] { return Inputs{text ("echo(1) minimize"), small_problem ()}; },
            [] { return banner (); }},
        Row{"debug lines are out of order", [] { return Inputs{text ("echo(0) debug(1)")}; },
            [] { return open_lines + "Kalvo: Echo intro\n" + banner (1); }},
        Row{"a negative debug level prints lines", [] { return Inputs{text ("echo(0) debug(-1)")}; },
            [] { return banner (-1); }},
        Row{"a faulty command hides the debug lines",
            [] { return Inputs{text ("debug(1) use_matlab_calloc echo(0) bogus")}; },
            [] {
                return "Error in KALVO command argument. cmd at -> bogus\n"
                       "Kalvo: Open\nKalvo: Using matlab (1) or system calloc (0) ? 1\n" +
                       set_up_line (1200);
            },
            1200},
        Row{"a command that is no text explains itself twice", [] { return Inputs{number ()}; },
            [] { return set_up_line (1200); }, 1200},
        Row{"a bad problem ends the set-up", [] { return Inputs{text ("echo(1)"), number ()}; },
            [] { return banner () + error_line ("prob") + failure_line (1200); }, 1200},
        Row{"level 0 hides error lines", [] { return Inputs{text ("echo(0)"), number ()}; },
            [] { return error_line ("prob"); }, 1200},
        Row{"bad parameters pass the banner", [] { return Inputs{text ("echo(1)"), absent (), number ()}; },
            [] { return error_line ("param") + set_up_line (1200); }, 1200},
        Row{"a bad callback record passes",
            [] { return Inputs{text ("echo(0)"), absent (), absent (), number ()}; },
            [] { return error_line ("callback") + set_up_line (1200); }, 1200},
        Row{"a bad server record passes",
            [] { return Inputs{text ("echo(0)"), absent (), absent (), absent (), number ()}; },
            [] { return error_line ("optserver") + set_up_line (1200); }, 1200},
        Row{"a server without host passes",
            [] {
                return Inputs{absent (), absent (), absent (), absent (), record ({{"host", scalar (1)}})};
            },
            [] { return error_line ("optserver.host") + set_up_line (1200); }, 1200},
        Row{"an input after the fifth is looked at",
            [] { return Inputs{text ("echo(0)"), absent (), absent (), absent (), absent (), number ()}; },
            [] { return std::string (); }}),
    by_fault);

using StreamsTest = HostTest;

TEST_F (StreamsTest, LogAndSummariesFollowTheBannerAtLevelThree)
{
    const std::string intro = banner ();
    const std::string printed = printed_by ({text ("minimize"), small_problem ()});
    EXPECT_TRUE (printed.starts_with (intro));
    EXPECT_GT (printed.size (), intro.size ());
    EXPECT_EQ (printed_by ({text ("minimize echo(2)"), small_problem ()}), intro);
}

// Until the levels are set up, everything that the library says is shown.
TEST_F (StreamsTest, ShowWhyTheLibraryRefusesAParameter)
{
    const Value negative = record ({{"KLV_DPAR_PRIMAL_TOLERANCE", scalar (-1)}});
    const std::string printed = printed_by ({text ("echo(0)"), absent (), negative});
    EXPECT_NE (printed.find ("KLV_DPAR_PRIMAL_TOLERANCE"), std::string::npos) << printed;
    EXPECT_TRUE (printed.ends_with (set_up_line (KLV_RES_PARAMETER_RANGE))) << printed;
}

// Environment text reaches the console only while the link stands.
TEST_F (StreamsTest, KeepTheEnvironmentLinkUnlessToldOtherwise)
{
    for (const auto& [command, stays] :
         {std::pair ("echo(0)", true), std::pair ("echo(0) nokeepenv", false)}) {
        printed_by ({text (command)});
        KLV_echointro (nullptr, 0);
        EXPECT_EQ (!session ().printed.empty (), stays) << command;
    }
}

TEST_F (StreamsTest, ModuleIsLockedOnce)
{
    call (1, {text ("echo(0)")});
    const int locks = session ().lock_count;
    call (1, {text ("echo(0)")});
    EXPECT_EQ (session ().lock_count, locks);
}

TEST_F (StreamsTest, FatalErrorOfTheLibraryIsRaisedInTheSession)
{
    const Call result = call (
        0, {}, [] (int, mxArray**, int, const mxArray**) { mx_exitfunc (nullptr, "100%d.cpp", 7, ""); });
    EXPECT_EQ (result.error, "Fatal KALVO error in 100%d.cpp line 7.\n");
}

}
