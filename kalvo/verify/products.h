// What the terms of a problem add up to at a point, or with multipliers. Sums are compensated, so that the point's errors are
// measured and not the sums'.
#pragma once

#include "kalvo/model/problem.h"

#include <span>
#include <vector>

namespace klv {

using Numbers = std::span<const double>;

// A point in both its parts: variables, and the packed triangles of the semidefinite variables.
struct Primal {
    Numbers x, barx = {};
};

// Multipliers of constraints, and of the rows of affine conic constraints.
struct Dual {
    Numbers y, doty = {};
};

bool has_quadratic_terms (const Problem& problem);

// The constraints' terms: a x + <Abar, X>, and with quadratic ones 1/2 x'Qx.
std::vector<double> activities (const Problem& problem, const Primal& point, bool quadratic);
double objective (const Problem& problem, const Primal& point);

// The rows F x + <Fbar, X>, plus, with constants, g - b.
std::vector<double> affine_rows (const Problem& problem, const Primal& point, bool constants);

// Q x of the objective; without such terms empty.
std::vector<double> objective_gradient (const Problem& problem, Numbers x);

// c - A'y - F'doty, plus, at a point x (empty: without quadratic terms), Q x - sum y Q x; without costs c and Q are 0.
std::vector<double> reduced_costs (const Problem& problem, const Dual& duals, Numbers x, bool costs);

// The lower triangles of Cbar - sum y Abar - sum doty Fbar; without costs Cbar is 0.
std::vector<double> reduced_matrices (const Problem& problem, const Dual& duals, bool costs);

// 1/2 x'Qx of each item.
std::vector<double> quadratic_values (const SymmetricTerms& terms, std::int32_t items, Numbers x);

// The factors of each product in -(g - b)'doty - 1/2 x'Qx + sum y 1/2 x'Qx: what a dual objective has beyond bounds and constant.
// x is empty, or costs are left out, as above.
template <class Function>
void each_dual_term (const Problem& problem, const Dual& duals, Numbers x, bool costs,
                     const Function& function)
{
    const AffineConstraints& constraints = problem.affine_constraint;
    for (std::size_t k = 0; k < duals.doty.size (); ++k) {
        function (-problem.affine.g[static_cast<std::size_t> (constraints.expression[k])], duals.doty[k]);
        function (constraints.b[k], duals.doty[k]);
    }
    if (x.empty () || !has_quadratic_terms (problem))
        return;
    if (costs)
        function (-1, quadratic_values (problem.quadratic_objective, 1, x).front ());
    const std::vector<double> values =
        quadratic_values (problem.quadratic_constraint, problem.constraints (), x);
    for (std::size_t i = 0; i < values.size (); ++i)
        function (duals.y[i], values[i]);
}

// The place of an entry of the lower triangle among the packed ones of all semidefinite variables.
inline std::size_t place_of (const SemidefiniteVariables& matrices, const SymmetricTerms& terms,
                             std::size_t k)
{
    const std::int32_t j = terms.variable[k], column = terms.column[k];
    const std::int64_t n = matrices.order[static_cast<std::size_t> (j)];
    return static_cast<std::size_t> (matrices.begin_of (j) + column * n -
                                     std::int64_t{column} * (column + 1) / 2 + terms.row[k]);
}

}
