// prob.sol: what of it is taken, how faults are named, and that a solution is a start for the next call.

#include "tests/unit/gateway_test.h"

namespace {

using InitialSolution = GatewayTest;

std::string with_solution (const std::string& sol)
{
    const std::string problem = small_problem;
    return problem.substr (0, problem.size () - 1) + ", sol=" + sol + ")";
}

// A call that does not optimise shows what the task holds.
TEST_F (InitialSolution, IsTakenAsFarAsItIsGiven)
{
    const struct {
        const char *sol, *kind, *fields, *shown;
    } cases[] = {
        {"(itr=(xx=[1 1]))", "itr", "solsta skc xc xx y", "solsta=3, skc=[0;0], xc=[3;3], xx=[1;1], y=[0;0]"},
        {"(bas=(xx=[1;1], y=[1 0], xc=[7 7]))", "bas", "solsta xc slc slx pobjval dobjval",
         "solsta=1, xc=[3;3], slc=[1;0], slx=[0;0], pobjval=3, dobjval=3"},
        {"(bas=(slc=[2 0], suc=[1 0]))", "bas", "solsta y slx", "solsta=4, y=[1;0], slx=[0;0]"},
        {"(bas=(y=[1 0], slx=[3 0], sux=[1 0]))", "bas", "slx sux", "slx=[2;0], sux=[0;0]"},
        {"(bas=(skc=['LO'; 'UN'], skx=[1 1], snx='x', doty=@, barx={}))", "bas", "solsta skc skx",
         "solsta=0, skc=[3;0], skx=[1;1]"},
        {"(bas=[])", "bas", "solsta skx xx", "solsta=0, skx=[0;0], xx=[0;0]"},
        {"(bas=(skx=[2.9; -0.5]))", "bas", "skx", "skx=[2;0]"},
        {"(int=(xx=[2 nan], y='x', slx={}))", "int", "solsta xx", "solsta=0, xx=[2;nan]"},
        {"(bas=(xx=[1 nan], xc=[2 5], y=[1 nan], sux=[0 2]))", "bas", "solsta xx xc y slc suc slx sux",
         "solsta=0, xx=[1;nan], xc=[2;5], y=[1;nan], slc=[1;nan], suc=[0;nan], slx=[0;0], sux=[0;2]"},
        {"(int=(xx=[1 1.0000001], xc=[1 1]))", "int", "solsta xx xc",
         "solsta=3, xx=[1;1.0000001], xc=[3.0000002;3.0000001]"},
        {"(itr=(snx=[0 0], skn='x', barx=[], doty))", "itr", "solsta", "solsta=0"},
    };
    for (const auto& c : cases) {
        const Call result = ask ("statuskeys(1) echo(0)", {with_solution (c.sol)});
        EXPECT_EQ (code_of (result), 0) << c.sol;
        const View kept = result[1]["sol"][c.kind];
        EXPECT_EQ (kept ? show (kept, c.fields) : "-", c.shown) << c.sol;
        EXPECT_EQ (printed (), "");
    }
    const Call crossed =
        ask ("statuskeys(1) echo(0)", {"(a=[1], blx=[2], bux=[1], sol=(bas=(xx=[1], slx=[1])))"});
    EXPECT_EQ (show (crossed[1]["sol"]["bas"], "prosta solsta xx"), "prosta=0, solsta=0, xx=1");
    for (const char* nothing : {"[]", "cell 0x0", "record 0x0 bas", "(x=1)"})
        EXPECT_FALSE (ask ("echo(0)", {with_solution (nothing)})[1]["sol"]) << nothing;
}

// Answers of every kind, certificates too. What proves an integer solution optimal is not in its record.
TEST_F (InitialSolution, OfAnAnswerIsThatAnswer)
{
    for (const std::string problem :
         {"a=[1 2; 2 1], c=[1 2], blc=[3 3], blx=[0 0]",
          "a=[1 2; 2 1], c=[1 2], blc=[3 3], blx=[0 0], bux=[0.5 0.7]", "a=[1 1], c=[1 1], blc=[2], buc=[1]",
          "a=[1 1], blx=[0 3], bux=[1 2]", "a=[1 -1], c=[-1 0], blc=[0]",
          "a=[1 -1], c=[-3 0], blc=[1], blx=[1 1], ints=(sub=1)",
          "a=0x3, c=[1 0 0], blx=[-inf 3 4], bux=[4 3 4], f=sparse [1 0 0; 0 1 0; 0 0 1], accs=[4 3]",
          "a=0x3, c=[0 1 0], cones=(type=0, sub=[1 2 3], subptr=1)",
          "a=[2 2], c=[1 1], blc=[3], blx=[0 0], ints=(sub=[1 2])"}) {
        SCOPED_TRACE (problem);
        const Call first = ask ("minimize statuskeys(1) echo(0)", {"(" + problem + ")"});
        std::string sol = show (first[1]["sol"]);
        const Call again = ask ("statuskeys(1) echo(0)", {"(" + problem + ", sol=" + sol + ")"});
        if (const auto at = sol.find ("solsta=7"); at != sol.npos)
            sol.replace (at, 8, "solsta=3");
        EXPECT_EQ (show (again[1]["sol"]), sol) << problem;
    }
}

TEST_F (InitialSolution, FaultsAreNamed)
{
    const std::pair<const char*, std::string> cases[] = {
        {"1", "1200 prob.sol; 1200"},
        {"(itr=(xx=[1 2 3], y=1, xc=[1 1]), bas=1)", "1200 prob.sol.itr.xx; 1200 prob.sol.itr.y; 1200"},
        {"(itr=(xc='ab', slc={1, 2}, suc=sparse [1;1], slx=2x2, sux=int8 [1 1]))",
         "1200 prob.sol.itr.xc; 1200 prob.sol.itr.slc; 1200 prob.sol.itr.suc; 1200 prob.sol.itr.slx; "
         "1200 prob.sol.itr.sux; 1200"},
        {"(itr=(snx=1, barx=1, bars=1, doty=1))", "1200 prob.sol.itr.snx; 1200 prob.sol.itr.barx; 1200 "
                                                  "prob.sol.itr.bars; 1200 prob.sol.itr.doty; 1200"},
        {"(bas=(skx=[1 99], xx=1))", "1200 prob.sol.bas.skx(2); 1200"},
        {"(bas=(skc=['LO'; '!!']))", "1200 prob.sol.bas.skc(2); 1200"},
        {"(bas=(skx=[4294967297 1]))", "1200 prob.sol.bas.skx(1); 1200"},
        {"(bas=(skx=sparse [1;1]))", "1200 prob.sol.bas.skx; 1200"},
        {"(bas=(skx=['BAS'; 'BAS']))", "1200 prob.sol.bas.skx; 1200"},
        {"(int=(xx=[inf 0]))", std::to_string (KLV_RES_VALUE_NOT_FINITE)},
    };
    for (const auto& [sol, lines] : cases)
        EXPECT_EQ (outcome ("minimize echo(0)", {with_solution (sol)}), lines) << sol;
}

TEST_F (InitialSolution, OfOneCallIsTheStartOfTheNext)
{
    const Call first = ask ("minimize statuskeys(1)", {small_problem});
    const std::string basic = show (first[1]["sol"]["bas"], "skc skx xx y slx sux");
    const Call second =
        ask ("minimize info statuskeys(1) echo(0)", {with_solution ("(bas=(" + basic + "))")});
    EXPECT_EQ (second[1]["info"]["KLV_IINF_START"].number (), 1);
    EXPECT_EQ (second[1]["info"]["KLV_IINF_SIMPLEX_ITERATIONS"].number (), 0);
    EXPECT_EQ (show (second[1]["sol"]["bas"]), show (first[1]["sol"]["bas"]));
}

}
