// RHS, RANGES and BOUNDS of an MPS file, and the bounds of rows that follow from them.
#include "kalvo/files/mps/reader.h"
#include "kalvo/files/text/numbers.h"
#include "kalvo/files/text/words.h"

#include <algorithm>
#include <cmath>

namespace klv {

// ---- RHS and RANGES

// Takes one or two pairs of a row and a number, unless they belong to a set that is not used.
void MpsReader::pairs_line (const MpsFields& fields, Set& set, const auto& parse, const auto& put)
{
    const bool used = set.uses (fields.name);
    for (int k = 0; k < 2 && !fields.item[k].empty (); ++k) {
        const std::int32_t row = known_row (fields.item[k]);
        const auto value = parse (fields.number[k]);
        if (used)
            put (row, value);
        else
            draft_.note (Tradition::further_set, fields.name);
    }
}

void MpsReader::side_line (const MpsFields& fields)
{
    pairs_line (fields, sides_, parse_number,
                [this] (std::int32_t row, double value) { put_side (row, value); });
}

void MpsReader::range_line (const MpsFields& fields)
{
    pairs_line (fields, range_set_, parse_range,
                [this] (std::int32_t row, long double value) { put_range (row, value); });
}

void MpsReader::put_side (std::int32_t i, double value)
{
    Row& row = rows_[static_cast<std::size_t> (i)];
    if (row.has_side)
        throw syntax ("a second right-hand side of row " + quote (row_names_[i]));
    row.has_side = true;
    switch (row.kind) {
    case 'G':
        row.side = draft_.lower_bound (value, row_names_[i]);
        break;
    case 'L':
        row.side = draft_.upper_bound (value, row_names_[i]);
        break;
    case 'E':
        row.side = draft_.lower_bound (draft_.upper_bound (value, row_names_[i]), row_names_[i]);
        break;
    default:
        if (std::isinf (value))
            throw syntax ("an infinite right-hand side of the free row " + quote (row_names_[i]));
        row.side = value;
        draft_.note (i == objective_ ? Tradition::objective_right_hand_side : Tradition::free_row_side,
                     row_names_[i]);
        break;
    }
}

void MpsReader::put_range (std::int32_t i, long double value)
{
    Row& row = rows_[static_cast<std::size_t> (i)];
    if (row.has_range)
        throw syntax ("a second range of row " + quote (row_names_[i]));
    row.has_range = true;
    if (row.kind == 'N')
        draft_.note (Tradition::free_row_side, row_names_[i]);
    else if (row.kind != 'E' && value < 0)
        draft_.note (Tradition::negative_range, row_names_[i]);
    ranges_.push_back ({i, value, lines_.number ()});
}

// ---- BOUNDS

enum class Value { none, real, integer };

struct BoundType {
    std::string_view key;
    Value value;
};

constexpr std::array bound_types{
    BoundType{"LO", Value::real}, BoundType{"UP", Value::real},    BoundType{"FX", Value::real},
    BoundType{"FR", Value::none}, BoundType{"MI", Value::none},    BoundType{"PL", Value::none},
    BoundType{"BV", Value::none}, BoundType{"LI", Value::integer}, BoundType{"UI", Value::integer},
};

// Free form may leave the name of the set out: three fields are then type, column and number, of which the last two
// stand in the fields of set and column.
void MpsReader::settle_set (MpsFields& fields, bool needs_value) const
{
    if (form_ != MpsForm::free || !fields.number[0].empty () || fields.name.empty ())
        return;
    const std::string_view first = fields.name, second = fields.item[0];
    const bool first_is_column = draft_.column_names.find (first) != NameTable::none;
    if (!needs_value && first_is_column && draft_.column_names.find (second) != NameTable::none)
        throw syntax (quote (first) + " and " + quote (second) +
                      " are both columns: which is the set of bounds?");
    if (needs_value || first_is_column) {
        fields.number[0] = second;
        fields.item[0] = first;
        fields.name = {};
    }
}

void MpsReader::bound_line (MpsFields fields)
{
    const auto* type = std::find_if (bound_types.begin (), bound_types.end (),
                                     [&] (const BoundType& t) { return same_word (fields.key, t.key); });
    if (type == bound_types.end ()) {
        if (same_word (fields.key, "SC") || same_word (fields.key, "SI"))
            throw unsupported ("semi-continuous variables", "bound type " + quote (fields.key));
        throw syntax (quote (fields.key) + " is no type of bound");
    }

    const bool needs_value = type->value != Value::none;
    settle_set (fields, needs_value);
    const std::string_view name = fields.item[0], number = fields.number[0];
    const std::int32_t j = known_column (name);
    if (needs_value && number.empty ())
        throw syntax ("a bound of type " + std::string (type->key) + " needs a number");
    const double value = number.empty () ? 0 : parse_number (number);
    if (type->value == Value::integer && std::isfinite (value) && value != std::floor (value))
        throw syntax ("a bound of type " + std::string (type->key) + " needs an integer, not " +
                      quote (number));

    if (bound_set_.uses (fields.name))
        put_bound (type->key, j, value);
    else
        draft_.note (Tradition::further_set, fields.name);
}

void MpsReader::put_bound (std::string_view key, std::int32_t j, double value)
{
    if (key == "LO" || key == "LI")
        draft_.set_lower (j, value);
    if (key == "UP" || key == "UI")
        draft_.set_upper (j, value);
    if (key == "FX")
        draft_.fix (j, value);
    if (key == "MI" || key == "FR")
        draft_.set_lower (j, -infinity);
    if (key == "PL" || key == "FR")
        draft_.set_upper (j, infinity);
    if (key == "BV") {
        draft_.set_lower (j, 0);
        draft_.set_upper (j, 1);
    }
    if (key == "MI")
        minus_infinity_.push_back (j);
    if (key == "BV" || key == "LI" || key == "UI")
        draft_.make_integer (j);
}

// ---- The problem as a whole

void MpsReader::finish ()
{
    draft_.problem.append_constraints (row_names_.size () - (has_objective () ? 1 : 0));
    if (has_objective () && rows_[static_cast<std::size_t> (objective_)].has_side)
        draft_.problem.constant = -rows_[static_cast<std::size_t> (objective_)].side;
    finish_sides ();
    finish_ranges ();
    finish_columns ();
    finish_quadratic ();
    name_items (draft_.problem.constraint_name, row_names_, objective_, pacer_);
}

std::size_t MpsReader::place_of (std::int32_t row) const
{
    return static_cast<std::size_t> (row > objective_ ? row - 1 : row);
}

void MpsReader::finish_sides ()
{
    Bounds& bounds = draft_.problem.constraint;
    for (std::int32_t row = 0; row < row_names_.size (); ++row) {
        const auto [kind, has_side, has_range, is_quadratic, side] = rows_[static_cast<std::size_t> (row)];
        if (kind == 'N')
            continue;
        const std::size_t i = place_of (row);
        bounds.lower[i] = kind == 'L' ? -infinity : side;
        bounds.upper[i] = kind == 'G' ? infinity : side;
        bounds.key[i] = kind == 'E' ? std::uint8_t{KLV_BK_FX} : key_of (bounds.lower[i], bounds.upper[i]);
    }
}

void MpsReader::finish_ranges ()
{
    Bounds& bounds = draft_.problem.constraint;
    for (const auto& [row, value, line] : ranges_) {
        const char kind = rows_[static_cast<std::size_t> (row)].kind;
        const std::size_t i = place_of (row);
        if (kind == 'N' || (kind == 'E' && value == 0))
            continue;
        const double side = kind == 'L' ? bounds.upper[i] : bounds.lower[i];
        if (std::isinf (side))
            throw FileFault{
                KLV_RES_FILE_SYNTAX,
                "a range of row " + quote (row_names_[row]) + ", whose right-hand side is infinite", line};
        const bool down = kind == 'L' || (kind == 'E' && value < 0);
        const double other = static_cast<double> (down ? side - std::fabs (value) : side + std::fabs (value));
        const bool no_bound = draft_.is_huge (other);
        if (no_bound && !std::isinf (value))
            draft_.warnings.note (Tradition::huge_bound, line, row_names_[row]);
        if (down)
            bounds.lower[i] = no_bound ? -infinity : other;
        else
            bounds.upper[i] = no_bound ? infinity : other;
        bounds.key[i] = key_of (bounds.lower[i], bounds.upper[i]);
    }
}

void MpsReader::finish_columns ()
{
    Problem& problem = draft_.problem;
    for (std::int32_t j = 0; j < problem.variables () && problem.integers > 0; ++j) {
        const bool is_integer = problem.integer[static_cast<std::size_t> (j)] == KLV_VAR_INTEGER;
        if (is_integer && !draft_.is_lower_said (j) && !draft_.is_upper_said (j)) {
            problem.variable.upper[static_cast<std::size_t> (j)] = 1;
            draft_.note_column (Tradition::integer_without_bounds, j);
        }
    }
    for (const std::int32_t j : minus_infinity_)
        if (!draft_.is_upper_said (j))
            draft_.note_column (Tradition::minus_infinity_alone, j);
    draft_.finish_columns (pacer_);
}

}
