#include "kalvo/engines/semidefinite/newton.h"

#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>

namespace klv::semidefinite {

// Weights that add to O something of its own magnitude.
void Newton::weigh_border ()
{
    PositiveDefinite& matrix = schur_.get ();
    const SparseColumns& border = program_.border;
    double mean = 0;
    Vector diagonal (program_.rows ());
    for (std::size_t i = 0; i < diagonal.size (); ++i)
        mean += (diagonal[i] = matrix.diagonal (i)) / static_cast<double> (diagonal.size ());
    weight_.resize (program_.free_variables ());
    for (std::size_t k = 0; k < weight_.size (); ++k) {
        const auto rows = border.rows_of (k);
        const auto values = border.values_of (k);
        double weight = 0;
        for (std::size_t i = 0; i < rows.size (); ++i)
            weight += values[i] * values[i] * diagonal[index (rows[i])];
        weight_[k] = weight > 0 ? weight : mean > 0 ? mean : 1;
        for (std::size_t i = 0; i < rows.size (); ++i)
            for (std::size_t j = 0; j <= i; ++j)
                matrix.add (rows[j], rows[i], weight_[k] * values[i] * values[j]);
    }
}

bool Newton::factor (std::span<const double> x, std::span<const double> w)
{
    schur_.assemble (x, w, watch_);
    weigh_border ();
    PositiveDefinite& matrix = schur_.get ();
    if (!matrix.factor (watch_, stop_))
        return false;
    const std::size_t rows = program_.rows (), count = program_.free_variables ();
    if (count == 0)
        return true;
    solved_border_.assign (rows * count, 0.0);
    for (std::size_t k = 0; k < count; ++k) {
        const auto places = program_.border.rows_of (k);
        for (std::size_t i = 0; i < places.size (); ++i)
            solved_border_[k * rows + index (places[i])] = program_.border.values_of (k)[i];
    }
    matrix.solve_once (count, solved_border_, watch_);
    border_.clear ();
    Vector products (count);
    for (std::size_t k = 0; k < count; ++k) {
        std::ranges::fill (products, 0.0);
        add_transposed (1, program_.border, std::span (solved_border_).subspan (k * rows, rows), products);
        for (std::size_t i = 0; i <= k; ++i)
            border_.add (static_cast<std::int32_t> (i), static_cast<std::int32_t> (k), products[i]);
        watch_.look (static_cast<double> (program_.border.values.size ()));
    }
    return border_.factor (watch_, stop_);
}

void Newton::solve (Vector& right, Vector& border_right) const
{
    const std::size_t count = program_.free_variables ();
    for (std::size_t k = 0; k < count; ++k) {
        const auto places = program_.border.rows_of (k);
        for (std::size_t i = 0; i < places.size (); ++i)
            right[index (places[i])] += weight_[k] * border_right[k] * program_.border.values_of (k)[i];
    }
    schur_.get ().solve (right, watch_);
    if (count == 0)
        return;
    for (double& value : border_right)
        value = -value;
    add_transposed (1, program_.border, right, border_right);
    border_.solve (border_right, watch_);
    for (std::size_t k = 0; k < count; ++k)
        add (-border_right[k], std::span (solved_border_).subspan (k * right.size (), right.size ()), right);
}

}
