#include "kalvo/engines/piqp/newton.h"

#include "kalvo/model/text.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace klv::piqp {

// ---- Checks --------------------------------------------------------------------------------------------------------------

static bool is_sound (const SparseColumns& matrix, std::size_t columns, std::size_t rows)
{
    if (matrix.starts.size () != columns + 1 || matrix.starts.front () != 0 ||
        !std::ranges::is_sorted (matrix.starts) || matrix.rows.size () != matrix.values.size () ||
        static_cast<std::size_t> (matrix.starts.back ()) != matrix.rows.size ())
        return false;
    for (std::size_t j = 0; j < columns; ++j) {
        std::int32_t last = -1;
        for (const std::int32_t row : matrix.rows_of (j))
            if (std::exchange (last, row) >= row || static_cast<std::size_t> (row) >= rows)
                return false;
    }
    return std::ranges::all_of (matrix.values, [] (double value) { return std::isfinite (value); });
}

static bool is_finite (const std::vector<double>& values)
{
    return std::ranges::all_of (values, [] (double value) { return std::isfinite (value); });
}

static bool are_bounds (const std::vector<double>& lower, const std::vector<double>& upper, std::size_t size)
{
    return lower.size () == size && upper.size () == size &&
           std::ranges::equal (lower, upper, [] (double low, double up) {
               return low <= up && low < infinity && up > -infinity;
           });
}

std::string fault_of (const QuadraticForm& form)
{
    const std::size_t columns = form.cost.size ();
    bool upper = is_sound (form.quadratic, columns, columns);
    for (std::size_t j = 0; upper && j < columns; ++j)
        upper = form.quadratic.rows_of (j).empty () ||
                static_cast<std::size_t> (form.quadratic.rows_of (j).back ()) <= j;
    return !upper                    ? "the quadratic part is no upper triangle"
           : !is_finite (form.cost)  ? "the cost is not finite"
           : !is_finite (form.right) ? "the right-hand side is not finite"
           : !is_sound (form.equality, columns, form.right.size ())    ? "the equalities are no matrix"
           : !is_sound (form.range, columns, form.range_lower.size ()) ? "the ranges are no matrix"
           : !are_bounds (form.range_lower, form.range_upper, form.range_lower.size ())
               ? "the bounds of the ranges are no bounds"
           : !are_bounds (form.lower, form.upper, columns) ? "the bounds of the variables are no bounds"
                                                           : "";
}

// ---- The sparse matrix ----------------------------------------------------------------------------------------------------

// Appends the transpose of a matrix as columns of the upper triangle, with an entry of the diagonal below each.
static void append_rows (const SparseColumns& matrix, std::size_t rows, SparseColumns& upper)
{
    const auto first = static_cast<std::size_t> (upper.columns ());
    upper.starts.resize (first + rows + 1, 1);
    const auto starts = std::span (upper.starts).subspan (first);
    std::fill (starts.begin () + 1, starts.end (), 1);
    for (const std::int32_t row : matrix.rows)
        ++starts[static_cast<std::size_t> (row) + 1];
    std::partial_sum (starts.begin (), starts.end (), starts.begin ());
    upper.rows.resize (static_cast<std::size_t> (starts.back ()));
    std::vector<std::int32_t> next (starts.begin (), starts.end () - 1);
    for (std::int32_t j = 0; j < matrix.columns (); ++j)
        for (const std::int32_t row : matrix.rows_of (static_cast<std::size_t> (j)))
            upper.rows[static_cast<std::size_t> (next[static_cast<std::size_t> (row)]++)] = j;
    for (std::size_t i = 0; i < rows; ++i)
        upper.rows[static_cast<std::size_t> (next[i])] = static_cast<std::int32_t> (first + i);
}

static SparseColumns upper_triangle (const QuadraticForm& form)
{
    const std::size_t size = form.cost.size () + form.right.size () + form.range_lower.size ();
    if (size + form.quadratic.rows.size () + form.equality.rows.size () + form.range.rows.size () >
        std::numeric_limits<std::int32_t>::max ())
        throw std::length_error ("a matrix has too many entries");
    SparseColumns upper;
    for (std::int32_t j = 0; j < form.columns (); ++j) {
        const auto column = form.quadratic.rows_of (static_cast<std::size_t> (j));
        upper.rows.insert (upper.rows.end (), column.begin (), column.end ());
        if (column.empty () || column.back () != j)
            upper.rows.push_back (j);
        upper.starts.push_back (static_cast<std::int32_t> (upper.rows.size ()));
    }
    append_rows (form.equality, form.right.size (), upper);
    append_rows (form.range, form.range_lower.size (), upper);
    upper.values.resize (upper.rows.size ());
    return upper;
}

static double blocks_from (KLVfactorization factorization)
{
    switch (factorization) {
    case KLV_FACTORIZATION_SIMPLICIAL:
        return infinity;
    case KLV_FACTORIZATION_SUPERNODAL:
        return 0;
    default:
        return Ldl::blocks_pay;
    }
}

NewtonSystem::NewtonSystem (const QuadraticForm& form, KLVfactorization factorization)
    : NewtonSystem (form, upper_triangle (form), factorization)
{}

NewtonSystem::NewtonSystem (const QuadraticForm& form, const SparseColumns& upper,
                            KLVfactorization factorization)
    : columns_ (form.columns ()),
      rows_ (form.row_count ()),
      size_ (static_cast<double> (form.size ())),
      dense_may_pay_ (factorization == KLV_FACTORIZATION_AUTOMATIC),
      entries_ (upper.starts.back ()),
      sparse_ (upper, blocks_from (factorization))
{}

// By the speeds of the dense and of the two sparse factorisations.
bool NewtonSystem::dense () const
{
    const double of_sparse = sparse_.in_blocks () ? 8e9 : 3e9;
    return dense_may_pay_ && columns_ <= 2000 &&
           columns_ * columns_ * (columns_ / 3 + rows_) / 1.2e10 < sparse_.flops () / of_sparse;
}

double NewtonSystem::megabytes () const
{
    const double factor = dense () ? 8e-6 * columns_ * (3.5 * columns_ + 2.5 * rows_)
                                   : megabytes_of_factor (static_cast<double> (sparse_.factor_entries ()));
    return factor + 200e-6 * size_;
}

}
