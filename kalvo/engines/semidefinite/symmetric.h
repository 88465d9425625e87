// A positive definite matrix, dense or sparse, its Cholesky factor, and equations solved by it.
#pragma once

#include "kalvo/engines/semidefinite/dense.h"
#include "kalvo/sparse/columns.h"
#include "kalvo/sparse/ldl.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <span>

namespace klv::semidefinite {

class PositiveDefinite {
public:
    // Dense, of zeros.
    explicit PositiveDefinite (std::size_t order);
    // Sparse, by the pattern of its upper triangle; `ldl` knows the order of elimination.
    PositiveDefinite (SparseColumns&& upper, Ldl&& ldl);

    std::size_t order () const { return scale_.size (); }
    void clear ();
    // Leaves out rows and columns from now on: components of solutions there are 0.
    void drop (std::span<const std::int32_t> rows);
    void add (std::int32_t row, std::int32_t column, double value);    // and its mirror image
    double diagonal (std::size_t row) const;

    // Of the matrix scaled to unit diagonal, to which as much is added as it needs. False: none was enough.
    bool factor (Watch& watch, const StopFlag& stop);
    double smallest_pivot () const { return smallest_pivot_; }    // of the scaled matrix

    void multiply (std::span<const double> x, std::span<double> y) const;
    // Refined as long as this helps; and without, for several right sides.
    void solve (std::span<double> right, Watch& watch) const;
    void solve_once (std::size_t columns, std::span<double> right, Watch& watch) const;

private:
    std::size_t place (std::int32_t row, std::int32_t column) const;
    bool factor_dense (double added, Watch& watch);
    bool factor_sparse (double added, const StopFlag& stop);

    // The matrix in the upper triangle and the diagonal; the factor's lower triangle begins one row below it.
    Vector dense_;
    SparseColumns upper_;
    std::optional<Ldl> ldl_;
    Vector scaled_;    // values of the upper triangle, scaled
    Vector scale_;     // one over the roots of the diagonal; 0: left out
    std::vector<bool> dropped_;
    double smallest_pivot_ = std::numeric_limits<double>::infinity ();
};

}
