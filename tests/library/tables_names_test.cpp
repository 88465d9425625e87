// The tables of names against the header that users read, and look-up in them.
#include "kalvo/tables/constants.h"
#include "kalvo/tables/information.h"
#include "kalvo/tables/parameters.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace {

bool is_size_or_number (std::string_view name)
{
    return name.starts_with ("KLV_VERSION_") || name.ends_with ("_NUMBER") ||
           name.ends_with ("_PARAMETERS") || name.ends_with ("_INFORMATION") || name.ends_with ("_COUNT") ||
           name == "KLV_MAX_TEXT" || name == "KLV_FIRST_TERMINATION";
}

// The enumerators that kalvo.h states with a value, sizes and numbers aside.
std::map<std::string, int> header_constants ()
{
    const std::string header = files::load (KALVO_TEST_DATA "/../../kalvo/include/kalvo.h");
    std::map<std::string, int> found;
    const std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    for (std::size_t at = header.find ("KLV_"); at != header.npos; at = header.find ("KLV_", at + 1)) {
        const std::size_t end = header.find_first_not_of (alphabet, at);
        const std::string name = header.substr (at, end - at);
        if (header.compare (end, 3, " = ") == 0 && !is_size_or_number (name))
            found[name] = std::stoi (header.substr (end + 3));
    }
    return found;
}

std::map<std::string, int> listed_constants (KLVtask_t task)
{
    std::int32_t count = 0;
    std::size_t longest = 0;
    EXPECT_EQ (KLV_getsymbcondim (nullptr, &count, &longest), KLV_RES_OK);
    std::map<std::string, int> found;
    for (std::int32_t i = 0; i < count; ++i) {
        std::string name (longest + 1, '\0');
        std::int32_t value = -1;
        EXPECT_EQ (KLV_getsymbcon (task, i, static_cast<std::int32_t> (longest + 1), name.data (), &value),
                   KLV_RES_OK);
        found[name.c_str ()] = value;
    }
    return found;
}

TEST (Constants, AreThoseOfTheHeader)
{
    const files::Task task;
    const auto stated = header_constants ();
    EXPECT_GT (stated.size (), 100u);
    EXPECT_EQ (listed_constants (task), stated);
}

TEST (Constants, AreFoundByTheirWholeNameOnly)
{
    char value[KLV_MAX_TEXT];
    for (const auto& [name, number] : header_constants ()) {
        ASSERT_EQ (KLV_symnamtovalue (name.c_str (), value), 1) << name;
        EXPECT_EQ (value, std::to_string (number)) << name;
    }
    for (const char* name :
         {"", "KLV_", "KLV_O", "KLV_OFFF", "klv_off", " KLV_OFF", "KLV_IPAR_OPTIMIZER", "~", "1"})
        EXPECT_EQ (KLV_symnamtovalue (name, value), 0) << name;
    EXPECT_EQ (KLV_symnamtovalue (nullptr, value), 0);
    EXPECT_EQ (KLV_symnamtovalue ("KLV_OFF", nullptr), 0);
}

TEST (Constants, CodesHaveNamesAndDescriptions)
{
    char name[KLV_MAX_TEXT], description[KLV_MAX_TEXT];
    for (const auto& [stated, code] : header_constants ())
        if (stated.starts_with ("KLV_RES_")) {
            EXPECT_EQ (KLV_getcodedesc (code, name, description), KLV_RES_OK) << stated;
            EXPECT_EQ (name, stated);
            EXPECT_GT (std::string (description).size (), 5u) << stated;
        }
    for (const int code : {-1, 1, 1052, 9999, 100006, 2147483647}) {
        EXPECT_EQ (KLV_getcodedesc (code, name, description), KLV_RES_VALUE_UNKNOWN) << code;
        EXPECT_NE (std::string (description).find ("not known"), std::string::npos);
    }
    EXPECT_EQ (KLV_getcodedesc (0, nullptr, nullptr), KLV_RES_OK);
}

// Names become fields of records: letters, digits and underscores, at most 63 characters, none twice.
void expect_field_names (const std::vector<std::string>& names)
{
    const std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    for (const std::string& name : names) {
        EXPECT_EQ (name.find_first_not_of (alphabet), name.npos) << name;
        EXPECT_TRUE (name.starts_with ("KLV_") && name.size () <= 63) << name;
    }
    EXPECT_EQ (std::set<std::string> (names.begin (), names.end ()).size (), names.size ());
}

TEST (Names, AreFieldsOfRecords)
{
    const files::Task task;
    std::vector<std::string> parameters, information, constants;
    char name[KLV_MAX_TEXT];
    const auto collect = [&] (auto get, std::int32_t kind, std::int32_t count,
                              std::vector<std::string>& names) {
        for (std::int32_t i = 0; i < count; ++i) {
            EXPECT_EQ (get (task, kind, i, name), KLV_RES_OK);
            names.emplace_back (name);
        }
        EXPECT_EQ (get (task, kind, count, name), KLV_RES_INDEX_RANGE);
        EXPECT_EQ (get (task, kind, -1, name), KLV_RES_INDEX_RANGE);
    };
    collect (KLV_getparamname, KLV_PAR_DOUBLE, 62, parameters);
    collect (KLV_getparamname, KLV_PAR_INTEGER, 190, parameters);
    collect (KLV_getparamname, KLV_PAR_STRING, 25, parameters);
    collect (KLV_getinfname, KLV_INF_DOUBLE, 111, information);
    collect (KLV_getinfname, KLV_INF_INTEGER, 117, information);
    for (const auto& [constant, value] : header_constants ())
        constants.push_back (constant);
    expect_field_names (parameters);
    expect_field_names (information);
    expect_field_names (constants);
    EXPECT_EQ (KLV_getparamname (task, KLV_PAR_NONE, 0, name), KLV_RES_VALUE_UNKNOWN);
    EXPECT_EQ (KLV_getinfname (task, 2, 0, name), KLV_RES_VALUE_UNKNOWN);
}

TEST (StatusKeys, TravelAsTwoCharacters)
{
    const files::Task task;
    std::set<std::string> seen;
    for (std::int32_t key = KLV_SK_UNKNOWN; key <= KLV_SK_INFEASIBLE; ++key) {
        char text[KLV_MAX_TEXT];
        ASSERT_EQ (KLV_sktostr (task, key, text), KLV_RES_OK);
        const std::string whole = text, two = whole.substr (0, 2);
        EXPECT_TRUE (seen.insert (two).second) << whole;
        for (const std::string& form : {whole, two}) {
            std::int32_t back = -1;
            EXPECT_EQ (KLV_strtosk (task, form.c_str (), &back), KLV_RES_OK) << form;
            EXPECT_EQ (back, key) << form;
        }
    }
    for (const char* text : {"", "U", "un", "UNK", "  ", "XX", "UN "}) {
        std::int32_t back = -1;
        EXPECT_EQ (KLV_strtosk (task, text, &back), KLV_RES_STATUS_KEY_UNKNOWN) << text;
        EXPECT_EQ (back, -1);
    }
}

TEST (Statuses, UnknownNumbersGiveAnEmptyText)
{
    const files::Task task;
    for (const auto function : {KLV_prostatostr, KLV_solstatostr, KLV_sktostr}) {
        char text[KLV_MAX_TEXT];
        EXPECT_EQ (function (task, 0, text), KLV_RES_OK);
        EXPECT_STREQ (text, "UNKNOWN");
        for (const std::int32_t number : {-1, 8, 1000}) {
            EXPECT_EQ (function (task, number, text), KLV_RES_VALUE_UNKNOWN);
            EXPECT_STREQ (text, "");
        }
    }
}

}
