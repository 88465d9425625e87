// A sparse matrix by columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace klv {

struct SparseColumns {
    std::vector<std::int32_t> starts{0};    // one more than there are columns
    std::vector<std::int32_t> rows;
    std::vector<double> values;

    std::int32_t columns () const { return static_cast<std::int32_t> (starts.size () - 1); }
    std::span<const std::int32_t> rows_of (std::size_t column) const { return of (rows, column); }
    std::span<const double> values_of (std::size_t column) const { return of (values, column); }

private:
    template <class Value>
    std::span<const Value> of (const std::vector<Value>& all, std::size_t column) const
    {
        const auto begin = static_cast<std::size_t> (starts[column]);
        return std::span (all).subspan (begin, static_cast<std::size_t> (starts[column + 1]) - begin);
    }
};

}
