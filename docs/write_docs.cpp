// Prints a page of the manual from the library's tables.

#include "kalvo/tables/constants.h"
#include "kalvo/tables/information.h"
#include "kalvo/tables/parameters.h"

#include <cmath>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>

using klv::Constant;
using klv::Group;

static std::string written (double value)
{
    if (std::isinf (value))
        return value < 0 ? "-Inf" : "Inf";
    char digits[32];
    std::snprintf (digits, sizeof digits, "%.15g", value);
    return digits;
}

static std::string written (std::string_view value)
{
    return "'" + std::string (value) + "'";
}

// A value as users write it: the name of a constant, or a number.
static std::string written (Group symbols, std::int32_t value)
{
    const Constant* constant = symbols != Group::none ? klv::find_constant (symbols, value) : nullptr;
    return constant != nullptr ? std::string (constant->name) : std::to_string (value);
}

static std::string range (const klv::RealParameter& row)
{
    return written (row.smallest) + " to " + written (row.largest);
}

static std::string range (const klv::IntParameter& row)
{
    if (row.symbols == Group::none)
        return std::to_string (row.smallest) + " to " + std::to_string (row.largest);
    std::string names;
    for (const Constant& constant : klv::constants (row.symbols))
        if (constant.value >= row.smallest && constant.value <= row.largest)
            names += (names.empty () ? "" : "<br>") + std::string (constant.name);
    return names;
}

template <class Rows, class Default, class Range>
static void print_parameters (const char* title, const Rows& rows, Default fallback, Range values)
{
    std::cout << "\n## " << title
              << "\n\n| number | name | default | values | meaning |\n|---|---|---|---|---|\n";
    for (const auto& row : rows)
        if (!row.reserved ())
            std::cout << "| " << row.number << " | " << row.name << " | " << fallback (row) << " | "
                      << values (row) << " | " << row.description << " |\n";
}

static void print_parameters ()
{
    std::cout
        << "# Parameters\n\nFields of `param`, and what `res.param` returns. Numbers that are not listed are "
           "reserved and accept their default only.\n";
    const auto any_range = [] (const auto& row) { return range (row); };
    print_parameters (
        "Real numbers", klv::real_parameters, [] (const auto& row) { return written (row.fallback); },
        any_range);
    print_parameters (
        "Whole numbers and names of values", klv::int_parameters,
        [] (const auto& row) { return written (row.symbols, row.fallback); }, any_range);
    print_parameters (
        "Texts", klv::text_parameters, [] (const auto& row) { return written (row.fallback); },
        [] (const auto&) { return "any text"; });
}

template <class Rows, class Item>
static void print_items (const char* title, const Rows& rows, Item)
{
    std::cout << "\n## " << title << "\n\n| number | name | meaning |\n|---|---|---|\n";
    for (std::size_t i = 0; i < klv::information_number (Item::count); ++i)
        std::cout << "| " << i << " | " << rows[i].name << " | " << rows[i].description << " |\n";
}

static void print_information ()
{
    std::cout << "# Information\n\nFields of `res.info` and of what a progress function is given. Items that "
                 "are not "
                 "listed are reserved: always 0.\n";
    print_items ("Real numbers", klv::real_information, klv::RealItem ());
    print_items ("Whole numbers", klv::int_information, klv::IntItem ());
}

static void print_codes ()
{
    std::cout
        << "# Constants and response codes\n\nEvery value that has a name, as `res.symbcon` returns them.\n";
    Group last = Group::none;
    for (const Constant& constant : klv::constants ()) {
        if (constant.group != last)
            std::cout << "\n| value | name | meaning |\n|---|---|---|\n";
        last = constant.group;
        std::cout << "| " << constant.value << " | " << constant.name << " | " << constant.description
                  << " |\n";
    }
}

int main (int count, char** words)
{
    const std::string_view page = count == 2 ? words[1] : "";
    if (page == "parameters")
        print_parameters ();
    else if (page == "information")
        print_information ();
    else if (page == "codes")
        print_codes ();
    else {
        std::cerr << "write_docs parameters|information|codes\n";
        return 2;
    }
    return std::cout.flush () ? 0 : 1;
}
