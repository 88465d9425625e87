#include "kalvo/verify/products.h"

#include "kalvo/sparse/index.h"
#include "kalvo/verify/sum.h"

#include <algorithm>

namespace klv {

static std::vector<double> values_of (const std::vector<Sum>& sums)
{
    std::vector<double> values (sums.size ());
    std::ranges::transform (sums, values.begin (), &Sum::value);
    return values;
}

bool has_quadratic_terms (const Problem& problem)
{
    return problem.quadratic_objective.count () > 0 || problem.quadratic_constraint.count () > 0;
}

static void add_columns (const ColumnMatrix& matrix, Numbers x, std::vector<Sum>& sums)
{
    for (std::int32_t j = 0; j < matrix.columns (); ++j) {
        if (x[index (j)] == 0)
            continue;
        const Column column = matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            sums[index (column.rows[k])].add_product (column.values[k], x[index (j)]);
    }
}

// Function: of an entry's number and its value, twice that off the diagonal, where it counts twice.
template <class Function>
static void each_entry (const SymmetricTerms& terms, const Function& function)
{
    for (std::size_t k = 0; k < terms.value.size (); ++k)
        function (k, terms.row[k] == terms.column[k] ? terms.value[k] : 2 * terms.value[k]);
}

static std::size_t item_of (const SymmetricTerms& terms, std::size_t k)
{
    return terms.item.empty () ? 0 : index (terms.item[k]);
}

static void add_matrices (const Problem& problem, const SymmetricTerms& terms, Numbers barx,
                          std::vector<Sum>& sums)
{
    each_entry (terms, [&] (std::size_t k, double value) {
        sums[item_of (terms, k)].add_product (value, barx[place_of (problem.semidefinite, terms, k)]);
    });
}

static void add_quadratic (const SymmetricTerms& terms, Numbers x, std::vector<Sum>& sums)
{
    each_entry (terms, [&] (std::size_t k, double value) {
        sums[item_of (terms, k)].add_product (value / 2, x[index (terms.row[k])], x[index (terms.column[k])]);
    });
}

std::vector<double> activities (const Problem& problem, const Primal& point, bool quadratic)
{
    std::vector<Sum> sums (index (problem.constraints ()));
    add_columns (problem.matrix, point.x, sums);
    add_matrices (problem, problem.semidefinite.constraint, point.barx, sums);
    if (quadratic)
        add_quadratic (problem.quadratic_constraint, point.x, sums);
    return values_of (sums);
}

double objective (const Problem& problem, const Primal& point)
{
    std::vector<Sum> sums (1);
    Sum& sum = sums.front ();
    sum.add (problem.constant);
    for (std::size_t j = 0; j < point.x.size (); ++j)
        sum.add_product (problem.cost[j], point.x[j]);
    add_matrices (problem, problem.semidefinite.objective, point.barx, sums);
    add_quadratic (problem.quadratic_objective, point.x, sums);
    return sum.value ();
}

std::vector<double> affine_rows (const Problem& problem, const Primal& point, bool constants)
{
    if (problem.affine_constraint.rows () == 0)
        return {};
    std::vector<Sum> expressions (index (problem.affine.count ()));
    add_columns (problem.affine.f, point.x, expressions);
    add_matrices (problem, problem.semidefinite.expression, point.barx, expressions);
    const AffineConstraints& constraints = problem.affine_constraint;
    std::vector<double> rows (constraints.expression.size ());
    for (std::size_t k = 0; k < rows.size (); ++k) {
        const std::size_t expression = index (constraints.expression[k]);
        Sum sum = expressions[expression];
        if (constants) {
            sum.add (problem.affine.g[expression]);
            sum.add (-constraints.b[k]);
        }
        rows[k] = sum.value ();
    }
    return rows;
}

// Adds factor (item) * Q x of each item to the sums of the variables.
template <class Factor>
static void add_gradients (const SymmetricTerms& terms, Numbers x, const Factor& factor,
                           std::vector<Sum>& sums)
{
    for (std::size_t k = 0; k < terms.value.size (); ++k) {
        const std::size_t row = index (terms.row[k]), column = index (terms.column[k]);
        const double times = factor (item_of (terms, k));
        sums[row].add_product (times, terms.value[k], x[column]);
        if (row != column)
            sums[column].add_product (times, terms.value[k], x[row]);
    }
}

std::vector<double> objective_gradient (const Problem& problem, Numbers x)
{
    if (problem.quadratic_objective.count () == 0)
        return {};
    std::vector<Sum> sums (x.size ());
    add_gradients (problem.quadratic_objective, x, [] (std::size_t) { return 1.0; }, sums);
    return values_of (sums);
}

// Of each expression, the sum of the multipliers of its rows; empty when there are no rows.
static std::vector<double> of_expressions (const Problem& problem, Numbers doty)
{
    std::vector<Sum> sums (doty.empty () ? 0 : index (problem.affine.count ()));
    for (std::size_t k = 0; k < doty.size (); ++k)
        sums[index (problem.affine_constraint.expression[k])].add (doty[k]);
    return values_of (sums);
}

std::vector<double> reduced_costs (const Problem& problem, const Dual& duals, Numbers x, bool costs)
{
    std::vector<Sum> begun;
    if (!x.empty () && has_quadratic_terms (problem)) {
        begun.resize (x.size ());
        if (costs)
            add_gradients (problem.quadratic_objective, x, [] (std::size_t) { return 1.0; }, begun);
        add_gradients (problem.quadratic_constraint, x, [&] (std::size_t i) { return -duals.y[i]; }, begun);
    }
    const std::vector<double> weights = of_expressions (problem, duals.doty);
    const auto subtract = [] (const Column& column, Numbers multipliers, Sum& sum) {
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            sum.add_product (-column.values[k], multipliers[index (column.rows[k])]);
    };
    std::vector<double> reduced (index (problem.variables ()));
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        Sum sum = begun.empty () ? Sum () : begun[index (j)];
        if (costs)
            sum.add (problem.cost[index (j)]);
        subtract (problem.matrix.column (j), duals.y, sum);
        if (!weights.empty ())
            subtract (problem.affine.f.column (j), weights, sum);
        reduced[index (j)] = sum.value ();
    }
    return reduced;
}

std::vector<double> reduced_matrices (const Problem& problem, const Dual& duals, bool costs)
{
    const SemidefiniteVariables& matrices = problem.semidefinite;
    std::vector<Sum> sums (index (matrices.length ()));
    const auto add = [&] (const SymmetricTerms& terms, const auto& factor) {
        for (std::size_t k = 0; k < terms.value.size (); ++k)
            sums[place_of (matrices, terms, k)].add_product (terms.value[k], factor (item_of (terms, k)));
    };
    const std::vector<double> weights = of_expressions (problem, duals.doty);
    if (costs)
        add (matrices.objective, [] (std::size_t) { return 1.0; });
    add (matrices.constraint, [&] (std::size_t i) { return -duals.y[i]; });
    if (!weights.empty ())
        add (matrices.expression, [&] (std::size_t e) { return -weights[e]; });
    return values_of (sums);
}

std::vector<double> quadratic_values (const SymmetricTerms& terms, std::int32_t items, Numbers x)
{
    std::vector<Sum> sums (index (items));
    add_quadratic (terms, x, sums);
    return values_of (sums);
}

}
