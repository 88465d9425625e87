#include "kalvo/forms/conic_recovery.h"

#include "kalvo/forms/curvature.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace klv {

using std::numbers::sqrt2;

void ConicRecovery::take_columns (std::span<const double> columns, bool direction, std::vector<double>& x,
                                  std::vector<double>& barx) const
{
    std::vector<double> values (columns.begin (), columns.end ());
    for (std::size_t j = 0; j < values.size (); ++j)
        values[j] *= column_factor[j] * (direction ? 1 : factors.point);
    x = fixed.spread (std::span (values).first (fixed.columns ()), direction);
    barx.resize (index (matrix_columns));
    std::size_t first = 0;
    for (const std::int32_t order : orders) {
        std::size_t to = first;
        for (std::int32_t column = 0; column < order; ++column)
            for (std::int32_t row = column; row < order; ++row) {
                const double entry =
                    values[fixed.columns () + first + index (row) * index (row + 1) / 2 + index (column)];
                barx[to++] = row == column ? entry : entry / sqrt2;
            }
        first = to;
    }
}

void ConicRecovery::take_multipliers (std::span<const double> z, std::vector<double>& y, Point& point) const
{
    y = of (Part::constraint).multipliers (z);
    point.doty = of (Part::affine_row).multipliers (z);
    point.snx = of (Part::member).multipliers (z);
    for (std::vector<double>* values : {&y, &point.doty, &point.snx})
        for (double& value : *values)
            value = sign * value + 0.0;
}

// The x with sum of y_i Q_i x equal to what the multipliers of the factors' rows give: there the ray's gradients are taken.
std::vector<double> ConicRecovery::point_of_ray (std::span<const double> z, std::span<const double> y) const
{
    if (stated->quadratic_constraint.count () == 0)
        return {};
    std::vector<double> weights, right (index (stated->variables ())), local;
    for (const double multiplier : y)
        weights.push_back (-sign * multiplier);
    for (const FactorEntry& entry : factor_entries)
        right[index (entry.variable)] -= entry.value * z[index (entry.row)];
    const SemidefiniteEquations equations (stated->quadratic_constraint, weights, fixed);
    for (const std::int32_t variable : equations.variables ())
        local.push_back (right[index (variable)]);
    equations.solve (local);
    std::vector<double> x = fixed.spread (std::vector<double> (fixed.columns ()), false);
    for (std::size_t k = 0; k < local.size (); ++k)
        x[index (equations.variables ()[k])] = local[k];
    return x;
}

Point ConicRecovery::back (Point&& claimed) const
{
    Point point{.outcome = claimed.outcome, .message = std::move (claimed.message)};
    const std::size_t columns = column_factor.size (), rows = row_factor.size ();
    const auto scaled = [&] (std::span<const double> z, double factor) {
        std::vector<double> values (z.begin (), z.end ());
        for (std::size_t i = 0; i < values.size (); ++i)
            values[i] *= row_factor[i] * factor;
        return values;
    };
    // An empty form has a point and multipliers too: only the outcome tells whether they are claimed.
    const bool has_point = claimed.outcome != Outcome::infeasible && claimed.outcome != Outcome::unbounded;
    if (claimed.outcome == Outcome::infeasible && claimed.dual_ray.size () == rows) {
        const std::vector<double> z = scaled (claimed.dual_ray, 1);
        take_multipliers (z, point.dual_ray, point);
        point.x = point_of_ray (z, point.dual_ray);
    }
    if (claimed.outcome == Outcome::unbounded && claimed.primal_ray.size () == columns)
        take_columns (claimed.primal_ray, true, point.primal_ray, point.barx);
    if (has_point && claimed.x.size () == columns && (columns > 0 || claimed.outcome == Outcome::optimal))
        take_columns (claimed.x, false, point.x, point.barx);
    if (has_point && claimed.y.size () == rows && (rows > 0 || claimed.outcome == Outcome::optimal))
        take_multipliers (scaled (claimed.y, factors.objective / factors.point), point.y, point);
    return point;
}

}
