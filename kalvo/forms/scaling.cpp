#include "kalvo/forms/scaling.h"

#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>

namespace klv {

static double power_of_two (double value)
{
    return std::exp2 (std::round (std::log2 (value)));
}

// One over the root of each magnitude; rows and columns without entries stay.
static double make_factors (std::vector<double>& magnitudes)
{
    constexpr double least = 1e-150, most = 1e150;
    double farthest = 0;
    for (double& magnitude : magnitudes) {
        if (!(magnitude > 0)) {
            magnitude = 1;
            continue;
        }
        farthest = std::max (farthest, std::abs (std::log2 (magnitude)));
        magnitude = 1 / std::sqrt (std::clamp (magnitude, least, most));
    }
    return farthest;
}

static void multiply (std::vector<double>& values, const std::vector<double>& factors)
{
    for (std::size_t i = 0; i < values.size (); ++i)
        values[i] *= factors[i];
}

std::vector<double> equilibrate (SparseColumns& quadratic, std::span<ScaledMatrix> matrices,
                                 std::size_t columns)
{
    constexpr int most_sweeps = 15;
    constexpr double near_enough = 1;    // exponent of two
    std::vector<double> column_factor (columns, 1.0);
    for (ScaledMatrix& scaled : matrices)
        if (scaled.row_factor.empty ())
            scaled.row_factor.assign (scaled.group.size (), 1.0);
    std::vector<std::vector<double>> rows (matrices.size ());
    for (int sweep = 0; sweep < most_sweeps; ++sweep) {
        std::vector<double> column (columns, 0.0);
        for (std::size_t j = 0; j < index (quadratic.columns ()); ++j)
            for (auto k = index (quadratic.starts[j]); k < index (quadratic.starts[j + 1]); ++k) {
                const std::size_t i = index (quadratic.rows[k]);
                const double value = std::abs (quadratic.values[k]) * column_factor[i] * column_factor[j];
                column[i] = std::max (column[i], value);
                column[j] = std::max (column[j], value);
            }
        for (std::size_t which = 0; which < matrices.size (); ++which) {
            const ScaledMatrix& scaled = matrices[which];
            rows[which].assign (scaled.row_factor.size (), 0.0);
            for (std::size_t j = 0; j < index (scaled.matrix.columns ()); ++j)
                for (auto k = index (scaled.matrix.starts[j]); k < index (scaled.matrix.starts[j + 1]); ++k) {
                    const std::size_t i = index (scaled.matrix.rows[k]);
                    const double value =
                        std::abs (scaled.matrix.values[k]) * scaled.row_factor[i] * column_factor[j];
                    double& row = rows[which][index (scaled.group[i])];
                    row = std::max (row, value);
                    column[j] = std::max (column[j], value);
                }
        }
        double farthest = make_factors (column);
        multiply (column_factor, column);
        for (std::size_t which = 0; which < matrices.size (); ++which) {
            ScaledMatrix& scaled = matrices[which];
            farthest = std::max (farthest, make_factors (rows[which]));
            for (std::size_t i = 0; i < scaled.row_factor.size (); ++i)
                scaled.row_factor[i] *= rows[which][index (scaled.group[i])];
        }
        if (farthest <= near_enough)
            break;
    }
    std::ranges::transform (column_factor, column_factor.begin (), power_of_two);
    for (std::size_t j = 0; j < index (quadratic.columns ()); ++j)
        for (auto k = index (quadratic.starts[j]); k < index (quadratic.starts[j + 1]); ++k)
            quadratic.values[k] *= column_factor[index (quadratic.rows[k])] * column_factor[j];
    for (ScaledMatrix& scaled : matrices) {
        std::ranges::transform (scaled.row_factor, scaled.row_factor.begin (), power_of_two);
        for (std::size_t j = 0; j < index (scaled.matrix.columns ()); ++j)
            for (auto k = index (scaled.matrix.starts[j]); k < index (scaled.matrix.starts[j + 1]); ++k)
                scaled.matrix.values[k] *=
                    scaled.row_factor[index (scaled.matrix.rows[k])] * column_factor[j];
    }
    return column_factor;
}

double factor_between (double largest, double least, double most)
{
    if (!(largest > 0) || std::isinf (largest))
        return 1;
    return largest < least  ? power_of_two (largest / least)
           : largest > most ? power_of_two (largest / most)
                            : 1;
}

}
