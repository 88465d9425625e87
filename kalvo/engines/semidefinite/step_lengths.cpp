#include "kalvo/engines/semidefinite/interior_point.h"

#include <algorithm>

namespace klv::semidefinite {

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

}
