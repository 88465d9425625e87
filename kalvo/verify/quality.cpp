#include "kalvo/verify/quality.h"

#include "kalvo/model/describe.h"
#include "kalvo/model/text.h"
#include "kalvo/sparse/index.h"
#include "kalvo/verify/distance.h"
#include "kalvo/verify/products.h"
#include "kalvo/verify/sum.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace klv {

// Values of items from `first` on.
static void measure_against (const Bounds& bounds, std::span<const double> values, std::size_t first,
                             Violations& violations)
{
    const auto note = [&] (double distance, double bound) {
        // A NaN is the largest violation.
        if (!(distance <= 0)) {
            distance = std::isnan (distance) ? infinity : distance;
            violations.primal_absolute = std::max (violations.primal_absolute, distance);
            violations.primal = std::max (violations.primal, distance / (1 + std::abs (bound)));
        }
    };
    for (std::size_t i = 0; i < values.size (); ++i) {
        const Interval here = bounds.interval (first + i);
        if (here.lower > -infinity)
            note (here.lower - values[i], here.lower);
        if (here.upper < infinity)
            note (values[i] - here.upper, here.upper);
        if (!std::isfinite (values[i]))
            note (infinity, 0);
    }
}

// ---- Cones and matrices -----------------------------------------------------------------------------------------------------

// A distance among the violations, as `largest` of its kind too.
static void note_distance (double distance, double magnitude, double& largest, double& relative,
                           double& absolute)
{
    if (!(distance <= 0)) {
        const double scaled = std::isfinite (distance) ? distance / (1 + magnitude) : infinity;
        largest = std::max (largest, scaled);
        relative = std::max (relative, scaled);
        absolute = std::max (absolute, std::isfinite (distance) ? distance : infinity);
    }
}

static void measure_blocks (const Problem& problem, bool duals, double sign, std::span<const double> rows,
                            std::span<const double> values, std::span<const double> matrices,
                            Violations& violations)
{
    double& relative = duals ? violations.dual : violations.primal;
    double& absolute = duals ? violations.dual_absolute : violations.primal_absolute;
    double& cone = duals ? violations.dual_cone : violations.primal_cone;
    double& matrix = duals ? violations.dual_matrix : violations.primal_matrix;
    cone = matrix = 0;
    const auto measure = [&] (const Shape& shape, std::span<const double> block) {
        note_distance (distance (duals ? dual (shape) : shape, sign, block), largest_magnitude (block), cone,
                       relative, absolute);
    };
    std::size_t begin = 0;
    for (std::int32_t k = 0; k < problem.affine_constraint.count (); ++k) {
        const std::size_t end = index (problem.affine_constraint.end[index (k)]);
        measure (shape_of (problem, k), rows.subspan (begin, end - begin));
        begin = end;
    }
    for (std::int32_t k = 0; k < problem.cone.count (); ++k) {
        const ConeOfVariables here (problem, k);
        measure (here.shape (), here.block (values));
    }
    const SemidefiniteVariables& variables = problem.semidefinite;
    for (std::int32_t j = 0; j < variables.count (); ++j) {
        const auto triangle = matrices.subspan (index (variables.begin_of (j)),
                                                index (variables.begin_of (j + 1) - variables.begin_of (j)));
        note_distance (matrix_distance (variables.order[index (j)], sign, triangle),
                       largest_magnitude (triangle), matrix, relative, absolute);
    }
}

// ---- Points -----------------------------------------------------------------------------------------------------------------

void measure_primal (const Problem& problem, std::vector<double> x, std::vector<double> barx,
                     Solution& solution)
{
    solution.xx = std::move (x);
    solution.barx = std::move (barx);
    const Primal point{solution.xx, solution.barx};
    solution.xc = activities (problem, point, true);
    solution.primal_objective = objective (problem, point);
    solution.violations.primal = solution.violations.primal_absolute = 0;
    measure_against (problem.variable, solution.xx, 0, solution.violations);
    measure_against (problem.constraint, solution.xc, 0, solution.violations);
    measure_blocks (problem, false, 1, affine_rows (problem, point, true), solution.xx, solution.barx,
                    solution.violations);
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

// Contributions of the multipliers of one kind of item to the dual objective, violations and complementarity.
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

// Splits what reduced costs leave for variables in cones between their bounds and their cones. A bound takes what is claimed for
// it and has the right sign, the cone all else.
static void split_cones (const Problem& problem, double sign, std::span<const double> exact,
                         const std::vector<double>& claimed_snx, std::vector<double>& reduced_cost,
                         std::vector<double>& snx)
{
    snx.assign (exact.size (), 0);
    for (const std::int32_t member : problem.cone.member) {
        const std::size_t j = index (member);
        double claim =
            claimed_snx.empty () ? reduced_cost.empty () ? 0 : reduced_cost[j] : exact[j] - claimed_snx[j];
        if (claim != 0 &&
            std::isinf (sign * claim > 0 ? problem.variable.lower[j] : problem.variable.upper[j]))
            claim = 0;
        snx[j] = exact[j] - claim;
        if (!reduced_cost.empty ())
            reduced_cost[j] = claim;
    }
}

// What it costs at most to move a block outside of its cone along the direction by which its distance is measured. A distance that
// is small beside the largest member may be large beside what another member is worth.
static double cost_of_move (double distance, std::span<const double> direction,
                            std::span<const double> prices)
{
    double price = 0;
    for (std::size_t k = 0; k < direction.size (); ++k)
        price += direction[k] * std::abs (prices[k]);
    return distance > 0 && price > 0 ? distance * price : 0;
}

// The cost of moving all blocks of the point and of its multipliers into their cones.
static double cost_of_moves (const Problem& problem, double sign, const Solution& solution)
{
    const Violations& found = solution.violations;
    double cost = 0;
    if (found.primal_cone > 0 || found.dual_cone > 0) {
        const auto add = [&] (const Shape& shape, std::span<const double> point,
                              std::span<const double> duals) {
            const Shape other = dual (shape);
            cost += cost_of_move (distance (shape, 1, point), direction (shape, point.size ()), duals) +
                    cost_of_move (distance (other, sign, duals), direction (other, point.size ()), point);
        };
        const std::vector<double> rows = affine_rows (problem, {solution.xx, solution.barx}, true);
        std::size_t begin = 0;
        for (std::int32_t k = 0; k < problem.affine_constraint.count (); ++k) {
            const std::size_t end = index (problem.affine_constraint.end[index (k)]);
            add (shape_of (problem, k), std::span (rows).subspan (begin, end - begin),
                 std::span (solution.doty).subspan (begin, end - begin));
            begin = end;
        }
        for (std::int32_t k = 0; k < problem.cone.count (); ++k) {
            const ConeOfVariables here (problem, k);
            add (here.shape (), here.block (solution.xx), here.block (solution.snx));
        }
    }
    if (found.primal_matrix == 0 && found.dual_matrix == 0)
        return cost;
    const SemidefiniteVariables& variables = problem.semidefinite;
    for (std::int32_t j = 0; j < variables.count (); ++j) {
        const std::int32_t order = variables.order[index (j)];
        const auto triangle = [&] (const std::vector<double>& values) {
            return std::span (values).subspan (index (variables.begin_of (j)),
                                               index (variables.begin_of (j + 1) - variables.begin_of (j)));
        };
        const auto point = triangle (solution.barx), duals = triangle (solution.bars);
        const std::vector<double> direction = identity (point.size ());
        cost += cost_of_move (matrix_distance (order, 1, point), direction, duals) +
                cost_of_move (matrix_distance (order, sign, duals), direction, point);
    }
    return cost;
}

void measure_dual (const Problem& problem, ClaimedDuals&& claimed, Solution& solution)
{
    Violations& violations = solution.violations;
    violations.dual = violations.dual_absolute = 0;
    solution.y = std::move (claimed.y);
    solution.doty = std::move (claimed.doty);
    const Dual duals{solution.y, solution.doty};
    const double sign = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;

    // Residuals are relative to the larger of cost and gradient.
    const std::vector<double> gradient = objective_gradient (problem, solution.xx);
    std::vector<double> larger;
    for (std::size_t j = 0; j < gradient.size (); ++j)
        larger.push_back (std::max (std::abs (problem.cost[j]), std::abs (gradient[j])));
    const std::vector<double>& size = larger.empty () ? problem.cost : larger;

    std::vector<double> exact = reduced_costs (problem, duals, solution.xx, true);
    std::vector<double> reduced_cost = std::move (claimed.reduced_cost);
    if (problem.cone.count () > 0) {
        split_cones (problem, sign, exact, claimed.snx, reduced_cost, solution.snx);
        for (const std::int32_t member : problem.cone.member)
            exact[index (member)] -= solution.snx[index (member)];
    }
    if (reduced_cost.empty ())
        reduced_cost = std::move (exact);
    else
        for (std::size_t j = 0; j < exact.size (); ++j) {
            const double residual = std::abs (exact[j] - reduced_cost[j]);
            const double worst = std::isnan (residual) ? infinity : residual;
            violations.dual_absolute = std::max (violations.dual_absolute, worst);
            violations.dual = std::max (violations.dual, worst / (1 + std::abs (size[j])));
        }
    if (problem.semidefinite.count () > 0)
        solution.bars = reduced_matrices (problem, duals, true);
    measure_blocks (problem, true, sign, solution.doty, solution.snx, solution.bars, violations);

    split (solution.y, sign, solution.slc, solution.suc);
    split (reduced_cost, sign, solution.slx, solution.sux);
    Sum dual_objective;
    dual_objective.add (problem.constant);
    double complementarity = 0;
    measure_multipliers (problem.constraint, solution.xc, solution.slc, solution.suc, {}, dual_objective,
                         complementarity, violations);
    measure_multipliers (problem.variable, solution.xx, solution.slx, solution.sux, size, dual_objective,
                         complementarity, violations);
    each_dual_term (problem, duals, solution.xx, true,
                    [&] (double a, double b) { dual_objective.add_product (a, b); });
    solution.dual_objective = dual_objective.value ();

    const double p = solution.primal_objective;
    const double d = solution.dual_objective;
    const double scale = 1 + std::abs (p) + std::abs (d);
    double distance = std::abs (p - d);
    if (!problem.is_linear () && solution.has_primal)
        distance += cost_of_moves (problem, sign, solution);
    violations.gap = std::isfinite (scale) && std::isfinite (distance) ? distance / scale : infinity;
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

// The item whose value is furthest outside its bounds.
static std::string worst_item (const Problem& problem, const Solution& solution)
{
    double worst = 0;
    std::string item;
    const auto look = [&] (const Bounds& bounds, const std::vector<double>& values,
                           const auto& describe_item) {
        for (std::size_t i = 0; i < values.size (); ++i) {
            Violations own;
            measure_against (bounds, std::span (values).subspan (i, 1), i, own);
            if (own.primal > worst) {
                worst = own.primal;
                item = describe_item (problem, static_cast<std::int32_t> (i));
            }
        }
    };
    look (problem.variable, solution.xx, describe_variable);
    look (problem.constraint, solution.xc, describe_constraint);
    return worst == solution.violations.primal ? item : "";
}

// The variable whose absent bound has the largest multiplier.
static std::string worst_multiplier (const Problem& problem, const Solution& solution)
{
    double worst = 0;
    std::size_t at = 0;
    const auto look = [&] (std::size_t j, double multiplier, double bound) {
        if (std::isinf (bound) && std::abs (multiplier) > worst) {
            worst = std::abs (multiplier);
            at = j;
        }
    };
    for (std::size_t j = 0; j < solution.slx.size (); ++j) {
        look (j, solution.slx[j], problem.variable.lower[j]);
        look (j, solution.sux[j], problem.variable.upper[j]);
    }
    return worst > 0 && worst == solution.violations.dual_absolute
               ? describe_variable (problem, static_cast<std::int32_t> (at))
               : "";
}

std::string describe_failure (const Problem& problem, const Tolerances& tolerances, const Solution& solution)
{
    if (!solution.has_primal || !solution.has_dual)
        return solution.has_primal ? "it has no multipliers" : "it has no point";
    const Violations& found = solution.violations;
    const auto of = [] (const std::string& item, double largest, double cone, double matrix) -> std::string {
        return !item.empty ()      ? " of " + item
               : largest == cone   ? " of a cone"
               : largest == matrix ? " of a matrix"
                                   : "";
    };
    struct Candidate {
        const char* what;
        double violation, tolerance;
    };
    const Candidate candidates[] = {{"primal violation", found.primal, tolerances.primal},
                                    {"dual violation", found.dual, tolerances.dual},
                                    {"gap", found.gap, tolerances.gap},
                                    {"complementarity", found.complementarity, tolerances.gap}};
    const Candidate& worst = *std::ranges::max_element (
        candidates, {}, [] (const Candidate& each) { return each.violation / each.tolerance; });
    if (worst.violation <= worst.tolerance)
        return {};
    std::string item;
    if (&worst == candidates)
        item = of (worst_item (problem, solution), found.primal, found.primal_cone, found.primal_matrix);
    if (&worst == candidates + 1)
        item = of (worst_multiplier (problem, solution), found.dual, found.dual_cone, found.dual_matrix);
    char violation[32];
    std::snprintf (violation, sizeof violation, "%.1e", worst.violation);
    return text (worst.what, " ", violation, item, ", tolerance ", worst.tolerance);
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

static std::int32_t key_of_cone (const Shape& shape, std::span<const double> block, double tolerance)
{
    const double magnitude = largest_magnitude (block), near = tolerance * (1 + magnitude);
    const double outside = distance (shape, 1, block);
    if (!(outside <= near))
        return KLV_SK_UNKNOWN;
    return magnitude <= tolerance ? KLV_SK_SUPERBASIC : outside < -near ? KLV_SK_BASIC : KLV_SK_UPPER;
}

void derive_keys (const Problem& problem, double tolerance, Solution& solution)
{
    double largest = 0;
    for (const double cost : problem.cost)
        largest = std::max (largest, std::abs (cost));
    largest = largest > 0 ? largest : 1;
    solution.skc = keys_of (problem.constraint, solution.xc, solution.slc, solution.suc, tolerance, largest);
    solution.skx = keys_of (problem.variable, solution.xx, solution.slx, solution.sux, tolerance, largest);
    solution.skn.assign (index (problem.cone.count ()), KLV_SK_UNKNOWN);
    for (std::int32_t k = 0; k < problem.cone.count (); ++k) {
        const ConeOfVariables here (problem, k);
        const std::vector<double> block = here.block (solution.xx);
        solution.skn[index (k)] = key_of_cone (here.shape (), block, tolerance);
    }
}

}
