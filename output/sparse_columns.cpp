#include "output/sparse_columns.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "host/holders.h"

namespace {

struct Entry {
    std::uint64_t row;
    double value;
};

}

int sort_mat_cmp (const void* a, const void* b)
{
    const std::uint64_t left = static_cast<const Entry*> (a)->row, right = static_cast<const Entry*> (b)->row;
    return (left > right) - (left < right);
}

KLVrescode_t sort_mat_column (std::size_t count, mwIndex* rows, double* values)
{
    if (std::adjacent_find (rows, rows + count, std::greater_equal{}) == rows + count)
        return KLV_RES_OK;
    const auto entries = host::allocate<Entry> (count);
    if (!entries)
        return KLV_RES_OUT_OF_MEMORY;
    for (std::size_t k = 0; k < count; ++k)
        entries[k] = {static_cast<std::uint64_t> (rows[k]), values[k]};
    std::qsort (entries.get (), count, sizeof (Entry), sort_mat_cmp);
    for (std::size_t k = 0; k < count; ++k) {
        rows[k] = static_cast<mwIndex> (entries[k].row);
        values[k] = entries[k].value;
    }
    return KLV_RES_OK;
}

int ivec_cp_to_mwIndex (const std::int32_t* source, mwIndex* destination, std::size_t count)
{
    std::copy_n (source, count, destination);
    return 0;
}
