#include "kalvo/engines/semidefinite/interior_point.h"

#include "kalvo/engines/semidefinite/dependence.h"
#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv::semidefinite {

// The inverse of Z, the Schur matrix and its factor.
bool InteriorPoint::factor_iterate ()
{
    each_block ([&] (const Block& block) {
        invert (block, block.dual (z_), block.primal (factor_z_), block.primal (w_), watch_);
    });
    if (!newton_.factor (x_, w_))
        return false;
    gather (program_.blocks, w_, dual_work_);
    std::ranges::fill (a_of_w_, 0.0);
    add_constraints (1, dual_work_, a_of_w_);
    return true;
}

std::optional<Outcome> InteriorPoint::look_for_dependence ()
{
    // The equations for X, u and y one below the other.
    SparseColumns equations;
    const auto positions = static_cast<std::int32_t> (program_.blocks.dual_size),
               free_variables = static_cast<std::int32_t> (program_.free_variables ());
    std::vector<std::vector<std::pair<std::int32_t, double>>> below (program_.rows ());
    for (std::int32_t k = 0; k < free_variables; ++k) {
        const auto rows = program_.border.rows_of (index (k));
        for (std::size_t i = 0; i < rows.size (); ++i)
            below[index (rows[i])].emplace_back (positions + k, program_.border.values_of (index (k))[i]);
    }
    for (std::int32_t j = 0; j < program_.quadratic.columns (); ++j) {
        const auto rows = program_.quadratic.rows_of (index (j));
        for (std::size_t k = 0; k < rows.size (); ++k) {
            const double value = program_.quadratic.values_of (index (j))[k];
            below[index (j)].emplace_back (positions + free_variables + rows[k], value);
            if (rows[k] != j)
                below[index (rows[k])].emplace_back (positions + free_variables + j, value);
        }
    }
    for (std::size_t i = 0; i < program_.rows (); ++i) {
        const auto rows = program_.constraints.rows_of (i);
        const auto values = program_.constraints.values_of (i);
        equations.rows.insert (equations.rows.end (), rows.begin (), rows.end ());
        equations.values.insert (equations.values.end (), values.begin (), values.end ());
        for (const auto& [row, value] : below[i]) {
            equations.rows.push_back (row);
            equations.values.push_back (value);
        }
        equations.starts.push_back (static_cast<std::int32_t> (equations.rows.size ()));
    }
    Dependence of_rows = find_dependence (equations, program_.right, watch_, stop_);
    if (!of_rows.contradiction.empty ()) {
        y_ = std::move (of_rows.contradiction);
        return Outcome::infeasible;
    }
    Dependence of_border = find_dependence (program_.border, program_.border_cost, watch_, stop_);
    if (!of_border.contradiction.empty ()) {
        std::ranges::fill (x_, 0.0);
        std::ranges::transform (of_border.contradiction, u_.begin (), std::negate{});
        return Outcome::unbounded;
    }
    newton_.drop (of_rows.redundant, of_border.redundant);
    return std::nullopt;
}

// dX = mu W - X - {X, dZ, W} - {dX', dZ', W}, with the direction dX', dZ' that is corrected; dZ = R - A'(dy).
void InteriorPoint::direct (double mu, bool corrector)
{
    const Blocks& blocks = program_.blocks;
    // The products that are known before dy, for the right side.
    const auto gather_products = [&] (std::span<const double> x, std::span<const double> d) {
        each_block ([&] (const Block& block) {
            const std::span<double> product = block.primal (product_), to = block.dual (dual_work_);
            if (block.kind != ConeKind::semidefinite) {
                triple_product (block, block.primal (x), block.dual (d), block.primal (w_), product);
                std::ranges::copy (product, to.begin ());
                return;
            }
            std::ranges::fill (product, 0.0);
            semidefinite::add_product (blocks, block, block.primal (x), block.dual (d), product, room_,
                                       watch_);
            gather_product (blocks, block, product, block.primal (w_), to, room_, watch_);
        });
    };
    if (!corrector) {
        std::ranges::fill (a_of_residual_, 0.0);
        if (!dual_feasible_) {
            gather_products (x_, dual_residual_);
            add_constraints (1, dual_work_, a_of_residual_);
        }
        std::ranges::fill (product_, 0.0);
    }
    Vector& right = dy_;
    const auto begin_right = [&] {
        right = program_.right;
        add_product (-1, program_.border, u_, right);
        add_symmetric (-1, program_.quadratic, y_, right);
        add (-mu, a_of_w_, right);
        add (1, a_of_residual_, right);
    };
    if (corrector) {
        gather_products (dx_, dz_);
        begin_right ();
        add_constraints (1, dual_work_, right);
    } else
        begin_right ();
    du_ = border_residual_;
    newton_.solve (dy_, du_);

    dz_ = dual_residual_;
    add_product (-1, program_.constraints, dy_, dz_);
    each_block ([&] (const Block& block) {
        const std::span<const double> x = block.primal (x_), w = block.primal (w_), dz = block.dual (dz_);
        const std::span<double> dx = block.primal (dx_), product = block.primal (product_);
        if (block.kind == ConeKind::semidefinite) {
            semidefinite::add_product (blocks, block, x, dz, product, room_, watch_);
            close_product (block, product, w, dx, watch_);
            for (std::size_t i = 0; i < dx.size (); ++i)
                dx[i] = mu * w[i] - x[i] - dx[i];
            return;
        }
        triple_product (block, x, dz, w, dx);
        for (std::size_t i = 0; i < dx.size (); ++i)
            dx[i] = mu * w[i] - x[i] - dx[i] - product[i];
    });
}

// Feeds what the direction leaves of the primal residual back through the factor.
void InteriorPoint::refine ()
{
    constexpr int most_steps = 3;
    constexpr double negligible = 1e-11, beside_residual = 0.05, aim = 1e-8, worth_it = 0.9;
    const Blocks& blocks = program_.blocks;
    const auto residual_of = [&] (std::span<const double> dx, const Vector& du, const Vector& dy,
                                  Vector& rows) {
        gather (blocks, dx, dual_work_);
        add_constraints (-1, dual_work_, rows);
        add_product (-1, program_.border, du, rows);
        add_symmetric (-1, program_.quadratic, dy, rows);
    };
    Vector change_y, change_u, change_z, change_x;
    for (int step = 0; step < most_steps; ++step) {
        row_work_ = primal_residual_;
        residual_of (dx_, du_, dy_, row_work_);
        const double left = norm (row_work_), relative = left / (1 + norm_a_);
        if (relative < std::max (negligible, beside_residual * std::min (now_.primal_residual, aim)) ||
            !std::isfinite (left))
            return;
        change_y = row_work_;
        change_u = border_residual_;
        add_transposed (-1, program_.border, dy_, change_u);
        newton_.solve (change_y, change_u);
        change_x.resize (dx_.size ());
        change_z.assign (blocks.dual_size, 0.0);
        add_product (-1, program_.constraints, change_y, change_z);
        each_block ([&] (const Block& block) {
            const std::span<const double> x = block.primal (x_), w = block.primal (w_),
                                          d = block.dual (change_z);
            const std::span<double> product = block.primal (product_), change = block.primal (change_x);
            if (block.kind == ConeKind::semidefinite) {
                std::ranges::fill (product, 0.0);
                semidefinite::add_product (blocks, block, x, d, product, room_, watch_);
                close_product (block, product, w, change, watch_);
            } else
                triple_product (block, x, d, w, change);
            for (double& value : change)
                value = -value;
        });
        const double before = left;
        residual_of (change_x, change_u, change_y, row_work_);
        if (!(norm (row_work_) < worth_it * before))
            return;
        add (1, change_x, dx_);
        add (1, change_u, du_);
        add (1, change_y, dy_);
        add (1, change_z, dz_);
    }
}

}
