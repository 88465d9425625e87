#include "kalvo/engines/semidefinite/dependence.h"

#include "kalvo/sparse/index.h"
#include "kalvo/sparse/ldl.h"

#include <algorithm>
#include <cmath>

namespace klv::semidefinite {

// The upper triangle of M'M.
static SparseColumns gram (const SparseColumns& columns, Watch& watch)
{
    struct Use {
        std::int32_t column;
        double value;
    };
    const std::size_t count = index (columns.columns ());
    std::int32_t rows = 0;
    for (const std::int32_t row : columns.rows)
        rows = std::max (rows, row + 1);
    std::vector<std::vector<Use>> uses (index (rows));    // of each row, in the columns so far
    SparseColumns upper;
    Vector sums (count);
    std::vector<bool> seen (count);
    std::vector<std::int32_t> found;
    for (std::size_t j = 0; j < count; ++j) {
        found.assign (1, static_cast<std::int32_t> (j));
        seen[j] = true;
        const auto places = columns.rows_of (j);
        const auto values = columns.values_of (j);
        for (std::size_t k = 0; k < places.size (); ++k) {
            std::vector<Use>& others = uses[index (places[k])];
            others.push_back ({static_cast<std::int32_t> (j), values[k]});
            for (const auto& [column, value] : others) {
                if (!seen[index (column)]) {
                    seen[index (column)] = true;
                    found.push_back (column);
                }
                sums[index (column)] += value * values[k];
            }
            watch.look (static_cast<double> (others.size ()));
        }
        std::ranges::sort (found);
        for (const std::int32_t i : found) {
            upper.rows.push_back (i);
            upper.values.push_back (sums[index (i)]);
            sums[index (i)] = 0;
            seen[index (i)] = false;
        }
        upper.starts.push_back (static_cast<std::int32_t> (upper.rows.size ()));
    }
    return upper;
}

Dependence find_dependence (const SparseColumns& columns, std::span<const double> right, Watch& watch,
                            const StopFlag& stop)
{
    constexpr double suspicious = 1e-11;      // pivots, which are squares of distances
    constexpr double dependent = 1e-11;       // distance from the span of the others, beside the terms
    constexpr double contradictory = 1e-7;    // right sides, likewise
    constexpr int refinements = 3;
    const std::size_t count = index (columns.columns ());
    Dependence dependence;
    if (count == 0)
        return dependence;
    const SparseColumns upper = gram (columns, watch);
    Ldl ldl (upper);
    if (!ldl.factor (upper.values, suspicious, &stop))
        return dependence;
    std::int32_t rows = 0;
    for (const std::int32_t row : columns.rows)
        rows = std::max (rows, row + 1);
    Vector rest (index (rows)), change (count), weights (count);
    for (std::size_t k = 0; k < count; ++k) {
        if (ldl.pivots ()[k] != 0)
            continue;
        const std::size_t here = index (ldl.order ()[k]);
        std::ranges::fill (weights, 0.0);
        weights[here] = 1;
        for (int step = 0; step < refinements; ++step) {
            std::ranges::fill (rest, 0.0);
            add_product (1, columns, weights, rest);
            std::ranges::fill (change, 0.0);
            add_transposed (1, columns, rest, change);
            ldl.solve (change);
            add (-1, change, weights);
            watch.look (static_cast<double> (ldl.factor_entries ()));
        }
        std::ranges::fill (rest, 0.0);
        add_product (1, columns, weights, rest);
        double size = 1, terms = 1;
        for (std::size_t j = 0; j < count; ++j) {
            size = std::max (size, std::abs (weights[j]));
            terms += std::abs (weights[j] * right[j]);
        }
        if (!(norm (rest) <= dependent * size))
            continue;
        const double value = dot (weights, right);
        if (std::abs (value) > contradictory * terms) {
            for (double& weight : weights)
                weight /= value;
            dependence.contradiction = std::move (weights);
            return dependence;
        }
        dependence.redundant.push_back (static_cast<std::int32_t> (here));
    }
    return dependence;
}

}
