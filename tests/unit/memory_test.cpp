// Whole calls in which the n-th piece of memory is not to be had, for every n.

#include "tests/support/problem_file.h"
#include "tests/unit/gateway_test.h"

namespace {

using Memory = GatewayTest;

// No step is lost in silence: the code is 1051, or the answer is the one that there would have been. What may
// be lost is a line of text for a log function, the host of a server, and single values of the codes' own
// fields.
void fail_each_allocation (const std::vector<std::string>& inputs, const char* fields,
                           KLVrescode_t other = 1051)
{
    const Call whole = ask_with (inputs);
    ASSERT_EQ (code_of (whole), 0) << printed ();
    long n = 0;
    do {
        SCOPED_TRACE (++n);
        ASSERT_LT (n, 5000);
        session ().allocations = 0;
        session ().failing_allocation = n;
        const Call result = ask_with (inputs);
        session ().failing_allocation = 0;
        show (result[1]);    // whatever came back can be read
        const KLVrescode_t code = result[0] ? code_of (result) : 1051;
        if (code == 0)
            EXPECT_EQ (show (result[1], fields), show (whole[1], fields));
        else
            EXPECT_TRUE (code == 1051 || code == other) << code;
    } while (session ().allocations >= n);
    EXPECT_GT (n, 20);
    EXPECT_EQ (show (ask_with (inputs)[1], fields), show (whole[1], fields));
}

TEST_F (Memory, ThatIsMissingIsReportedAndNothingLeaks)
{
    session ().define ("receive", [] (int, const std::vector<View>&) { return std::vector<Value>{}; });
    session ().define ("progress", [] (int, const std::vector<View>&) { return std::vector{value ("0")}; });
    const std::string problem = "c=[1 2], cfix=3, blc=[3 3], blx=sparse [0;0], "
                                "names=(name='n', con={'r1', 'r2'}, var={'x', ''})";
    const std::string settings = "(KLV_IPAR_OPTIMIZER='KLV_OPTIMIZER_DUAL_SIMPLEX', KLV_DPAR_TIME_LIMIT=60, "
                                 "KLV_SPAR_DATA_FILE='x')";
    const std::string functions = "(log='receive', loghandle=1, iter='progress', iterhandle={2, 'two'})";
    const char* const all = "sol prob param version symbcon";
    fail_each_allocation ({"'minimize echo(0)'", small_problem}, "sol");
    fail_each_allocation ({"'minimize prob echo(0)'", "(a=[1 2; 2 1], ints=(sub=2), " + problem + ")"},
                          "sol prob");
    fail_each_allocation ({"'echo(0)'", "(a=sparse [1 2], sol=(bas=(skx=['BA'; 'LO'])))"}, "sol");
    fail_each_allocation ({"'minimize prob param info version symbcon statuskeys(1) echo(0)'",
                           "(a=sparse [1 2; 2 1], " + problem + ")", settings},
                          all);
    // The copy of a function's name that can't be made is an argument error.
    fail_each_allocation ({"'minimize'", small_problem, settings, functions, "(host='')"}, "sol", 1200);

    const files::Folder folder;
    files::save (folder / "mixed.mps", "ROWS\n N o\n L a\n L b\nCOLUMNS\n x b 3 a 1\nENDATA\n");
    fail_each_allocation ({"'echo(0) read(" + (folder / "mixed.mps") + ")'"}, "prob");
}

}
