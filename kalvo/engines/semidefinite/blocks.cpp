#include "kalvo/engines/semidefinite/blocks.h"

#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace klv::semidefinite {

using std::numbers::sqrt2;

void Blocks::append (ConeKind kind, std::int32_t order, std::span<const Place> pattern)
{
    // A product entry by entry costs about as much as so many multiplications in a dense one.
    constexpr double cost = 10;
    const std::size_t size = index (order);
    const bool matrix = kind == ConeKind::semidefinite;
    const std::size_t entries = matrix ? pattern.size () : size, whole = matrix ? size * size : size;
    all.push_back (
        {.kind = kind,
         .order = order,
         .dual_begin = dual_size,
         .dual_size = entries,
         .primal_begin = primal_size,
         .primal_size = whole,
         .sparse = matrix && cost * 2 * static_cast<double> (entries) < static_cast<double> (whole)});
    places.insert (places.end (), pattern.begin (), pattern.end ());
    dual_size += entries;
    primal_size += whole;
    places.resize (dual_size);
    degree += kind == ConeKind::second_order ? 1 : order;
}

// ---- Matrices ----------------------------------------------------------------------------------------------------------------------

static std::size_t at (const Block& block, std::int32_t row, std::int32_t column)
{
    return index (row) + index (column) * index (block.order);
}

void spread (const Blocks& blocks, const Block& block, std::span<const double> dual, double* matrix)
{
    std::fill_n (matrix, block.primal_size, 0.0);
    const std::span<const Place> pattern = blocks.pattern (block);
    for (std::size_t k = 0; k < pattern.size (); ++k) {
        const auto [row, column] = pattern[k];
        const double value = row == column ? dual[k] : dual[k] / sqrt2;
        matrix[at (block, row, column)] = matrix[at (block, column, row)] = value;
    }
}

void gather (const Blocks& blocks, std::span<const double> primal, std::span<double> dual)
{
    for (const Block& block : blocks.all) {
        const std::span<const double> from = block.primal (primal);
        const std::span<double> to = block.dual (dual);
        if (block.kind != ConeKind::semidefinite) {
            std::ranges::copy (from, to.begin ());
            continue;
        }
        const std::span<const Place> pattern = blocks.pattern (block);
        for (std::size_t k = 0; k < pattern.size (); ++k) {
            const auto [row, column] = pattern[k];
            to[k] = from[at (block, row, column)] * (row == column ? 1 : sqrt2);
        }
    }
}

// ---- Second-order cones ------------------------------------------------------------------------------------------------------------

// x'Jx, J = diag (1, -1, ...), without cancellation.
static double determinant (std::span<const double> x)
{
    const double length = norm (x.subspan (1));
    return (x[0] - length) * (x[0] + length);
}

static double reflected_dot (std::span<const double> x, std::span<const double> y)
{
    return x[0] * y[0] - dot (x.subspan (1), y.subspan (1));
}

// ---- Factors -------------------------------------------------------------------------------------------------------------------------

static bool is_inside (const Block& block, std::span<const double> vector)
{
    if (block.kind == ConeKind::second_order)
        return vector[0] > 0 && determinant (vector) > 0;
    return std::ranges::all_of (vector, [] (double value) { return value > 0; });
}

bool factor_primal (const Block& block, std::span<const double> primal, std::span<double> factor,
                    Watch& watch)
{
    if (block.kind != ConeKind::semidefinite)
        return is_inside (block, primal);
    std::ranges::copy (primal, factor.begin ());
    return cholesky (block.order, factor.data (), block.order, watch);
}

bool factor_dual (const Blocks& blocks, const Block& block, std::span<const double> dual,
                  std::span<double> factor, Watch& watch)
{
    if (block.kind != ConeKind::semidefinite)
        return is_inside (block, dual);
    spread (blocks, block, dual, factor.data ());
    return cholesky (block.order, factor.data (), block.order, watch);
}

void invert (const Block& block, std::span<const double> dual, std::span<const double> factor,
             std::span<double> inverse, Watch& watch)
{
    switch (block.kind) {
    case ConeKind::semidefinite:
        std::ranges::copy (factor, inverse.begin ());
        invert (block.order, inverse.data (), watch);
        copy_lower_to_upper (block.order, inverse.data ());
        break;
    case ConeKind::second_order: {
        const double d = determinant (dual);
        for (std::size_t i = 0; i < dual.size (); ++i)
            inverse[i] = (i == 0 ? dual[i] : -dual[i]) / d;
        break;
    }
    default:
        std::ranges::transform (dual, inverse.begin (), [] (double value) { return 1 / value; });
    }
}

// ---- Products ------------------------------------------------------------------------------------------------------------------------

void add_product (const Blocks& blocks, const Block& block, std::span<const double> x,
                  std::span<const double> d, std::span<double> out, Room& room, Watch& watch)
{
    const std::size_t n = index (block.order);
    if (!block.sparse) {
        room.matrix.resize (std::max (room.matrix.size (), n * n));
        spread (blocks, block, d, room.matrix.data ());
        multiply ({block.order, block.order, block.order}, x.data (), room.matrix.data (), 1, out.data (),
                  watch);
        return;
    }
    const std::span<const Place> pattern = blocks.pattern (block);
    for (std::size_t k = 0; k < pattern.size (); ++k) {
        const std::size_t row = index (pattern[k].row), column = index (pattern[k].column);
        if (d[k] == 0)
            continue;
        if (row == column)
            add (d[k], x.subspan (row * n, n), out.subspan (row * n, n));
        else {
            add (d[k] / sqrt2, x.subspan (row * n, n), out.subspan (column * n, n));
            add (d[k] / sqrt2, x.subspan (column * n, n), out.subspan (row * n, n));
        }
        watch.look (static_cast<double> (2 * n));
    }
}

// Polarised quadratic representation (Alizadeh and Goldfarb, Second-order cone programming, 4): x w' + w x' - (x'Jw) J.
void triple_product (const Block& block, std::span<const double> x, std::span<const double> d,
                     std::span<const double> w, std::span<double> out)
{
    if (block.kind == ConeKind::nonnegative) {
        for (std::size_t i = 0; i < x.size (); ++i)
            out[i] = x[i] * d[i] * w[i];
        return;
    }
    const double wd = dot (w, d), xd = dot (x, d), xw = reflected_dot (x, w);
    for (std::size_t i = 0; i < x.size (); ++i)
        out[i] = x[i] * wd + w[i] * xd - xw * (i == 0 ? d[i] : -d[i]);
}

void close_product (const Block& block, std::span<double> xd, std::span<const double> w,
                    std::span<double> out, Watch& watch)
{
    multiply ({block.order, block.order, block.order}, xd.data (), w.data (), 0, out.data (), watch);
    symmetrise (block.order, out.data ());
}

void gather_product (const Blocks& blocks, const Block& block, std::span<double> xd,
                     std::span<const double> w, std::span<double> dual, Room& room, Watch& watch)
{
    const std::size_t n = index (block.order);
    const std::span<const Place> pattern = blocks.pattern (block);
    if (block.sparse) {
        transpose (block.order, xd.data ());
        for (std::size_t k = 0; k < pattern.size (); ++k) {
            const std::size_t row = index (pattern[k].row), column = index (pattern[k].column);
            const double one = dot (xd.subspan (row * n, n), w.subspan (column * n, n));
            dual[k] = row == column
                          ? one
                          : (one + dot (xd.subspan (column * n, n), w.subspan (row * n, n))) / sqrt2;
            watch.look (static_cast<double> (2 * n));
        }
        transpose (block.order, xd.data ());
        return;
    }
    room.matrix.resize (std::max (room.matrix.size (), n * n));
    multiply ({block.order, block.order, block.order}, xd.data (), w.data (), 0, room.matrix.data (), watch);
    for (std::size_t k = 0; k < pattern.size (); ++k) {
        const auto [row, column] = pattern[k];
        const double one = room.matrix[at (block, row, column)];
        dual[k] = row == column ? one : (one + room.matrix[at (block, column, row)]) / sqrt2;
    }
}

// ---- Steps -----------------------------------------------------------------------------------------------------------------------------

static double longest_step (const Block& block, std::span<const double> point,
                            std::span<const double> direction)
{
    if (block.kind == ConeKind::second_order) {
        // The smallest positive root of the determinant along the direction.
        const double a = reflected_dot (direction, direction), b = reflected_dot (point, direction),
                     c = determinant (point), discriminant = b * b - a * c;
        if (std::isnan (discriminant))
            return 0;
        const double divisor = discriminant >= 0 ? std::sqrt (discriminant) - b : 0;
        return divisor > 0 ? c / divisor : infinity;
    }
    double step = infinity;
    for (std::size_t i = 0; i < point.size (); ++i)
        if (!(direction[i] >= 0))
            step = std::min (step, std::isnan (direction[i]) ? 0 : -point[i] / direction[i]);
    return step;
}

static double step_to (double smallest_eigenvalue)
{
    return smallest_eigenvalue < 0 ? -1 / smallest_eigenvalue : infinity;
}

double longest_primal_step (const Block& block, std::span<const double> point, std::span<const double> factor,
                            std::span<const double> direction, std::span<double> scratch, Room& room,
                            Watch& watch)
{
    if (block.kind != ConeKind::semidefinite)
        return longest_step (block, point, direction);
    std::ranges::copy (direction, scratch.begin ());
    return step_to (room.eigenvalue.of (block.order, factor.data (), scratch.data (), watch));
}

double longest_dual_step (const Blocks& blocks, const Block& block, std::span<const double> point,
                          std::span<const double> factor, std::span<const double> direction,
                          std::span<double> scratch, Room& room, Watch& watch)
{
    if (block.kind != ConeKind::semidefinite)
        return longest_step (block, point, direction);
    spread (blocks, block, direction, scratch.data ());
    return step_to (room.eigenvalue.of (block.order, factor.data (), scratch.data (), watch));
}

}
