// The order in which a symmetric matrix is eliminated, and what its factor L will look like.
#pragma once

#include "kalvo/sparse/columns.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv {

// Entries of one triangle of the reordered matrix, by column.
struct Arranged {
    std::vector<std::int32_t> starts, index;
    std::vector<std::int32_t> from;    // place among the entries of the matrix as given
};

enum class Triangle { upper, lower };

struct Elimination {
    std::vector<std::int32_t> order;     // order[k]: the row that is eliminated k-th
    std::vector<std::int32_t> parent;    // in the elimination tree, which is postordered; roots: -1
    std::vector<std::int32_t> counts;    // entries of the columns of L without the diagonal

    std::size_t size () const { return order.size (); }
    Arranged arranged (const SparseColumns& upper, Triangle triangle) const;
};

// `upper` is the upper triangle. Throws std::length_error when it has too many entries for the ordering.
Elimination eliminate (const SparseColumns& upper);

}
