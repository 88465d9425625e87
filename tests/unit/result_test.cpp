// The result record: its fields, what they hold, and that outputs are made only when asked for.

#include "tests/support/problem_file.h"
#include "tests/unit/gateway_test.h"

namespace {

using Result = GatewayTest;

std::string names_of (View record)
{
    std::string names;
    for (const std::string& name : record ? record.field_names () : std::vector<std::string>{})
        names += name + ' ';
    return names;
}

TEST_F (Result, HasTheFieldsThatTheRequestNeeds)
{
    const struct {
        const char *command, *prob, *fields;
        KLVrescode_t code = 0;
    } cases[] = {
        {"", "[]", ""},
        {"min", small_problem, ""},
        {"minimize", small_problem, "sol "},
        {"symbcon version info param prob minimize", small_problem, "sol prob param info version symbcon "},
        {"param info version minimize", "5", "param info version ", 1200},
        {"read", "[]", "prob ", KLV_RES_FILE_NAME_MISSING},
        // The place of an analysis is there once the problem has the field, even if nothing is asked in it.
        {"minimize", "(a=1, blx=0, c=1, duasen=[], prisen=[])", "sol prisen duasen "},
        {"min prob", "(a=1, duasen=[])", "duasen prob "},
        {"minimize read(" KALVO_TEST_DATA "/lp/afiro.mps)", "(a=1, duasen=[])", "sol prob "},
        {"prob", "(a=1, prisen=[], c='x')", "prob ", 1200},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.command);
        const Call result = ask (std::string ("echo(0) ") + c.command, {c.prob});
        ASSERT_EQ (names_of (result[1]), std::string (c.fields) + "rcode rmsg rcodestr ");
        EXPECT_EQ (result[0].number (), c.code);
        EXPECT_EQ (result[1]["rcode"].number (), c.code);
        const std::string name = result[1]["rcodestr"].text (), message = result[1]["rmsg"].text ();
        const std::string described = ::described (c.code, "", "|", "");
        if (c.code == 0)    // the library has no message of its own
            EXPECT_EQ (name + "|" + message, described);
        else
            EXPECT_TRUE (described.starts_with (name + "|"));
        for (const std::string& field : result[1].field_names ())
            EXPECT_NE (field.ends_with ("sen"), bool (result[1][field.c_str ()])) << field;
    }
}

TEST_F (Result, IsMadeOnlyWhenAskedFor)
{
    for (const auto& [outputs, command, has_result] : {std::tuple (0, "minimize echo(0)", false),
                                                       {1, "minimize echo(0)", false},
                                                       {2, "minimize echo(0)", true},
                                                       {2, "bogus", false}}) {
        const Call result = ask (command, {small_problem}, outputs);
        EXPECT_EQ (bool (result[0]), outputs > 0) << outputs;
        EXPECT_EQ (bool (result[1]), has_result) << outputs;
    }
}

// One optimum in which every field is another one: the first two variables are basic, the third is at its
// lower bound, the last at its upper; the first constraint holds from below, the second from above.
TEST_F (Result, HoldsTheSolution)
{
    const std::string problem = "(a=[1 1 1 0; 1 -1 0 1], c=[3 7 9 -5], cfix=10, blc=[6 -inf], buc=[inf 4], "
                                "blx=[0 0 1 -inf], bux=[inf inf inf 3]";
    const std::string point = "xc=[6;4], xx=[3;2;1;3], ", objectives = "pobjval=27, dobjval=27",
                      duals = "y=[5;-2], slc=[5;0], suc=[0;2], slx=[0;0;4;0], sux=[0;0;0;3], ",
                      optimal = "prosta='FEASIBLE', solsta='OPTIMAL', skc=[LO;UP], skx=[BA;BA;LO;UP], ";
    EXPECT_EQ (show (ask ("minimize echo(0)", {problem + ")"})[1]["sol"]),
               "(itr=(" + optimal + "skn=0x2, " + point + "barx=0x1, " + duals +
                   "snx=[0;0;0;0], bars=0x1, doty=0x1, " + objectives + "), bas=(" + optimal + point + duals +
                   objectives + "))");
    EXPECT_EQ (show (ask ("minimize statuskeys(1) echo(0)", {problem + ")"})[1]["sol"]["bas"]),
               "(prosta=" + std::to_string (KLV_PRO_FEASIBLE) +
                   ", solsta=" + std::to_string (KLV_SOLSTA_OPTIMAL) + ", skc=[3;4], skx=[1;1;3;4], " +
                   point + duals + objectives + ")");
    EXPECT_EQ (show (ask ("minimize echo(0)", {problem + ", ints=(sub=[1 2]))"})[1]["sol"]),
               "(int=(prosta='PRIMAL_FEASIBLE', solsta='INTEGER_OPTIMAL', skc=[LO;UP], skx=[SU;SU;LO;UP], " +
                   point + "pobjval=27))");
    // Without constraints.
    const Call maximum = ask ("maximize echo(0)", {"(a=0x1, c=2, bux=3)"});
    EXPECT_EQ (show (maximum[1]["sol"]["bas"], "skc skx xc y slc sux dobjval"),
               "skc=0x2, skx='UP', xc=0x1, y=0x1, slc=0x1, sux=-2, dobjval=6");
}

TEST_F (Result, ListsTheVersionAndTheConstants)
{
    const Call result = ask ("version symbcon echo(0)");
    EXPECT_EQ (show (result[1]["version"]), "(major=10, minor=2, revision=18)");
    ASSERT_FALSE (result[1]["symbcon"].field_names ().empty ());
    for (const std::string& name : result[1]["symbcon"].field_names ()) {
        char number[KLV_MAX_TEXT] = "";
        ASSERT_EQ (KLV_symnamtovalue (name.c_str (), number), 1) << name;
        EXPECT_EQ (show (result[1]["symbcon"][name.c_str ()]), number) << name;
    }
}

// What is read counts, not the record; the sense of the file stays unless the command has another.
TEST_F (Result, OfAFileIsThatOfItsProblem)
{
    const files::Folder folder;
    const std::string file = "(" + (folder / "small problem.mps") + ")";
    EXPECT_EQ (code_of (ask ("echo(0) max write" + file, {small_problem})), 0);
    const Call kept = ask ("echo(0) read" + file, {"5"});
    EXPECT_EQ (code_of (kept), 0);
    EXPECT_EQ (kept[1]["prob"]["objsense"].text (), "maximize");
    EXPECT_NEAR (ask ("echo(0) minimize read" + file)[1]["sol"]["bas"]["pobjval"].number (), 3, 1e-6);

    // Entries of a column in any order.
    files::save (folder / "mixed.mps", "ROWS\n N o\n L a\n L b\n L c\nCOLUMNS\n x c 3 a 1\n x o 4 b 2\n"
                                       " y b 5\n z c 7 b 6\nENDATA\n");
    const Call mixed = ask ("echo(0) read(" + (folder / "mixed.mps") + ")");
    EXPECT_EQ (show (mixed[1]["prob"], "a c"),
               "a=sparse 3x3 (1,1)=1 (2,1)=2 (3,1)=3 (2,2)=5 (2,3)=6 (3,3)=7, c=[4;0;0]");
}

TEST_F (Result, LogFileReceivesEverythingAtAnyLevel)
{
    const files::Folder folder;
    EXPECT_EQ (code_of (ask ("echo(0) minimize log(" + (folder / "a.log") + ")", {small_problem})), 0);
    EXPECT_EQ (printed (), "");
    EXPECT_NE (files::load (folder / "a.log").find ("primal objective"), std::string::npos);
    const Call refused = ask ("echo(0) log(/no/such/folder/a.log)", {small_problem});
    EXPECT_EQ (code_of (refused), KLV_RES_FILE_OPEN);
    EXPECT_FALSE (refused[1]);
    EXPECT_TRUE (printed ().ends_with (set_up_line (KLV_RES_FILE_OPEN))) << printed ();
}

}
