#include "kalvo/verify/check.h"

#include "kalvo/verify/certificate.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

Check::Check (std::shared_ptr<const Problem> problem, const Parameters& settings, bool integers)
    : problem_ (std::move (problem)),
      tolerances_{.primal = settings.get (RealSetting::primal_tolerance),
                  .dual = settings.get (RealSetting::dual_tolerance),
                  .gap = settings.get (RealSetting::gap_tolerance),
                  .integer = settings.get (RealSetting::integer_tolerance)},
      absolute_gap_ (settings.get (RealSetting::integer_absolute_gap)),
      relative_gap_ (settings.get (RealSetting::integer_relative_gap)),
      integers_ (integers)
{}

static bool finite (const std::vector<double>& values, std::size_t count)
{
    return values.size () == count &&
           std::ranges::all_of (values, [] (double value) { return std::isfinite (value); });
}

// Whether an item that a basis places at a bound is there.
static bool is_in_place (std::int32_t key, Interval bounds, double value, double tolerance)
{
    const auto at = [&] (double bound) {
        return std::isfinite (bound) && std::abs (value - bound) <= tolerance * (1 + std::abs (bound));
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

// Keys of a basis: each of them what the point says, and as many basic items as there are rows.
static bool is_basis (const Problem& problem, const Claims& claims, const Solution& point, double tolerance)
{
    if (claims.row_key.size () != point.xc.size () || claims.column_key.size () != point.xx.size ())
        return false;
    const auto in_place = [&] (const auto& keys, const Bounds& bounds, const auto& values) {
        for (std::size_t i = 0; i < keys.size (); ++i)
            if (!is_in_place (keys[i], bounds.interval (i), values[i], tolerance))
                return false;
        return true;
    };
    const auto basics = [] (const auto& keys) { return std::ranges::count (keys, KLV_SK_BASIC); };
    return basics (claims.row_key) + basics (claims.column_key) == std::ssize (point.xc) &&
           in_place (claims.row_key, problem.constraint, point.xc) &&
           in_place (claims.column_key, problem.variable, point.xx);
}

Solution Check::unknown_solution () const
{
    const std::size_t m = static_cast<std::size_t> (problem_->constraints ());
    const std::size_t n = static_cast<std::size_t> (problem_->variables ());
    Solution solution;
    solution.skc.assign (m, KLV_SK_UNKNOWN);
    solution.skx.assign (n, KLV_SK_UNKNOWN);
    solution.xc.assign (m, 0);
    solution.xx.assign (n, 0);
    if (!integers_) {
        for (std::vector<double>* values : {&solution.y, &solution.slc, &solution.suc})
            values->assign (m, 0);
        for (std::vector<double>* values : {&solution.slx, &solution.sux})
            values->assign (n, 0);
    }
    return solution;
}

// The slot's content as far as the claims can be used: points of the right size without a NaN in them.
Solution Check::point (Claims&& claims) const
{
    const std::size_t m = static_cast<std::size_t> (problem_->constraints ());
    const std::size_t n = static_cast<std::size_t> (problem_->variables ());
    Solution solution = unknown_solution ();
    solution.has_primal = finite (claims.x, n);
    solution.has_dual = !integers_ && finite (claims.y, m) &&
                        (claims.reduced_cost.empty () || finite (claims.reduced_cost, n));
    if (solution.has_primal)
        measure_primal (*problem_, std::move (claims.x), solution);
    if (solution.has_dual)
        measure_dual (*problem_, std::move (claims.y), std::move (claims.reduced_cost), solution);
    if (solution.has_primal && is_basis (*problem_, claims, solution, tolerances_.primal)) {
        solution.skc = std::move (claims.row_key);
        solution.skx = std::move (claims.column_key);
    }
    return solution;
}

Answer Check::check_continuous (Claims&& claims) const
{
    Answer answer{.outcome = claims.outcome, .message = std::move (claims.message)};
    Solution solution = point (std::move (claims));
    if (!solution.has_primal && !solution.has_dual)
        return answer;
    judge (tolerances_, solution);
    answer.proved = solution.solution_status == KLV_SOLSTA_OPTIMAL;
    if (answer.proved && std::ranges::count (solution.skx, KLV_SK_UNKNOWN) == std::ssize (solution.skx))
        derive_keys (*problem_, tolerances_.primal, solution);
    answer.solution = std::move (solution);
    return answer;
}

// What is whole but for rounding becomes exactly so where that costs no feasibility.
void Check::hand_out_whole_numbers (Solution& solution) const
{
    if (solution.violations.integer == 0 || solution.violations.integer > tolerances_.integer)
        return;
    Solution whole = solution;
    for (std::size_t j = 0; j < whole.xx.size (); ++j)
        if (problem_->integer[j] == KLV_VAR_INTEGER)
            whole.xx[j] = std::nearbyint (whole.xx[j]) + 0.0;
    measure_primal (*problem_, std::move (whole.xx), whole);
    measure_integers (*problem_, whole);
    if (whole.violations.primal <= std::max (tolerances_.primal, solution.violations.primal))
        solution = std::move (whole);
}

Answer Check::check_integer (Claims&& claims) const
{
    Answer answer{.outcome = claims.outcome, .message = std::move (claims.message)};
    const bool has_bound = claims.has_best_bound && std::isfinite (claims.best_bound);
    const double bound = claims.best_bound;
    Solution solution = point (std::move (claims));
    if (!solution.has_primal)
        return answer;
    measure_integers (*problem_, solution);
    hand_out_whole_numbers (solution);

    const double size = std::abs (solution.primal_objective);
    bool closed = false;
    if (has_bound) {
        const double distance = std::abs (solution.primal_objective - bound);
        const double rounding = 1e-9 * (1 + size);
        closed = answer.outcome == Outcome::optimal &&
                 distance <= std::max (absolute_gap_, relative_gap_ * size) + rounding;
        answer.integer_gap = IntegerGap{bound, distance, relative_gap (solution.primal_objective, bound)};
    }
    judge_integer (tolerances_, closed, solution);
    derive_keys (*problem_, tolerances_.primal, solution);
    answer.proved = solution.solution_status == KLV_SOLSTA_INTEGER_OPTIMAL;
    answer.solution = std::move (solution);
    return answer;
}

Answer Check::check_infeasible (const Claims& claims) const
{
    Answer answer{.outcome = Outcome::infeasible,
                  .solution = certify_infeasible (*problem_, claims.dual_ray)};
    answer.proved = answer.solution.has_value ();
    if (!integers_)
        return answer;
    // A ray of the relaxation proves it, but the integer slot has no room for it; a search that found nothing is all
    // there is otherwise.
    Solution solution = unknown_solution ();
    solution.problem_status = answer.proved ? KLV_PRO_PRIMAL_INFEASIBLE : KLV_PRO_INFEASIBLE_BY_SEARCH;
    answer.solution = std::move (solution);
    answer.proved = true;
    return answer;
}

Answer Check::check_unbounded (const Claims& claims) const
{
    Answer answer{.outcome = Outcome::unbounded,
                  .solution = certify_unbounded (*problem_, claims.primal_ray)};
    answer.proved = answer.solution.has_value ();
    return answer;
}

Answer Check::operator() (Claims&& claims) const
{
    switch (claims.outcome) {
    case Outcome::infeasible:
        return check_infeasible (claims);
    case Outcome::unbounded:
        return check_unbounded (claims);
    default:
        return integers_ ? check_integer (std::move (claims)) : check_continuous (std::move (claims));
    }
}

}
