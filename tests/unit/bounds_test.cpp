#include <limits>

#include "input/readers.h"
#include "tests/unit/gateway_function.h"

using namespace standalone;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity (),
                 nan = std::numeric_limits<double>::quiet_NaN ();
constexpr double below = -1e30;    // stored where no lower bound is
constexpr int lo = KLV_BK_LO, up = KLV_BK_UP, fx = KLV_BK_FX, fr = KLV_BK_FR, ra = KLV_BK_RA;

using Make = std::function<Value ()>;

Make dense (const Numbers& values)
{
    return [=] { return row (values); };
}

// Stored entries only.
Make stored (const std::vector<Entry>& entries)
{
    return [=] { return sparse (3, 1, entries); };
}

struct BoundCase {
    const char* fault;
    Make lower, upper;
    std::vector<int> keys = {};
    Numbers lower_values = {}, upper_values = {};
    KLVrescode_t code = 0;
    std::string printed = "";
    double threshold = 1e20, tolerance = 1e-10;
};

std::ostream& operator<< (std::ostream& out, const BoundCase& bound)
{
    return out << bound.fault;
}

class Bounds : public GatewayFunctionTest, public testing::WithParamInterface<BoundCase> {};

TEST_P (Bounds, BecomeKeysAndValues)
{
    const BoundCase& expected = GetParam ();
    ASSERT_EQ (KLV_putdouparam (task, KLV_DPAR_BOUND_INFINITY_NUMBER, expected.threshold), 0);
    ASSERT_EQ (KLV_putdouparam (task, KLV_DPAR_FIXING_TOLERANCE_NUMBER, expected.tolerance), 0);
    std::vector<std::int32_t> keys (3);
    Numbers lower (3), upper (3);
    const auto made = [] (const Make& make) { return make ? make () : matrix (0, 0); };
    const KLVrescode_t code =
        run ({made (expected.lower), made (expected.upper)}, [&] (mxArray**, const mxArray** in) {
            return setbk (task, 3, "blx", expected.lower ? in[0] : nullptr, "bux", in[1], keys.data (),
                          lower.data (), upper.data ());
        });
    EXPECT_EQ (code, expected.code);
    EXPECT_EQ (printed (), expected.printed);
    if (expected.code == 0) {
        EXPECT_EQ (keys, expected.keys);
        EXPECT_EQ (lower, expected.lower_values);
        EXPECT_EQ (upper, expected.upper_values);
    }
}

const Numbers no_lower = {below, below, below}, zeros = {0, 0, 0};

INSTANTIATE_TEST_SUITE_P (
    Lower, Bounds,
    testing::Values (
        BoundCase{"absent", nullptr, nullptr, {fr, fr, fr}, no_lower, zeros},
        BoundCase{
            "empty of any class", [] { return cell (Sizes{0, 0}); }, nullptr, {fr, fr, fr}, no_lower, zeros},
        BoundCase{"column", [] { return column ({1, 2, 3}); }, nullptr, {lo, lo, lo}, {1, 2, 3}, zeros},
        BoundCase{"minus infinity and NaN are none, far below T is a bound",
                  dense ({-inf, nan, -1e40}),
                  nullptr,
                  {fr, fr, lo},
                  {below, below, -1e40},
                  zeros},
        BoundCase{"not stored is 0", stored ({{1, 0, 5}}), nullptr, {lo, lo, lo}, {0, 5, 0}, zeros},
        BoundCase{"stored minus infinity and NaN are none",
                  stored ({{0, 0, -inf}, {2, 0, nan}}),
                  nullptr,
                  {fr, lo, fr},
                  {below, 0, below},
                  zeros},
        BoundCase{"truth values are numbers",
                  [] { return sparse (3, 1, {{1, 0, 1}}, mxLOGICAL_CLASS); },
                  nullptr,
                  {lo, lo, lo},
                  {0, 1, 0},
                  zeros},
        BoundCase{.fault = "dense: only the first fault",
                  .lower = dense ({0, inf, 1e20}),
                  .upper = nullptr,
                  .code = 1400,
                  .printed = error_line (1400, "blx[2] is too large")},
        BoundCase{.fault = "sparse: every fault",
                  .lower = stored ({{0, 0, inf}, {2, 0, 1e20}}),
                  .upper = nullptr,
                  .code = 1400,
                  .printed = error_line (1400, "blx[1] is too large") +
                             error_line (1400, "blx[3] is too large")},
        BoundCase{.fault = "the threshold is the task's",
                  .lower = dense ({99, 100, 0}),
                  .upper = nullptr,
                  .code = 1400,
                  .printed = error_line (1400, "blx[2] is too large"),
                  .threshold = 100}));

INSTANTIATE_TEST_SUITE_P (
    Upper, Bounds,
    testing::Values (
        BoundCase{"with no lower field", nullptr, dense ({1, inf, 3}), {up, fr, up}, no_lower, {1, 0, 3}},
        BoundCase{"infinite, NaN and above T are none, T itself is a bound",
                  dense ({0, 0, 0}),
                  dense ({nan, 1.0001e20, 1e20}),
                  {lo, lo, ra},
                  zeros,
                  {0, 0, 1e20}},
        BoundCase{"without the lower of an item",
                  dense ({-inf, 0, nan}),
                  dense ({5, 5, inf}),
                  {up, ra, fr},
                  {below, 0, below},
                  {5, 5, 0}},
        BoundCase{"not stored is 0", nullptr, stored ({}), {up, up, up}, no_lower, zeros},
        BoundCase{"stored above T is kept",
                  dense ({-1, -1, -inf}),
                  stored ({{0, 0, 1e25}, {2, 0, 7}}),
                  {ra, ra, up},
                  {-1, -1, below},
                  {1e25, 0, 7}},
        BoundCase{"stored infinity and NaN are none",
                  dense ({-1, -inf, -1}),
                  stored ({{0, 0, inf}, {1, 0, nan}}),
                  {lo, fr, ra},
                  {-1, below, -1},
                  zeros},
        BoundCase{"crossed is left to the library",
                  dense ({2, 2, 2}),
                  dense ({1, 2.5, 3}),
                  {ra, ra, ra},
                  {2, 2, 2},
                  {1, 2.5, 3}},
        BoundCase{.fault = "dense: the first fault",
                  .lower = nullptr,
                  .upper = dense ({-inf, -1e20, 0}),
                  .code = 1400,
                  .printed = error_line (1400, "bux[1] is too small")},
        BoundCase{.fault = "sparse: the first fault",
                  .lower = nullptr,
                  .upper = stored ({{1, 0, -1e20}, {2, 0, -inf}}),
                  .code = 1400,
                  .printed = error_line (1400, "bux[2] is too small")},
        BoundCase{.fault = "a lower fault ends it",
                  .lower = dense ({inf, 0, 0}),
                  .upper = dense ({-inf, 0, 0}),
                  .code = 1400,
                  .printed = error_line (1400, "blx[1] is too large")}));

INSTANTIATE_TEST_SUITE_P (Fixing, Bounds,
                          testing::Values (BoundCase{"within E the lower value counts",
                                                     dense ({0, 1, -1}),
                                                     dense ({1e-12, 1, -1 + 1e-9}),
                                                     {fx, fx, ra},
                                                     {0, 1, -1},
                                                     {0, 1, -1 + 1e-9}},
                                           BoundCase{"the tolerance is the task's",
                                                     dense ({0, 0, 0}),
                                                     dense ({0.5, 0.25, 0}),
                                                     {ra, fx, fx},
                                                     zeros,
                                                     {0.5, 0, 0},
                                                     0,
                                                     "",
                                                     1e20,
                                                     0.25},
                                           BoundCase{"crossed within E",
                                                     dense ({0, 0, 0}),
                                                     dense ({-1e-11, 1, 1}),
                                                     {fx, ra, ra},
                                                     zeros,
                                                     {0, 1, 1}},
                                           BoundCase{"sparse on both sides",
                                                     stored ({{0, 0, 2}}),
                                                     stored ({{0, 0, 2}, {1, 0, 1}}),
                                                     {fx, ra, fx},
                                                     {2, 0, 0},
                                                     {2, 1, 0}}));

BoundCase refused (const char* fault, const Make& lower, const Make& upper, KLVrescode_t code,
                   const std::string& text)
{
    return {.fault = fault, .lower = lower, .upper = upper, .code = code, .printed = error_line (code, text)};
}

INSTANTIATE_TEST_SUITE_P (
    Refused, Bounds,
    testing::Values (
        refused ("too long", dense ({1, 2, 3, 4}), nullptr, 1201, "prob.blx has invalid dimension"),
        refused ("too short above, before any value is looked at", dense ({inf, 0, 0}), dense ({1, 2}), 1201,
                 "prob.bux has invalid dimension"),
        refused (
            "sparse row", [] { return sparse (1, 3, {}); }, nullptr, 1201, "prob.blx has invalid dimension"),
        refused (
            "integers", nullptr, [] { return array (mxINT8_CLASS, {3, 1}); }, 1201,
            "prob.bux has invalid dimension"),
        refused (
            "complex", [] { return complex (3, 1, {1, 2, 3}, {0, 0, 1}); }, nullptr, 1200,
            "prob.blx is complex"),
        refused (
            "sparse of another class", nullptr, [] { return sparse (3, 1, {}, mxSINGLE_CLASS); }, 1200,
            "prob.bux is neither double nor logical")));

}
