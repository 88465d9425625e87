// Primal repair: its weights are checked in full, and then the library says that it can't.

#include "tests/unit/gateway_call.h"

namespace {

constexpr double passed_on = KLV_RES_NOT_AVAILABLE;

struct Row {
    const char* fault;
    std::function<std::vector<std::pair<std::string, Value>> ()>
        fields;    // of the problem record, besides the problem
    double code;
    const char* wrong = "";    // field that is named
};

class RepairTest : public HostTest, public testing::WithParamInterface<Row> {};

TEST_P (RepairTest, ChecksTheWeights)
{
    std::vector<std::pair<std::string, Value>> fields = {{"a", matrix (3, 2, {1, 1, 1, 1, 1, 1})}};
    for (auto& field : GetParam ().fields ())
        fields.push_back (std::move (field));
    const Call result = call (1, {text ("primalrepair echo(0)"), record (fields)});
    EXPECT_EQ (result[0].number (), GetParam ().code);
    const std::string wrong = GetParam ().wrong;
    const std::string line = "*** Error(1200): prob.primalrepair" + wrong + "\n";
    EXPECT_EQ (session ().printed, GetParam ().code == passed_on ? "" : line);
}

using Fields = std::vector<std::pair<std::string, Value>>;

Fields weights (const Fields& fields)
{
    return {{"primalrepair", record (fields)}};
}
Value three ()
{
    return row ({1, 1, 1});
}
Value two ()
{
    return column ({1, 1});
}

INSTANTIATE_TEST_SUITE_P (
    Weights, RepairTest,
    testing::Values (
        Row{"the field is not required", [] { return Fields{}; }, 1200},
        Row{"an empty field is missing", [] { return Fields{{"primalrepair", absent ()}}; }, passed_on},
        Row{"a text is read as weights", [] { return Fields{{"primalrepair", text ("all")}}; }, passed_on},
        Row{"an empty record is read", [] { return Fields{{"primalrepair", records ({0, 0}, {"wlc"})}}; },
            passed_on},
        Row{"good weights are refused",
            [] { return weights ({{"wlc", three ()}, {"wuc", three ()}, {"wlx", two ()}, {"wux", two ()}}); },
            passed_on},
        Row{"constraints and variables are mixed up", [] { return weights ({{"wlc", two ()}}); }, 1201,
            ".wlc"},
        Row{"constraints and variables are mixed up", [] { return weights ({{"wux", three ()}}); }, 1201,
            ".wux"},
        Row{"the second fault is reported", [] { return weights ({{"wlx", three ()}, {"wuc", two ()}}); },
            1201, ".wuc"},
        Row{"an empty vector is no fault", [] { return weights ({{"wlx", absent ()}}); }, 1201, ".wlx"},
        Row{"a sparse vector is read", [] { return weights ({{"wlx", sparse (2, 1, {{0, 0, 1}})}}); }, 1201,
            ".wlx"}),
    by_fault);

using RepairRecordTest = HostTest;

TEST_F (RepairRecordTest, NeedsAProblemRecord)
{
    for (const Value& prob : {absent (), records ({0, 0}, {"primalrepair"})}) {
        session ().printed.clear ();
        EXPECT_EQ (call (1, {text ("primalrepair echo(0)"), prob})[0].number (), 1200);
        EXPECT_EQ (session ().printed, "*** Error(1200): prob.primalrepair\n");
    }
    EXPECT_EQ (call (1, {text ("primalrepair echo(0)")})[0].number (), 1200);
}

}
