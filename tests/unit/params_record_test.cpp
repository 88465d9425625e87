// The parameter record, in and out.

#include <limits>

#include "tests/unit/gateway_call.h"

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN ();

Call call_with (const Value& param, const std::string& command = "param echo(0)")
{
    session ().printed.clear ();
    return call (2, {text (command), absent (), param});
}

// What a field of the returned record holds, as text.
std::string shown (View value)
{
    return value.class_id () == mxCHAR_CLASS ? value.text () : std::to_string (value.number ());
}

struct Row {
    const char* fault;
    const char* name;
    std::function<Value ()> value;
    double code;
    std::string outcome;    // the value that comes back, or the text of the error line
};

class ParameterTest : public HostTest, public testing::WithParamInterface<Row> {};

TEST_P (ParameterTest, IsSetOrRefused)
{
    const Row& row = GetParam ();
    const Call result = call_with (record ({{row.name, row.value ()}}));
    EXPECT_EQ (result[0].number (), row.code);
    if (row.code == 0) {
        EXPECT_EQ (shown (result[1]["param"][row.name]), row.outcome);
    } else {
        const std::string line =
            "*** Error(" + std::to_string (static_cast<int> (row.code)) + "): " + row.outcome;
        EXPECT_NE (session ().printed.find (line + "\n"), std::string::npos) << session ().printed;
    }
    EXPECT_EQ (result.left_arrays + result.left_blocks, 0U);
}

constexpr const char* real = "KLV_DPAR_TIME_LIMIT";
constexpr const char* integer = "KLV_IPAR_SIMPLEX_ITERATION_LIMIT";
constexpr const char* choice = "KLV_IPAR_OPTIMIZER";
constexpr const char* file = "KLV_SPAR_DATA_FILE";

std::string path (const char* name)
{
    return std::string ("param.") + name;
}

INSTANTIATE_TEST_SUITE_P (
    Accepted, ParameterTest,
    testing::Values (
        Row{"a number is lost", real, [] { return scalar (2.5); }, 0, "2.500000"},
        Row{"a sparse number is refused", real, [] { return sparse (1, 1, {{0, 0, 2.5}}); }, 0, "2.500000"},
        Row{"an unstored zero is read", real, [] { return sparse (1, 1, {}); }, 0, "0.000000"},
        Row{"a fraction is rounded up", integer, [] { return scalar (3.9); }, 0, "3.000000"},
        Row{"a negative fraction is rounded down", integer, [] { return scalar (-1.9); }, 0, "-1.000000"},
        Row{"the largest number is refused", integer, [] { return scalar (2147483647.9); }, 0,
            "2147483647.000000"},
        Row{"a symbol is refused", choice, [] { return text ("KLV_OPTIMIZER_DUAL_SIMPLEX"); }, 0,
            "KLV_OPTIMIZER_DUAL_SIMPLEX"},
        Row{"a value with a symbol comes back as a number", choice, [] { return scalar (0); }, 0,
            "KLV_OPTIMIZER_PRIMAL_SIMPLEX"},
        Row{"text is lost", file, [] { return text ("a b.mps"); }, 0, "a b.mps"},
        Row{"empty text is refused", file, [] { return text (""); }, 0, ""},
        Row{"an empty row of text is refused", file, [] { return array (mxCHAR_CLASS, {1, 0}); }, 0, ""},
        Row{"text overruns its buffer", file, [] { return text (std::string (3000, 'x')); }, 0,
            std::string (1023, 'x')}),
    by_fault);

INSTANTIATE_TEST_SUITE_P (
    Refused, ParameterTest,
    testing::Values (
        Row{"a misspelt name passes", "KLV_IPAR_OPTIMISER", [] { return scalar (1); }, 1200,
            path ("KLV_IPAR_OPTIMISER")},
        Row{"a vector passes for a number", real, [] { return row ({1, 2}); }, 1200, path (real)},
        Row{"an empty array passes for a number", real, [] { return absent (); }, 1200, path (real)},
        Row{"text passes for a real", real, [] { return text ("1"); }, 1200, path (real)},
        Row{"single precision is read as double", real, [] { return array (mxSINGLE_CLASS, {1, 1}, {1}); },
            1200, path (real)},
        Row{"a truth value passes for a number", integer, [] { return array (mxLOGICAL_CLASS, {1, 1}, {1}); },
            1200, path (integer)},
        Row{"a cell passes for a number", integer, [] { return cell ({scalar (1)}); }, 1200, path (integer)},
        Row{"an object is read", integer, [] { return object (); }, 1200, path (integer)},
        Row{"NaN is converted", integer, [] { return scalar (nan); }, 1200, path (integer)},
        Row{"a number beyond 32 bits wraps around", integer, [] { return scalar (4294967297.0); }, 1200,
            path (integer)},
        Row{"the library's own code comes through", integer, [] { return scalar (-7); }, 1200,
            path (integer)},
        Row{"an unknown symbol passes", choice, [] { return text ("SIMPLEX"); }, 1217,
            std::string ("SIMPLEX ") + path (choice)},
        Row{"a long symbol overruns the message", choice, [] { return text (std::string (3000, 'S')); }, 1217,
            std::string (254, 'S')},
        Row{"a number passes for text", file, [] { return scalar (1); }, 1200, path (file)},
        Row{"two rows pass for text", file, [] { return texts ({"ab", "cd"}); }, 1200, path (file)}),
    by_fault);

using ParameterRecordTest = HostTest;

TEST_F (ParameterRecordTest, IsTakenBackUnchanged)
{
    const Value changed = record ({{choice, text ("KLV_OPTIMIZER_INTERIOR_POINT")},
                                   {real, scalar (12.25)},
                                   {file, text ("model.mps")}});
    const Call first = call_with (changed);
    const std::vector<std::string> names = first[1]["param"].field_names ();
    ASSERT_EQ (names.size (), 277U);
    const Call second = call_with (Value (mxDuplicateArray (first[1]["param"].get ())));
    ASSERT_EQ (second[0].number (), 0) << session ().printed;
    for (const std::string& name : names)
        EXPECT_EQ (shown (second[1]["param"][name.c_str ()]), shown (first[1]["param"][name.c_str ()]))
            << name;
}

TEST_F (ParameterRecordTest, ListsTheBlocksInTheLibrarysOrder)
{
    const Call result = call_with (absent ());
    const std::vector<std::string> names = result[1]["param"].field_names ();
    ASSERT_EQ (names.size (), 277U);
    EXPECT_EQ (names[KLV_DPAR_BOUND_INFINITY_NUMBER], "KLV_DPAR_BOUND_INFINITY");
    EXPECT_EQ (names[62], "KLV_IPAR_OPTIMIZER");
    EXPECT_EQ (names[62 + 190 + KLV_SPAR_DATA_FILE_NUMBER], "KLV_SPAR_DATA_FILE");
}

TEST_F (ParameterRecordTest, StopsAtTheFirstFault)
{
    const Call result = call_with (record ({{real, scalar (3)}, {"typo", scalar (1)}, {"also", scalar (1)}}),
                                   "param echo(6)");
    EXPECT_EQ (result[0].number (), 1200);
    EXPECT_EQ (session ().printed, "Setting double param KLV_DPAR_TIME_LIMIT to 3.000000e+00\n"
                                   "*** Error(1200): param.typo\n" +
                                       set_up_line (1200));
}

TEST_F (ParameterRecordTest, ShowsEachSettingFromLevelSix)
{
    const Value settings = record ({{real, scalar (0.5)},
                                    {integer, scalar (7.5)},
                                    {choice, text ("KLV_OPTIMIZER_DUAL_SIMPLEX")},
                                    {file, text ("x")}});
    call_with (settings, "echo(6)");
    EXPECT_TRUE (session ().printed.starts_with (
        "Setting double param KLV_DPAR_TIME_LIMIT to 5.000000e-01\n"
        "Setting int param KLV_IPAR_SIMPLEX_ITERATION_LIMIT to 7\n"
        "Setting int param to KLV_IPAR_OPTIMIZER to KLV_OPTIMIZER_DUAL_SIMPLEX\n" +
        banner ()))
        << session ().printed;
    call_with (settings, "echo(5)");
    EXPECT_TRUE (session ().printed.starts_with (banner ())) << session ().printed;
}

TEST_F (ParameterRecordTest, OtherShapesSetNothingOrAreRefused)
{
    const auto code = [] (const Value& param) { return call_with (param)[0].number (); };
    EXPECT_EQ (code (records ({1, 1}, {})), 0);
    EXPECT_EQ (code (records ({1, 2}, {"typo"})), 0);
    EXPECT_EQ (code (records ({0, 1}, {"typo"})), 0);
    EXPECT_EQ (session ().printed, "");
    for (const Value& param :
         {scalar (1), cell ({scalar (1)}), text ("param"), function_handle (), object ()}) {
        EXPECT_EQ (code (param), 1200);
        EXPECT_EQ (session ().printed, "*** Error(1200): param\n" + set_up_line (1200));
    }
    EXPECT_EQ (code (records ({1, 1}, {"KLV_IPAR_OPTIMIZER"})), 1200);
}

}
