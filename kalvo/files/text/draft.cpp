#include "kalvo/files/text/draft.h"

#include <cmath>

namespace klv {

// ---- Bounds

bool Draft::is_huge (double value) const
{
    return std::fabs (value) >= huge_;
}

double Draft::lower_bound (double value, std::string_view item)
{
    if (value >= huge_)
        throw syntax ("a lower bound that is infinite or beyond the bound infinity threshold");
    if (value > -huge_)
        return value;
    if (std::isfinite (value))
        note (Tradition::huge_bound, item);
    return -infinity;
}

double Draft::upper_bound (double value, std::string_view item)
{
    if (value <= -huge_)
        throw syntax ("an upper bound that is minus infinity or beyond the bound infinity threshold");
    if (value < huge_)
        return value;
    if (std::isfinite (value))
        note (Tradition::huge_bound, item);
    return infinity;
}

// ---- Columns

bool Draft::append_column (std::string_view name)
{
    if (column_names.size () == std::numeric_limits<std::int32_t>::max ())
        throw syntax ("more columns than a task can hold");
    if (!column_names.insert (name))
        return false;
    columns_.push_back ({.line = lines_.number ()});
    problem.append_variables (1);
    problem.variable.lower.back () = 0;
    return true;
}

void Draft::say (std::int32_t j, bool Column::*said, const char* side)
{
    Column& column = columns_[static_cast<std::size_t> (j)];
    if (column.*said)
        throw syntax (std::string ("a second ") + side + " bound of column " + quote (column_names[j]));
    column.*said = true;
    column.line = lines_.number ();
}

void Draft::set_lower (std::int32_t j, double value)
{
    say (j, &Column::lower_said, "lower");
    problem.variable.lower[static_cast<std::size_t> (j)] = lower_bound (value, column_names[j]);
}

void Draft::set_upper (std::int32_t j, double value)
{
    say (j, &Column::upper_said, "upper");
    problem.variable.upper[static_cast<std::size_t> (j)] = upper_bound (value, column_names[j]);
}

void Draft::fix (std::int32_t j, double value)
{
    if (is_huge (value))
        throw syntax ("column " + quote (column_names[j]) +
                      " is fixed at a value beyond the bound infinity threshold");
    set_lower (j, value);
    set_upper (j, value);
    columns_[static_cast<std::size_t> (j)].fixed = true;
}

void Draft::make_integer (std::int32_t j)
{
    std::uint8_t& type = problem.integer[static_cast<std::size_t> (j)];
    problem.integers += type == KLV_VAR_INTEGER ? 0 : 1;
    type = KLV_VAR_INTEGER;
}

void Draft::limit_to_binary (std::int32_t j)
{
    Column& column = columns_[static_cast<std::size_t> (j)];
    double& lower = problem.variable.lower[static_cast<std::size_t> (j)];
    double& upper = problem.variable.upper[static_cast<std::size_t> (j)];
    if (lower < 0 || (column.upper_said && upper > 1))
        note_column (Tradition::binary_bound, j);
    lower = lower < 0 ? 0 : lower;
    upper = upper > 1 ? 1 : upper;
    column.lower_said = true;
    column.fixed &= lower == upper;
}

void Draft::note_column (Tradition kind, std::int32_t j)
{
    warnings.note (kind, columns_[static_cast<std::size_t> (j)].line, column_names[j]);
}

void Draft::finish_columns (Pacer& pacer)
{
    Bounds& bounds = problem.variable;
    for (std::int32_t number = 0; number < problem.variables (); ++number) {
        const std::size_t j = static_cast<std::size_t> (number);
        if (!columns_[j].lower_said && bounds.upper[j] < 0) {
            bounds.lower[j] = -infinity;
            note_column (Tradition::negative_upper_alone, number);
        }
        bounds.key[j] =
            columns_[j].fixed ? std::uint8_t{KLV_BK_FX} : key_of (bounds.lower[j], bounds.upper[j]);
    }
    name_items (problem.variable_name, column_names, NameTable::none, pacer);
}

Problem Draft::take ()
{
    warnings.print (task_, path_);
    return std::move (problem);
}

// ---- Names

void name_items (Names& names, const NameTable& table, std::int32_t without, Pacer& pacer)
{
    constexpr std::int32_t stretch = 4096;
    const std::int32_t count = table.size () - (without >= 0 && without < table.size () ? 1 : 0);
    std::int32_t item = 0;
    for (std::int32_t i = 0; i < table.size (); ++i) {
        if (i % stretch == 0)
            pacer.tick ();
        if (i != without)
            names.put (item++, count, std::string (table[i]));
    }
}

}
