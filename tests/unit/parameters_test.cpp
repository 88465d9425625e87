// The parameter record, in and out.

#include "tests/unit/gateway_test.h"

namespace {

using Parameters = GatewayTest;

TEST_F (Parameters, AreSetOrRefused)
{
    constexpr const char *real = "KLV_DPAR_TIME_LIMIT", *integer = "KLV_IPAR_SIMPLEX_ITERATION_LIMIT",
                         *choice = "KLV_IPAR_OPTIMIZER", *file = "KLV_SPAR_DATA_FILE", *wrong = "1200 param.";
    const auto many = [] (std::size_t n, char c) { return "'" + std::string (n, c) + "'"; };
    const struct {
        const char* name;
        std::string value, outcome;    // what comes back, or the start of the error line
        KLVrescode_t code = 0;
    } cases[] = {
        {real, "2.5", "2.5"},
        {real, "sparse 2.5", "2.5"},
        {integer, "3.9", "3"},
        {integer, "2147483647.9", "2147483647"},
        {choice, "'KLV_OPTIMIZER_DUAL_SIMPLEX'", "'KLV_OPTIMIZER_DUAL_SIMPLEX'"},
        {choice, "0", "'KLV_OPTIMIZER_PRIMAL_SIMPLEX'"},
        {file, "'a b.mps'", "'a b.mps'"},
        {file, "char 1x0", "''"},
        {file, many (3000, 'x'), many (1023, 'x')},
        {"KLV_IPAR_OPTIMISER", "1", wrong, 1200},
        {real, "[1 2]", wrong, 1200},
        {real, "'1'", wrong, 1200},
        {integer, "nan", wrong, 1200},
        {integer, "4294967297", wrong, 1200},
        {integer, "-2147483649", wrong, 1200},
        {integer, "-7", "Error 3010: KLV_IPAR_SIMPLEX_ITERATION_LIMIT must", 1200},    // the library's reason
        {choice, "string", wrong, 1200},
        {choice, "'SIMPLEX'", "1217 SIMPLEX param.", 1217},
        {choice, many (3000, 'S'), "1217 " + std::string (254, 'S') + "; ", 1217},
        {file, "1", wrong, 1200},
        {file, "['ab'; 'cd']", wrong, 1200},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.value);
        const Call result = ask ("param echo(0)", {"[]", std::string ("(") + c.name + "=" + c.value + ")"});
        EXPECT_EQ (code_of (result), c.code);
        if (c.code == 0)
            EXPECT_EQ (show (result[1]["param"][c.name]), c.outcome);
        else
            EXPECT_NE (printed ().find (c.outcome + (c.outcome == wrong ? std::string (c.name) + "; " : "")),
                       std::string::npos)
                << printed ();
    }
}

TEST_F (Parameters, AreShownFromLevelSix)
{
    const std::vector<std::string> inputs = {
        "[]", "(KLV_DPAR_TIME_LIMIT=0.5, KLV_IPAR_OPTIMIZER='KLV_OPTIMIZER_DUAL_SIMPLEX', "
              "KLV_IPAR_SIMPLEX_ITERATION_LIMIT=7.5, typo=1, also=1)"};
    ask ("echo(6)", inputs);
    EXPECT_EQ (printed (), "Setting double param KLV_DPAR_TIME_LIMIT to 5.000000e-01\n"
                           "Setting int param to KLV_IPAR_OPTIMIZER to KLV_OPTIMIZER_DUAL_SIMPLEX\n"
                           "Setting int param KLV_IPAR_SIMPLEX_ITERATION_LIMIT to 7\n"
                           "1200 param.typo; " +
                               set_up_line (1200));
    ask ("echo(5)", inputs);
    EXPECT_EQ (printed (), "1200 param.typo; " + set_up_line (1200));
}

TEST_F (Parameters, AreARecord)
{
    for (const char* nothing : {"()", "record 1x2 typo", "record 0x1 typo"})
        EXPECT_EQ (code_of (ask ("echo(0)", {"[]", nothing})), 0) << nothing;
    for (const char* wrong : {"1", "{1}", "'param'", "@", "object"}) {
        EXPECT_EQ (code_of (ask ("echo(0)", {"[]", wrong})), 1200) << wrong;
        EXPECT_EQ (printed (), "1200 param; " + set_up_line (1200)) << wrong;
    }
    EXPECT_EQ (code_of (ask ("echo(0)", {"[]", "(KLV_IPAR_OPTIMIZER)"})), 1200);
}

}
