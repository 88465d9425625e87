#include "kalvo/engines/semidefinite/interior_point.h"

#include "kalvo/engines/semidefinite/dependence.h"
#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

namespace klv::semidefinite {

double Measures::largest () const
{
    const double worst = std::max ({primal_residual, dual_residual, gap, std::min (complementarity, 1.0)});
    return std::isfinite (worst + gap + complementarity) ? worst : infinity;
}

InteriorPoint::InteriorPoint (const Program& program, const Aims& aims, Watch& watch, const StopFlag& stop,
                              Listener listener)
    : program_ (program),
      aims_ (aims),
      watch_ (watch),
      stop_ (stop),
      listener_ (std::move (listener)),
      newton_ (program, watch, stop),
      norm_a_ (norm (program.right)),
      norm_c_ (norm (program.cost)),
      norm_f_ (norm (program.border_cost))
{}

// ---- The start -----------------------------------------------------------------------------------------------------------------------

// Toh, Todd and Tütüncü, SDPT3 - a Matlab software package for semidefinite programming, section 5, but farther away: where no point
// is inside the cones, residuals then don't vanish long before the gap, and directions stay exact for longer.
void InteriorPoint::begin ()
{
    constexpr double far_primal = 30, far_dual = 300;
    const Blocks& blocks = program_.blocks;
    x_.assign (blocks.primal_size, 0.0);
    z_.assign (blocks.dual_size, 0.0);
    u_.assign (program_.free_variables (), 0.0);
    y_.assign (program_.rows (), 0.0);
    for (Vector* matrix : {&factor_x_, &factor_z_, &w_, &dx_, &product_})
        matrix->resize (blocks.primal_size);
    for (Vector* dual : {&dz_, &dual_residual_, &dual_work_})
        dual->resize (blocks.dual_size);
    for (Vector* rows : {&dy_, &primal_residual_, &row_work_, &a_of_w_, &a_of_residual_})
        rows->resize (program_.rows ());
    for (Vector* border : {&du_, &border_residual_, &border_work_})
        border->resize (program_.free_variables ());

    std::vector<std::size_t> block_of (blocks.dual_size);
    Vector largest_norm (blocks.all.size ()), largest_ratio (blocks.all.size ()),
        squares (blocks.all.size ());
    for (std::size_t b = 0; b < blocks.all.size (); ++b)
        std::fill_n (block_of.begin () + static_cast<std::ptrdiff_t> (blocks.all[b].dual_begin),
                     blocks.all[b].dual_size, b);
    for (std::size_t i = 0; i < program_.rows (); ++i) {
        const auto positions = program_.constraints.rows_of (i);
        const auto values = program_.constraints.values_of (i);
        for (std::size_t k = 0; k < positions.size (); ++k)
            squares[block_of[index (positions[k])]] += values[k] * values[k];
        for (const std::int32_t position : positions) {
            const std::size_t b = block_of[index (position)];
            const double length = std::sqrt (std::exchange (squares[b], 0.0));
            if (length == 0)
                continue;
            largest_norm[b] = std::max (largest_norm[b], length);
            largest_ratio[b] = std::max (largest_ratio[b], (1 + std::abs (program_.right[i])) / (1 + length));
        }
    }
    for (std::size_t b = 0; b < blocks.all.size (); ++b) {
        const Block& block = blocks.all[b];
        const double order = block.order, root = std::sqrt (order);
        const bool matrix = block.kind == ConeKind::semidefinite;
        const double primal =
            far_primal * std::max ({10.0, root, (matrix ? order : root) * largest_ratio[b]});
        const double dual =
            far_dual * std::max ({10.0, root, largest_norm[b], norm (block.dual (program_.cost))});
        const std::span<double> x = block.primal (x_), z = block.dual (z_);
        if (matrix) {
            const std::span<const Place> pattern = blocks.pattern (block);
            for (std::size_t k = 0; k < pattern.size (); ++k)
                if (pattern[k].row == pattern[k].column)
                    z[k] = dual;
            for (std::size_t i = 0; i < index (block.order); ++i)
                x[i * (index (block.order) + 1)] = primal;
        } else {
            const std::size_t members = block.kind == ConeKind::second_order ? 1 : x.size ();
            std::ranges::fill (x.first (members), primal);
            std::ranges::fill (z.first (members), dual);
        }
    }
}

// ---- Where the iterate stands --------------------------------------------------------------------------------------------------------

void InteriorPoint::measure ()
{
    constexpr double rounding = 1e-13;
    gather (program_.blocks, x_, dual_work_);
    const double xz = dot (dual_work_, z_);
    Vector& rp = primal_residual_;
    rp = program_.right;
    add_constraints (-1, dual_work_, rp);
    add_product (-1, program_.border, u_, rp);
    std::ranges::fill (row_work_, 0.0);
    add_symmetric (1, program_.quadratic, y_, row_work_);
    const double quadratic = 0.5 * dot (row_work_, y_);
    add (-1, row_work_, rp);
    dual_residual_ = program_.cost;
    add (-1, z_, dual_residual_);
    add_product (-1, program_.constraints, y_, dual_residual_);
    border_residual_ = program_.border_cost;
    add_transposed (-1, program_.border, y_, border_residual_);

    now_.primal_objective = dot (program_.cost, dual_work_) + dot (program_.border_cost, u_) + quadratic;
    now_.dual_objective = dot (program_.right, y_) - quadratic;
    now_.primal_residual = norm (rp) / (1 + norm_a_);
    const double of_cost = norm (dual_residual_) / (1 + norm_c_);
    now_.dual_residual = std::max (of_cost, norm (border_residual_) / (1 + norm_f_));
    dual_feasible_ = of_cost < rounding;
    const double objectives = 1 + std::abs (now_.primal_objective) + std::abs (now_.dual_objective);
    now_.gap = std::abs (now_.primal_objective - now_.dual_objective) / objectives;
    now_.complementarity = std::abs (xz) / objectives;
    now_.mu = program_.blocks.degree > 0 ? xz / program_.blocks.degree : 0;
}

void InteriorPoint::keep_best ()
{
    if (best_iteration_ >= 0 && !(now_.largest () < best_.largest ()))
        return;
    best_ = now_;
    best_iteration_ = iteration_;
    best_u_ = u_;
    best_y_ = y_;
    best_x_.clear ();
    each_block ([&] (const Block& block) {
        const std::span<const double> x = block.primal (x_);
        const std::size_t n = index (block.order);
        if (block.kind != ConeKind::semidefinite)
            best_x_.insert (best_x_.end (), x.begin (), x.end ());
        else
            for (std::size_t j = 0; j < n; ++j)
                best_x_.insert (best_x_.end (), x.begin () + static_cast<std::ptrdiff_t> (j * n + j),
                                x.begin () + static_cast<std::ptrdiff_t> (j * n + n));
    });
}

Iterate InteriorPoint::take_best ()
{
    if (best_iteration_ < 0)
        return {};
    auto from = best_x_.begin ();
    each_block ([&] (const Block& block) {
        const std::span<double> x = block.primal (x_);
        const std::size_t n = index (block.order);
        if (block.kind != ConeKind::semidefinite) {
            std::copy_n (from, n, x.begin ());
            from += block.order;
            return;
        }
        for (std::size_t j = 0; j < n; ++j, from += static_cast<std::ptrdiff_t> (n - j + 1))
            std::copy_n (from, n - j, x.begin () + static_cast<std::ptrdiff_t> (j * n + j));
        copy_lower_to_upper (block.order, x.data ());
    });
    return {std::move (x_), std::move (best_u_), std::move (best_y_)};
}

// Whether y, or X with u, is a ray that proves the program infeasible or unbounded but for a small residual.
std::optional<Outcome> InteriorPoint::ray () const
{
    constexpr double reach = 1e8;
    const double rising = dot (program_.right, y_),
                 falling = -dot (program_.cost, dual_work_) - dot (program_.border_cost, u_);
    if (rising > 0) {
        Vector residual (z_), border (program_.free_variables ()), quadratic (program_.rows ());
        add_product (1, program_.constraints, y_, residual);
        add_transposed (1, program_.border, y_, border);
        add_symmetric (1, program_.quadratic, y_, quadratic);
        if (rising > reach * (norm (residual) + norm (border) + norm (quadratic)))
            return Outcome::infeasible;
    }
    if (falling > 0) {
        Vector residual (program_.rows ());
        add_constraints (1, dual_work_, residual);
        add_product (1, program_.border, u_, residual);
        if (falling > reach * norm (residual))
            return Outcome::unbounded;
    }
    return std::nullopt;
}

bool InteriorPoint::is_stagnant ()
{
    constexpr int patience = 8, patience_at_end = 5;
    constexpr double good = 1e-5, less = 0.9;
    bool progress = iteration_ == 0;
    const auto note = [&] (double value, double& least, bool counts) {
        progress = progress || (counts && value < less * least);
        least = std::min (least, value);
    };
    const bool at_end = best_.largest () < good;
    note (std::max (now_.primal_residual, now_.dual_residual), least_residual_, !at_end);
    note (now_.mu, least_mu_, !at_end);
    note (now_.largest (), least_error_, true);
    if (progress)
        last_progress_ = iteration_;
    return iteration_ - last_progress_ > (at_end ? patience_at_end : patience);
}

// ---- Directions ----------------------------------------------------------------------------------------------------------------------

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

// ---- Steps ---------------------------------------------------------------------------------------------------------------------------

double InteriorPoint::primal_step ()
{
    double step = infinity;
    each_block ([&] (const Block& block) {
        step =
            std::min (step, longest_primal_step (block, block.primal (x_), block.primal (factor_x_),
                                                 block.primal (dx_), block.primal (product_), room_, watch_));
    });
    return step;
}

double InteriorPoint::dual_step ()
{
    double step = infinity;
    each_block ([&] (const Block& block) {
        step = std::min (step,
                         longest_dual_step (program_.blocks, block, block.dual (z_), block.primal (factor_z_),
                                            block.dual (dz_), block.primal (product_), room_, watch_));
    });
    return step;
}

// Goes along a direction as far as `step`, less where this leaves the cone. Returns how far.
template <class Factor>
static double go (double step, std::span<const double> direction, std::span<double> point,
                  const Factor& factor)
{
    constexpr int tries = 15;
    constexpr double shorter = 0.8;
    double gone = 0;
    for (int k = 0; k < tries; ++k, step *= shorter) {
        add (step - gone, direction, point);
        gone = step;
        if (factor ())
            return gone;
    }
    return 0;
}

bool InteriorPoint::move (double primal, double dual)
{
    constexpr double least = 1e-6;
    const auto all_blocks = [&] (const auto& factor) {
        return std::ranges::all_of (program_.blocks.all, factor);
    };
    primal = go (primal, dx_, x_, [&] {
        return all_blocks ([&] (const Block& block) {
            return factor_primal (block, block.primal (x_), block.primal (factor_x_), watch_);
        });
    });
    if (!(primal > 0))
        return false;
    dual = go (program_.quadratic.values.empty () ? dual : primal, dz_, z_, [&] {
        return all_blocks ([&] (const Block& block) {
            return factor_dual (program_.blocks, block, block.dual (z_), block.primal (factor_z_), watch_);
        });
    });
    if (!(dual > 0))
        return false;
    add (primal, du_, u_);
    add (dual, dy_, y_);
    return std::max (primal, dual) >= least;
}

bool InteriorPoint::iterate ()
{
    constexpr double nearly = 0.95, least_centring = 1e-4, fine = 1e-6;
    direct (0, false);
    const bool together = !program_.quadratic.values.empty ();
    double primal = std::min (1.0, nearly * primal_step ()), dual = std::min (1.0, nearly * dual_step ());
    const double shorter = std::min (primal, dual);
    if (together)
        primal = dual = shorter;
    // <X + dX, Z + dZ> at the end of the predictor's steps.
    gather (program_.blocks, x_, dual_work_);
    double xz = dot (dual_work_, z_) + dual * dot (dual_work_, dz_);
    gather (program_.blocks, dx_, dual_work_);
    xz += primal * dot (dual_work_, z_) + primal * dual * dot (dual_work_, dz_);
    const double ratio = xz / (now_.mu * program_.blocks.degree);
    const double exponent = now_.mu > fine ? std::max (1.0, 3 * shorter * shorter) : 1;
    const double centring = xz <= 0 ? 0.1 : std::clamp (std::pow (ratio, exponent), least_centring, 1.0);

    direct (std::isfinite (centring) ? centring * now_.mu : now_.mu, true);
    refine ();
    const double share = 0.9 + 0.09 * shorter;
    primal = std::min (1.0, share * primal_step ());
    dual = std::min (1.0, share * dual_step ());
    if (together)
        primal = dual = std::min (primal, dual);
    return move (primal, dual);
}

Answer InteriorPoint::run ()
{
    constexpr double suspicious = 1e-9;    // pivots of a matrix with unit diagonal
    Answer answer;
    try {
        begin ();
        const bool inside = std::ranges::all_of (program_.blocks.all, [&] (const Block& block) {
            return factor_primal (block, block.primal (x_), block.primal (factor_x_), watch_) &&
                   factor_dual (program_.blocks, block, block.dual (z_), block.primal (factor_z_), watch_);
        });
        for (;; ++iteration_) {
            measure ();
            listener_ (iteration_, now_);
            keep_best ();
            watch_.look ();
            if (now_.largest () <= aims_.tolerance) {
                answer.outcome = Outcome::optimal;
                break;
            }
            if (const std::optional<Outcome> proved = ray ()) {
                answer.outcome = *proved;
                break;
            }
            if (iteration_ == aims_.iterations) {
                answer.outcome = Outcome::iteration_limit;
                break;
            }
            if (!inside || is_stagnant ())
                break;
            bool factored = factor_iterate ();
            if (iteration_ == 0 && (!factored || newton_.smallest_pivot () < suspicious)) {
                if (const std::optional<Outcome> proved = look_for_dependence ()) {
                    answer.outcome = *proved;
                    break;
                }
                factored = factor_iterate ();
            }
            if (!factored || !iterate ())
                break;
        }
    } catch (const Interrupted& interrupted) {
        answer.outcome = interrupted.outcome;
    }
    answer.iterations = iteration_;
    answer.has_point = best_iteration_ >= 0;
    const bool is_ray = answer.outcome == Outcome::infeasible || answer.outcome == Outcome::unbounded;
    answer.measures = is_ray ? now_ : best_;
    answer.iterate = is_ray ? Iterate{std::move (x_), std::move (u_), std::move (y_)} : take_best ();
    return answer;
}

}
