#include "kalvo/engines/semidefinite/symmetric.h"

#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace klv::semidefinite {

PositiveDefinite::PositiveDefinite (std::size_t order)
    : dense_ ((order + 1) * order), scale_ (order), dropped_ (order)
{}

PositiveDefinite::PositiveDefinite (SparseColumns&& upper, Ldl&& ldl)
    : upper_ (std::move (upper)),
      ldl_ (std::move (ldl)),
      scaled_ (upper_.values.size ()),
      scale_ (index (upper_.columns ())),
      dropped_ (scale_.size ())
{}

void PositiveDefinite::drop (std::span<const std::int32_t> rows)
{
    for (const std::int32_t row : rows)
        dropped_[index (row)] = true;
}

void PositiveDefinite::clear ()
{
    std::ranges::fill (ldl_ ? upper_.values : dense_, 0.0);
}

std::size_t PositiveDefinite::place (std::int32_t row, std::int32_t column) const
{
    if (row > column)
        std::swap (row, column);
    if (!ldl_)
        return index (row) + index (column) * (order () + 1);
    const auto rows = upper_.rows_of (index (column));
    return index (upper_.starts[index (column)]) +
           static_cast<std::size_t> (std::ranges::lower_bound (rows, row) - rows.begin ());
}

void PositiveDefinite::add (std::int32_t row, std::int32_t column, double value)
{
    (ldl_ ? upper_.values : dense_)[place (row, column)] += value;
}

double PositiveDefinite::diagonal (std::size_t row) const
{
    return ldl_ ? upper_.values[index (upper_.starts[row + 1]) - 1] : dense_[row * (order () + 2)];
}

// ---- Factors -------------------------------------------------------------------------------------------------------------------------

bool PositiveDefinite::factor_dense (double added, Watch& watch)
{
    constexpr std::size_t tile = 32;
    const std::size_t n = order (), stride = n + 1;
    for (std::size_t columns = 0; columns < n; columns += tile)
        for (std::size_t rows = columns; rows < n; rows += tile)
            for (std::size_t j = columns; j < std::min (n, columns + tile); ++j)
                for (std::size_t i = std::max (rows, j); i < std::min (n, rows + tile); ++i)
                    dense_[1 + i + j * stride] = dense_[j + i * stride] * scale_[i] * scale_[j];
    double* const factor = dense_.data () + 1;
    for (std::size_t i = 0; i < n; ++i)
        factor[i * (stride + 1)] += scale_[i] > 0 ? added : 1;
    if (!cholesky (static_cast<int> (n), factor, static_cast<int> (stride), watch))
        return false;
    smallest_pivot_ = std::numeric_limits<double>::infinity ();
    for (std::size_t i = 0; i < n; ++i)
        smallest_pivot_ = std::min (smallest_pivot_, std::pow (factor[i * (stride + 1)], 2));
    return std::isfinite (smallest_pivot_) || n == 0;
}

bool PositiveDefinite::factor_sparse (double added, const StopFlag& stop)
{
    for (std::size_t j = 0; j < order (); ++j)
        for (std::size_t k = index (upper_.starts[j]); k < index (upper_.starts[j + 1]); ++k) {
            const std::size_t i = index (upper_.rows[k]);
            scaled_[k] = upper_.values[k] * scale_[i] * scale_[j] + (i != j ? 0 : scale_[i] > 0 ? added : 1);
        }
    if (!ldl_->factor (scaled_, 0, &stop))
        return false;
    smallest_pivot_ = order () > 0 ? std::ranges::min (ldl_->pivots ()) : 1;
    return smallest_pivot_ > 0;
}

bool PositiveDefinite::factor (Watch& watch, const StopFlag& stop)
{
    constexpr double least = 1e-15, most = 1e-3, growth = 30;
    bool any_empty = false;
    for (std::size_t i = 0; i < order (); ++i) {
        const double entry = diagonal (i);
        if (!std::isfinite (entry))
            return false;
        const bool empty = entry <= std::numeric_limits<double>::min ();
        scale_[i] = dropped_[i] || empty ? 0 : 1 / std::sqrt (entry);
        any_empty = any_empty || (empty && !dropped_[i]);
    }
    for (double added = least; added < most; added *= growth) {
        if (ldl_ ? factor_sparse (added, stop) : factor_dense (added, watch)) {
            if (any_empty)
                smallest_pivot_ = 0;
            return true;
        }
        watch.look ();
    }
    return false;
}

// ---- Equations -----------------------------------------------------------------------------------------------------------------------

void PositiveDefinite::multiply (std::span<const double> x, std::span<double> y) const
{
    if (!ldl_) {
        multiply_symmetric (false, static_cast<int> (order ()), dense_.data (),
                            static_cast<int> (order () + 1), x.data (), y.data ());
        return;
    }
    std::ranges::fill (y, 0.0);
    for (std::size_t j = 0; j < order (); ++j) {
        const auto rows = upper_.rows_of (j);
        const auto values = upper_.values_of (j);
        for (std::size_t k = 0; k < rows.size (); ++k) {
            const std::size_t i = index (rows[k]);
            y[i] += values[k] * x[j];
            if (i != j)
                y[j] += values[k] * x[i];
        }
    }
}

void PositiveDefinite::solve_once (std::size_t columns, std::span<double> right, Watch& watch) const
{
    const std::size_t n = order ();
    const auto scale = [&] {
        for (std::size_t k = 0; k < right.size (); ++k)
            right[k] *= scale_[k % n];
    };
    scale ();
    if (ldl_)
        for (std::size_t column = 0; column < columns; ++column)
            ldl_->solve (right.subspan (column * n, n));
    else
        for (const bool transposed : {false, true})
            solve_lower (transposed, static_cast<int> (n), dense_.data () + 1, static_cast<int> (n + 1),
                         static_cast<int> (columns), right.data (), watch);
    scale ();
}

void PositiveDefinite::solve (std::span<double> right, Watch& watch) const
{
    constexpr int most_steps = 6;
    constexpr double worth_another = 0.3;
    Vector x (right.size ()), residual (right.begin (), right.end ()), tried, image (right.size ());
    double best = std::numeric_limits<double>::infinity ();
    for (int step = 0; step < most_steps; ++step) {
        solve_once (1, residual, watch);
        tried = x;
        semidefinite::add (1, residual, tried);
        multiply (tried, image);
        for (std::size_t i = 0; i < residual.size (); ++i)
            residual[i] = scale_[i] > 0 ? right[i] - image[i] : 0;
        const double left = norm (residual);
        if (!(left < best))
            break;
        x = tried;
        if (left > worth_another * best || left == 0)
            break;
        best = left;
    }
    std::ranges::copy (x, right.begin ());
}

}
