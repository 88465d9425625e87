#include "kalvo/engines/semidefinite/program.h"

#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace klv::semidefinite {

using std::numbers::sqrt2;

// ---- Sparse products -----------------------------------------------------------------------------------------------------------------

void add_product (double factor, const SparseColumns& matrix, std::span<const double> x, std::span<double> y)
{
    for (std::size_t j = 0; j < x.size (); ++j) {
        const auto rows = matrix.rows_of (j);
        const auto values = matrix.values_of (j);
        const double by = factor * x[j];
        for (std::size_t k = 0; k < rows.size (); ++k)
            y[index (rows[k])] += by * values[k];
    }
}

void add_transposed (double factor, const SparseColumns& matrix, std::span<const double> x,
                     std::span<double> y)
{
    for (std::size_t j = 0; j < y.size (); ++j) {
        const auto rows = matrix.rows_of (j);
        const auto values = matrix.values_of (j);
        double sum = 0;
        for (std::size_t k = 0; k < rows.size (); ++k)
            sum += values[k] * x[index (rows[k])];
        y[j] += factor * sum;
    }
}

void add_symmetric (double factor, const SparseColumns& upper, std::span<const double> x, std::span<double> y)
{
    for (std::size_t j = 0; j < index (upper.columns ()); ++j) {
        const auto rows = upper.rows_of (j);
        const auto values = upper.values_of (j);
        for (std::size_t k = 0; k < rows.size (); ++k) {
            const std::size_t i = index (rows[k]);
            y[i] += factor * values[k] * x[j];
            if (i != j)
                y[j] += factor * values[k] * x[i];
        }
    }
}

struct Entry {
    std::int32_t column, row;
    double value;
};

// The entries of each column in the order of their rows.
static SparseColumns gather_columns (std::size_t columns, std::vector<Entry>&& entries)
{
    SparseColumns matrix;
    matrix.starts.assign (columns + 1, 0);
    for (const Entry& entry : entries)
        ++matrix.starts[index (entry.column) + 1];
    std::partial_sum (matrix.starts.begin (), matrix.starts.end (), matrix.starts.begin ());
    std::ranges::stable_sort (entries, {}, &Entry::row);
    matrix.rows.resize (entries.size ());
    matrix.values.resize (entries.size ());
    std::vector<std::int32_t> next (matrix.starts.begin (), matrix.starts.end () - 1);
    for (const Entry& entry : entries) {
        const std::size_t to = index (next[index (entry.column)]++);
        matrix.rows[to] = entry.row;
        matrix.values[to] = entry.value;
    }
    return matrix;
}

// ---- The choice ----------------------------------------------------------------------------------------------------------------------

// Multiplications of an iteration in which y has so many components and u so many.
static double work (std::size_t rows, std::size_t free_variables)
{
    const auto m = static_cast<double> (rows), f = static_cast<double> (free_variables);
    return (m * m * m + f * f * f) / 3 + m * f * (m + f);
}

Matching::Matching (const ConicForm& form)
    : of_column (form.cost.size (), -1), is_matched (form.right.size ()), in_cone (form.right.size ())
{
    std::size_t first = 0;
    for (const ElementaryCone& cone : form.cones) {
        const std::size_t end = first + index (cone.rows);
        if (cone.kind == ConeKind::zero)
            zero_rows += index (cone.rows);
        else
            std::fill (in_cone.begin () + static_cast<std::ptrdiff_t> (first),
                       in_cone.begin () + static_cast<std::ptrdiff_t> (end), true);
        first = end;
    }
    std::vector<std::int32_t> entries (form.right.size (), 0);
    for (const std::int32_t row : form.matrix.rows)
        ++entries[index (row)];
    for (std::size_t j = 0; j < of_column.size (); ++j) {
        const auto here = form.matrix.rows_of (j);
        double largest = 0;
        for (std::size_t k = 0; k < here.size (); ++k) {
            const double value = std::abs (form.matrix.values_of (j)[k]);
            if (in_cone[index (here[k])] && entries[index (here[k])] == 1 && value > largest) {
                of_column[j] = here[k];
                largest = value;
            }
        }
        if (of_column[j] >= 0) {
            is_matched[index (of_column[j])] = true;
            ++matched;
        }
    }
    const std::size_t columns = form.cost.size (), others = form.right.size () - matched;
    columns_are_y =
        !form.quadratic.values.empty () || work (columns, zero_rows) <= work (others, columns - matched);
    rows = columns_are_y ? columns : others;
    free_variables = columns_are_y ? zero_rows : columns - matched;
}

Standard::Standard (const ConicForm& form) : form_ (form), matching_ (form)
{
    for (std::int32_t row = 0; row < form_.row_count (); ++row)
        if (!matching_.in_cone[index (row)])
            zero_rows_.push_back (row);
    lay_out_rows ();
    if (matching_.columns_are_y)
        take_columns_as_y ();
    else
        take_rows_as_x ();
    normalise ();
}

// ---- Blocks --------------------------------------------------------------------------------------------------------------------------

// Gives each cone row its places in primal and dual vectors. Nonnegative rows are one block, which comes first.
void Standard::lay_out_rows ()
{
    const std::size_t rows = form_.right.size ();
    primal_at_.resize (rows);
    // Whether the row is in the data of the program.
    std::vector<bool> used (rows, false);
    for (std::size_t j = 0; j < matching_.of_column.size (); ++j) {
        const auto rows_here = form_.matrix.rows_of (j);
        if (matching_.columns_are_y)
            for (const std::int32_t row : rows_here)
                used[index (row)] = true;
        else if (matching_.of_column[j] >= 0)
            used[index (matching_.of_column[j])] = rows_here.size () > 1 || form_.cost[j] != 0;
    }
    for (std::size_t row = 0; row < rows; ++row)
        if (matching_.columns_are_y ? form_.right[row] != 0 : !matching_.is_matched[row])
            used[row] = true;

    dual_at_.assign (rows, -1);
    off_diagonal_.assign (rows, false);
    const auto is_line = [] (const ElementaryCone& cone) {
        return cone.kind == ConeKind::nonnegative ||
               (cone.kind == ConeKind::second_order && cone.rows == 1) ||
               (cone.kind == ConeKind::semidefinite && cone.order == 1);
    };
    Blocks& blocks = program_.blocks;
    std::int32_t lines = 0;
    std::size_t first = 0;
    for (const ElementaryCone& cone : form_.cones) {
        for (std::size_t row = first; row < first + index (cone.rows) && is_line (cone); ++row)
            primal_at_[row] = static_cast<std::uint32_t> (dual_at_[row] = lines++);
        first += index (cone.rows);
    }
    if (lines > 0)
        blocks.append (ConeKind::nonnegative, lines, {});
    first = 0;
    std::vector<Place> pattern;
    for (const ElementaryCone& cone : form_.cones) {
        const auto primal = static_cast<std::uint32_t> (blocks.primal_size);
        const auto dual = static_cast<std::int32_t> (blocks.dual_size);
        if (cone.kind == ConeKind::second_order && cone.rows > 1) {
            for (std::int32_t k = 0; k < cone.rows; ++k) {
                primal_at_[first + index (k)] = primal + static_cast<std::uint32_t> (k);
                dual_at_[first + index (k)] = dual + k;
            }
            blocks.append (cone.kind, cone.rows, {});
        } else if (cone.kind == ConeKind::semidefinite && cone.order > 1) {
            pattern.clear ();
            std::size_t row = first;
            for (std::int32_t j = 0; j < cone.order; ++j)
                for (std::int32_t i = 0; i <= j; ++i, ++row) {
                    primal_at_[row] =
                        primal + static_cast<std::uint32_t> (index (j) * index (cone.order) + index (i));
                    off_diagonal_[row] = i != j;
                    if (i != j && !used[row])
                        continue;
                    dual_at_[row] = dual + static_cast<std::int32_t> (pattern.size ());
                    pattern.push_back ({j, i});
                }
            blocks.append (cone.kind, cone.order, pattern);
        }
        first += index (cone.rows);
    }
}

// ---- Two ways ------------------------------------------------------------------------------------------------------------------------

void Standard::take_columns_as_y ()
{
    std::vector<std::int32_t> zero_row (form_.right.size (), -1);
    for (std::size_t k = 0; k < zero_rows_.size (); ++k)
        zero_row[index (zero_rows_[k])] = static_cast<std::int32_t> (k);
    std::vector<Entry> constraints, border;
    for (std::size_t j = 0; j < form_.cost.size (); ++j) {
        const auto rows = form_.matrix.rows_of (j);
        for (std::size_t k = 0; k < rows.size (); ++k) {
            const double value = form_.matrix.values_of (j)[k];
            const auto column = static_cast<std::int32_t> (j);
            if (zero_row[index (rows[k])] >= 0)
                border.push_back ({zero_row[index (rows[k])], column, value});
            else
                constraints.push_back ({column, dual_at_[index (rows[k])], value});
        }
    }
    program_.constraints = gather_columns (form_.cost.size (), std::move (constraints));
    program_.border = gather_columns (zero_rows_.size (), std::move (border));
    for (const double cost : form_.cost)
        program_.right.push_back (-cost);
    program_.cost.assign (program_.blocks.dual_size, 0.0);
    for (std::size_t row = 0; row < form_.right.size (); ++row)
        if (dual_at_[row] >= 0)
            program_.cost[index (dual_at_[row])] = form_.right[row];
    for (const std::int32_t row : zero_rows_)
        program_.border_cost.push_back (form_.right[index (row)]);
    program_.quadratic = form_.quadratic;
}

void Standard::take_rows_as_x ()
{
    std::vector<std::int32_t> constraint_of (form_.right.size (), -1);
    std::vector<Entry> constraints, border;
    for (std::size_t row = 0; row < form_.right.size (); ++row) {
        if (matching_.is_matched[row])
            continue;
        const auto constraint = static_cast<std::int32_t> (kept_rows_.size ());
        constraint_of[row] = constraint;
        kept_rows_.push_back (static_cast<std::int32_t> (row));
        program_.right.push_back (form_.right[row]);
        if (matching_.in_cone[row])
            constraints.push_back ({constraint, dual_at_[row], 1});
    }
    program_.cost.assign (program_.blocks.dual_size, 0.0);
    for (std::size_t j = 0; j < form_.cost.size (); ++j) {
        const auto rows = form_.matrix.rows_of (j);
        const auto values = form_.matrix.values_of (j);
        const std::int32_t match = matching_.of_column[j];
        if (match < 0) {
            const auto variable = static_cast<std::int32_t> (free_columns_.size ());
            free_columns_.push_back (static_cast<std::int32_t> (j));
            program_.border_cost.push_back (form_.cost[j]);
            for (std::size_t k = 0; k < rows.size (); ++k)
                border.push_back ({variable, constraint_of[index (rows[k])], values[k]});
            continue;
        }
        // x = (b - s) / value
        const double right = form_.right[index (match)], entry = matched_value (j);
        const std::int32_t position = dual_at_[index (match)];
        for (std::size_t k = 0; k < rows.size (); ++k) {
            if (rows[k] == match)
                continue;
            const double factor = values[k] / entry;
            program_.right[index (constraint_of[index (rows[k])])] -= factor * right;
            constraints.push_back ({constraint_of[index (rows[k])], position, -factor});
        }
        if (form_.cost[j] != 0) {
            offset_ += form_.cost[j] * right / entry;
            program_.cost[index (position)] = -form_.cost[j] / entry;
        }
    }
    program_.constraints = gather_columns (program_.right.size (), std::move (constraints));
    program_.border = gather_columns (free_columns_.size (), std::move (border));
    program_.quadratic.starts.assign (program_.right.size () + 1, 0);
}

// Divides each constraint, and each column of the border, by its length.
void Standard::normalise ()
{
    const auto values_of = [] (SparseColumns& matrix, std::size_t column) {
        return std::span (matrix.values)
            .subspan (index (matrix.starts[column]),
                      index (matrix.starts[column + 1] - matrix.starts[column]));
    };
    const auto length_or_one = [] (double length) { return length > 0 ? length : 1; };
    row_length_.resize (program_.rows ());
    for (std::size_t i = 0; i < row_length_.size (); ++i)
        row_length_[i] = std::pow (norm (program_.constraints.values_of (i)), 2);
    for (std::size_t k = 0; k < program_.border.rows.size (); ++k)
        row_length_[index (program_.border.rows[k])] += std::pow (program_.border.values[k], 2);
    for (double& length : row_length_)
        length = length_or_one (std::sqrt (length));
    for (std::size_t i = 0; i < row_length_.size (); ++i) {
        for (double& value : values_of (program_.constraints, i))
            value /= row_length_[i];
        program_.right[i] /= row_length_[i];
        const auto rows = program_.quadratic.rows_of (i);
        const std::span<double> values = values_of (program_.quadratic, i);
        for (std::size_t k = 0; k < rows.size (); ++k)
            values[k] /= row_length_[i] * row_length_[index (rows[k])];
    }
    for (std::size_t k = 0; k < program_.border.rows.size (); ++k)
        program_.border.values[k] /= row_length_[index (program_.border.rows[k])];
    for (std::size_t k = 0; k < program_.free_variables (); ++k) {
        const std::span<double> values = values_of (program_.border, k);
        border_length_.push_back (length_or_one (norm (values)));
        for (double& value : values)
            value /= border_length_[k];
        program_.border_cost[k] /= border_length_[k];
    }
}

// ---- Back ----------------------------------------------------------------------------------------------------------------------------

// The column's entry in the row that it is matched with.
double Standard::matched_value (std::size_t column) const
{
    const auto rows = form_.matrix.rows_of (column);
    const auto place = std::ranges::lower_bound (rows, matching_.of_column[column]) - rows.begin ();
    return form_.matrix.values_of (column)[static_cast<std::size_t> (place)];
}

double Standard::primal_of (std::int32_t row, std::span<const double> x) const
{
    const double value = x[primal_at_[index (row)]];
    return off_diagonal_[index (row)] ? sqrt2 * value : value;
}

std::vector<double> Standard::columns (const Iterate& iterate, bool direction) const
{
    std::vector<double> columns (form_.cost.size ());
    if (matching_.columns_are_y) {
        for (std::size_t j = 0; j < columns.size (); ++j)
            columns[j] = iterate.y[j] / row_length_[j];
        return columns;
    }
    for (std::size_t j = 0; j < columns.size (); ++j)
        if (matching_.of_column[j] >= 0)
            columns[j] = ((direction ? 0 : form_.right[index (matching_.of_column[j])]) -
                          primal_of (matching_.of_column[j], iterate.x)) /
                         matched_value (j);
    for (std::size_t k = 0; k < free_columns_.size (); ++k)
        columns[index (free_columns_[k])] = iterate.u[k] / border_length_[k];
    return columns;
}

std::vector<double> Standard::multipliers (const Iterate& iterate, bool direction) const
{
    std::vector<double> multipliers (form_.right.size ());
    if (matching_.columns_are_y) {
        for (std::int32_t row = 0; row < form_.row_count (); ++row)
            if (matching_.in_cone[index (row)])
                multipliers[index (row)] = primal_of (row, iterate.x);
        for (std::size_t k = 0; k < zero_rows_.size (); ++k)
            multipliers[index (zero_rows_[k])] = iterate.u[k] / border_length_[k];
        return multipliers;
    }
    Vector z = direction ? Vector (program_.cost.size ()) : program_.cost;
    add_product (-1, program_.constraints, iterate.y, z);
    for (std::size_t row = 0; row < multipliers.size (); ++row)
        if (dual_at_[row] >= 0)
            multipliers[row] = z[index (dual_at_[row])];
    for (std::size_t k = 0; k < kept_rows_.size (); ++k)
        multipliers[index (kept_rows_[k])] = -iterate.y[k] / row_length_[k];
    return multipliers;
}

}
