#include "kalvo/verify/quality.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

// A running sum with the rounding errors of its additions added up beside it (Neumaier).
class Sum {
public:
    void add (double term)
    {
        const double next = sum_ + term;
        error_ += std::abs (sum_) >= std::abs (term) ? (sum_ - next) + term : (term - next) + sum_;
        sum_ = next;
    }
    void add_product (double a, double b)
    {
        const double product = a * b;
        add (product);
        error_ += std::fma (a, b, -product);
    }
    // Infinite terms leave a NaN beside the sum, which then says enough by itself.
    double value () const { return std::isfinite (error_) ? sum_ + error_ : sum_; }

private:
    double sum_ = 0;
    double error_ = 0;
};

static std::size_t index (std::int32_t i)
{
    return static_cast<std::size_t> (i);
}

std::vector<double> activities (const Problem& problem, std::span<const double> x)
{
    std::vector<Sum> sums (index (problem.constraints ()));
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        if (x[index (j)] == 0)
            continue;
        const Column column = problem.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            sums[index (column.rows[k])].add_product (column.values[k], x[index (j)]);
    }
    std::vector<double> activity (sums.size ());
    std::ranges::transform (sums, activity.begin (), &Sum::value);
    return activity;
}

std::vector<double> reduced_costs (const ColumnMatrix& matrix, std::span<const double> cost,
                                   std::span<const double> y)
{
    std::vector<double> reduced (index (matrix.columns ()));
    for (std::int32_t j = 0; j < matrix.columns (); ++j) {
        Sum sum;
        if (!cost.empty ())
            sum.add (cost[index (j)]);
        const Column column = matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            sum.add_product (-column.values[k], y[index (column.rows[k])]);
        reduced[index (j)] = sum.value ();
    }
    return reduced;
}

double objective (const Problem& problem, std::span<const double> x)
{
    Sum sum;
    sum.add (problem.constant);
    for (std::size_t j = 0; j < x.size (); ++j)
        sum.add_product (problem.cost[j], x[j]);
    return sum.value ();
}

static void measure_against (const Bounds& bounds, std::span<const double> values, Violations& violations)
{
    const auto note = [&] (double distance, double bound) {
        // A NaN counts as the worst there is.
        if (!(distance <= 0)) {
            distance = std::isnan (distance) ? infinity : distance;
            violations.primal_absolute = std::max (violations.primal_absolute, distance);
            violations.primal = std::max (violations.primal, distance / (1 + std::abs (bound)));
        }
    };
    for (std::size_t i = 0; i < values.size (); ++i) {
        const Interval here = bounds.interval (i);
        if (here.lower > -infinity)
            note (here.lower - values[i], here.lower);
        if (here.upper < infinity)
            note (values[i] - here.upper, here.upper);
        if (!std::isfinite (values[i]))
            note (infinity, 0);
    }
}

void measure_primal (const Problem& problem, std::vector<double> x, Solution& solution)
{
    solution.xx = std::move (x);
    solution.xc = activities (problem, solution.xx);
    solution.primal_objective = objective (problem, solution.xx);
    solution.violations.primal = solution.violations.primal_absolute = 0;
    measure_against (problem.variable, solution.xx, solution.violations);
    measure_against (problem.constraint, solution.xc, solution.violations);
}

void split (std::span<const double> multipliers, double sign, std::vector<double>& lower,
            std::vector<double>& upper)
{
    lower.resize (multipliers.size ());
    upper.resize (multipliers.size ());
    for (std::size_t i = 0; i < multipliers.size (); ++i) {
        lower[i] = sign * std::max (sign * multipliers[i], 0.0) + 0.0;
        upper[i] = sign * std::max (-sign * multipliers[i], 0.0) + 0.0;
    }
}

// What the multipliers of one kind of item add to the dual objective, to the violations and to
// complementarity.
static void measure_multipliers (const Bounds& bounds, std::span<const double> values,
                                 std::span<const double> lower, std::span<const double> upper,
                                 std::span<const double> cost, Sum& dual_objective, double& complementarity,
                                 Violations& violations)
{
    const auto note = [&] (std::size_t i, double multiplier, double bound, double sign) {
        if (multiplier == 0)
            return;
        if (!std::isfinite (bound) || std::isnan (multiplier)) {
            const double scale = cost.empty () ? 1 : 1 + std::abs (cost[i]);
            const double worst = std::isnan (multiplier) ? infinity : std::abs (multiplier);
            violations.dual_absolute = std::max (violations.dual_absolute, worst);
            violations.dual = std::max (violations.dual, worst / scale);
            return;
        }
        dual_objective.add_product (sign * bound, multiplier);
        if (!values.empty ())
            complementarity = std::max (complementarity, std::abs (multiplier * (values[i] - bound)));
    };
    for (std::size_t i = 0; i < lower.size (); ++i) {
        const Interval here = bounds.interval (i);
        note (i, lower[i], here.lower, 1);
        note (i, upper[i], here.upper, -1);
    }
}

void measure_dual (const Problem& problem, std::vector<double> y, std::vector<double> reduced_cost,
                   Solution& solution)
{
    Violations& violations = solution.violations;
    violations.dual = violations.dual_absolute = 0;
    solution.y = std::move (y);
    std::vector<double> exact = reduced_costs (problem.matrix, problem.cost, solution.y);
    if (reduced_cost.empty ())
        reduced_cost = std::move (exact);
    else
        for (std::size_t j = 0; j < exact.size (); ++j) {
            const double residual = std::abs (exact[j] - reduced_cost[j]);
            const double worst = std::isnan (residual) ? infinity : residual;
            violations.dual_absolute = std::max (violations.dual_absolute, worst);
            violations.dual = std::max (violations.dual, worst / (1 + std::abs (problem.cost[j])));
        }

    const double sign = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    split (solution.y, sign, solution.slc, solution.suc);
    split (reduced_cost, sign, solution.slx, solution.sux);
    Sum dual_objective;
    dual_objective.add (problem.constant);
    double complementarity = 0;
    measure_multipliers (problem.constraint, solution.xc, solution.slc, solution.suc, {}, dual_objective,
                         complementarity, violations);
    measure_multipliers (problem.variable, solution.xx, solution.slx, solution.sux, problem.cost,
                         dual_objective, complementarity, violations);
    solution.dual_objective = dual_objective.value ();

    const double p = solution.primal_objective;
    const double d = solution.dual_objective;
    const double scale = 1 + std::abs (p) + std::abs (d);
    violations.gap = std::isfinite (scale) ? std::abs (p - d) / scale : infinity;
    violations.complementarity = std::isfinite (scale) ? complementarity / scale : infinity;
}

void measure_integers (const Problem& problem, Solution& solution)
{
    double worst = 0;
    for (std::size_t j = 0; j < solution.xx.size (); ++j)
        if (problem.integer[j] == KLV_VAR_INTEGER) {
            const double distance = std::abs (solution.xx[j] - std::nearbyint (solution.xx[j]));
            worst = std::max (worst, std::isnan (distance) ? infinity : distance);
        }
    solution.violations.integer = worst;
}

double relative_gap (double objective, double bound)
{
    return std::abs (objective - bound) / std::max (1e-10, std::abs (objective));
}

void judge (const Tolerances& tolerances, Solution& solution)
{
    const Violations& found = solution.violations;
    const bool primal = solution.has_primal && found.primal <= tolerances.primal;
    const bool dual = solution.has_dual && found.dual <= tolerances.dual;
    const bool closed = found.gap <= tolerances.gap && found.complementarity <= tolerances.gap;
    if (primal && dual) {
        solution.problem_status = KLV_PRO_FEASIBLE;
        solution.solution_status = closed ? KLV_SOLSTA_OPTIMAL : KLV_SOLSTA_FEASIBLE;
    } else if (primal) {
        solution.problem_status = KLV_PRO_PRIMAL_FEASIBLE;
        solution.solution_status = KLV_SOLSTA_PRIMAL_FEASIBLE;
    } else if (dual) {
        solution.problem_status = KLV_PRO_DUAL_FEASIBLE;
        solution.solution_status = KLV_SOLSTA_DUAL_FEASIBLE;
    } else {
        solution.problem_status = KLV_PRO_UNKNOWN;
        solution.solution_status = KLV_SOLSTA_UNKNOWN;
    }
}

void judge_integer (const Tolerances& tolerances, bool closed, Solution& solution)
{
    const Violations& found = solution.violations;
    const bool feasible = found.primal <= tolerances.primal && found.integer <= tolerances.integer;
    solution.problem_status = feasible ? KLV_PRO_PRIMAL_FEASIBLE : KLV_PRO_UNKNOWN;
    solution.solution_status = !feasible ? KLV_SOLSTA_UNKNOWN
                               : closed  ? KLV_SOLSTA_INTEGER_OPTIMAL
                                         : KLV_SOLSTA_PRIMAL_FEASIBLE;
}

static std::vector<std::int32_t> keys_of (const Bounds& bounds, std::span<const double> values,
                                          std::span<const double> lower, std::span<const double> upper,
                                          double tolerance, double largest_cost)
{
    const auto outweighs = [&] (double multiplier, double distance, double bound) {
        return std::abs (multiplier) * (1 + std::abs (bound)) > distance * largest_cost;
    };
    std::vector<std::int32_t> keys (values.size ());
    for (std::size_t i = 0; i < values.size (); ++i) {
        const Interval here = bounds.interval (i);
        const double below = values[i] - here.lower;
        const double above = here.upper - values[i];
        const double near_lower = here.lower > -infinity ? tolerance * (1 + std::abs (here.lower)) : 0;
        const double near_upper = here.upper < infinity ? tolerance * (1 + std::abs (here.upper)) : 0;
        if (below < -near_lower || above < -near_upper)
            keys[i] = KLV_SK_INFEASIBLE;
        else if (bounds.lower[i] == bounds.upper[i])
            keys[i] = KLV_SK_FIXED;
        else if (lower.empty ())
            keys[i] = below <= near_lower   ? KLV_SK_LOWER
                      : above <= near_upper ? KLV_SK_UPPER
                                            : KLV_SK_SUPERBASIC;
        else
            keys[i] = outweighs (lower[i], below, here.lower)   ? KLV_SK_LOWER
                      : outweighs (upper[i], above, here.upper) ? KLV_SK_UPPER
                                                                : KLV_SK_BASIC;
    }
    return keys;
}

void derive_keys (const Problem& problem, double tolerance, Solution& solution)
{
    double largest = 0;
    for (const double cost : problem.cost)
        largest = std::max (largest, std::abs (cost));
    largest = largest > 0 ? largest : 1;
    solution.skc = keys_of (problem.constraint, solution.xc, solution.slc, solution.suc, tolerance, largest);
    solution.skx = keys_of (problem.variable, solution.xx, solution.slx, solution.sux, tolerance, largest);
}

}
