#include "kalvo/forms/quadratic.h"

#include "kalvo/forms/common.h"
#include "kalvo/forms/scaling.h"
#include "kalvo/sparse/index.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <span>
#include <tuple>
#include <utility>

namespace klv {

// Where each stated row is: a row of the equations, of the ranges (their numbers follow), or nowhere.
struct RowPlaces {
    std::vector<std::int32_t> place;    // -1: the row has no bounds
    std::int32_t equations = 0;
};

class QuadraticRecovery final : public Recovery {
public:
    Point back (Point&& claimed) const override
    {
        Point point{.outcome = claimed.outcome, .message = std::move (claimed.message)};
        const bool is_ray = claimed.outcome == Outcome::infeasible || claimed.outcome == Outcome::unbounded;
        if (!is_ray) {
            point.x = take_columns (claimed.x, factors.point, false);
            point.y = take_rows (claimed.y, factors.objective / factors.point);
        }
        if (claimed.outcome == Outcome::infeasible)
            point.dual_ray = take_rows (claimed.dual_ray, 1);
        if (claimed.outcome == Outcome::unbounded)
            point.primal_ray = take_columns (claimed.primal_ray, 1, true);
        return point;
    }

    std::shared_ptr<const Start> forth (std::shared_ptr<const Start>) const override { return nullptr; }

    double sign = 1;    // -1: a maximum was stated
    FixedVariables fixed;
    RowPlaces rows;
    std::vector<double> column_factor, row_factor;
    Factors factors;

private:
    // An array of another length is no claim.
    std::vector<double> take_columns (std::vector<double>& values, double factor, bool direction) const
    {
        if (values.size () != column_factor.size ())
            return {};
        for (std::size_t j = 0; j < values.size (); ++j)
            values[j] *= factor * column_factor[j];
        return fixed.spread (values, direction);
    }
    std::vector<double> take_rows (const std::vector<double>& values, double factor) const
    {
        if (values.size () != row_factor.size ())
            return {};
        std::vector<double> y (rows.place.size ());
        for (std::size_t i = 0; i < y.size (); ++i)
            if (const std::int32_t place = rows.place[i]; place >= 0)
                y[i] = sign * factor * row_factor[index (place)] * values[index (place)] + 0.0;
        return y;
    }
};

static RowPlaces place_rows (const Problem& problem, double infinite_bound, QuadraticForm& form,
                             std::int64_t& left_out)
{
    const Bounds& bounds = problem.constraint;
    RowPlaces rows{.place = std::vector<std::int32_t> (bounds.key.size (), -1)};
    for (std::size_t i = 0; i < rows.place.size (); ++i) {
        const Interval here = within (bounds.interval (i), infinite_bound, left_out);
        if (here.lower == here.upper) {
            rows.place[i] = rows.equations++;
            form.right.push_back (here.lower);
        }
    }
    std::int32_t next = rows.equations;
    std::int64_t counted_already = 0;
    for (std::size_t i = 0; i < rows.place.size (); ++i) {
        const Interval here = within (bounds.interval (i), infinite_bound, counted_already);
        if (rows.place[i] >= 0 || (here.lower == -infinity && here.upper == infinity))
            continue;
        rows.place[i] = next++;
        form.range_lower.push_back (here.lower);
        form.range_upper.push_back (here.upper);
    }
    return rows;
}

// Ends a column, with its rows in order.
static void end_column (SparseColumns& matrix)
{
    const auto begin = matrix.starts.back ();
    const auto rows = std::span (matrix.rows).subspan (index (begin));
    if (!std::ranges::is_sorted (rows)) {
        std::vector<std::pair<std::int32_t, double>> entries;
        for (std::size_t k = index (begin); k < matrix.rows.size (); ++k)
            entries.emplace_back (matrix.rows[k], matrix.values[k]);
        std::ranges::sort (entries);
        for (std::size_t k = 0; k < entries.size (); ++k)
            std::tie (matrix.rows[index (begin) + k], matrix.values[index (begin) + k]) = entries[k];
    }
    matrix.starts.push_back (static_cast<std::int32_t> (matrix.rows.size ()));
}

// Splits the matrix into equations and ranges; what fixed variables add moves to the bounds.
static void fill_matrices (const Problem& problem, const FixedVariables& fixed, const RowPlaces& rows,
                           QuadraticForm& form)
{
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        const Column column = problem.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k) {
            const std::int32_t place = rows.place[index (column.rows[k])];
            const double value = column.values[k];
            if (place < 0 || value == 0)
                continue;
            const bool equation = place < rows.equations;
            const std::int32_t row = equation ? place : place - rows.equations;
            if (fixed.is_fixed (index (j))) {
                const double shift = value * fixed.value (index (j));
                if (equation)
                    form.right[index (row)] -= shift;
                else {
                    form.range_lower[index (row)] -= shift;
                    form.range_upper[index (row)] -= shift;
                }
                continue;
            }
            SparseColumns& matrix = equation ? form.equality : form.range;
            matrix.rows.push_back (row);
            matrix.values.push_back (value);
        }
        if (!fixed.is_fixed (index (j)))
            for (SparseColumns* matrix : {&form.equality, &form.range})
                end_column (*matrix);
    }
}

static void scale (QuadraticForm& form, QuadraticRecovery& recovery)
{
    const auto alone = [] (std::size_t rows) {
        std::vector<std::int32_t> group (rows);
        std::iota (group.begin (), group.end (), 0);
        return group;
    };
    ScaledMatrix matrices[] = {{form.equality, alone (form.right.size ())},
                               {form.range, alone (form.range_lower.size ())}};
    recovery.column_factor = equilibrate (form.quadratic, matrices, form.cost.size ());
    const auto multiply = [] (std::vector<double>& values, const std::vector<double>& factor) {
        std::ranges::transform (values, factor, values.begin (), std::multiplies{});
    };
    const auto divide = [] (std::vector<double>& values, const std::vector<double>& factor) {
        std::ranges::transform (values, factor, values.begin (), std::divides{});
    };
    multiply (form.cost, recovery.column_factor);
    divide (form.lower, recovery.column_factor);
    divide (form.upper, recovery.column_factor);
    multiply (form.right, matrices[0].row_factor);
    multiply (form.range_lower, matrices[1].row_factor);
    multiply (form.range_upper, matrices[1].row_factor);
    recovery.row_factor = std::move (matrices[0].row_factor);
    recovery.row_factor.insert (recovery.row_factor.end (), matrices[1].row_factor.begin (),
                                matrices[1].row_factor.end ());

    std::vector<double>* const bounds[] = {&form.right, &form.range_lower, &form.range_upper, &form.lower,
                                           &form.upper};
    double largest = 0;
    for (const std::vector<double>* values : bounds)
        largest = std::max (largest, largest_finite (*values));
    constexpr double most = 1e4, least_cost = 1e-4;    // a narrower range costs iterations
    recovery.factors = choose_units (form, largest, most, least_cost);
    for (std::vector<double>* values : bounds)
        for (double& value : *values)
            value /= recovery.factors.point;
}

Lowered lower_quadratic (const Problem& stated, double infinite_bound, bool scaled)
{
    Lowered lowered;
    FixedVariables fixed (stated);
    ObjectiveParts objective = lower_objective (stated, fixed);
    lowered.refused = objective.refused;
    if (lowered.refused.item != Refused::Item::none)
        return lowered;

    const auto whole = std::make_shared<Form> (QuadraticForm ());
    auto& form = std::get<QuadraticForm> (*whole);
    const auto recovery = std::make_shared<QuadraticRecovery> ();
    form.sign = recovery->sign = stated.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    form.constant = objective.constant;
    form.cost = std::move (objective.cost);
    form.quadratic = std::move (objective.quadratic);
    form.lower.reserve (fixed.columns ());
    form.upper.reserve (fixed.columns ());
    for (std::size_t j = 0; j < stated.variable.key.size (); ++j)
        if (!fixed.is_fixed (j)) {
            const Interval here =
                within (stated.variable.interval (j), infinite_bound, lowered.infinite_bounds);
            form.lower.push_back (here.lower);
            form.upper.push_back (here.upper);
        }
    recovery->rows = place_rows (stated, infinite_bound, form, lowered.infinite_bounds);
    fill_matrices (stated, fixed, recovery->rows, form);
    if (scaled)
        scale (form, *recovery);
    else {
        recovery->column_factor.assign (form.cost.size (), 1.0);
        recovery->row_factor.assign (recovery->rows.place.size (), 1.0);
    }
    recovery->fixed = std::move (fixed);
    lowered.recovery = recovery;
    lowered.form = whole;
    return lowered;
}

}
