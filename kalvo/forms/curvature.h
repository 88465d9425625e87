// Quadratic terms as matrices on the variables that occur in them: whether they are convex, and their factors.
#pragma once

#include "kalvo/forms/common.h"
#include "kalvo/model/terms.h"
#include "kalvo/sparse/columns.h"
#include "kalvo/sparse/ldl.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace klv {

struct LocalMatrix {
    std::vector<std::int32_t> variables;    // ascending; entry k is row and column k of the matrix
    SparseColumns upper;                    // of the symmetric matrix the upper triangle, sorted
};

// `factor` times the matrix of the terms, for instance -1 for a lower bound of their constraint. Terms that are 0 are left out, and
// those of fixed variables: they are linear, or constant.
LocalMatrix gather (const SymmetricTerms& terms, TermRange range, double factor,
                    const FixedVariables& fixed = {});

// A direction along which terms curve the wrong way: the variable that moves most, and the curvature in which the largest move is 1.
struct NegativeCurvature {
    std::int32_t variable;
    double curvature;
};

// All of the following throw std::length_error, which says why, where the machine has not the memory for a factorisation.

Ldl make_ldl (const SparseColumns& upper);

// Scaled to a unit diagonal, the matrix of a convex function has positive pivots only, once rounding errors of its order are added to
// the diagonal; a zero on the diagonal has a zero row.
std::optional<NegativeCurvature> find_negative_curvature (const LocalMatrix& matrix);

// The matrix of a constraint's terms in the direction that its bounds ask for. With two bounds none but zero is convex.
LocalMatrix matrix_of_constraint (const Problem& problem, TermRange terms, Interval bounds,
                                  const FixedVariables& fixed);

// What is not convex of the objective (not concave, when maximising), of a constraint, of a whole problem.
Refused refuse_objective (const Problem& problem, const FixedVariables& fixed);
Refused refuse_constraint (std::int32_t constraint, const LocalMatrix& matrix, Interval bounds);
Refused refuse_curvature (const Problem& problem);

// F with F'F the positive semidefinite matrix: each column here is a row of F, its rows are variables of the problem.
SparseColumns factor_semidefinite (const LocalMatrix& matrix);

// Equations of a positive or negative semidefinite matrix.
class SemidefiniteEquations {
public:
    // The sum of the matrices of all items, each times its weight.
    SemidefiniteEquations (const SymmetricTerms& terms, std::span<const double> weights,
                           const FixedVariables& fixed);

    std::span<const std::int32_t> variables () const { return variables_; }
    void solve (std::span<double> right) const;    // in place; for each of the variables

private:
    std::vector<std::int32_t> variables_;
    std::vector<double> root_;    // of the diagonal
    std::optional<Ldl> ldl_;      // of the matrix with unit diagonal; none without variables
};

}
