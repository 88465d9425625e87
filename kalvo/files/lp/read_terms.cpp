// Names, numbers and expressions of an LP file.
#include "kalvo/files/lp/lp.h"
#include "kalvo/files/lp/reader.h"

#include <cmath>

namespace klv {

// ---- Names

static void check_name (std::string_view name)
{
    if (const char* reason = why_not_in_lp (name))
        throw syntax ("the name " + quote (name) + " " + reason);
}

std::string LpReader::take_label ()
{
    const std::string label (scanner_.token ().text);
    check_name (label);
    if (!row_names_.insert (label))
        throw syntax ("a second row " + quote (label));
    scanner_.next ();
    return label;
}

std::int32_t LpReader::known_column ()
{
    if (!at (LpToken::name))
        refuse ("the name of a variable");
    const std::int32_t j = draft_.column_names.find (scanner_.token ().text);
    if (j == NameTable::none)
        throw syntax ("unknown variable " + quote (scanner_.token ().text) + ": no expression has it");
    scanner_.next ();
    return j;
}

std::int32_t LpReader::column_of (std::string_view name)
{
    const std::int32_t j = draft_.column_names.find (name);
    if (j != NameTable::none)
        return j;
    check_name (name);
    draft_.append_column (name);
    last_entry_.push_back (-1);
    return draft_.column_names.size () - 1;
}

// ---- Expressions

void LpReader::check_behind_number (bool is_behind)
{
    if (is_behind && reads_like_exponent (scanner_.token ().text))
        throw syntax ("the variable " + quote (scanner_.token ().text) +
                      " behind a number reads like its exponent");
}

// Behind "0 <=", a number at the end of a line is the bound of a row without terms. When the next line begins with a variable, the
// number could as well be its coefficient.
LpReader::Side LpReader::side (bool behind_number)
{
    Side side;
    for (bool first = true;; first = false) {
        const bool has_sign = at (LpToken::sign);
        const double sign = take_signs ();
        if (!has_sign && !first && (at (LpToken::number) || at (LpToken::name) || at (LpToken::open)))
            return side;
        if (at (LpToken::open)) {
            bracket (sign);
            side.has_terms = true;
            continue;
        }
        const bool has_number = at (LpToken::number);
        double coefficient = sign;
        if (has_number) {
            coefficient *= scanner_.token ().value;
            side.line = lines_.number ();
            scanner_.next ();
        }
        const bool multiplies = has_number && at (LpToken::times);
        if (multiplies)
            scanner_.next ();
        if (at (LpToken::name)) {
            if (behind_number && has_number && first && scanner_.token ().begins_line)
                throw syntax ("the number before " + quote (scanner_.token ().text) +
                              " may be its coefficient or end a constraint");
            check_behind_number (has_number && !multiplies);
            term (coefficient);
            side.has_terms = true;
        } else if (has_number && !multiplies) {
            if (side.has_constant && !std::isfinite (side.constant + coefficient))
                throw syntax ("a sum of numbers that is infinite");
            side.constant = side.has_constant ? side.constant + coefficient : coefficient;
            side.has_constant = true;
        } else if (has_sign || multiplies) {
            refuse ("a number or the name of a variable");
        } else {
            return side;
        }
    }
}

void LpReader::term (double coefficient)
{
    const std::string_view name = scanner_.token ().text;
    if (!std::isfinite (coefficient))
        throw syntax ("an infinite coefficient of " + quote (name));
    const std::int32_t j = column_of (name);
    std::int64_t& last = last_entry_[static_cast<std::size_t> (j)];
    if (last >= (row_end_.empty () ? 0 : row_end_.back ())) {
        double& value = entry_values_[static_cast<std::size_t> (last)];
        value += coefficient;
        if (!std::isfinite (value))
            throw syntax ("an infinite coefficient of " + quote (name));
        draft_.note (Tradition::repeated_term, name);
    } else {
        last = static_cast<std::int64_t> (entry_columns_.size ());
        entry_columns_.push_back (j);
        entry_values_.push_back (coefficient);
    }
    scanner_.next ();
    if (at (LpToken::times) || at (LpToken::power))
        throw syntax ("a quadratic term stands in brackets, [ and ], but here is " +
                      quote (scanner_.token ().text));
}

// ---- Quadratic terms

// "[ 2 x ^ 2 - 3 x * y ]", in the objective with "/ 2" behind. The slash and the 2 are characters of names too.
void LpReader::bracket (double sign)
{
    scanner_.next ();
    do
        quadratic_term (sign * take_signs ());
    while (at (LpToken::sign));
    if (!at (LpToken::close))
        refuse ("\"]\", \"+\" or \"-\"");
    scanner_.next ();
    if (section_ == LpSection::constraints)
        return;
    const bool is_apart = at (LpToken::name) && scanner_.token ().text == "/";
    if (is_apart)
        scanner_.next ();
    if (is_apart ? !at (LpToken::number) || scanner_.token ().value != 2
                 : !at (LpToken::name) || scanner_.token ().text != "/2")
        refuse ("\"/ 2\" behind the brackets of the objective");
    scanner_.next ();
}

void LpReader::quadratic_term (double sign)
{
    double coefficient = sign;
    const bool has_number = at (LpToken::number);
    if (has_number) {
        coefficient *= scanner_.token ().value;
        scanner_.next ();
    }
    const bool multiplies = has_number && at (LpToken::times);
    if (multiplies)
        scanner_.next ();
    if (!at (LpToken::name))
        refuse ("the name of a variable");
    check_behind_number (has_number && !multiplies);
    if (!std::isfinite (coefficient))
        throw syntax ("an infinite coefficient of " + quote (scanner_.token ().text));
    const std::int32_t first = column_of (scanner_.token ().text);
    std::int32_t second = first;
    scanner_.next ();
    if (at (LpToken::power)) {
        scanner_.next ();
        if (!at (LpToken::number) || scanner_.token ().value != 2)
            refuse ("the exponent 2");
    } else {
        if (!at (LpToken::times))
            refuse ("\"^ 2\" or \"*\"");
        scanner_.next ();
        if (!at (LpToken::name))
            refuse ("the name of a variable");
        second = column_of (scanner_.token ().text);
    }
    const bool of_objective = section_ != LpSection::constraints;
    quadratic_.push_back ({of_objective ? QuadraticTerm::objective : draft_.problem.constraints (), first,
                           second, entry_of (coefficient, lp_factor (of_objective, first == second)),
                           lines_.number ()});
    scanner_.next ();
}

char LpReader::relation ()
{
    if (!at (LpToken::relation))
        refuse ("a relation");
    const char sign = scanner_.token ().relation_sign;
    scanner_.next ();
    return sign;
}

double LpReader::take_signs ()
{
    double sign = 1;
    for (; at (LpToken::sign); scanner_.next ())
        sign *= scanner_.token ().value;
    return sign;
}

double LpReader::signed_number ()
{
    double value = take_signs ();
    if (!at (LpToken::number))
        refuse ("a number");
    value *= scanner_.token ().value;
    scanner_.next ();
    return value;
}

}
