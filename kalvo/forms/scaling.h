// Scaling of quadratic and conic forms by powers of two, which round nothing.
#pragma once

#include "kalvo/sparse/columns.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv {

// A matrix whose rows are scaled. `group` names for each row the first one of those that share its factor.
struct ScaledMatrix {
    SparseColumns& matrix;
    std::vector<std::int32_t> group;
    std::vector<double> row_factor = {};    // what its rows were multiplied by
};

// Brings the largest magnitude of each row and column of the matrices, and of each column of the symmetric matrix (its upper
// triangle), near to 1 (Ruiz, CERFACS TR/PA/01/35): A becomes RAC, P becomes CPC. Returns the column factors.
std::vector<double> equilibrate (SparseColumns& quadratic, std::span<ScaledMatrix> matrices,
                                 std::size_t columns);

// A power of two by which `largest` is to be divided, so that it comes between `least` and twice `most`; 1 where it is there.
double factor_between (double largest, double least, double most);

}
