// Quadratic terms as matrices on the variables that occur in them: whether they are convex, and their factors.
#pragma once

#include "kalvo/model/terms.h"
#include "kalvo/sparse/columns.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace klv {

struct LocalMatrix {
    std::vector<std::int32_t> variables;    // ascending; entry k is row and column k of the matrix
    SparseColumns upper;                    // of the symmetric matrix the upper triangle, sorted
};

// `factor` times the matrix of the terms, for instance -1 for a lower bound of their constraint. Terms that are 0 are left out.
LocalMatrix gather (const SymmetricTerms& terms, TermRange range, double factor);

// A direction along which terms curve the wrong way: the variable that moves most, and the curvature in which the largest move is 1.
struct NegativeCurvature {
    std::int32_t variable;
    double curvature;
};

// Both of the following throw std::length_error, which says why, where the machine has not the memory for a factorisation.

// Scaled to a unit diagonal, the matrix plus 1e-10 times the identity of a convex function has positive pivots only; a zero on the
// diagonal has a zero row.
std::optional<NegativeCurvature> find_negative_curvature (const LocalMatrix& matrix);

// F with F'F the positive semidefinite matrix: each column here is a row of F, its rows are variables of the problem.
SparseColumns factor_semidefinite (const LocalMatrix& matrix);

}
