// The tables of names and parameters, against the header that users read and as records go out and come in again.
#include "kalvo/tables/constants.h"
#include "kalvo/tables/parameters.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <string_view>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN ();
constexpr double inf = std::numeric_limits<double>::infinity ();

// The enumerators that kalvo.h states with a value, sizes and numbers aside.
std::map<std::string, int> header_constants ()
{
    const std::string header = files::load (KALVO_TEST_DATA "/../../kalvo/include/kalvo.h");
    const std::regex constant (R"((KLV_\w+) = (\d+))"),
        other ("_(NUMBER|COUNT|PARAMETERS|INFORMATION)$|^KLV_(MAX_TEXT|FIRST_TERMINATION|VERSION_.*)$");
    std::map<std::string, int> found;
    for (std::sregex_iterator match (header.begin (), header.end (), constant), end; match != end; ++match)
        if (!std::regex_search ((*match)[1].str (), other))
            found[(*match)[1]] = std::stoi ((*match)[2]);
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
    std::map<std::string, int> listed;
    char name[KLV_MAX_TEXT], text[KLV_MAX_TEXT];
    for (std::int32_t i = 0; i < count; ++i) {
        EXPECT_EQ (KLV_getsymbcon (task, i, static_cast<std::int32_t> (longest + 1), name, &number), 0);
        listed[name] = number;
    }
    EXPECT_EQ (listed, stated);
    for (const auto& [constant, value] : stated) {
        EXPECT_EQ (KLV_symnamtovalue (constant.c_str (), text), 1) << constant;
        EXPECT_EQ (text, std::to_string (value)) << constant;
        if (constant.starts_with ("KLV_RES_")) {
            EXPECT_EQ (KLV_getcodedesc (value, name, text), KLV_RES_OK) << constant;
            EXPECT_EQ (name, constant);
        }
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
    std::int32_t kind = -1, number = -1;
    const auto look = [&] (auto get, std::int32_t which, std::int32_t count) {
        char name[KLV_MAX_TEXT];
        for (std::int32_t i = 0; i < count; ++i) {
            EXPECT_EQ (get (task, which, i, name), KLV_RES_OK);
            const std::string_view text = name;
            EXPECT_TRUE (!text.empty () && text.size () < 64) << name;
            EXPECT_EQ (text.find_first_not_of ("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"), text.npos) << name;
            EXPECT_TRUE (names.insert (name).second) << name;
            KLV_whichparam (task, name, &kind, &number);
            EXPECT_TRUE (get != KLV_getparamname || (kind == which && number == i)) << name;
        }
        EXPECT_EQ (get (task, which, count, name), KLV_RES_INDEX_RANGE);
        EXPECT_EQ (get (task, which, -1, name), KLV_RES_INDEX_RANGE);
        EXPECT_EQ (get (task, 7, 0, name), KLV_RES_VALUE_UNKNOWN);
    };
    look (KLV_getparamname, KLV_PAR_DOUBLE, 62);
    look (KLV_getparamname, KLV_PAR_INTEGER, 190);
    look (KLV_getparamname, KLV_PAR_STRING, 25);
    look (KLV_getinfname, KLV_INF_DOUBLE, 111);
    look (KLV_getinfname, KLV_INF_INTEGER, 117);
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

TEST (Parameters, RefuseWhatIsOutsideTheirRangeAndNameTheirValues)
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
        for (std::int32_t value = row.smallest; row.symbols != klv::Group::none && value <= row.largest;
             ++value) {
            char symbol[KLV_MAX_TEXT] = "", digits[KLV_MAX_TEXT] = "";
            EXPECT_EQ (KLV_iparvaltosymnam (nullptr, row.number, value, symbol), KLV_RES_OK);
            EXPECT_EQ (KLV_symnamtovalue (symbol, digits), 1) << row.name << ' ' << value;
            EXPECT_EQ (digits, std::to_string (value)) << row.name;
        }
    }
    const files::Task task;
    EXPECT_EQ (KLV_putstrparam (task, 0, "x"), KLV_RES_PARAMETER_RESERVED);
    for (const char* name : {"", "KLV_IPAR_NOTHING", "KLV_DPAR_TIME_LIMIT"})
        EXPECT_EQ (KLV_putnaintparam (task, name, 1), KLV_RES_PARAMETER_UNKNOWN) << name;
    EXPECT_EQ (KLV_putnaintparam (task, "KLV_IPAR_OPTIMIZER", 6), KLV_RES_PARAMETER_RANGE);
    EXPECT_EQ (task.last_error (), "KLV_IPAR_OPTIMIZER must be between 0 and 5, not 6.");
}

}
