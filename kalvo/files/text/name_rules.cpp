#include "kalvo/files/text/name_rules.h"

#include "kalvo/files/lp/scan.h"
#include "kalvo/files/text/item_names.h"
#include "kalvo/files/text/name_table.h"
#include "kalvo/files/text/words.h"

#include <algorithm>
#include <array>

namespace klv {

// ---- What each form takes for a name: the reason why it does not, or null

static bool is_control (char c)
{
    return static_cast<unsigned char> (c) < ' ';
}

static const char* why_not_in_mps (std::string_view name)
{
    if (std::any_of (name.begin (), name.end (), is_control))
        return "has a control character";
    return name == "'MARKER'" ? "is the word of markers" : nullptr;
}

static const char* why_not_in_free_mps (std::string_view name)
{
    // So that lines of three names stay below the longest line that is read.
    constexpr std::size_t longest = std::size_t{1} << 16;
    if (name.find (' ') != name.npos)
        return "has a blank";
    return name.size () > longest ? "is too long" : why_not_in_mps (name);
}

static const char* why_not_in_fixed_mps (std::string_view name)
{
    constexpr std::size_t longest = 8;
    if (name.starts_with (' ') || name.ends_with (' '))
        return "begins or ends with a blank";
    if (name.starts_with ('$'))
        return "begins with the sign of comments";
    return name.size () > longest ? "is too long" : why_not_in_mps (name);
}

static const char* why_not_in_lp_of_others (std::string_view name)
{
    constexpr std::size_t longest = 255;    // that other programs read
    return name.size () > longest ? "is too long" : why_not_in_lp (name);
}

static const char* why_not_in_lp_terms (std::string_view name)
{
    return reads_like_exponent (name) ? "reads like an exponent" : why_not_in_lp_of_others (name);
}

struct NameRule {
    using WhyNot = const char* (*)(std::string_view name);

    const char* form;
    WhyNot of_row;
    WhyNot of_variable;
};

constexpr std::array name_rules{
    NameRule{"free MPS", why_not_in_free_mps, why_not_in_free_mps},
    NameRule{"fixed MPS", why_not_in_fixed_mps, why_not_in_fixed_mps},
    NameRule{"LP", why_not_in_lp_of_others, why_not_in_lp_terms},
};

// ---- The names of a problem

struct Obstacle {
    std::string item;
    const char* reason = nullptr;
};

static Obstacle find_obstacle (const char* kind, const ItemNames& names, NameRule::WhyNot why_not)
{
    for (std::int32_t i = 0; i < names.count (); ++i)
        if (const char* reason = why_not (names (i)))
            return {std::string (kind) + " " + std::to_string (i + 1) + " " + quote (names (i)), reason};
    return {};
}

static Obstacle find_obstacle (const Problem& problem, const NameRule& rule)
{
    if (const char* reason = rule.of_row (problem.objective_name))
        return {"objective " + quote (problem.objective_name), reason};
    Obstacle found = find_obstacle ("constraint", constraint_names (problem), rule.of_row);
    return found.reason ? found : find_obstacle ("variable", variable_names (problem), rule.of_variable);
}

static void check_unique (const char* kind, const ItemNames& names, std::string_view also)
{
    NameTable table;
    if (!also.empty ())
        table.insert (also);
    for (std::int32_t i = 0; i < names.count (); ++i)
        if (!table.insert (names (i)))
            throw cannot_hold ("no file can hold two items of the same name: " + std::string (kind) + " " +
                               std::to_string (i + 1) + " " + quote (names (i)));
}

static void check_problem_name (std::string_view name)
{
    constexpr std::size_t longest = std::size_t{1} << 16;
    const auto refuse = [&] (const char* reason) {
        throw cannot_hold ("no file can hold the problem's name " + quote (name) + ", which " + reason);
    };
    if (name.size () > longest)
        refuse ("is too long");
    if (std::any_of (name.begin (), name.end (), [] (char c) { return is_control (c) && c != '\t'; }))
        refuse ("has a control character");
    if (trim (name) != name)
        refuse ("begins or ends with a blank");
}

FileFault cannot_hold (const std::string& text)
{
    return {KLV_RES_FILE_CANNOT_HOLD, text};
}

bool holds_names (FileForm form, const Problem& problem)
{
    return find_obstacle (problem, name_rules[static_cast<std::size_t> (form)]).reason == nullptr;
}

void check_names (FileForm form, const Problem& problem)
{
    check_problem_name (problem.name);
    check_unique ("constraint", constraint_names (problem), problem.objective_name);
    check_unique ("variable", variable_names (problem), {});
    const NameRule& rule = name_rules[static_cast<std::size_t> (form)];
    const Obstacle obstacle = find_obstacle (problem, rule);
    if (!obstacle.reason)
        return;
    const auto other = std::find_if (name_rules.begin (), name_rules.end (), [&] (const NameRule& r) {
        return find_obstacle (problem, r).reason == nullptr;
    });
    throw cannot_hold (std::string (rule.form) + " cannot hold " + obstacle.item + ", whose name " +
                       obstacle.reason + "; " +
                       (other == name_rules.end () ? "no format that is known" : other->form) + " can");
}

}
