// The problem record: what each field means, how faults are named, and that what comes back is what was stated.

#include <cstring>

#include "tests/unit/gateway_test.h"

namespace {

using ProblemInput = GatewayTest;

// Two constraints and three variables, and these fields.
std::string with (const std::string& fields)
{
    return "(a=[1 0 5; 0 0 6], " + fields + ")";
}

TEST_F (ProblemInput, ComesBackAsItWasStated)
{
    const std::string rest =
        ", cfix=7, blc=[-inf 1], buc=[4 1], ints=(sub=[3 1 3]), names=(con={'r1', 'r2'}, "
        "name='tiny', var={'x', '', 'zé'}, obj='cost'), objsense='maximize', unknown=@)";
    const std::string back =
        "(c=[1;-2;0], cfix=7, a=sparse 2x3 (1,1)=1 (1,3)=5 (2,3)=6, blc=[-inf;1], buc=[4;1], "
        "blx=[0;2;0], bux=[inf;inf;inf], ints=(sub=[1;3]), names=(name='tiny', obj='cost', "
        "con=['r1';'r2'], var=['x';'';'zé'], barvar=-, acc=-), objsense='minimize')";
    for (const char* form : {"(a=[1 0 5; 0 0 6], c=[1 -2 0], blx=[0;2;0]",
                             "(a=sparse [1 0 5; 0 0 6], c=sparse [1;-2;0], blx=sparse [0;2;0]"}) {
        const Call first = ask ("prob echo(0)", {form + rest});
        EXPECT_EQ (show (first[1]["prob"]), back);
        EXPECT_EQ (printed (), "0\n");
        const Value again (mxDuplicateArray (first[1]["prob"].get ()));
        EXPECT_EQ (show (call (2, {text ("prob echo(0)"), again})[1]["prob"]), back);
    }
}

TEST_F (ProblemInput, BoundsBecomeWhatTheyMean)
{
    const std::string none = "[-inf;-inf;-inf]", all = "[inf;inf;inf]", zeros = "[0;0;0]";
    const struct {
        const char *what, *fields;
        std::string lower, upper;
        const char* param = "[]";
    } cases[] = {
        {"absent", "blx=[], bux={}", none, all},
        {"a lower one alone", "blx=[1;2;3]", "[1;2;3]", all},
        {"-Inf and NaN are none, a finite one counts", "blx=[-inf nan -1e40]", "[-inf;-inf;-1e+40]", all},
        {"not stored is 0, stored -Inf and NaN are none", "blx=sparse [-inf;0;nan]", "[-inf;0;-inf]", all},
        {"truth values", "blx=sparse logical [0;1;0]", "[0;1;0]", all},
        {"real parts", "blx=complex [1 2 3], bux=complex [4 5 6]", "[1;2;3]", "[4;5;6]"},
        {"above the threshold none, at it one", "blx=[0 0 0], bux=[nan 1.001e20 1e20]", zeros,
         "[inf;inf;1e+20]"},
        {"each side by itself", "blx=[-inf 0 nan], bux=[5 5 inf]", "[-inf;0;-inf]", "[5;5;inf]"},
        {"not stored is 0 above too", "bux=sparse [0;0;0]", none, zeros},
        {"stored above the threshold", "blx=[-1 -1 -inf], bux=sparse [1e25;0;7]", "[-1;-1;-inf]",
         "[1e+25;0;7]"},
        {"stored Inf and NaN", "blx=[-1 -inf -1], bux=sparse [inf;nan;0]", "[-1;-inf;-1]", "[inf;inf;0]"},
        {"nearly equal is fixed", "blx=[0 1 -1], bux=[1e-12 1 -0.999999999]", "[0;1;-1]",
         "[0;1;-0.999999999]"},
        {"nearly crossed too", "blx=[0 0 0], bux=[-1e-11 1 1]", zeros, "[0;1;1]"},
        {"the tolerance of the parameters", "blx=[0 0 0], bux=[0.5 0.25 0]", zeros, "[0.5;0;0]",
         "(KLV_DPAR_FIXING_TOLERANCE=0.25)"},
        {"the threshold of the parameters", "blx=[0 0 0], bux=[100 101 0]", zeros, "[100;inf;0]",
         "(KLV_DPAR_BOUND_INFINITY=100)"},
    };
    for (const auto& c : cases) {
        const Call result = ask ("prob echo(0)", {with (c.fields), c.param});
        EXPECT_EQ (show (result[1]["prob"], "blx bux"), "blx=" + c.lower + ", bux=" + c.upper) << c.what;
    }
    for (const auto& [param, warned] : {std::pair{"[]", true}, {"(KLV_DPAR_BOUND_INFINITY=inf)", false}}) {
        ask ("prob echo(2)", {with ("blx=[-inf -1e30 0], bux=sparse [inf;0;1e25]"), param});
        EXPECT_EQ (printed ().find ("Warning: res.prob.bux(3) is beyond the bound infinity (1 in all)") !=
                       std::string::npos,
                   warned);
    }
}

TEST_F (ProblemInput, SizesIntegersAndNamesAreTaken)
{
    const std::tuple<std::string, const char*, std::string> cases[] = {
        {"(a=0x2, c=[1 2])", "c a blc blx ints", "c=[1;2], a=sparse 0x2, blc=0x1, blx=[-inf;-inf], ints=-"},
        {"(a=sparse 1x0)", "c a blc blx ints", "c=0x1, a=sparse 1x0, blc=-inf, blx=0x1, ints=-"},
        {with ("ints=(sub=[2 2 3])"), "ints", "ints=(sub=[2;3])"},
        {with ("ints=(sub=[1.9; 3])"), "ints", "ints=(sub=[1;3])"},
        {with ("ints=(sum=1)"), "ints", "ints=-"},
        {with ("ints=record 1x2 sub"), "ints", "ints=-"},
        {with ("ints=(sub=sparse 1)"), "ints", "ints=-"},
        {with ("ints=(sub=[1 2; 2 1])"), "ints", "ints=-"},
        {with ("names=(obj='€€€', con={'a', ''})"), "names",
         "names=(name='', obj='€€€', con=['a';''], var=['';'';''], barvar=-, acc=-)"},
        {with ("names=(name=['ab'; 'cd'], cone=1, acc='x', barvar=[])"), "names",
         "names=(name='acbd', obj='', con=['';''], var=['';'';''], barvar=-, acc=-)"},
    };
    for (const auto& [prob, fields, shown] : cases)
        EXPECT_EQ (show (ask ("prob echo(0)", {prob})[1]["prob"], fields), shown) << prob;
}

// Every fault is named, in this order; what comes after a fault that ends the reading is not looked at.
TEST_F (ProblemInput, FaultsAreNamed)
{
    const std::pair<const char*, std::string> cases[] = {
        {"f=2x4, g=1, qcval=[], cones=[], accs=[], cfix='x'",
         "1200 prob.f must be a sparse matrix; "
         "1200 prob.f cannot be specified together with prob.qoval or prob.qcval; "
         "1200 prob.f has wrong number of columns, should have size(prob.f,2) == size(prob.a,2); "
         "1200 prob.g must be a dense vector with length(prob.g) == size(prob.f,1); "
         "1200 prob.cones and prob.accs cannot be simultaneously specified; 1200"},
        {"f=sparse 0x3", "1200 prob.f specified but neither prob.accs nor prob.cones found; 1200"},
        {"g=[]", "1200 prob.g cannot be specified without prob.f; 1200"},
        {"qoval=1, duasen=1", "1200 prob.duasen is not supported yet; 1200"},
        {"c=1, cfix=[1 2]", "1200 prob.cfix; 1200"},
        {"c=1, qosubi=1", "1200 prob.c has wrong length; 1200"},
        {"c=sparse [1 2 3]", "1200 prob.c has wrong length; 1200"},
        {"qosubi=1, qosubj=1, qcsubk='k', qcsubi=1, qcsubj=1, blc=1",
         "1200 prob.qosubj; 1200 prob.qosubi; 1200 prob.qcsubk; 1200 prob.qcsubi; 1200 prob.qcsubj; 1201"},
        {"blx=1, buc=1", "1200 prob.buc has invalid dimension; 1201"},
        {"blx=sparse [1 2 3]", "1200 prob.blx has invalid dimension; 1201"},
        {"bux=sparse single [1;2;3]", "1200 prob.bux is neither double nor logical; 1200"},
        {"blx=[0 inf 1e20]", "1400 blx[2] is too large; 1400"},
        {"blx=sparse [inf;0;1e20]", "1400 blx[1] is too large; 1400 blx[3] is too large; 1400"},
        {"bux=[-inf -1e20 0]", "1400 bux[1] is too small; 1400"},
        {"bux=sparse [0;-1e20;-inf]", "1400 bux[2] is too small; 1400"},
        {"names=(x='x'), ints=1", "1200 prob.ints; 1200"},
        {"ints=(sub=[1 4])", "1200 prob.ints.sub(2); 1200"},
        {"ints=(sub=0.9)", "1200 prob.ints.sub(1); 1200"},
        {"ints=(sub=4294967297)", "1200 prob.ints.sub(1); 1200"},
        {"ints=(sub=[3 nan])", "1200 prob.ints.sub(2); 1200"},
        {"names=record 1x2 name", "1200 prob.names.name; 1200"},
        {"names=(vars='x', obj=1)", "1200 prob.names.vars; 1200"},
        {"names=(obj)", "1200 prob.names.obj; 1200"},
        {"names=(name=char [97 0 98])", "1200 prob.names.name; 1200"},
        {"names=(con={'a'})", "1200 prob.names.con; 1201"},
        {"names=(var)", "1200 prob.names.var; 1201"},
        {"names=(con={'a', 2})", "1200 prob.names.con{2}; 1200"},
        {"names=(name=string)", "1200 prob.names.name; 1200"},
        {"names=(var=string)", "1200 prob.names.var; 1201"},
        {"'lp.mps'", "1200 prob; 1200"},
        {"string", "1200 prob; 1200"},
        {"record 1x2 a", "1200 prob; 1200"},
        {"(A=1, f=1)", "1200 prob.a not specified; 1200"},
        {"(a=single 1, c='x')", "1200 prob.a is not a double matrix; 1200"},
        {"(a=complex 1)", "1200 prob.a is complex; 1200"},
        {"(a=2x3x2)", "1200 prob.a has more than two dimensions; 1200"},
        {"(a=0x2147483648)", "1200 prob.a has more than 2147483647 rows or columns; 1200"},
        {"(a=4294967296x0)", "1200 prob.a has more than 2147483647 rows or columns; 1200"},
    };
    for (const auto& [prob, lines] : cases) {
        const bool is_field = std::strcspn (prob, "=") < std::strcspn (prob, " ('");
        EXPECT_EQ (outcome ("echo(0)", {is_field ? with (prob) : prob}), lines) << prob;
    }
}

TEST_F (ProblemInput, RepairNeedsGoodWeights)
{
    const std::pair<const char*, std::string> cases[] = {
        {"c=[]", "1200 prob.primalrepair; 1200"},
        {"primalrepair='all'", "0"},
        {"primalrepair=(wlc=[1 1], wuc=[1;1], wlx=[1 1 1], wux=[1;1;1])", "0"},
        {"primalrepair=(wlx=[1 NaN 1])", "1200"},
        {"primalrepair=(wlc=[1 1 1])", "1200 prob.primalrepair.wlc; 1201"},
        {"primalrepair=(wlx=[1 1], wuc=1)", "1200 prob.primalrepair.wuc; 1201"},
        {"primalrepair=(wlx=[])", "1200 prob.primalrepair.wlx; 1201"},
        {"primalrepair=(wux=sparse [1;1;1])", "1200 prob.primalrepair.wux; 1201"},
    };
    for (const auto& [fields, line] : cases)
        EXPECT_EQ (outcome ("primalrepair echo(0)", {with (fields)}), line) << fields;
    EXPECT_EQ (code_of (ask ("primalrepair echo(0)")), 1200);
}

}
