#include <limits>

#include "output/solution.h"
#include "tests/unit/gateway_function.h"

using namespace standalone;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity (),
                 nan = std::numeric_limits<double>::quiet_NaN ();

// Two characters of a key's text, as users see it.
std::string key_text (std::int32_t key)
{
    char text[KLV_MAX_TEXT] = "";
    KLVtask_t task = nullptr;
    KLV_makeemptytask (nullptr, &task);
    KLV_sktostr (task, key, text);
    KLV_deletetask (&task);
    return std::string (text, 2);
}

Value three_texts (const std::string& third)
{
    return texts ({key_text (KLV_SK_BASIC), key_text (KLV_SK_UPPER), third});
}

struct KeyCase {
    const char* fault;
    std::function<Value ()> value;
    std::vector<int> keys;    // -1: as before the call
    std::string text = "";
};

std::ostream& operator<< (std::ostream& out, const KeyCase& c)
{
    return out << c.fault;
}

class StatusKeys : public GatewayFunctionTest, public testing::WithParamInterface<KeyCase> {};

TEST_P (StatusKeys, AreReadInEitherForm)
{
    std::vector<int> keys (3, -1);
    const KLVrescode_t code = run ({GetParam ().value ()}, [&] (mxArray**, const mxArray** in) {
        return translatestatuskeys (task, 3, in[0], "skx", "itr", keys.data ());
    });
    EXPECT_EQ (code, GetParam ().text.empty () ? 0 : 1200);
    EXPECT_EQ (printed (), GetParam ().text.empty () ? "" : error_line (1200, GetParam ().text));
    EXPECT_EQ (keys, GetParam ().keys);
}

const char* const whole = "prob.sol.itr.skx";

INSTANTIATE_TEST_SUITE_P (
    Forms, StatusKeys,
    testing::Values (
        KeyCase{"empty means unknown", [] { return matrix (0, 0); }, {0, 0, 0}},
        KeyCase{"row", [] { return row ({1, 2, 3}); }, {1, 2, 3}},
        KeyCase{"column, truncated", [] { return column ({2.9, 0, -0.5}); }, {2, 0, 0}},
        KeyCase{"texts",
                [] { return three_texts (key_text (KLV_SK_FIXED)); },
                {KLV_SK_BASIC, KLV_SK_UPPER, KLV_SK_FIXED}},
        KeyCase{
            "no key of that number", [] { return row ({1, 77, 77}); }, {1, 77, -1}, "prob.sol.itr.skx(2)"},
        KeyCase{"negative", [] { return row ({-1, 1, 1}); }, {-1, -1, -1}, "prob.sol.itr.skx(1)"},
        KeyCase{"NaN", [] { return row ({1, 1, nan}); }, {1, 1, -1}, "prob.sol.itr.skx(3)"},
        KeyCase{"infinite", [] { return row ({inf, 1, 1}); }, {-1, -1, -1}, "prob.sol.itr.skx(1)"},
        KeyCase{"wraps to a key in 32 bits",
                [] { return row ({4294967297.0, 1, 1}); },
                {-1, -1, -1},
                "prob.sol.itr.skx(1)"},
        KeyCase{"no key of that text",
                [] { return three_texts ("?!"); },
                {KLV_SK_BASIC, KLV_SK_UPPER, -1},
                "prob.sol.itr.skx(3)"},
        KeyCase{"too few numbers", [] { return row ({1, 2}); }, {-1, -1, -1}, whole},
        KeyCase{"sparse", [] { return sparse (3, 1, {}); }, {-1, -1, -1}, whole},
        KeyCase{"complex", [] { return complex (3, 1, {1, 1, 1}, {1, 1, 1}); }, {-1, -1, -1}, whole},
        KeyCase{"three characters a key", [] { return texts ({"abc", "def", "ghi"}); }, {-1, -1, -1}, whole},
        KeyCase{"too few texts", [] { return texts ({"ab", "cd"}); }, {-1, -1, -1}, whole},
        KeyCase{"integers", [] { return array (mxINT32_CLASS, {3, 1}); }, {-1, -1, -1}, whole},
        KeyCase{"cell", [] { return cell ({text ("ab"), text ("ab"), text ("ab")}); }, {-1, -1, -1}, whole},
        KeyCase{"function handle", function_handle, {-1, -1, -1}, whole}));

class NoStatusKeys : public GatewayFunctionTest {};

TEST_F (NoStatusKeys, AreExpectedWhereThereAreNoItems)
{
    EXPECT_EQ (translatestatuskeys (task, 0, nullptr, "skc", "bas", nullptr), 0);
    EXPECT_EQ (run ({row ({0})},
                    [&] (mxArray**, const mxArray** in) {
                        return translatestatuskeys (task, 0, in[0], "skc", "bas", nullptr);
                    }),
               1200);
    EXPECT_EQ (printed (), error_line (1200, "prob.sol.bas.skc"));
}

}
