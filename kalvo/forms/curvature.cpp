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

LocalMatrix gather (const SymmetricTerms& terms, TermRange range, double factor, const FixedVariables& fixed)
{
    LocalMatrix local;
    const auto is_kept = [&] (std::size_t k) {
        return terms.value[k] != 0 && !fixed.is_fixed (index (terms.row[k])) &&
               !fixed.is_fixed (index (terms.column[k]));
    };
    std::vector<std::int32_t>& variables = local.variables;
    variables.reserve (2 * (range.end - range.begin));
    for (std::size_t k = range.begin; k < range.end; ++k)
        if (is_kept (k)) {
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
        if (is_kept (k))
            ++upper.starts[index (place (terms.row[k])) + 1];
    for (std::size_t j = 0; j < variables.size (); ++j)
        upper.starts[j + 1] += upper.starts[j];
    upper.rows.resize (index (upper.starts.back ()));
    upper.values.resize (upper.rows.size ());
    std::vector<std::int32_t> next (upper.starts.begin (), upper.starts.end () - 1);
    for (std::size_t k = range.begin; k < range.end; ++k)
        if (is_kept (k)) {
            const std::size_t to = index (next[index (place (terms.row[k]))]++);
            upper.rows[to] = place (terms.column[k]);
            upper.values[to] = factor * terms.value[k];
        }
    return local;
}

// At most half of what is free, as for engines. What little a small one needs is not worth the question.
Ldl make_ldl (const SparseColumns& upper)
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
    // What a matrix that was computed in double precision can lack.
    constexpr double rounding = 2e-15, most = 1e-10;
    const double shift = std::min (rounding * static_cast<double> (10 + matrix.variables.size ()), most);
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

Refused refuse_objective (const Problem& problem, const FixedVariables& fixed)
{
    const double sign = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    const SymmetricTerms& terms = problem.quadratic_objective;
    if (const auto found = find_negative_curvature (gather (terms, {0, terms.value.size ()}, sign, fixed)))
        return {.item = Refused::Item::objective_curvature,
                .variable = found->variable,
                .value = sign * found->curvature};
    return {};
}

LocalMatrix matrix_of_constraint (const Problem& problem, TermRange terms, Interval bounds,
                                  const FixedVariables& fixed)
{
    return gather (problem.quadratic_constraint, terms, bounds.upper < infinity ? 1 : -1, fixed);
}

Refused refuse_constraint (std::int32_t constraint, const LocalMatrix& matrix, Interval bounds)
{
    const auto refused = [&] (const NegativeCurvature& found) -> Refused {
        return {Refused::Item::constraint_curvature, found.variable, constraint, found.curvature};
    };
    const bool above = bounds.upper<infinity, below = bounds.lower> - infinity;
    if ((!above && !below) || matrix.variables.empty ())
        return {};
    if (const auto found = find_negative_curvature (matrix))
        return refused (*found);
    return above && below ? refused ({matrix.variables.front (), -matrix.upper.values.front ()}) : Refused ();
}

Refused refuse_curvature (const Problem& problem)
{
    const FixedVariables fixed (problem);
    Refused refused = refuse_objective (problem, fixed);
    const SymmetricTerms& terms = problem.quadratic_constraint;
    for (std::size_t k = 0; k < terms.value.size () && refused.item == Refused::Item::none;) {
        const TermRange range = terms.of_item (terms.item[k]);
        const Interval bounds = problem.constraint.interval (index (terms.item[k]));
        refused =
            refuse_constraint (terms.item[k], matrix_of_constraint (problem, range, bounds, fixed), bounds);
        k = range.end;
    }
    return refused;
}

// Pivots of a semidefinite matrix with unit diagonal that are 0.
constexpr double zero_pivot = 1e-14;

SparseColumns factor_semidefinite (const LocalMatrix& matrix)
{
    const std::vector<double> diagonal = klv::diagonal (matrix.upper);
    const SparseColumns scaled = with_unit_diagonal (matrix.upper, diagonal, 0);
    Ldl ldl = make_ldl (scaled);
    ldl.factor (scaled.values, zero_pivot);
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
        if (pivot <= zero_pivot)
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

SemidefiniteEquations::SemidefiniteEquations (const SymmetricTerms& terms, std::span<const double> weights,
                                              const FixedVariables& fixed)
{
    std::vector<std::int32_t> rows, columns;
    std::vector<double> values;
    for (std::size_t k = 0; k < terms.value.size (); ++k)
        if (const double weight = weights[index (terms.item[k])]; weight != 0) {
            rows.push_back (terms.row[k]);
            columns.push_back (terms.column[k]);
            values.push_back (weight * terms.value[k]);
        }
    const SymmetricTerms sum =
        add_up ({.item = {}, .variable = {}, .row = rows, .column = columns, .value = values});
    const LocalMatrix matrix = gather (sum, {0, sum.value.size ()}, 1, fixed);
    variables_ = matrix.variables;
    if (variables_.empty ())
        return;
    for (const double value : diagonal (matrix.upper))
        root_.push_back (value == 0 ? 1 : std::sqrt (std::abs (value)));
    SparseColumns scaled = matrix.upper;
    for (std::size_t j = 0; j < root_.size (); ++j)
        for (auto k = index (scaled.starts[j]); k < index (scaled.starts[j + 1]); ++k)
            scaled.values[k] /= root_[index (scaled.rows[k])] * root_[j];
    ldl_.emplace (make_ldl (scaled));
    ldl_->factor (scaled.values, zero_pivot);
}

void SemidefiniteEquations::solve (std::span<double> right) const
{
    if (!ldl_)
        return;
    for (std::size_t j = 0; j < root_.size (); ++j)
        right[j] /= root_[j];
    ldl_->solve (right);
    for (std::size_t j = 0; j < root_.size (); ++j)
        right[j] /= root_[j];
}

}
