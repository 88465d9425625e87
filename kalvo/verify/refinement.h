// The least change of unknowns that takes away what a sparse system of equations leaves.
#pragma once

#include "kalvo/sparse/columns.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace klv {

// Rows of a matrix B: what they add up to at unknowns that are all 1 is to become 0.
class LeastChange {
public:
    LeastChange (std::size_t unknowns, std::size_t rows) : unknowns_ (unknowns), rows_ (rows) {}

    void add (std::size_t row, std::size_t unknown, long double value)
    {
        entries_.push_back ({static_cast<std::int32_t> (row), static_cast<std::int32_t> (unknown), value});
    }
    // The x of least norm among those with the least |B (1 + x)|, to the accuracy of long double where the rows allow it. Empty where the
    // factorisation would be too large.
    std::vector<long double> solve ();

private:
    struct Entry {
        std::int32_t row, unknown;
        long double value;
    };
    SparseColumns equations ();

    std::size_t unknowns_, rows_;
    std::vector<Entry> entries_;
};

}
