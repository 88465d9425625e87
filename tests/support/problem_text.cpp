#include "tests/support/problem_text.h"

#include "kalvo/files/text/item_names.h"

#include <charconv>
#include <cmath>
#include <sstream>

namespace model {

namespace {

double number (const std::string& text, double absent = 0)
{
    return text.empty () ? absent : std::strtod (text.c_str (), nullptr);
}

// "=3", "1..", "..4", "1..4i"; false for any other word.
bool put_bounds (const std::string& word, klv::Bounds& bounds, std::size_t at)
{
    const std::string text = word.substr (0, word.size () - word.ends_with ('i'));
    const auto dots = text.find ("..");
    if (text[0] != '=' && dots == text.npos)
        return false;
    const std::string lower = text.substr (text[0] == '=', dots);
    const std::string upper = dots == text.npos ? lower : text.substr (dots + 2);
    bounds.key[at] = dots == text.npos ? KLV_BK_FX
                     : lower.empty ()  ? (upper.empty () ? KLV_BK_FR : KLV_BK_UP)
                                       : (upper.empty () ? KLV_BK_LO : KLV_BK_RA);
    bounds.lower[at] = number (lower, -inf);
    bounds.upper[at] = number (upper, inf);
    return true;
}

void read_variables (std::istream& words, klv::Problem& p)
{
    for (std::string word, name; words >> word;) {
        const bool is_named = word.find ("..") == word.npos && word[0] != '=';
        if (is_named) {
            name = word;
            words >> word;
        }
        const std::int32_t j = p.variables ();
        p.append_variables (1);
        put_bounds (word, p.variable, static_cast<std::size_t> (j));
        p.integers += p.integer.back () = word.ends_with ('i') ? KLV_VAR_INTEGER : KLV_VAR_CONTINUOUS;
        if (is_named)
            p.variable_name.put (j, j + 1, name);
    }
}

struct Entries {
    std::vector<std::int32_t> rows;
    std::vector<double> values;
};

void read_constraint (std::istream& words, klv::Problem& p, std::vector<Entries>& columns)
{
    const std::int32_t i = p.constraints ();
    p.append_constraints (1);
    std::size_t j = 0;
    for (std::string word; words >> word;) {
        if (word.ends_with (':'))
            p.constraint_name.put (i, i + 1, word.substr (0, word.size () - 1));
        else if (word != "in" && !put_bounds (word, p.constraint, static_cast<std::size_t> (i))) {
            if (word != "0") {
                columns.at (j).rows.push_back (i);
                columns[j].values.push_back (number (word));
            }
            ++j;
        }
    }
}

std::string range_of (const klv::Bounds& bounds, std::size_t at)
{
    if (bounds.key[at] == KLV_BK_FX && bounds.lower[at] == bounds.upper[at])
        return "=" + text_of (bounds.lower[at]);
    const bool below = bounds.key[at] != KLV_BK_UP && bounds.key[at] != KLV_BK_FR;
    const bool above = bounds.key[at] != KLV_BK_LO && bounds.key[at] != KLV_BK_FR;
    const char* const broken = bounds.key[at] == KLV_BK_FX ? "=" : "";    // fixed at two values
    return broken + (below ? text_of (bounds.lower[at]) : "") + ".." +
           (above ? text_of (bounds.upper[at]) : "");
}

}

klv::Problem parse (const std::string& text)
{
    klv::Problem p;
    std::istringstream parts (text), objective;
    std::vector<Entries> columns;
    std::string part;
    for (int place = 0; std::getline (parts, part, ';'); ++place) {
        std::istringstream words (part);
        if (place == 0)
            objective.swap (words);
        else if (place == 1)
            read_variables (words, p);
        else
            read_constraint (words, p, (columns.resize (p.cost.size ()), columns));
    }
    for (std::size_t j = 0; j < columns.size (); ++j)
        p.matrix.put (static_cast<std::int32_t> (j), columns[j].rows, columns[j].values);
    objective >> part;
    p.sense = part == "max" ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE;
    for (std::size_t j = 0; objective >> part;)
        (part[0] == '+' ? p.constant : p.cost.at (j++)) = number (part.substr (part[0] == '+'));
    return p;
}

std::string text_of (double value)
{
    char text[32];
    return {text, std::to_chars (text, std::end (text), value).ptr};
}

std::string text_of (const klv::Problem& p)
{
    const klv::ItemNames rows = klv::constraint_names (p), columns = klv::variable_names (p);
    std::string text = p.sense == KLV_SENSE_MAXIMIZE ? "max" : "min", variables;
    std::vector<std::string> entries (p.constraint.key.size ());
    std::vector<std::int32_t> told (entries.size ());
    for (std::int32_t j = 0; j < p.variables (); ++j) {
        const auto at = static_cast<std::size_t> (j);
        text += ' ' + text_of (p.cost[at]);
        variables += ' ' + std::string (columns (j)) + ' ' + range_of (p.variable, at) +
                     (p.integer[at] == KLV_VAR_INTEGER ? "i" : "");
        const klv::Column column = p.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k) {
            const auto i = static_cast<std::size_t> (column.rows[k]);
            for (const double value = column.values[k]; told[i] <= j; ++told[i])
                entries[i] += told[i] < j
                                  ? "0 "
                                  : (value == 0 && !std::signbit (value) ? "+0 " : text_of (value) + ' ');
        }
    }
    if (p.constant != 0 || std::signbit (p.constant))
        text += " +" + text_of (p.constant);
    text += variables.empty () && entries.empty () ? "" : ";" + variables;
    for (std::int32_t i = 0; i < p.constraints (); ++i) {
        const auto at = static_cast<std::size_t> (i);
        text += "; " + std::string (rows (i)) + ": " + entries[at] + "in " + range_of (p.constraint, at);
    }
    return text;
}

namespace {

std::string list (const auto& values)
{
    std::string text;
    for (const auto& value : values)
        if constexpr (std::is_floating_point_v<std::remove_cvref_t<decltype (value)>>)
            text += ' ' + text_of (value);
        else
            text += ' ' + std::to_string (value);
    return text;
}

std::string list (const klv::SymmetricTerms& terms)
{
    return list (terms.item) + "," + list (terms.variable) + "," + list (terms.row) + "," +
           list (terms.column) + "," + list (terms.value);
}

std::string list (const klv::Names& names, std::int32_t count)
{
    std::string text;
    for (std::int32_t i = 0; i < count; ++i)
        text += "'" + names.get (i) + "'";
    return text;
}

// What a problem has beyond its linear part, as it is stored.
std::string conic_text (const klv::Problem& p)
{
    std::string text = " / Q" + list (p.quadratic_objective) + ";" + list (p.quadratic_constraint) + " / F";
    for (std::int32_t j = 0; j < std::min (p.affine.f.columns (), p.variables ()); ++j)
        text += list (p.affine.f.column (j).rows) + ":" + list (p.affine.f.column (j).values) + ";";
    text += " / g" + list (p.affine.g) + " / domains" + list (p.domain.type) + "," + list (p.domain.size) +
            "," + list (p.domain.exponents_end) + "," + list (p.domain.exponent);
    const klv::AffineConstraints& affine = p.affine_constraint;
    text += " / accs" + list (affine.domain) + "," + list (affine.end) + "," + list (affine.expression) +
            "," + list (affine.b) + list (p.affine_constraint_name, affine.count ());
    text += " / cones" + list (p.cone.type) + "," + list (p.cone.parameter) + "," + list (p.cone.end) + "," +
            list (p.cone.member) + list (p.cone_name, p.cone.count ());
    return text + " / matrices" + list (p.semidefinite.order) +
           list (p.semidefinite_name, p.semidefinite.count ()) + ";" + list (p.semidefinite.objective) + ";" +
           list (p.semidefinite.constraint) + ";" + list (p.semidefinite.expression);
}

}

std::optional<std::string> difference (const klv::Problem& a, const klv::Problem& b)
{
    const auto all = [] (const klv::Problem& p) {
        const std::string objective = klv::unused_name ("OBJ", klv::constraint_names (p));
        return p.name + " / " + (p.objective_name.empty () ? objective : p.objective_name) + " / " +
               text_of (p) + conic_text (p);
    };
    const std::string x = all (a), y = all (b);
    if (x == y)
        return {};
    const auto at = std::mismatch (x.begin (), x.end (), y.begin (), y.end ()).first - x.begin ();
    const std::size_t from = at < 40 ? 0 : static_cast<std::size_t> (at) - 40;
    return x.substr (from, 100) + "\nand not\n" + y.substr (from, 100);
}

}
