#include "kalvo/verify/check.h"

#include "kalvo/verify/certificate.h"
#include "kalvo/verify/products.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

Check::Check (std::shared_ptr<const Problem> problem, const Parameters& settings, bool integers,
              Claims claims)
    : problem_ (std::move (problem)),
      tolerances_{.primal = settings.get (RealSetting::primal_tolerance),
                  .dual = settings.get (RealSetting::dual_tolerance),
                  .gap = settings.get (RealSetting::gap_tolerance),
                  .integer = settings.get (RealSetting::integer_tolerance)},
      absolute_gap_ (settings.get (RealSetting::integer_absolute_gap)),
      relative_gap_ (settings.get (RealSetting::integer_relative_gap)),
      integers_ (integers),
      keeps_claims_ (claims == Claims::kept)
{}

static bool finite (const std::vector<double>& values, std::size_t count)
{
    return values.size () == count &&
           std::ranges::all_of (values, [] (double value) { return std::isfinite (value); });
}

// Whether an item that a basis places at a bound is there, but for `room`.
static bool is_in_place (std::int32_t key, Interval bounds, double value, double tolerance, double room)
{
    const auto at = [&] (double bound) {
        return std::isfinite (bound) && std::abs (value - bound) <= tolerance * (1 + std::abs (bound)) + room;
    };
    switch (key) {
    case KLV_SK_BASIC:
    case KLV_SK_SUPERBASIC:
        return true;
    case KLV_SK_LOWER:
        return at (bounds.lower);
    case KLV_SK_UPPER:
        return at (bounds.upper);
    case KLV_SK_FIXED:
        return at (bounds.lower) && at (bounds.upper);
    default:
        return false;
    }
}

// What rounding may leave of the activity of each row: that of large terms is far from a bound that they add up to.
static std::vector<double> rounding_of_rows (const Problem& problem, const std::vector<double>& x)
{
    constexpr double rounding = 1e-12;
    std::vector<double> room (static_cast<std::size_t> (problem.constraints ()));
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        const Column column = problem.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            room[static_cast<std::size_t> (column.rows[k])] +=
                rounding * std::abs (column.values[k] * x[static_cast<std::size_t> (j)]);
    }
    return room;
}

// Whether claimed keys are those of a basis at the point: each agrees with its item's value, and there are as many basic items
// as rows.
static bool is_basis (const Problem& problem, const Point& claimed, const Solution& point, double tolerance)
{
    if (claimed.row_key.size () != point.xc.size () || claimed.column_key.size () != point.xx.size ())
        return false;
    const auto basics = [] (const auto& keys) { return std::ranges::count (keys, KLV_SK_BASIC); };
    if (basics (claimed.row_key) + basics (claimed.column_key) != std::ssize (point.xc))
        return false;
    const auto in_place = [&] (const auto& keys, const Bounds& bounds, const auto& values,
                               const std::vector<double>& room) {
        for (std::size_t i = 0; i < keys.size (); ++i)
            if (!is_in_place (keys[i], bounds.interval (i), values[i], tolerance,
                              room.empty () ? 0 : room[i]))
                return false;
        return true;
    };
    return in_place (claimed.column_key, problem.variable, point.xx, {}) &&
           (in_place (claimed.row_key, problem.constraint, point.xc, {}) ||
            in_place (claimed.row_key, problem.constraint, point.xc, rounding_of_rows (problem, point.xx)));
}

// A slot filled from those claims that have the right size and only finite numbers.
Solution Check::measured (Point&& claimed, bool& has_basis) const
{
    const auto m = static_cast<std::size_t> (problem_->constraints ());
    const auto n = static_cast<std::size_t> (problem_->variables ());
    Solution solution;
    const auto rows = static_cast<std::size_t> (problem_->affine_constraint.rows ());
    const auto optional = [&] (const std::vector<double>& values) {
        return values.empty () || finite (values, n);
    };
    solution.has_primal = finite (claimed.x, n) &&
                          finite (claimed.barx, static_cast<std::size_t> (problem_->semidefinite.length ()));
    solution.has_dual = !integers_ && finite (claimed.y, m) && finite (claimed.doty, rows) &&
                        optional (claimed.reduced_cost) && optional (claimed.snx) &&
                        (solution.has_primal || !has_quadratic_terms (*problem_));
    if (!solution.has_primal) {
        solution.xx.assign (n, 0);
        solution.xc.assign (m, 0);
    } else
        measure_primal (*problem_, std::move (claimed.x), std::move (claimed.barx), solution);
    if (solution.has_dual)
        measure_dual (*problem_,
                      {.y = std::move (claimed.y),
                       .reduced_cost = std::move (claimed.reduced_cost),
                       .doty = std::move (claimed.doty),
                       .snx = std::move (claimed.snx)},
                      solution);
    else if (!integers_) {
        for (std::vector<double>* values : {&solution.y, &solution.slc, &solution.suc})
            values->assign (m, 0);
        for (std::vector<double>* values : {&solution.slx, &solution.sux})
            values->assign (n, 0);
    }
    has_basis = solution.has_primal && is_basis (*problem_, claimed, solution, tolerances_.primal);
    if (has_basis) {
        solution.skc = std::move (claimed.row_key);
        solution.skx = std::move (claimed.column_key);
    } else {
        solution.skc.assign (m, KLV_SK_UNKNOWN);
        solution.skx.assign (n, KLV_SK_UNKNOWN);
    }
    return solution;
}

// The content of a slot of which nothing is known.
Solution Check::unknown_solution () const
{
    bool has_basis = false;
    return measured ({}, has_basis);
}

// Where there is no optimum, the multipliers of a run that went on without end, or its point, may be a ray.
std::optional<Answer> Check::find_proof (const Solution& solution) const
{
    if (problem_->is_linear ())    // simplex says which rays it has
        return std::nullopt;
    Answer answer{.outcome = Outcome::infeasible, .conclusive = true};
    if (solution.has_dual)
        answer.solution =
            certify_infeasible (*problem_, {solution.y, solution.doty, solution.snx, solution.xx});
    if (!answer.solution && solution.has_primal) {
        answer.outcome = Outcome::unbounded;
        answer.solution = certify_unbounded (*problem_, solution.xx, solution.barx);
    }
    return answer.solution ? std::optional (std::move (answer)) : std::nullopt;
}

Answer Check::check_continuous (Point&& claimed) const
{
    Answer answer{.outcome = claimed.outcome, .message = std::move (claimed.message)};
    Solution solution = measured (std::move (claimed), answer.has_basis);
    if (!solution.has_primal && !solution.has_dual)
        return answer;
    judge (tolerances_, solution);
    answer.conclusive = solution.solution_status == KLV_SOLSTA_OPTIMAL;
    if (answer.conclusive)
        answer.outcome = Outcome::optimal;    // also where the engine was unsure of it, or ended just then
    else if (std::optional<Answer> proof = find_proof (solution))
        return std::move (*proof);
    else
        answer.failure = describe_failure (*problem_, tolerances_, solution);
    answer.solution = std::move (solution);
    return answer;
}

// Rounds integer variables that are whole but for rounding errors, where that costs no feasibility.
void Check::hand_out_whole_numbers (Solution& solution) const
{
    if (solution.violations.integer == 0 || solution.violations.integer > tolerances_.integer)
        return;
    Solution whole = solution;
    for (std::size_t j = 0; j < whole.xx.size (); ++j)
        if (problem_->integer[j] == KLV_VAR_INTEGER)
            whole.xx[j] = std::nearbyint (whole.xx[j]) + 0.0;
    measure_primal (*problem_, std::move (whole.xx), std::move (whole.barx), whole);
    measure_integers (*problem_, whole);
    if (whole.violations.primal <= std::max (tolerances_.primal, solution.violations.primal))
        solution = std::move (whole);
}

Answer Check::check_integer (Point&& claimed) const
{
    Answer answer{.outcome = claimed.outcome, .message = std::move (claimed.message)};
    const std::optional<double> bound = claimed.bound;
    Solution solution = measured (std::move (claimed), answer.has_basis);
    if (!solution.has_primal)
        return answer;
    measure_integers (*problem_, solution);
    hand_out_whole_numbers (solution);

    const double size = std::abs (solution.primal_objective);
    bool closed = false;
    if (bound && std::isfinite (*bound)) {
        const double distance = std::abs (solution.primal_objective - *bound);
        const double rounding = 1e-9 * (1 + size);
        closed = answer.outcome == Outcome::optimal &&
                 distance <= std::max (absolute_gap_, relative_gap_ * size) + rounding;
        answer.integer_gap = IntegerGap{*bound, distance, relative_gap (solution.primal_objective, *bound)};
    }
    judge_integer (tolerances_, closed, solution);
    derive_keys (*problem_, tolerances_.primal, solution);
    answer.conclusive = solution.solution_status == KLV_SOLSTA_INTEGER_OPTIMAL;
    answer.solution = std::move (solution);
    return answer;
}

Answer Check::check_infeasible (const Point& claimed) const
{
    Answer answer{
        .outcome = Outcome::infeasible,
        .solution = certify_infeasible (*problem_, {claimed.dual_ray, claimed.doty, claimed.snx, claimed.x})};
    answer.conclusive = answer.solution.has_value ();
    if (!integers_)
        return answer;
    // A ray of the relaxation proves infeasibility, but the integer slot has no room for the ray. Without a ray there is only the
    // engine's word that its search found no point.
    Solution solution = unknown_solution ();
    solution.problem_status = answer.conclusive ? KLV_PRO_PRIMAL_INFEASIBLE : KLV_PRO_INFEASIBLE_BY_SEARCH;
    answer.solution = std::move (solution);
    answer.conclusive = true;    // the search is over
    return answer;
}

Answer Check::check_unbounded (const Point& claimed) const
{
    Answer answer{.outcome = Outcome::unbounded,
                  .solution = certify_unbounded (*problem_, claimed.primal_ray, claimed.barx)};
    answer.conclusive = answer.solution.has_value ();
    return answer;
}

Answer Check::judged (Point&& claimed) const
{
    switch (claimed.outcome) {
    case Outcome::infeasible:
        return check_infeasible (claimed);
    case Outcome::unbounded:
        return check_unbounded (claimed);
    default:
        return integers_ ? check_integer (std::move (claimed)) : check_continuous (std::move (claimed));
    }
}

Answer Check::operator() (Point&& claimed) const
{
    if (!keeps_claims_)
        return judged (std::move (claimed));
    Point kept = claimed;
    Answer answer = judged (std::move (claimed));
    if (answer.conclusive && !integers_ &&
        answer.outcome == Outcome::infeasible) {    // a ray that needs no refinement any more
        kept.dual_ray = answer.solution->y;
        kept.doty = answer.solution->doty;
        kept.snx = answer.solution->snx;
    }
    if (answer.conclusive && answer.outcome == Outcome::unbounded) {
        kept.primal_ray = answer.solution->xx;
        kept.barx = answer.solution->barx;
    }
    answer.claim = std::move (kept);
    return answer;
}

}
