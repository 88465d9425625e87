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

void add_transposed (double factor, const SparseColumns& matrix, std::span<const double> x, std::span<double> y)
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
static double work (double rows, double free_variables)
{
    return (rows * rows * rows + free_variables * free_variables * free_variables) / 3 +
           rows * free_variables * (rows + free_variables);
}

Standard::Standard (const ConicForm& form) : form_ (form)
{
    match_rows ();
    for (std::int32_t row = 0; row < form_.row_count (); ++row)
        if (primal_at_[index (row)] < 0)
            zero_rows_.push_back (row);
        
    std::size_t matched = 0;
    for (const Match& match : match_)
        matched += match.row >= 0;
    const auto columns = static_cast<double> (form_.columns ()),
               rows = static_cast<double> (form_.row_count ()) - static_cast<double> (matched);
    columns_are_y_ = !form_.quadratic.values.empty () ||
                     work (columns, static_cast<double> (zero_rows_.size ())) <=
                         work (rows, columns - static_cast<double> (matched));
    lay_out_rows ();
    if (columns_are_y_)
        take_columns_as_y ();
    else
        take_rows_as_x ();
    normalise ();
}

// Columns with an entry in a cone row that has no other entry: the row's slack can stand for the column.
void Standard::match_rows ()
{
    const std::size_t rows = form_.right.size ();
    primal_at_.assign (rows, -1);
    std::size_t first = 0;
    for (const ElementaryCone& cone : form_.cones) {
        if (cone.kind != ConeKind::zero)
            std::fill_n (primal_at_.begin () + static_cast<std::ptrdiff_t> (first), cone.rows, 0);
        first += index (cone.rows);
    }
    std::vector<std::int32_t> entries (rows, 0);
    for (const std::int32_t row : form_.matrix.rows)
        ++entries[index (row)];
    match_.resize (form_.cost.size ());
    matched_by_.assign (rows, -1);
    for (std::size_t j = 0; j < match_.size (); ++j) {
        const auto rows_here = form_.matrix.rows_of (j);
        for (std::size_t k = 0; k < rows_here.size (); ++k) {
            const std::int32_t row = rows_here[k];
            const double value = form_.matrix.values_of (j)[k];
            if (primal_at_[index (row)] >= 0 && entries[index (row)] == 1 &&
                std::abs (value) > std::abs (match_[j].value))
                match_[j] = {row, value};
        }
        if (match_[j].row >= 0)
            matched_by_[index (match_[j].row)] = static_cast<std::int32_t> (j);
    }
}

// ---- Blocks --------------------------------------------------------------------------------------------------------------------------

// Gives each cone row its places in primal and dual vectors. Nonnegative rows are one block, which comes first.
void Standard::lay_out_rows ()
{
    const std::size_t rows = form_.right.size ();
    // Whether the row is in the data of the program.
    std::vector<bool> used (rows, false);
    for (std::size_t j = 0; j < match_.size (); ++j) {
        const auto rows_here = form_.matrix.rows_of (j);
        if (columns_are_y_)
            for (const std::int32_t row : rows_here)
                used[index (row)] = true;
        else if (match_[j].row >= 0)
            used[index (match_[j].row)] = rows_here.size () > 1 || form_.cost[j] != 0;
    }
    for (std::size_t row = 0; row < rows; ++row)
        if (columns_are_y_ ? form_.right[row] != 0 : matched_by_[row] < 0)
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
            primal_at_[row] = dual_at_[row] = lines++;
        first += index (cone.rows);
    }
    if (lines > 0)
        blocks.append (ConeKind::nonnegative, lines, {});
    first = 0;
    std::vector<Place> pattern;
    for (const ElementaryCone& cone : form_.cones) {
        const auto primal = static_cast<std::ptrdiff_t> (blocks.primal_size),
                   dual = static_cast<std::ptrdiff_t> (blocks.dual_size);
        if (cone.kind == ConeKind::second_order && cone.rows > 1) {
            for (std::int32_t k = 0; k < cone.rows; ++k) {
                primal_at_[first + index (k)] = primal + k;
                dual_at_[first + index (k)] = dual + k;
            }
            blocks.append (cone.kind, cone.rows, {});
        } else if (cone.kind == ConeKind::semidefinite && cone.order > 1) {
            pattern.clear ();
            std::size_t row = first;
            for (std::int32_t j = 0; j < cone.order; ++j)
                for (std::int32_t i = 0; i <= j; ++i, ++row) {
                    primal_at_[row] = primal + static_cast<std::ptrdiff_t> (j) * cone.order + i;
                    off_diagonal_[row] = i != j;
                    if (i != j && !used[row])
                        continue;
                    dual_at_[row] = dual + std::ssize (pattern);
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
                constraints.push_back ({column, static_cast<std::int32_t> (dual_at_[index (rows[k])]), value});
        }
    }
    program_.constraints = gather_columns (form_.cost.size (), std::move (constraints));
    program_.border = gather_columns (zero_rows_.size (), std::move (border));
    for (const double cost : form_.cost)
        program_.right.push_back (-cost);
    program_.cost.assign (program_.blocks.dual_size, 0.0);
    for (std::size_t row = 0; row < form_.right.size (); ++row)
        if (dual_at_[row] >= 0)
            program_.cost[index (static_cast<std::int32_t> (dual_at_[row]))] = form_.right[row];
    for (const std::int32_t row : zero_rows_)
        program_.border_cost.push_back (form_.right[index (row)]);
    program_.quadratic = form_.quadratic;
}

void Standard::take_rows_as_x ()
{
    std::vector<std::int32_t> constraint_of (form_.right.size (), -1);
    std::vector<Entry> constraints, border;
    for (std::size_t row = 0; row < form_.right.size (); ++row) {
        if (matched_by_[row] >= 0)
            continue;
        const auto constraint = static_cast<std::int32_t> (kept_rows_.size ());
        constraint_of[row] = constraint;
        kept_rows_.push_back (static_cast<std::int32_t> (row));
        program_.right.push_back (form_.right[row]);
        if (primal_at_[row] >= 0)
            constraints.push_back ({constraint, static_cast<std::int32_t> (dual_at_[row]), 1});
    }
    program_.cost.assign (program_.blocks.dual_size, 0.0);
    for (std::size_t j = 0; j < form_.cost.size (); ++j) {
        const auto rows = form_.matrix.rows_of (j);
        const auto values = form_.matrix.values_of (j);
        const Match match = match_[j];
        if (match.row < 0) {
            const auto variable = static_cast<std::int32_t> (free_columns_.size ());
            free_columns_.push_back (static_cast<std::int32_t> (j));
            program_.border_cost.push_back (form_.cost[j]);
            for (std::size_t k = 0; k < rows.size (); ++k)
                border.push_back ({variable, constraint_of[index (rows[k])], values[k]});
            continue;
        }
        // x = (b - s) / value
        const double right = form_.right[index (match.row)];
        const auto position = static_cast<std::int32_t> (dual_at_[index (match.row)]);
        for (std::size_t k = 0; k < rows.size (); ++k) {
            if (rows[k] == match.row)
                continue;
            const double factor = values[k] / match.value;
            program_.right[index (constraint_of[index (rows[k])])] -= factor * right;
            constraints.push_back ({constraint_of[index (rows[k])], position, -factor});
        }
        if (form_.cost[j] != 0) {
            offset_ += form_.cost[j] * right / match.value;
            program_.cost[index (position)] = -form_.cost[j] / match.value;
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
            .subspan (index (matrix.starts[column]), index (matrix.starts[column + 1] - matrix.starts[column]));
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

double Standard::primal_of (std::int32_t row, std::span<const double> x) const
{
    const double value = x[static_cast<std::size_t> (primal_at_[index (row)])];
    return off_diagonal_[index (row)] ? sqrt2 * value : value;
}

std::vector<double> Standard::columns (const Iterate& iterate, bool direction) const
{
    std::vector<double> columns (form_.cost.size ());
    if (columns_are_y_) {
        for (std::size_t j = 0; j < columns.size (); ++j)
            columns[j] = iterate.y[j] / row_length_[j];
        return columns;
    }
    for (std::size_t j = 0; j < columns.size (); ++j)
        if (match_[j].row >= 0)
            columns[j] = ((direction ? 0 : form_.right[index (match_[j].row)]) -
                          primal_of (match_[j].row, iterate.x)) /
                         match_[j].value;
    for (std::size_t k = 0; k < free_columns_.size (); ++k)
        columns[index (free_columns_[k])] = iterate.u[k] / border_length_[k];
    return columns;
}

std::vector<double> Standard::multipliers (const Iterate& iterate, bool direction) const
{
    std::vector<double> multipliers (form_.right.size ());
    if (columns_are_y_) {
        for (std::int32_t row = 0; row < form_.row_count (); ++row)
            if (primal_at_[index (row)] >= 0)
                multipliers[index (row)] = primal_of (row, iterate.x);
        for (std::size_t k = 0; k < zero_rows_.size (); ++k)
            multipliers[index (zero_rows_[k])] = iterate.u[k] / border_length_[k];
        return multipliers;
    }
    Vector z = direction ? Vector (program_.cost.size ()) : program_.cost;
    add_product (-1, program_.constraints, iterate.y, z);
    for (std::size_t row = 0; row < multipliers.size (); ++row)
        if (dual_at_[row] >= 0)
            multipliers[row] = z[static_cast<std::size_t> (dual_at_[row])];
    for (std::size_t k = 0; k < kept_rows_.size (); ++k)
        multipliers[index (kept_rows_[k])] = -iterate.y[k] / row_length_[k];
    return multipliers;
}

}
