#include "kalvo/solve/plain_rays.h"

#include <algorithm>
#include <cmath>

namespace klv {

static std::optional<Point> find_impossible_row (const Problem& problem)
{
    const auto m = static_cast<std::size_t> (problem.constraints ());
    std::vector<double> least (m), most (m);
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        const Interval x = problem.variable.interval (static_cast<std::size_t> (j));
        const Column column = problem.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k) {
            const double value = column.values[k];
            const auto row = static_cast<std::size_t> (column.rows[k]);
            if (value != 0) {
                least[row] += value * (value > 0 ? x.lower : x.upper);
                most[row] += value * (value > 0 ? x.upper : x.lower);
            }
        }
    }
    for (std::size_t i = 0; i < m; ++i)
        if (most[i] < problem.constraint.lower[i] || least[i] > problem.constraint.upper[i]) {
            Point claimed;
            claimed.outcome = Outcome::infeasible;
            claimed.dual_ray.assign (m, 0);
            claimed.dual_ray[i] = most[i] < problem.constraint.lower[i] ? 1 : -1;
            return claimed;
        }
    return std::nullopt;
}

static bool is_kept (const Bounds& bounds, std::size_t item, double direction)
{
    return std::isfinite (direction > 0 ? bounds.upper[item] : bounds.lower[item]);
}

static std::optional<Point> find_endless_variable (const Problem& problem)
{
    const double sign = problem.sense == KLV_SENSE_MAXIMIZE ? 1 : -1;
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        const auto place = static_cast<std::size_t> (j);
        const double direction = sign * problem.cost[place];
        if (direction == 0 || is_kept (problem.variable, place, direction))
            continue;
        const Column column = problem.matrix.column (j);
        bool kept = false;
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            kept = kept || (column.values[k] != 0 &&
                            is_kept (problem.constraint, static_cast<std::size_t> (column.rows[k]),
                                     column.values[k] * direction));
        if (kept)
            continue;
        Point claimed;
        claimed.outcome = Outcome::unbounded;
        claimed.primal_ray.assign (static_cast<std::size_t> (problem.variables ()), 0);
        claimed.primal_ray[place] = direction > 0 ? 1 : -1;
        return claimed;
    }
    return std::nullopt;
}

std::optional<Point> find_plain_ray (const Problem& problem)
{
    std::optional<Point> found = find_impossible_row (problem);
    return found ? found : find_endless_variable (problem);
}

}
