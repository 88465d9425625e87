// Whole calls in which the n-th piece of memory is not to be had, for every n.

#include "tests/unit/gateway_call.h"

namespace {

struct Scenario {
    const char* name;
    std::function<Inputs ()> inputs;
    bool has_functions = false;    // whose names can't be copied: an argument error
};

class MemoryTest : public HostTest, public testing::WithParamInterface<Scenario> {};

// No step is lost in silence: the code is 1051 wherever the answer would be another one. What may be lost is
// a line of text for a log function, the host of a server, and single values of the codes' own fields.
TEST_P (MemoryTest, NothingLeaksAndTheNextCallIsFine)
{
    std::string received;
    session ().define ("receive", [&] (int, const std::vector<View>& inputs) {
        received += inputs[1].text ();
        return std::vector<Value>{};
    });
    session ().define ("progress",
                       [] (int, const std::vector<View>&) { return std::vector<Value>{scalar (0)}; });
    const Call whole = call (2, GetParam ().inputs ());
    ASSERT_EQ (whole[0].number (), 0) << session ().printed;

    for (long n = 1;; ++n) {
        const Inputs inputs = GetParam ().inputs ();
        session ().allocations = 0;
        session ().failing_allocation = n;
        const Call result = call (2, inputs);
        session ().failing_allocation = 0;
        const bool failed = session ().allocations >= n;
        EXPECT_EQ (result.left_arrays, 0U) << n;
        EXPECT_EQ (result.left_blocks, 0U) << n;
        EXPECT_FALSE (result.error) << n;
        if (!result[0]) {
            EXPECT_EQ (n, 1);
        } else if (const double code = result[0].number (); code == 0) {
            EXPECT_EQ (result[1].field_names (), whole[1].field_names ()) << n;
            for (const std::string& field : whole[1].field_names ()) {
                const bool may_be_empty = field[0] == 'r';
                EXPECT_TRUE (result[1][field.c_str ()] || may_be_empty) << field << ' ' << n;
            }
        } else {
            EXPECT_TRUE (code == 1051 || (GetParam ().has_functions && code == 1200)) << code << ' ' << n;
        }
        if (!failed)
            break;
    }
    EXPECT_EQ (call (2, GetParam ().inputs ())[0].number (), 0);
}

Value settings ()
{
    return record ({{"KLV_IPAR_OPTIMIZER", text ("KLV_OPTIMIZER_DUAL_SIMPLEX")},
                    {"KLV_DPAR_TIME_LIMIT", scalar (60)},
                    {"KLV_SPAR_DATA_FILE", text ("x")}});
}

Value functions ()
{
    return record ({{"log", text ("receive")},
                    {"loghandle", scalar (1)},
                    {"iter", text ("progress")},
                    {"iterhandle", cell ({scalar (2), text ("two")})}});
}

INSTANTIATE_TEST_SUITE_P (
    Calls, MemoryTest,
    testing::Values (Scenario{"Solve", [] { return Inputs{text ("minimize echo(0)"), small_problem ()}; }},
                     Scenario{"Everything",
                              [] {
                                  return Inputs{text ("minimize prob param info version symbcon echo(0)"),
                                                small_problem (), settings ()};
                              }},
                     Scenario{"Functions",
                              [] {
                                  return Inputs{text ("minimize"), small_problem (), settings (),
                                                functions (), record ({{"host", text ("")}})};
                              },
                              true}),
    [] (const auto& scenario) { return scenario.param.name; });

}
