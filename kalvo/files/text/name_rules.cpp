#include "kalvo/files/text/name_rules.h"

#include "kalvo/files/text/fault.h"
#include "kalvo/files/text/name_table.h"
#include "kalvo/files/text/words.h"

#include <algorithm>

namespace klv {

bool has_control_character (std::string_view name)
{
    return std::ranges::any_of (name, [] (char c) { return static_cast<unsigned char> (c) < ' '; });
}

std::string describe_item (const char* kind, const ItemNames& names, std::int32_t i)
{
    return std::string (kind) + " " + std::to_string (i + 1) + " " + quote (names (i));
}

static std::string repeated_name (const char* kind, const ItemNames& names, std::string_view also)
{
    NameTable table;
    if (!also.empty ())
        table.insert (also);
    for (std::int32_t i = 0; i < names.count (); ++i)
        if (!table.insert (names (i)))
            return "two items of the same name: " + describe_item (kind, names, i);
    return {};
}

static std::string unfit_item (const char* kind, const ItemNames& names, WhyNot why_not)
{
    for (std::int32_t i = 0; i < names.count (); ++i)
        if (const char* reason = why_not (names (i)))
            return describe_item (kind, names, i) + ", whose name " + reason;
    return {};
}

// The problem's name stands on a line of its own, behind a word.
static const char* why_not_of_problem (std::string_view name)
{
    if (name.size () > longest_name)
        return "is too long";
    std::string without_tabs (name);
    std::ranges::replace (without_tabs, '\t', ' ');
    if (has_control_character (without_tabs))
        return "has a control character";
    return trim (name) != name ? "begins or ends with a blank" : nullptr;
}

std::string unfit_name (const Problem& problem, const NameRules& rules)
{
    if (const char* reason = why_not_of_problem (problem.name))
        return "the problem's name " + quote (problem.name) + ", which " + reason;
    if (const char* reason = rules.of_row (problem.objective_name))
        return "objective " + quote (problem.objective_name) + ", whose name " + reason;
    const ItemNames rows = constraint_names (problem), variables = variable_names (problem);
    for (const std::string& unfit : {unfit_item ("constraint", rows, rules.of_row),
                                     unfit_item ("variable", variables, rules.of_variable),
                                     repeated_name ("constraint", rows, problem.objective_name),
                                     repeated_name ("variable", variables, {})})
        if (!unfit.empty ())
            return unfit;
    return {};
}

}
