#include "kalvo/forms/curvature.h"

#include "kalvo/sparse/index.h"
#include "kalvo/sparse/ldl.h"
#include "kalvo/task/memory.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace klv {

LocalMatrix gather (const SymmetricTerms& terms, TermRange range, double factor)
{
    LocalMatrix local;
    std::vector<std::int32_t>& variables = local.variables;
    variables.reserve (2 * (range.end - range.begin));
    for (std::size_t k = range.begin; k < range.end; ++k)
        if (terms.value[k] != 0) {
            variables.push_back (terms.row[k]);
            if (terms.row[k] != terms.column[k])
                variables.push_back (terms.column[k]);
        }
    std::ranges::sort (variables);
    variables.erase (std::ranges::unique (variables).begin (), variables.end ());
    const auto place = [&] (std::int32_t variable) {
        return static_cast<std::int32_t> (std::ranges::lower_bound (variables, variable) -
                                          variables.begin ());
    };

    // Terms come by column and row of the lower triangle, so that each column of the upper one is filled in order.
    SparseColumns& upper = local.upper;
    upper.starts.assign (variables.size () + 1, 0);
    for (std::size_t k = range.begin; k < range.end; ++k)
        if (terms.value[k] != 0)
            ++upper.starts[index (place (terms.row[k])) + 1];
    for (std::size_t j = 0; j < variables.size (); ++j)
        upper.starts[j + 1] += upper.starts[j];
    upper.rows.resize (index (upper.starts.back ()));
    upper.values.resize (upper.rows.size ());
    std::vector<std::int32_t> next (upper.starts.begin (), upper.starts.end () - 1);
    for (std::size_t k = range.begin; k < range.end; ++k)
        if (terms.value[k] != 0) {
            const std::size_t to = index (next[index (place (terms.row[k]))]++);
            upper.rows[to] = place (terms.column[k]);
            upper.values[to] = factor * terms.value[k];
        }
    return local;
}

// At most half of what is free, as for engines. What little a small one needs is not worth the question.
static Ldl make_ldl (const SparseColumns& upper)
{
    constexpr double megabytes_of_entry = 12e-6, little = 64;
    Ldl ldl (upper);
    const double needed = megabytes_of_entry * static_cast<double> (ldl.factor_entries ());
    if (needed <= little)
        return ldl;
    if (const std::string why = lack_of_memory (needed); !why.empty ())
        throw std::length_error ("the factorisation of quadratic terms: " + why);
    return ldl;
}

static std::vector<double> diagonal (const SparseColumns& upper)
{
    std::vector<double> diagonal (index (upper.columns ()));
    for (std::size_t j = 0; j < diagonal.size (); ++j)
        if (const auto rows = upper.rows_of (j);
            !rows.empty () && rows.back () == static_cast<std::int32_t> (j))
            diagonal[j] = upper.values_of (j).back ();
    return diagonal;
}

// Divides row and column by the root of their diagonal entries, which are positive; every diagonal entry becomes 1 + shift.
static SparseColumns with_unit_diagonal (const SparseColumns& upper, const std::vector<double>& diagonal,
                                         double shift)
{
    SparseColumns scaled = upper;
    for (std::size_t j = 0; j < diagonal.size (); ++j)
        for (auto k = index (upper.starts[j]); k < index (upper.starts[j + 1]); ++k) {
            const std::size_t i = index (upper.rows[k]);
            scaled.values[k] =
                i == j ? 1 + shift : upper.values[k] / std::sqrt (diagonal[i]) / std::sqrt (diagonal[j]);
        }
    return scaled;
}

static bool is_diagonally_dominant (const SparseColumns& scaled)
{
    std::vector<double> others (index (scaled.columns ()));
    for (std::size_t j = 0; j < others.size (); ++j)
        for (auto k = index (scaled.starts[j]); k < index (scaled.starts[j + 1]); ++k)
            if (const std::size_t i = index (scaled.rows[k]); i != j) {
                others[i] += std::abs (scaled.values[k]);
                others[j] += std::abs (scaled.values[k]);
            }
    return std::ranges::all_of (others, [] (double sum) { return sum <= 1; });
}

// The entry off the diagonal of a variable whose diagonal entry is 0: the curvature along both variables, one of which moves far.
static std::optional<NegativeCurvature> look_at_diagonal (const LocalMatrix& matrix,
                                                          const std::vector<double>& diagonal)
{
    for (std::size_t j = 0; j < diagonal.size (); ++j)
        if (diagonal[j] < 0)
            return NegativeCurvature{matrix.variables[j], diagonal[j]};
    for (std::size_t j = 0; j < diagonal.size (); ++j)
        for (auto k = index (matrix.upper.starts[j]); k < index (matrix.upper.starts[j + 1]); ++k) {
            const std::size_t i = index (matrix.upper.rows[k]);
            if (i == j || (diagonal[i] > 0 && diagonal[j] > 0))
                continue;
            const std::size_t flat = diagonal[i] > 0 ? j : i, other = flat == i ? j : i;
            const double entry = std::abs (matrix.upper.values[k]);
            const double move = std::min (1.0, diagonal[other] > 0 ? entry / diagonal[other] : 1.0);
            return NegativeCurvature{matrix.variables[flat],
                                     move * move * diagonal[other] - 2 * move * entry};
        }
    return std::nullopt;
}

// A negative pivot is the curvature along the solution v of L'v = e.
static NegativeCurvature along_pivot (const LocalMatrix& matrix, const std::vector<double>& diagonal,
                                      const Ldl& ldl, std::size_t pivot)
{
    std::vector<double> direction (diagonal.size ());
    direction[pivot] = 1;
    for (std::size_t k = pivot; k-- > 0;) {
        double sum = 0;
        const auto rows = ldl.rows_of (k);
        const auto values = ldl.values_of (k);
        for (std::size_t i = 0; i < rows.size (); ++i)
            sum += values[i] * direction[index (rows[i])];
        direction[k] = -sum;
    }
    std::size_t most = 0;
    double largest = 0;
    for (std::size_t k = 0; k <= pivot; ++k) {
        const std::size_t j = index (ldl.order ()[k]);
        if (const double move = std::abs (direction[k]) / std::sqrt (diagonal[j]); move > largest) {
            largest = move;
            most = j;
        }
    }
    return {matrix.variables[most], ldl.pivots ()[pivot] / (largest * largest)};
}

std::optional<NegativeCurvature> find_negative_curvature (const LocalMatrix& matrix)
{
    constexpr double shift = 1e-10;
    const std::vector<double> diagonal = klv::diagonal (matrix.upper);
    if (auto found = look_at_diagonal (matrix, diagonal))
        return found;
    const SparseColumns scaled = with_unit_diagonal (matrix.upper, diagonal, shift);
    if (is_diagonally_dominant (scaled))
        return std::nullopt;
    Ldl ldl = make_ldl (scaled);
    ldl.factor (scaled.values);
    const auto pivots = ldl.pivots ();
    for (std::size_t k = 0; k < pivots.size (); ++k)
        if (!(pivots[k] > 0))
            return along_pivot (matrix, diagonal, ldl, k);
    return std::nullopt;
}

SparseColumns factor_semidefinite (const LocalMatrix& matrix)
{
    constexpr double zero = 1e-14;    // of a pivot, beside the unit diagonal
    const std::vector<double> diagonal = klv::diagonal (matrix.upper);
    const SparseColumns scaled = with_unit_diagonal (matrix.upper, diagonal, 0);
    Ldl ldl = make_ldl (scaled);
    ldl.factor (scaled.values, zero);
    SparseColumns factor;
    factor.rows.reserve (diagonal.size () + index (static_cast<std::int32_t> (ldl.factor_entries ())));
    factor.values.reserve (factor.rows.capacity ());
    const auto put = [&] (std::int32_t k, double value) {
        const std::size_t j = index (ldl.order ()[index (k)]);
        factor.rows.push_back (matrix.variables[j]);
        factor.values.push_back (value * std::sqrt (diagonal[j]));
    };
    for (std::size_t k = 0; k < diagonal.size (); ++k) {
        const double pivot = ldl.pivots ()[k];
        if (pivot <= zero)
            continue;
        const double root = std::sqrt (pivot);
        put (static_cast<std::int32_t> (k), root);
        const auto rows = ldl.rows_of (k);
        const auto values = ldl.values_of (k);
        for (std::size_t i = 0; i < rows.size (); ++i)
            if (values[i] != 0)
                put (rows[i], root * values[i]);
        factor.starts.push_back (static_cast<std::int32_t> (factor.rows.size ()));
    }
    return factor;
}

}
