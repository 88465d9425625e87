// The tables of names and parameters, against the header that users read and as records go out and come in again.
#include "kalvo/tables/constants.h"
#include "kalvo/tables/parameters.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <sstream>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN ();
constexpr double inf = std::numeric_limits<double>::infinity ();
constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

// The enumerators that kalvo.h states with a value, sizes and numbers aside.
std::map<std::string, int> header_constants ()
{
    const std::string header = files::load (KALVO_TEST_DATA "/../../kalvo/include/kalvo.h");
    const std::string_view no_constants[] = {"KLV_VERSION_", "KLV_MAX_TEXT", "KLV_FIRST_TERMINATION",
                                             "_NUMBER",      "_COUNT",       "_PARAMETERS",
                                             "_INFORMATION"};
    std::map<std::string, int> found;
    std::istringstream words (header);
    for (std::string name, word; words >> word; name = word)
        if (word == "=" && name.starts_with ("KLV_") && words >> word &&
            std::ranges::none_of (no_constants, [&] (std::string_view part) {
                return part[0] == '_' ? name.ends_with (part) : name.starts_with (part);
            }))
            found[name] = std::stoi (word);
    return found;
}

TEST (Tables, HoldTheConstantsOfTheHeader)
{
    const files::Task task;
    const auto stated = header_constants ();
    EXPECT_GT (stated.size (), 100u);
    std::int32_t count = 0, number = -1;
    std::size_t longest = 0;
    EXPECT_EQ (KLV_getsymbcondim (nullptr, &count, &longest), KLV_RES_OK);
    const auto capacity = static_cast<std::int32_t> (longest + 1);
    std::map<std::string, int> listed;
    char name[KLV_MAX_TEXT], text[KLV_MAX_TEXT];
    for (std::int32_t i = 0; i < count; ++i) {
        EXPECT_EQ (KLV_getsymbcon (task, i, capacity, name, &number), KLV_RES_OK);
        listed[name] = number;
    }
    EXPECT_EQ (listed, stated);
    for (const auto& [constant, value] : stated) {
        EXPECT_EQ (KLV_symnamtovalue (constant.c_str (), text), 1) << constant;
        EXPECT_EQ (text, std::to_string (value)) << constant;
        if (!constant.starts_with ("KLV_RES_"))
            continue;
        EXPECT_EQ (KLV_getcodedesc (value, name, text), KLV_RES_OK) << constant;
        EXPECT_EQ (name, constant);
    }
    for (const char* unknown : {"", "KLV_", "KLV_O", "KLV_OFFF", "klv_off", "KLV_IPAR_OPTIMIZER", "~"})
        EXPECT_EQ (KLV_symnamtovalue (unknown, text), 0) << unknown;
    for (const auto function : {KLV_prostatostr, KLV_solstatostr, KLV_sktostr})
        EXPECT_EQ (function (task, 8, text), KLV_RES_VALUE_UNKNOWN);
    EXPECT_EQ (KLV_getcodedesc (1, name, text), KLV_RES_VALUE_UNKNOWN);
}

// Names become fields of records: letters, digits and underscores, at most 63 characters, none twice.
TEST (Tables, NamesAreFieldsOfRecordsInTheirFixedNumbers)
{
    const files::Task task;
    std::set<std::string> names;
    char name[KLV_MAX_TEXT];
    const auto look = [&] (auto get, std::int32_t kind, std::int32_t count) {
        for (std::int32_t i = 0; i < count; ++i) {
            EXPECT_EQ (get (task, kind, i, name), KLV_RES_OK);
            EXPECT_EQ (std::string_view (name).find_first_not_of (alphabet), std::string_view::npos) << name;
            EXPECT_TRUE (names.insert (name).second && std::string_view (name).size () <= 63) << name;
        }
        EXPECT_EQ (get (task, kind, count, name), KLV_RES_INDEX_RANGE);
        EXPECT_EQ (get (task, kind, -1, name), KLV_RES_INDEX_RANGE);
    };
    look (KLV_getparamname, KLV_PAR_DOUBLE, 62);
    look (KLV_getparamname, KLV_PAR_INTEGER, 190);
    look (KLV_getparamname, KLV_PAR_STRING, 25);
    look (KLV_getinfname, KLV_INF_DOUBLE, 111);
    look (KLV_getinfname, KLV_INF_INTEGER, 117);
    EXPECT_EQ (KLV_getparamname (task, KLV_PAR_NONE, 0, name), KLV_RES_VALUE_UNKNOWN);
    EXPECT_EQ (KLV_getinfname (task, 2, 0, name), KLV_RES_VALUE_UNKNOWN);
    std::int32_t kind = -1, number = -1;
    for (std::int32_t which = KLV_PAR_DOUBLE; which <= KLV_PAR_STRING; ++which)
        for (std::int32_t i = 0; KLV_getparamname (task, which, i, name) == KLV_RES_OK; ++i) {
            EXPECT_EQ (KLV_whichparam (task, name, &kind, &number), KLV_RES_OK);
            EXPECT_TRUE (kind == which && number == i) << name;
        }
    for (const char* unknown : {"", "KLV_IPAR_OPTIMIZE", "KLV_IPAR_OPTIMIZERS", "klv_ipar_optimizer"}) {
        EXPECT_EQ (KLV_whichparam (task, unknown, &kind, &number), KLV_RES_OK);
        EXPECT_EQ (kind, KLV_PAR_NONE) << unknown;
    }
}

// What is outside the range is refused by name, its ends are taken; reserved ones take their default only.
template <class Value>
void expect_range (const auto& row, std::initializer_list<Value> outside, auto put, auto get)
{
    const files::Task task;
    const KLVrescode_t refused = row.reserved () ? KLV_RES_PARAMETER_RESERVED : KLV_RES_PARAMETER_RANGE;
    Value value = -7;
    EXPECT_EQ (get (task, row.number, &value), KLV_RES_OK);
    EXPECT_EQ (value, row.fallback) << row.name;
    for (const Value each : outside) {
        EXPECT_EQ (put (task, row.number, each), refused) << row.name;
        EXPECT_NE (task.last_error ().find (row.name), std::string::npos) << task.last_error ();
    }
    for (const Value end : {row.smallest, row.largest}) {
        EXPECT_EQ (put (task, row.number, end), KLV_RES_OK) << row.name;
        get (task, row.number, &value);
        EXPECT_EQ (value, end) << row.name;
    }
}

TEST (Parameters, RefuseWhatIsOutsideTheirRange)
{
    for (const klv::RealParameter& row : klv::real_parameters)
        expect_range (row,
                      {nan, row.smallest > -inf ? std::nextafter (row.smallest, -inf) : nan,
                       row.largest < inf ? std::nextafter (row.largest, inf) : nan},
                      KLV_putdouparam, KLV_getdouparam);
    for (const klv::IntParameter& row : klv::int_parameters) {
        const bool unlimited = row.largest == std::numeric_limits<std::int32_t>::max ();
        expect_range (row, {row.smallest - 1, (unlimited ? row.smallest : row.largest + 2) - 1},
                      KLV_putintparam, KLV_getintparam);
    }
    const files::Task task;
    EXPECT_EQ (KLV_putstrparam (task, 0, "x"), KLV_RES_PARAMETER_RESERVED);
    for (const char* name : {"", "KLV_IPAR_NOTHING", "KLV_DPAR_TIME_LIMIT"})
        EXPECT_EQ (KLV_putnaintparam (task, name, 1), KLV_RES_PARAMETER_UNKNOWN) << name;
    EXPECT_EQ (KLV_putnaintparam (task, "KLV_IPAR_OPTIMIZER", 6), KLV_RES_PARAMETER_RANGE);
    EXPECT_EQ (task.last_error (), "KLV_IPAR_OPTIMIZER must be between 0 and 5, not 6.");
}

// A number without a name would go out as one that nobody can read, a name of another value would come back as that.
TEST (Parameters, NameTheirValues)
{
    for (const klv::IntParameter& row : klv::int_parameters)
        for (std::int32_t value = row.smallest; row.symbols != klv::Group::none && value <= row.largest;
             ++value) {
            char symbol[KLV_MAX_TEXT] = "", digits[KLV_MAX_TEXT] = "";
            EXPECT_EQ (KLV_iparvaltosymnam (nullptr, row.number, value, symbol), KLV_RES_OK);
            EXPECT_EQ (KLV_symnamtovalue (symbol, digits), 1) << row.name << ' ' << value;
            EXPECT_EQ (digits, std::to_string (value)) << row.name;
        }
}

}
