// Columns of sparse arrays for the host, which requires increasing rows in each column.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/host.h"
#include "kalvo.h"

// Sorts one column by row, each value moving with its row. A sorted column costs one pass.
KLVrescode_t sort_mat_column (std::size_t count, mwIndex* rows, double* values);

// Compares two entries, each a row and a value, as qsort wants it.
int sort_mat_cmp (const void* a, const void* b);

// Widens indices. Always returns 0.
int ivec_cp_to_mwIndex (const std::int32_t* source, mwIndex* destination, std::size_t count);
