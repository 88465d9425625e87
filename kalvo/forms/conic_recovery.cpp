#include "kalvo/forms/conic_recovery.h"

#include "kalvo/forms/curvature.h"
#include "kalvo/sparse/ldl.h"

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
    std::vector<double> x (y.empty () ? 0 : index (stated->variables ()), 0.0);
    GivenTerms given;
    std::vector<std::int32_t> rows, columns;
    std::vector<double> values, right (x.size (), 0.0);
    const SymmetricTerms& terms = stated->quadratic_constraint;
    for (const std::int32_t constraint : quadratic_constraints) {
        const double multiplier = y[index (constraint)];
        if (multiplier == 0)
            continue;
        const TermRange range = terms.of_item (constraint);
        for (std::size_t k = range.begin; k < range.end; ++k) {
            rows.push_back (terms.row[k]);
            columns.push_back (terms.column[k]);
            values.push_back (-sign * multiplier * terms.value[k]);
        }
    }
    if (values.empty ())
        return {};
    for (const FactorEntry& entry : factor_entries)
        right[index (entry.variable)] -= entry.value * z[index (entry.row)];
    given.row = rows;
    given.column = columns;
    given.value = values;
    SymmetricTerms sum = add_up (given);
    const LocalMatrix matrix = gather (sum, {0, sum.value.size ()}, 1);
    constexpr double small = 1e-14;
    Ldl ldl (matrix.upper);
    double largest = 0;
    for (const double value : matrix.upper.values)
        largest = std::max (largest, std::abs (value));
    ldl.factor (matrix.upper.values, small * largest);
    std::vector<double> local (matrix.variables.size ());
    for (std::size_t k = 0; k < local.size (); ++k)
        local[k] = right[index (matrix.variables[k])];
    ldl.solve (local);
    for (std::size_t k = 0; k < local.size (); ++k)
        x[index (matrix.variables[k])] = local[k];
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
