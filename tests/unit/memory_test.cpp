// Whole calls in which the n-th piece of memory is not to be had, for every n.

#include "tests/support/problem_file.h"
#include "tests/unit/gateway_test.h"

namespace {

using Memory = GatewayTest;

// No step is lost in silence: the code is 1051, or the answer is the one that there would have been. What may
// be lost is a line of text for a log function, the host of a server, and single values of the codes' own
// fields. In MATLAB the call ends instead, also from within the library, as it ends every call that fails there.
void fail_each_allocation (const std::vector<std::string>& inputs, const char* fields,
                           KLVrescode_t other = 1051)
{
    const std::vector<Value> arrays = values (inputs);
    const std::string whole = show (call (2, arrays)[1], fields);
    for (const bool ends_call : {false, true}) {
        session ().failure_ends_call = ends_call;
        int ended_inside = 0;
        for (long n = 1;; n += ends_call ? 7 : 1) {
            SCOPED_TRACE (n);
            session ().allocations = 0;
            session ().failing_allocation = n;
            const Call result = call (2, arrays);
            session ().failing_allocation = 0;
            EXPECT_EQ (result.left_arrays + result.left_blocks, 0U);
            if (session ().allocations < n)
                break;
            show (result[1]);    // whatever came back can be read
            const KLVrescode_t code = result[0] ? code_of (result) : 1051;
            if (ends_call)
                ended_inside += result.error.value ().starts_with ("Fatal KALVO error in ");
            else if (code == 0)
                EXPECT_EQ (show (result[1], fields), whole);
            else
                EXPECT_TRUE (!result.error && (code == 1051 || code == other)) << code;
        }
        EXPECT_TRUE (!ends_call || inputs.size () < 5 || ended_inside > 0);
        EXPECT_EQ (show (call (2, arrays)[1], fields), whole);
    }
    session ().failure_ends_call = false;
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
    const std::string semidefinite =
        ", bardim=[2 1], barc=(subj=1, subk=2, subl=1, val=3), bara=(subi=1, subj=2, subk=1, subl=1, val=1)";
    fail_each_allocation (
        {"'prob echo(0)'",
         "(a=sparse [1 2; 2 1], f=sparse [0 1; 1 0], g=[1 2], accs=[8 2 1 3], names=(acc={'k'}), "
         "barf=(subi=[2 1], subj=[1 1], subk=[2 1], subl=[2 1], val=[1 1])" +
             semidefinite + ")"},
        "prob");
    // A name of a cone's type that can't be copied is an argument error.
    fail_each_allocation (
        {"'prob echo(0)'",
         "(a=[1 2; 2 1], qosubi=2, qosubj=1, qoval=3, qcsubk=2, qcsubi=1, qcsubj=2, qcval=4, "
         "cones={(type='KLV_CONE_QUADRATIC', sub=[2 1])}, names=(barvar={'x', 'y'})" +
             semidefinite + ")"},
        "prob", 1200);
    fail_each_allocation ({"'prob echo(0)'", "(a=sparse [1 2], cones=(type=[6 0], sub=[1 2], subptr=[1 2]))"},
                          "prob");
    // The copy of a function's name that can't be made is an argument error.
    fail_each_allocation ({"'minimize'", small_problem, settings, functions, "(host='')"}, "sol", 1200);

    const files::Folder folder;
    files::save (folder / "mixed.mps", "ROWS\n N o\n L a\n L b\nCOLUMNS\n x b 3 a 1\nENDATA\n");
    fail_each_allocation ({"'echo(0) read(" + (folder / "mixed.mps") + ")'"}, "prob");
}

}
