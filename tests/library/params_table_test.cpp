// Parameters: ranges, reserved ones, what they drive, a record given back whole.
#include "kalvo/tables/parameters.h"
#include "kalvo/task/text.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using klv::int_parameters, klv::real_parameters, klv::text_parameters;

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN ();
constexpr double inf = std::numeric_limits<double>::infinity ();

void expect_refused (const files::Task& task, KLVrescode_t code, KLVrescode_t expected, std::string_view name)
{
    EXPECT_EQ (code, expected) << name;
    EXPECT_NE (task.last_error ().find (name), std::string::npos) << task.last_error ();
}

TEST (Parameters, RefuseWhatIsOutsideTheirRange)
{
    const files::Task task;
    for (const klv::RealParameter& row : real_parameters) {
        const auto put = [&] (double value) { return KLV_putdouparam (task, row.number, value); };
        const KLVrescode_t refused = row.reserved () ? KLV_RES_PARAMETER_RESERVED : KLV_RES_PARAMETER_RANGE;
        expect_refused (task, put (nan), refused, row.name);
        if (row.smallest > -inf)
            expect_refused (task, put (std::nextafter (row.smallest, -inf)), refused, row.name);
        if (row.largest < inf)
            expect_refused (task, put (std::nextafter (row.largest, inf)), refused, row.name);
        double value = nan;
        EXPECT_EQ (KLV_getdouparam (task, row.number, &value), KLV_RES_OK);
        EXPECT_EQ (value, row.fallback) << row.name;
        EXPECT_EQ (put (row.smallest), KLV_RES_OK) << row.name;
        EXPECT_EQ (put (row.largest), KLV_RES_OK) << row.name;
    }
    for (const klv::IntParameter& row : int_parameters) {
        const auto put = [&] (std::int64_t value) {
            return KLV_putintparam (task, row.number, static_cast<std::int32_t> (value));
        };
        const KLVrescode_t refused = row.reserved () ? KLV_RES_PARAMETER_RESERVED : KLV_RES_PARAMETER_RANGE;
        expect_refused (task, put (row.smallest - 1ll), refused, row.name);
        if (row.largest < std::numeric_limits<std::int32_t>::max ())
            expect_refused (task, put (row.largest + 1ll), refused, row.name);
        std::int32_t value = -7;
        EXPECT_EQ (KLV_getintparam (task, row.number, &value), KLV_RES_OK);
        EXPECT_EQ (value, row.fallback) << row.name;
        EXPECT_EQ (put (row.smallest), KLV_RES_OK) << row.name;
        EXPECT_EQ (put (row.largest), KLV_RES_OK) << row.name;
    }
    for (const klv::TextParameter& row : text_parameters)
        if (row.reserved ())
            expect_refused (task, KLV_putstrparam (task, row.number, "x"), KLV_RES_PARAMETER_RESERVED,
                            row.name);
}

// As a record goes out and comes in again: by name, integers as their symbolic constant where there is one.
TEST (Parameters, ARecordGivenBackWholeIsAccepted)
{
    const files::Task from, to;
    KLV_putdouparam (from, 0, 1e-8);
    KLV_putnaintparam (from, "KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_INTERIOR_POINT);
    KLV_putnaintparam (from, "KLV_IPAR_MAX_THREADS", 2);
    KLV_putstrparam (from, 1, "a file.mps");
    int symbolic = 0;
    for (std::int32_t kind = KLV_PAR_DOUBLE; kind <= KLV_PAR_STRING; ++kind) {
        char name[KLV_MAX_TEXT];
        for (std::int32_t i = 0; KLV_getparamname (from, kind, i, name) == KLV_RES_OK; ++i) {
            std::int32_t found_kind = -1, number = -1;
            ASSERT_EQ (KLV_whichparam (to, name, &found_kind, &number), KLV_RES_OK);
            ASSERT_EQ (found_kind, kind) << name;
            ASSERT_EQ (number, i) << name;
            if (kind == KLV_PAR_DOUBLE) {
                double value = nan;
                KLV_getdouparam (from, i, &value);
                EXPECT_EQ (KLV_putdouparam (to, i, value), KLV_RES_OK) << name;
            } else if (kind == KLV_PAR_INTEGER) {
                std::int32_t value = -7;
                char symbol[KLV_MAX_TEXT], digits[KLV_MAX_TEXT];
                KLV_getintparam (from, i, &value);
                EXPECT_EQ (KLV_iparvaltosymnam (nullptr, i, value, symbol), KLV_RES_OK);
                if (*symbol != '\0') {
                    ++symbolic;
                    ASSERT_EQ (KLV_symnamtovalue (symbol, digits), 1) << symbol;
                    value = std::atoi (digits);
                }
                EXPECT_EQ (KLV_putintparam (to, i, value), KLV_RES_OK) << name;
            } else {
                std::int32_t length = -1;
                ASSERT_EQ (KLV_getstrparam (from, i, 0, &length, nullptr), KLV_RES_OK);
                std::string value (static_cast<std::size_t> (length) + 1, '?');
                ASSERT_EQ (KLV_getstrparam (from, i, length + 1, &length, value.data ()), KLV_RES_OK);
                EXPECT_EQ (KLV_putstrparam (to, i, value.c_str ()), KLV_RES_OK) << name;
            }
        }
    }
    EXPECT_GE (symbolic, 8);
    const klv::Parameters& sent = static_cast<KLVtask_t> (from)->parameters;
    const klv::Parameters& received = static_cast<KLVtask_t> (to)->parameters;
    EXPECT_EQ (received.doubles, sent.doubles);
    EXPECT_EQ (received.integers, sent.integers);
    EXPECT_EQ (received.texts, sent.texts);
    EXPECT_EQ (received.get (klv::TextSetting::data_file), "a file.mps");
    EXPECT_EQ (received.get (klv::IntSetting::optimizer), KLV_OPTIMIZER_INTERIOR_POINT);
}

// A symbolic parameter whose range has values without a name would come back as a number that nobody can read.
TEST (Parameters, SymbolicOnesNameEachValueOfTheirRange)
{
    for (const klv::IntParameter& row : int_parameters)
        for (std::int32_t value = row.smallest; row.symbols != klv::Group::none && value <= row.largest;
             ++value)
            EXPECT_NE (klv::find_constant (row.symbols, value), nullptr) << row.name << ' ' << value;
}

TEST (Parameters, FixedNumbersAndNamesStand)
{
    struct Case {
        const char* name;
        std::int32_t kind, number;
    };
    for (const Case& c :
         {Case{"KLV_DPAR_BOUND_INFINITY", KLV_PAR_DOUBLE, 10},
          Case{"KLV_DPAR_FIXING_TOLERANCE", KLV_PAR_DOUBLE, 15},
          Case{"KLV_SPAR_DATA_FILE", KLV_PAR_STRING, 1}, Case{"KLV_IPAR_OPTIMIZER", KLV_PAR_INTEGER, -1},
          Case{"KLV_IPAR_INTPNT_BASIS", KLV_PAR_INTEGER, -1},
          Case{"KLV_IPAR_LOG_INTPNT", KLV_PAR_INTEGER, -1}, Case{"KLV_IPAR_MAX_THREADS", KLV_PAR_INTEGER, -1},
          Case{"", KLV_PAR_NONE, -1}, Case{"KLV_IPAR_OPTIMIZE", KLV_PAR_NONE, -1},
          Case{"KLV_IPAR_OPTIMIZERS", KLV_PAR_NONE, -1}, Case{"klv_ipar_optimizer", KLV_PAR_NONE, -1},
          Case{"KLV_IPAR_RESERVED_000", KLV_PAR_NONE, -1}}) {
        const klv::ParameterPlace place = klv::find_parameter (c.name);
        EXPECT_EQ (place.kind, c.kind) << c.name;
        if (c.number >= 0) {
            EXPECT_EQ (place.number, c.number) << c.name;
        }
    }
}

TEST (Parameters, IntegersByNameOnlyForIntegerNames)
{
    const files::Task task;
    for (const char* name : {"", "KLV_IPAR_NOTHING", "KLV_DPAR_TIME_LIMIT"})
        EXPECT_EQ (KLV_putnaintparam (task, name, 1), KLV_RES_PARAMETER_UNKNOWN) << name;
    expect_refused (task, KLV_putnaintparam (task, "KLV_IPAR_OPTIMIZER", 6), KLV_RES_PARAMETER_RANGE,
                    "KLV_IPAR_OPTIMIZER must be between 0 and 5, not 6");
}

TEST (Information, LargeCountsStayAtTheLimit)
{
    klv::Information information;
    information.set (klv::IntItem::nodes, 5'000'000'000);
    EXPECT_EQ (information.get (klv::IntItem::nodes), 2147483647);
    information.set (klv::IntItem::nodes, -5'000'000'000);
    EXPECT_EQ (information.get (klv::IntItem::nodes), -2147483647 - 1);
}

TEST (Information, SizesFollowTheProblem)
{
    const files::Task task;
    const auto item = [&] (klv::IntItem wanted) {
        std::int32_t value = -1;
        KLV_getintinf (task, static_cast<std::int32_t> (klv::information_number (wanted)), &value);
        return value;
    };
    KLV_appendvars (task, 3);
    KLV_appendcons (task, 2);
    KLV_putvartype (task, 1, KLV_VAR_INTEGER);
    const std::int32_t rows[] = {1, 0};
    const double values[] = {1, 2};
    KLV_putacol (task, 2, 2, rows, values);
    EXPECT_EQ (item (klv::IntItem::variables), 3);
    EXPECT_EQ (item (klv::IntItem::constraints), 2);
    EXPECT_EQ (item (klv::IntItem::integers), 1);
    EXPECT_EQ (item (klv::IntItem::matrix_entries), 2);
}

}
