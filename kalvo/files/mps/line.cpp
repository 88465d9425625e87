#include "kalvo/files/mps/line.h"

#include "kalvo/files/text/fault.h"
#include "kalvo/files/text/words.h"

#include <array>

namespace klv {

// ---- Free form

struct Tokens {
    static constexpr std::size_t most = 6;    // valid lines have up to 5

    std::array<std::string_view, most> text;
    std::size_t count = 0;

    std::string_view operator[] (std::size_t i) const { return text[i]; }
};

static Tokens tokens_of (std::string_view line)
{
    Tokens tokens;
    const char* at = line.data ();
    const char* const end = at + line.size ();
    while (tokens.count < Tokens::most) {
        while (at != end && is_blank (*at))
            ++at;
        if (at == end)
            break;
        const char* const begin = at;
        while (at != end && static_cast<unsigned char> (*at) > ' ')
            ++at;
        if (at != end && !is_blank (*at))
            throw control_character (*at);
        tokens.text[tokens.count++] = {begin, static_cast<std::size_t> (at - begin)};
    }
    return tokens;
}

// An optional set or column name, then one or two pairs of a name and a number.
static MpsFields pairs_of (const Tokens& t, bool named)
{
    const std::size_t first = named ? 1 : 0;
    MpsFields fields;
    if (named)
        fields.name = t[0];
    for (std::size_t i = first; i + 1 < t.count; i += 2) {
        fields.item[(i - first) / 2] = t[i];
        fields.number[(i - first) / 2] = t[i + 1];
    }
    return fields;
}

static MpsFields split_free (MpsSection section, std::string_view line)
{
    const Tokens t = tokens_of (line);
    switch (section) {
    case MpsSection::rows:
        if (t.count != 2)
            throw syntax ("a line of ROWS has a type and a name, separated by blanks");
        return {.key = t[0], .name = t[1]};
    case MpsSection::columns:
        if (t.count == 3 && t[1] == mps_marker)
            return {.name = t[0], .item = {t[1], t[2]}};
        if (t.count != 3 && t.count != 5)
            throw syntax ("a line of COLUMNS has a column and one or two pairs of a row and a number");
        return pairs_of (t, true);
    case MpsSection::rhs:
    case MpsSection::ranges:
        if (t.count < 2 || t.count > 5)
            throw syntax ("a line of RHS or RANGES has a set and one or two pairs of a row and a number");
        return pairs_of (t, t.count % 2 == 1);
    case MpsSection::bounds:
        if (t.count == 2)
            return {.key = t[0], .item = {t[1]}};
        if (t.count != 3 && t.count != 4)
            throw syntax ("a line of BOUNDS has a type, a set, a column and a number");
        return {.key = t[0], .name = t[1], .item = {t[2]}, .number = {t.count == 4 ? t[3] : ""}};
    default:
        if (!is_quadratic (section))
            throw syntax (quote (trim (line)) + " is not expected here");
        if (t.count != 3 && t.count != 5)
            throw syntax (
                "a line of quadratic terms has a column and one or two pairs of a column and a number");
        return pairs_of (t, true);
    }
}

// ---- Fixed form

struct Field {
    std::size_t begin, end;
};

constexpr std::array<Field, 6> fixed_fields{{{1, 3}, {4, 12}, {14, 22}, {24, 36}, {39, 47}, {49, 61}}};

static std::string_view slice (std::string_view line, std::size_t begin, std::size_t end)
{
    return begin < line.size () ? line.substr (begin, end - begin) : std::string_view ();
}

// A '$' at the first place of the names in the columns 15 and 40 begins a comment.
static std::string_view without_comment (std::string_view line)
{
    for (const std::size_t at : {fixed_fields[2].begin, fixed_fields[4].begin})
        if (at < line.size () && line[at] == '$')
            line = line.substr (0, at);
    return line.substr (0, line.find_last_not_of (' ') + 1);
}

static std::string_view fixed_name (std::string_view field)
{
    field = field.substr (0, field.find_last_not_of (' ') + 1);
    if (field.starts_with (' '))
        throw syntax ("the name " + quote (field) + " does not begin in the first column of its field");
    return field;
}

static void check_complete (MpsSection section, const MpsFields& fields)
{
    const auto need = [] (std::string_view field, const char* what) {
        if (field.empty ())
            throw syntax (std::string (what) + " is missing in its fixed columns");
    };
    if (section == MpsSection::rows || section == MpsSection::columns || is_quadratic (section))
        need (fields.name, "the name in the columns 5 to 12");
    if (section != MpsSection::rows)
        need (fields.item[0], "the name in the columns 15 to 22");
    if (section == MpsSection::bounds || section == MpsSection::rows || fields.item[0] == mps_marker)
        return;
    need (fields.number[0], "the number in the columns 25 to 36");
    if (fields.item[1].empty () != fields.number[1].empty ())
        throw syntax ("a name in the columns 40 to 47 and a number in the columns 50 to 61 belong together");
}

static MpsFields split_fixed (MpsSection section, std::string_view line)
{
    if (section < MpsSection::rows || section >= MpsSection::endata)
        throw syntax (quote (trim (line)) + " is not expected here");
    check_characters (line);
    if (line.find ('\t') != line.npos)
        throw syntax ("a tab has no place in fixed columns");

    line = without_comment (line);
    std::array<std::string_view, 6> fields;
    std::size_t last_end = 0;
    for (std::size_t i = 0; i < fields.size (); ++i) {
        const auto [begin, end] = fixed_fields[i];
        const std::string_view gap = slice (line, last_end, begin);
        if (gap.find_first_not_of (' ') != gap.npos)
            throw syntax (quote (trim (gap)) + " is outside of the fixed columns");
        fields[i] = slice (line, begin, end);
        last_end = end;
        // A number that is longer than its field may stand alone at the end of its line.
        if ((i == 3 || i == 5) && line.size () > end && !trim (fields[i]).empty ()) {
            const std::string_view rest = trim (line.substr (begin));
            if (rest.find (' ') == rest.npos) {
                fields[i] = rest;
                last_end = line.size ();
                break;
            }
        }
    }
    if (line.size () > last_end)
        throw syntax (quote (trim (line.substr (last_end))) + " is outside of the fixed columns");
    const MpsFields result{.key = trim (fields[0]),
                           .name = fixed_name (fields[1]),
                           .item = {fixed_name (fields[2]), fixed_name (fields[4])},
                           .number = {trim (fields[3]), trim (fields[5])}};
    check_complete (section, result);
    return result;
}

// ---- Either form

MpsFields split (MpsForm form, MpsSection section, std::string_view line)
{
    return form == MpsForm::free ? split_free (section, line) : split_fixed (section, line);
}

static bool has_blank (const MpsFields& fields)
{
    const auto blank_in = [] (std::string_view name) { return name.find (' ') != name.npos; };
    return blank_in (fields.name) || blank_in (fields.item[0]) || blank_in (fields.item[1]);
}

bool only_fixed (MpsSection section, std::string_view line)
{
    try {
        return has_blank (split_fixed (section, line));
    } catch (const FileFault&) {
        return false;
    }
}

bool free_and_fixed_differ (MpsSection section, std::string_view line)
{
    constexpr auto npos = std::string_view::npos;
    const auto parts = [line] (Field field) {
        const std::string_view text = trim (slice (line, field.begin, field.end));
        return text.find (' ') != npos;
    };
    const auto gap = [line] (std::size_t begin) { return slice (line, begin, begin + 2) == "  "; };
    return gap (12) && gap (22) && (parts (fixed_fields[1]) || parts (fixed_fields[2])) &&
           only_fixed (section, line);
}

}
