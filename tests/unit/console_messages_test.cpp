// The gateway's own lines.

#include "gateway/console.h"
#include "tests/unit/gateway_call.h"

namespace {

using ConsoleTest = HostTest;

TEST_F (ConsoleTest, PrintsArgumentsAsTheyAreAndShowsThemAtOnce)
{
    mx_printf ("%s", "100% of %s\n");
    mx_printf ("%s", "");
    mx_error (1200, "prob.%d");
    EXPECT_EQ (session ().printed, "100% of %s\n*** Error(1200): prob.%d\n");
    EXPECT_EQ (session ().evaluated, std::vector<std::string> (3, "drawnow"));
}

TEST_F (ConsoleTest, CutsTextAtItsBuffer)
{
    mx_printf ("%s|", std::string (5000, 'x').c_str ());
    EXPECT_EQ (session ().printed, std::string (2047, 'x'));
}

}
