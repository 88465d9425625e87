// Rays. A ray has an entry for each item of one kind, and a product for each item of the other kind: a row or column of the matrix
// times the ray. Each of them may have to be 0, or have one sign only, by the bounds that its item has; some together lie in a
// cone, by their places: products stand after all entries.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/verify/cone_part.h"
#include "kalvo/verify/products.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <utility>
#include <vector>

namespace klv {

// A bound this large gives noise a value, so that noise there is none either.
constexpr double far_bound = 1e15;

// Function: of the row, its column and the value of each entry of F, by rows of affine conic constraints.
template <class Function>
void each_affine_value (const Problem& problem, const Function& function)
{
    if (problem.affine_constraint.rows () == 0)
        return;
    const RowsOfExpressions rows_of (problem.affine_constraint, problem.affine.count ());
    for (std::int32_t j = 0; j < problem.affine.f.columns (); ++j) {
        const Column column = problem.affine.f.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            for (const std::int32_t row : rows_of (column.rows[k]))
                function (static_cast<std::size_t> (row), static_cast<std::size_t> (j), column.values[k]);
    }
}

// Function: of the constraint, or m + the row, the packed place and the value of each entry of matrices that they have.
template <class Function>
void each_matrix_value (const Problem& problem, const Function& function)
{
    const SemidefiniteVariables& matrices = problem.semidefinite;
    const auto m = static_cast<std::size_t> (problem.constraints ());
    for (std::size_t k = 0; k < matrices.constraint.value.size (); ++k)
        function (static_cast<std::size_t> (matrices.constraint.item[k]),
                  place_of (matrices, matrices.constraint, k), matrices.constraint.value[k],
                  matrices.constraint.row[k] != matrices.constraint.column[k]);
    const SymmetricTerms& terms = matrices.expression;
    if (terms.count () == 0 || problem.affine_constraint.rows () == 0)
        return;
    const RowsOfExpressions rows_of (problem.affine_constraint, problem.affine.count ());
    for (std::size_t k = 0; k < terms.value.size (); ++k)
        for (const std::int32_t row : rows_of (terms.item[k]))
            function (m + static_cast<std::size_t> (row), place_of (matrices, terms, k), terms.value[k],
                      terms.row[k] != terms.column[k]);
}

// Function: of the item, a variable and what its entry is times, of each entry of Q and its mirror image.
template <class Function>
void each_quadratic_value (const SymmetricTerms& terms, const Function& function)
{
    for (std::size_t k = 0; k < terms.value.size (); ++k) {
        const std::size_t item = terms.item.empty () ? 0 : static_cast<std::size_t> (terms.item[k]);
        const auto row = static_cast<std::size_t> (terms.row[k]),
                   column = static_cast<std::size_t> (terms.column[k]);
        function (item, row, column, terms.value[k]);
        if (row != column)
            function (item, column, row, terms.value[k]);
    }
}

// Multipliers of the constraints, positive at lower bounds, then of rows of affine conic constraints, then of the cones of bounded
// variables. Their products are those of the variables, then of the entries of matrices. Gradients of quadratic constraints are
// taken at x.
class Multipliers {
public:
    explicit Multipliers (const Problem& stated, std::span<const double> x = {});

    const Problem& problem;
    std::vector<ConePart> parts;
    static constexpr double sign = -1;    // of products

    std::size_t constraints () const { return static_cast<std::size_t> (problem.constraints ()); }
    std::size_t variables () const { return static_cast<std::size_t> (problem.variables ()); }
    std::size_t entries () const { return entries_; }
    std::size_t products () const
    {
        return variables () + static_cast<std::size_t> (problem.semidefinite.length ());
    }
    std::span<const std::int32_t> bounded_members () const { return bounded_; }

    static double size_of_bound (const Bounds& bounds, std::size_t i, double multiplier)
    {
        const Interval here = bounds.interval (i);
        return multiplier == 0 ? 0 : std::abs (multiplier > 0 ? here.lower : here.upper);
    }
    bool allows_entry (std::size_t i, double y) const
    {
        return i >= constraints () || size_of_bound (problem.constraint, i, y) < infinity;
    }
    bool allows_product (std::size_t j, double z) const
    {
        return is_in_cone (j) || size_of_bound (problem.variable, j, z) < infinity;
    }
    bool trusts_product (std::size_t j, double z) const
    {
        return is_in_cone (j) || size_of_bound (problem.variable, j, z) < far_bound;
    }

    template <class Function>
    void each_value (const Function& function) const
    {
        for (std::int32_t j = 0; j < problem.variables (); ++j) {
            const Column column = problem.matrix.column (j);
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                function (static_cast<std::size_t> (j), static_cast<std::size_t> (column.rows[k]),
                          column.values[k]);
        }
        const std::size_t m = constraints (), n = variables ();
        each_affine_value (
            problem, [&] (std::size_t row, std::size_t j, double value) { function (j, m + row, value); });
        each_matrix_value (problem, [&] (std::size_t i, std::size_t place, double value, bool) {
            function (n + place, i, value);
        });
        if (!x_.empty ())
            each_quadratic_value (problem.quadratic_constraint,
                                  [&] (std::size_t i, std::size_t j, std::size_t of, double value) {
                                      function (j, i, value * x_[of]);
                                  });
        for (std::size_t k = 0; k < bounded_.size (); ++k)
            function (static_cast<std::size_t> (bounded_[k]), entries_ - bounded_.size () + k, 1.0);
    }
    template <class Function>
    void each_term (std::span<const double> ray, std::span<const double> z, const Function& function) const
    {
        const auto add = [&] (const Bounds& bounds, std::span<const double> multipliers,
                              bool variables_of_cones) {
            for (std::size_t i = 0; i < multipliers.size (); ++i)
                if (const Interval here = bounds.interval (i);
                    multipliers[i] != 0 && !(variables_of_cones && is_in_cone (i)))
                    function (multipliers[i] > 0 ? here.lower : here.upper, multipliers[i]);
        };
        const std::size_t m = constraints ();
        const Dual duals{ray.first (m), ray.subspan (m, entries_ - m - bounded_.size ())};
        add (problem.constraint, duals.y, false);
        add (problem.variable, z.first (variables ()), true);
        each_dual_term (problem, duals, x_, false, function);
    }

private:
    // Whether a product lies in a cone alone.
    bool is_in_cone (std::size_t j) const { return j >= variables () || (!in_cone_.empty () && in_cone_[j]); }

    std::span<const double> x_;
    std::vector<bool> in_cone_;
    std::vector<std::int32_t> bounded_;
    std::size_t entries_ = 0;
};

// A direction of the variables, then of the entries of matrices. Its products are the moves of the constraints, of the rows of affine
// conic constraints, and of the gradients of quadratic terms.
class Direction {
public:
    explicit Direction (const Problem& stated);

    const Problem& problem;
    std::vector<ConePart> parts;
    static constexpr double sign = 1;

    std::size_t constraints () const { return static_cast<std::size_t> (problem.constraints ()); }
    std::size_t variables () const { return static_cast<std::size_t> (problem.variables ()); }
    std::size_t entries () const
    {
        return variables () + static_cast<std::size_t> (problem.semidefinite.length ());
    }
    std::size_t products () const { return products_; }

    static bool keeps (const Bounds& bounds, std::size_t i, double move)
    {
        return move == 0 || std::isinf (move < 0 ? bounds.lower[i] : bounds.upper[i]);
    }
    bool allows_entry (std::size_t j, double d) const
    {
        return j >= variables () || keeps (problem.variable, j, d);
    }
    bool allows_product (std::size_t i, double move) const
    {
        return i < constraints () ? keeps (problem.constraint, i, move) : move == 0 || !must_be_zero (i);
    }
    bool trusts_product (std::size_t i, double move) const { return allows_product (i, move); }

    template <class Function>
    void each_value (const Function& function) const
    {
        for (std::int32_t j = 0; j < problem.variables (); ++j) {
            const Column column = problem.matrix.column (j);
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                function (static_cast<std::size_t> (column.rows[k]), static_cast<std::size_t> (j),
                          column.values[k]);
        }
        const std::size_t m = constraints (), n = variables ();
        each_affine_value (
            problem, [&] (std::size_t row, std::size_t j, double value) { function (m + row, j, value); });
        each_matrix_value (problem, [&] (std::size_t i, std::size_t place, double value, bool twice) {
            function (i, n + place, twice ? 2 * value : value);
        });
        each_gradient ([&] (std::int64_t item, std::size_t j, std::size_t of, double value) {
            function (gradient_.at ({item, j}), of, value);
        });
    }
    template <class Function>
    void each_term (std::span<const double> d, std::span<const double>, const Function& function) const
    {
        const double better = problem.sense == KLV_SENSE_MAXIMIZE ? 1 : -1;
        for (std::size_t j = 0; j < variables (); ++j)
            function (better * problem.cost[j], d[j]);
        const SymmetricTerms& terms = problem.semidefinite.objective;
        for (std::size_t k = 0; k < terms.value.size (); ++k)
            function (better * (terms.row[k] == terms.column[k] ? 1 : 2) * terms.value[k],
                      d[variables () + place_of (problem.semidefinite, terms, k)]);
    }

private:
    // Of the objective, item -1, and of the constraints that have a bound.
    template <class Function>
    void each_gradient (const Function& function) const
    {
        each_quadratic_value (problem.quadratic_objective,
                              [&] (std::size_t, std::size_t j, std::size_t of, double value) {
                                  function (std::int64_t{-1}, j, of, value);
                              });
        each_quadratic_value (problem.quadratic_constraint, [&] (std::size_t i, std::size_t j, std::size_t of,
                                                                 double value) {
            if (std::isfinite (problem.constraint.lower[i]) || std::isfinite (problem.constraint.upper[i]))
                function (static_cast<std::int64_t> (i), j, of, value);
        });
    }

    // Rows of zero domains, and gradients, which stand last.
    bool must_be_zero (std::size_t i) const { return i >= zero_.size () || zero_[i]; }

    std::size_t products_ = 0;
    std::vector<bool> zero_;
    std::map<std::pair<std::int64_t, std::size_t>, std::size_t> gradient_;
};

}
