#include "kalvo/forms/common.h"

#include "kalvo/forms/curvature.h"
#include "kalvo/forms/scaling.h"
#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>

namespace klv {

FixedVariables::FixedVariables (const Problem& problem) : columns_ (problem.variable.key.size ())
{
    const Bounds& bounds = problem.variable;
    const auto is_fixed = [&] (std::size_t j) { return bounds.lower[j] == bounds.upper[j]; };
    std::size_t first = 0;
    while (first < columns_ && !is_fixed (first))
        ++first;
    if (first == columns_)
        return;
    column_.resize (columns_);
    value_ = bounds.lower;
    std::int32_t next = 0;
    for (std::size_t j = 0; j < column_.size (); ++j)
        column_[j] = is_fixed (j) ? -1 : next++;
    columns_ = index (next);
}

std::vector<double> FixedVariables::spread (std::span<const double> columns, bool direction) const
{
    if (column_.empty ())
        return {columns.begin (), columns.end ()};
    std::vector<double> values (column_.size ());
    for (std::size_t j = 0; j < values.size (); ++j)
        values[j] = column_[j] >= 0 ? columns[index (column_[j])] : direction ? 0 : value_[j];
    return values;
}

Interval within (Interval stated, double infinite_bound, std::int64_t& left_out)
{
    if (stated.lower == stated.upper)
        return stated;
    if (stated.lower > -infinity && stated.lower <= -infinite_bound) {
        stated.lower = -infinity;
        ++left_out;
    }
    if (stated.upper < infinity && stated.upper >= infinite_bound) {
        stated.upper = infinity;
        ++left_out;
    }
    return stated;
}

// Terms come by column and row of the lower triangle, so that each column of the upper one is filled in order.
static void lower_quadratic_terms (const SymmetricTerms& terms, const FixedVariables& fixed, double sign,
                                   ObjectiveParts& parts)
{
    SparseColumns& upper = parts.quadratic;
    const auto is_kept = [&] (std::size_t k) {
        return terms.value[k] != 0 && !fixed.is_fixed (index (terms.row[k])) &&
               !fixed.is_fixed (index (terms.column[k]));
    };
    const auto column = [&] (std::int32_t variable) { return index (fixed.column_of (index (variable))); };
    upper.starts.assign (fixed.columns () + 1, 0);
    for (std::size_t k = 0; k < terms.value.size (); ++k)
        if (is_kept (k))
            ++upper.starts[column (terms.row[k]) + 1];
    for (std::size_t j = 0; j < fixed.columns (); ++j)
        upper.starts[j + 1] += upper.starts[j];
    upper.rows.resize (index (upper.starts.back ()));
    upper.values.resize (upper.rows.size ());
    std::vector<std::int32_t> next (upper.starts.begin (), upper.starts.end () - 1);
    for (std::size_t k = 0; k < terms.value.size (); ++k) {
        const std::size_t row = index (terms.row[k]), other = index (terms.column[k]);
        const double value = sign * terms.value[k];
        if (is_kept (k)) {
            const std::size_t to = index (next[column (terms.row[k])]++);
            upper.rows[to] = static_cast<std::int32_t> (column (terms.column[k]));
            upper.values[to] = value;
        } else if (fixed.is_fixed (row) && fixed.is_fixed (other))
            parts.constant += (row == other ? 0.5 : 1) * value * fixed.value (row) * fixed.value (other);
        else if (fixed.is_fixed (row))
            parts.cost[column (terms.column[k])] += value * fixed.value (row);
        else if (fixed.is_fixed (other))
            parts.cost[column (terms.row[k])] += value * fixed.value (other);
    }
}

ObjectiveParts lower_objective (const Problem& problem, const FixedVariables& fixed)
{
    ObjectiveParts parts;
    const double sign = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    const SymmetricTerms& terms = problem.quadratic_objective;
    parts.refused = refuse_objective (problem, fixed);
    if (parts.refused.item != Refused::Item::none)
        return parts;
    parts.constant = sign * problem.constant;
    parts.cost.resize (fixed.columns ());
    for (std::size_t j = 0; j < problem.cost.size (); ++j)
        if (fixed.is_fixed (j))
            parts.constant += sign * problem.cost[j] * fixed.value (j);
        else
            parts.cost[index (fixed.column_of (j))] = sign * problem.cost[j];
    lower_quadratic_terms (terms, fixed, sign, parts);
    return parts;
}

double largest_finite (std::span<const double> values)
{
    double largest = 0;
    for (const double value : values)
        if (std::isfinite (value))
            largest = std::max (largest, std::abs (value));
    return largest;
}

template <class SomeForm>
Factors choose_units (SomeForm& form, double largest_bound, double most, double least_cost)
{
    Factors factors{.point = factor_between (largest_bound, 1, most)};
    for (double& value : form.quadratic.values)
        value *= factors.point * factors.point;
    for (double& cost : form.cost)
        cost *= factors.point;
    const double largest_cost = largest_finite (form.cost);
    factors.objective = factor_between (
        largest_cost > 0 ? largest_cost : largest_finite (form.quadratic.values), least_cost, 1e4);
    for (double& value : form.quadratic.values)
        value /= factors.objective;
    for (double& cost : form.cost)
        cost /= factors.objective;
    form.constant /= factors.objective;
    form.sign *= factors.objective;
    return factors;
}

template Factors choose_units (QuadraticForm& form, double largest_bound, double most, double);
template Factors choose_units (ConicForm& form, double largest_bound, double most, double);

}
