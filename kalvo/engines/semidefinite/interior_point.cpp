#include "kalvo/engines/semidefinite/interior_point.h"

#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
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

// ---- Iterations -----------------------------------------------------------------------------------------------------------------------

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
