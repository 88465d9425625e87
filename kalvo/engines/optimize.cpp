// One optimisation: from the problem as stated to checked answers in the task's slots.

#include "kalvo/engines/engine.h"
#include "kalvo/engines/lower.h"
#include "kalvo/engines/runner.h"
#include "kalvo/engines/separable.h"
#include "kalvo/engines/worker.h"
#include "kalvo/report/certificate.h"
#include "kalvo/report/log.h"
#include "kalvo/report/quality.h"
#include "kalvo/task/entry.h"
#include "kalvo/task/operations.h"
#include "kalvo/task/text.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <thread>
#include <utility>

namespace klv {

// What one run led to, once it was checked.
struct Answer {
    Outcome outcome = Outcome::unknown;
    bool proved = false;                                // optimal, infeasible or unbounded beyond doubt
    std::optional<Solution> solution;
    std::string message;
};

class Optimization {
public:
    explicit Optimization (Task& task)
        : task_ (task), log_ (task), runner_ (task, log_), settings_ (std::make_shared<Parameters> (task.parameters))
    {
        tolerances_.primal = settings_->get (RealSetting::primal_tolerance);
        tolerances_.dual = settings_->get (RealSetting::dual_tolerance);
        tolerances_.gap = settings_->get (RealSetting::gap_tolerance);
        tolerances_.integer = settings_->get (RealSetting::integer_tolerance);
    }

    KLVrescode_t run ();

private:
    void forget_last_run ();
    KLVrescode_t solve ();
    KLVrescode_t solve_with_engine ();
    KLVrescode_t lower_problem ();
    KLVrescode_t find_engine (Method method);

    Method first_method () const;
    Answer attempt (Method method, std::shared_ptr<const StartPoint> start);
    Answer run_once (Method method, bool reformulate, std::shared_ptr<const StartPoint> start);
    void count (Method method, bool finish, const Claims& claims, double seconds);

    Answer check (Claims&& claims);
    Answer check_continuous (Claims&& claims);
    Answer check_integer (Claims&& claims);
    Solution point (Claims&& claims, bool& has_primal, bool& has_dual) const;
    Answer check_infeasible (const Claims& claims);
    Answer check_unbounded (const Claims& claims);
    Solution unknown_solution () const;

    std::vector<KLVsoltype> slots () const;
    KLVrescode_t store (Answer&& answer, const std::vector<KLVsoltype>& slots, int source);
    KLVrescode_t code_of (const Answer& answer);
    double seconds_left () const;
    int threads (Method method) const;
    bool answered () const { return runner_.answer () != 0; }

    Task& task_;
    Log log_;
    Runner runner_;
    std::shared_ptr<const Parameters> settings_;
    Tolerances tolerances_;
    std::shared_ptr<const Problem> problem_;
    std::shared_ptr<const LinearProblem> lowered_;
    std::shared_ptr<Engine> engine_;
    bool integers_ = false;
};

// ---- Whether claims hold ---------------------------------------------------------------------------------------------------

static bool finite (const std::vector<double>& values, std::size_t count)
{
    return values.size () == count && std::ranges::all_of (values, [] (double value) { return std::isfinite (value); });
}

// Keys of a basis: each of them known, and as many basic items as there are rows.
static bool is_basis (const Claims& claims, std::size_t rows, std::size_t columns)
{
    if (claims.row_key.size () != rows || claims.column_key.size () != columns)
        return false;
    const auto known = [] (std::int32_t key) { return key >= KLV_SK_BASIC && key <= KLV_SK_FIXED; };
    const auto basics = [] (const auto& keys) { return std::ranges::count (keys, KLV_SK_BASIC); };
    return std::ranges::all_of (claims.row_key, known) && std::ranges::all_of (claims.column_key, known) &&
           basics (claims.row_key) + basics (claims.column_key) == static_cast<std::ptrdiff_t> (rows);
}

Solution Optimization::unknown_solution () const
{
    const std::size_t m = static_cast<std::size_t> (problem_->constraints ());
    const std::size_t n = static_cast<std::size_t> (problem_->variables ());
    Solution solution;
    solution.skc.assign (m, KLV_SK_UNKNOWN);
    solution.skx.assign (n, KLV_SK_UNKNOWN);
    solution.xc.assign (m, 0);
    solution.xx.assign (n, 0);
    if (!integers_) {
        for (std::vector<double>* values : { &solution.y, &solution.slc, &solution.suc })
            values->assign (m, 0);
        for (std::vector<double>* values : { &solution.slx, &solution.sux })
            values->assign (n, 0);
    }
    return solution;
}

// The slot's content as far as the claims can be used: points of the right size without a NaN in them.
Solution Optimization::point (Claims&& claims, bool& has_primal, bool& has_dual) const
{
    const std::size_t m = static_cast<std::size_t> (problem_->constraints ());
    const std::size_t n = static_cast<std::size_t> (problem_->variables ());
    has_primal = finite (claims.x, n);
    has_dual = finite (claims.y, m) && finite (claims.reduced_cost, n);
    Solution solution = unknown_solution ();
    if (has_primal)
        measure_primal (*problem_, std::move (claims.x), solution);
    if (has_dual && !integers_)
        measure_dual (*problem_, std::move (claims.y), std::move (claims.reduced_cost), solution);
    if (is_basis (claims, m, n)) {
        solution.skc = std::move (claims.row_key);
        solution.skx = std::move (claims.column_key);
    }
    return solution;
}

Answer Optimization::check_continuous (Claims&& claims)
{
    Answer answer { claims.outcome, false, std::nullopt, std::move (claims.message) };
    bool has_primal = false, has_dual = false;
    const bool had_basis = !claims.column_key.empty () || !claims.row_key.empty ();
    Solution solution = point (std::move (claims), has_primal, has_dual);
    if (!has_primal && !has_dual)
        return answer;
    judge (tolerances_, has_primal, has_dual, solution);
    answer.proved = answer.outcome == Outcome::optimal && solution.solution_status == KLV_SOLSTA_OPTIMAL;
    if (answer.proved && !had_basis)
        derive_keys (*problem_, tolerances_.primal, solution);
    answer.solution = std::move (solution);
    return answer;
}

Answer Optimization::check_integer (Claims&& claims)
{
    Answer answer { claims.outcome, false, std::nullopt, std::move (claims.message) };
    bool has_primal = false, has_dual = false;
    const bool has_bound = claims.has_best_bound && std::isfinite (claims.best_bound);
    const double bound = claims.best_bound;
    Solution solution = point (std::move (claims), has_primal, has_dual);
    if (!has_primal)
        return answer;
    measure_integers (*problem_, solution);

    // Whole numbers are handed out as such where that costs no feasibility.
    std::vector<double> rounded = solution.xx;
    for (std::size_t j = 0; j < rounded.size (); ++j)
        if (problem_->integer[j] == KLV_VAR_INTEGER)
            rounded[j] = std::nearbyint (rounded[j]) + 0.0;
    Solution exact = solution;
    measure_primal (*problem_, std::move (rounded), exact);
    measure_integers (*problem_, exact);
    if (exact.violations.primal <= std::max (tolerances_.primal, solution.violations.primal))
        solution = std::move (exact);

    const double distance = has_bound ? std::abs (solution.primal_objective - bound) : infinity;
    const double slack = 1e-9 * (1 + std::abs (solution.primal_objective));
    const double allowed = std::max (settings_->get (RealSetting::integer_absolute_gap),
                                     settings_->get (RealSetting::integer_relative_gap) *
                                         std::abs (solution.primal_objective));
    const bool closed = answer.outcome == Outcome::optimal && distance <= allowed + slack;
    judge_integer (tolerances_, closed, solution);
    derive_keys (*problem_, tolerances_.primal, solution);
    answer.proved = solution.solution_status == KLV_SOLSTA_INTEGER_OPTIMAL;

    Information& information = task_.information;
    information.set (RealItem::mip_objective, solution.primal_objective);
    information.set (RealItem::integer_violation, solution.violations.integer);
    if (has_bound) {
        information.set (RealItem::mip_bound, bound);
        information.set (RealItem::mip_absolute_gap, distance);
        information.set (RealItem::mip_relative_gap, distance / std::max (1e-10, std::abs (solution.primal_objective)));
    }
    answer.solution = std::move (solution);
    return answer;
}

Answer Optimization::check_infeasible (const Claims& claims)
{
    Answer answer { Outcome::infeasible, false, certify_infeasible (*problem_, claims.dual_ray), {} };
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

Answer Optimization::check_unbounded (const Claims& claims)
{
    Answer answer { Outcome::unbounded, false, certify_unbounded (*problem_, claims.primal_ray), {} };
    answer.proved = answer.solution.has_value ();
    return answer;
}

Answer Optimization::check (Claims&& claims)
{
    const double began = runner_.seconds ();
    Answer answer;
    switch (claims.outcome) {
    case Outcome::infeasible: answer = check_infeasible (claims); break;
    case Outcome::unbounded: answer = check_unbounded (claims); break;
    default: answer = integers_ ? check_integer (std::move (claims)) : check_continuous (std::move (claims));
    }
    Information& information = task_.information;
    information.set (RealItem::time_check, information.get (RealItem::time_check) + runner_.seconds () - began);
    return answer;
}

// ---- Runs ------------------------------------------------------------------------------------------------------------------

double Optimization::seconds_left () const
{
    const double limit = settings_->get (RealSetting::time_limit);
    return limit < 0 || limit == infinity ? -1 : std::max (limit - runner_.seconds (), 0.0);
}

// Only the integer search has use for more than one thread. Abandoned workers count as used.
int Optimization::threads (Method method) const
{
    const int asked = settings_->get (IntSetting::threads);
    if (method != Method::mixed_integer)
        return 1;
    if (asked > 0)
        return asked;
    const int processors = static_cast<int> (std::thread::hardware_concurrency ());
    return std::max ((processors + 1) / 2 - abandoned_workers (), 1);
}

void Optimization::count (Method method, bool finish, const Claims& claims, double seconds)
{
    Information& information = task_.information;
    const auto add = [&] (auto item, auto value) { information.set (item, information.get (item) + value); };
    switch (method) {
    case Method::interior_point:
        add (RealItem::time_interior_point, seconds);
        information.set (IntItem::interior_iterations, claims.interior_iterations);
        break;
    case Method::mixed_integer:
        add (RealItem::time_mixed_integer, seconds);
        information.set (IntItem::nodes, claims.nodes);
        information.set (IntItem::improving_solutions, claims.solutions);
        break;
    default: add (RealItem::time_simplex, seconds);
    }
    information.set (finish ? IntItem::finish_iterations : IntItem::simplex_iterations, claims.simplex_iterations);
}

Answer Optimization::run_once (Method method, bool reformulate, std::shared_ptr<const StartPoint> start)
{
    Job job;
    job.problem = lowered_;
    job.settings = settings_;
    job.method = method;
    job.reformulate = reformulate;
    job.seconds = seconds_left ();
    job.threads = threads (method);
    job.start = std::move (start);
    task_.information.set (IntItem::threads_used, job.threads);
    const double began = runner_.seconds ();
    RunResult result = runner_.run (engine_, job);
    count (method, job.start != nullptr, result.claims, runner_.seconds () - began);
    return check (std::move (result.claims));
}

static bool ended_early (Outcome outcome)
{
    return outcome >= Outcome::time_limit && outcome <= Outcome::stopped;
}

// A run, and one more without presolve and scaling when its answer does not hold.
Answer Optimization::attempt (Method method, std::shared_ptr<const StartPoint> start)
{
    Answer answer = run_once (method, true, start);
    if (answer.outcome == Outcome::stopped && !answered ())
        answer.outcome = Outcome::unknown;      // nobody asked it to
    if (answer.proved || ended_early (answer.outcome) || answered ())
        return answer;
    Information& information = task_.information;
    if (answer.outcome == Outcome::optimal)
        information.set (IntItem::engine_optimal_claims_rejected,
                         information.get (IntItem::engine_optimal_claims_rejected) + 1);
    task_.warn (answer.outcome == Outcome::failed
                    ? text ("The optimiser failed (", answer.message, "); trying again without presolve and scaling.")
                    : text ("An answer did not pass the check; trying again without presolve and scaling."));
    information.set (IntItem::presolve_rerun, information.get (IntItem::presolve_rerun) + 1);
    Answer second = run_once (method, false, std::move (start));
    if (second.outcome == Outcome::stopped && !answered ())
        second.outcome = Outcome::unknown;
    if (!second.proved && !ended_early (second.outcome)) {
        if (second.outcome == Outcome::optimal)
            information.set (IntItem::engine_optimal_claims_rejected,
                             information.get (IntItem::engine_optimal_claims_rejected) + 1);
        task_.warn ("The answer does not pass the check; it is reported as what it is.");
    }
    return second;
}

// ---- Slots and codes ---------------------------------------------------------------------------------------------------------

KLVrescode_t Optimization::code_of (const Answer& answer)
{
    switch (answer.outcome) {
    case Outcome::optimal:
    case Outcome::infeasible:
    case Outcome::unbounded: return answer.proved || answer.outcome == Outcome::optimal ? KLV_RES_OK : KLV_RES_NUMERICAL_TROUBLE;
    case Outcome::time_limit: return KLV_RES_TIME_LIMIT;
    case Outcome::iteration_limit: return KLV_RES_ITERATION_LIMIT;
    case Outcome::node_limit: return KLV_RES_NODE_LIMIT;
    case Outcome::solution_limit: return KLV_RES_SOLUTION_LIMIT;
    case Outcome::objective_limit: return KLV_RES_OBJECTIVE_LIMIT;
    case Outcome::stopped: return stop_code (runner_.answer ());
    case Outcome::failed:
        return task_.fail (KLV_RES_ENGINE_FAILED, text ("The optimiser failed: ", answer.message, "."));
    case Outcome::unknown:
    case Outcome::infeasible_or_unbounded: break;
    }
    return KLV_RES_NUMERICAL_TROUBLE;
}

// Fills the slots with the answer; `source` is the optimiser that it came from.
KLVrescode_t Optimization::store (Answer&& answer, const std::vector<KLVsoltype>& slots, int source)
{
    const KLVrescode_t code = code_of (answer);
    if (!answer.solution && (ended_early (answer.outcome) || answer.outcome == Outcome::failed))
        return code;            // no point was copied out
    const Solution solution = answer.solution ? std::move (*answer.solution) : unknown_solution ();
    Information& information = task_.information;
    const Violations& found = solution.violations;
    information.set (RealItem::primal_objective, solution.primal_objective);
    information.set (RealItem::dual_objective, solution.dual_objective);
    information.set (RealItem::primal_violation, found.primal);
    information.set (RealItem::primal_violation_absolute, found.primal_absolute);
    information.set (RealItem::dual_violation, found.dual);
    information.set (RealItem::dual_violation_absolute, found.dual_absolute);
    information.set (RealItem::relative_gap, found.gap);
    information.set (RealItem::complementarity_violation, found.complementarity);
    information.set (IntItem::optimizer_used, source);
    for (const KLVsoltype slot : slots) {
        task_.solutions[slot] = solution;
        if (slot == KLV_SOL_ITR)
            information.set (IntItem::interior_source, source + 1);
        if (slot == KLV_SOL_BAS)
            information.set (IntItem::basic_source, source + 1);
    }
    return code;
}

// ---- The whole ------------------------------------------------------------------------------------------------------------------

Method Optimization::first_method () const
{
    if (integers_)
        return Method::mixed_integer;
    switch (settings_->get (IntSetting::optimizer)) {
    case KLV_OPTIMIZER_PRIMAL_SIMPLEX: return Method::primal_simplex;
    case KLV_OPTIMIZER_INTERIOR_POINT:
    case KLV_OPTIMIZER_CONIC: return Method::interior_point;
    default: return Method::dual_simplex;
    }
}

// The slots that an optimum fills. Asked to choose, the library leaves an interior solution too, where an interior-point
// run would have left a basic one.
std::vector<KLVsoltype> Optimization::slots () const
{
    if (integers_)
        return { KLV_SOL_INT };
    const bool basis = settings_->get (IntSetting::interior_point_basis) != 0;
    switch (settings_->get (IntSetting::optimizer)) {
    case KLV_OPTIMIZER_PRIMAL_SIMPLEX:
    case KLV_OPTIMIZER_DUAL_SIMPLEX: return { KLV_SOL_BAS };
    case KLV_OPTIMIZER_INTERIOR_POINT:
    case KLV_OPTIMIZER_CONIC: return basis ? std::vector { KLV_SOL_ITR, KLV_SOL_BAS } : std::vector { KLV_SOL_ITR };
    default: return basis ? std::vector { KLV_SOL_ITR, KLV_SOL_BAS } : std::vector { KLV_SOL_BAS };
    }
}

static int optimizer_of (Method method)
{
    switch (method) {
    case Method::primal_simplex: return KLV_OPTIMIZER_PRIMAL_SIMPLEX;
    case Method::dual_simplex: return KLV_OPTIMIZER_DUAL_SIMPLEX;
    case Method::interior_point: return KLV_OPTIMIZER_INTERIOR_POINT;
    case Method::mixed_integer: return KLV_OPTIMIZER_MIXED_INTEGER;
    }
    return KLV_OPTIMIZER_AUTOMATIC;
}

KLVrescode_t Optimization::find_engine (Method method)
{
    std::string why = "there is none";
    for (const std::shared_ptr<Engine>& engine : engines ())
        if (engine->can (method)) {
            why = engine->load ();
            if (why.empty ()) {
                engine_ = engine;
                return KLV_RES_OK;
            }
        }
    return task_.fail (KLV_RES_ENGINE_MISSING, text ("No optimiser can be used: ", why, "."));
}

KLVrescode_t Optimization::lower_problem ()
{
    Lowering lowering = lower (problem_, integers_);
    if (!lowering.refused.empty ())
        return task_.fail (KLV_RES_ENGINE_FAILED, text ("No optimiser can take this problem: ", lowering.refused, "."));
    task_.information.set (IntItem::lowered_infinite_bounds, lowering.infinite_bounds);
    if (lowering.infinite_bounds > 0)
        task_.warn (text (lowering.infinite_bounds, " finite bounds are so large that the optimiser takes them as infinite; "
                                                    "the answer is checked on them as they are."));
    if (lowering.dropped_entries > 0)
        task_.warn (text (lowering.dropped_entries, " entries of the constraint matrix are so small that the optimiser "
                                                    "leaves them out; the answer is checked with them."));
    lowered_ = std::move (lowering.problem);
    return KLV_RES_OK;
}

KLVrescode_t Optimization::solve_with_engine ()
{
    const Method method = first_method ();
    if (const KLVrescode_t code = find_engine (method))
        return code;
    if (const KLVrescode_t code = lower_problem ())
        return code;

    Answer answer = attempt (method, nullptr);
    const bool finish = method == Method::interior_point && slots ().size () > 1;
    if (!finish || answer.outcome == Outcome::infeasible || answer.outcome == Outcome::unbounded)
        return store (std::move (answer), slots (), optimizer_of (method));
    if (answer.outcome != Outcome::optimal || !answer.solution || answered ())
        return store (std::move (answer), { KLV_SOL_ITR }, KLV_OPTIMIZER_INTERIOR_POINT);

    auto start = std::make_shared<StartPoint> ();
    start->x = answer.solution->xx;
    start->activity = answer.solution->xc;
    start->y = answer.solution->y;
    start->reduced_cost = reduced_costs (*problem_, start->y);
    if (const KLVrescode_t code = store (std::move (answer), { KLV_SOL_ITR }, KLV_OPTIMIZER_INTERIOR_POINT))
        return code;
    return store (attempt (Method::dual_simplex, std::move (start)), { KLV_SOL_BAS }, KLV_OPTIMIZER_INTERIOR_POINT);
}

KLVrescode_t Optimization::solve ()
{
    const CrossedBounds crossed = find_crossed (*problem_, settings_->get (RealSetting::fixing_tolerance));
    task_.information.set (IntItem::crossed_bounds, crossed.count);
    if (crossed.item >= 0) {
        const Bounds& bounds = crossed.variable ? problem_->variable : problem_->constraint;
        const std::size_t item = static_cast<std::size_t> (crossed.item);
        const std::string name = crossed.variable ? describe_variable (*problem_, crossed.item)
                                                  : describe_constraint (*problem_, crossed.item);
        task_.warn (text ("The lower bound ", bounds.lower[item], " of ", name, " is above its upper bound ",
                          bounds.upper[item], ": the problem is infeasible."));
        Answer answer { Outcome::infeasible, true, certify_crossed (*problem_, crossed), {} };
        if (integers_) {
            answer.solution = unknown_solution ();
            answer.solution->problem_status = KLV_PRO_PRIMAL_INFEASIBLE;
        }
        return store (std::move (answer), slots (), optimizer_of (first_method ()));
    }
    if (problem_->matrix.entries () == 0) {
        Claims claims = solve_separable (*problem_, integers_);
        if (integers_ && claims.outcome == Outcome::optimal) {
            claims.best_bound = objective (*problem_, claims.x);
            claims.has_best_bound = true;
        }
        return store (check (std::move (claims)), slots (), optimizer_of (first_method ()));
    }
    return solve_with_engine ();
}

// Every item but those of reading and writing belongs to one run.
void Optimization::forget_last_run ()
{
    const double read = task_.information.get (RealItem::time_read);
    const double written = task_.information.get (RealItem::time_write);
    task_.information = {};
    task_.information.set (RealItem::time_read, read);
    task_.information.set (RealItem::time_write, written);
}

KLVrescode_t Optimization::run ()
{
    forget_last_run ();
    task_.edit_problem ().matrix.pack ();
    problem_ = task_.share_problem ();
    integers_ = problem_->integers > 0 && settings_->get (IntSetting::relax_integers) == 0;
    Information& information = task_.information;
    information.set (IntItem::variables, problem_->variables ());
    information.set (IntItem::constraints, problem_->constraints ());
    information.set (IntItem::integers, problem_->integers);
    information.set (IntItem::matrix_entries, problem_->matrix.entries ());

    log_.header ();
    runner_.ask (KLV_CALLER_BEGIN_OPTIMIZE);
    if (answered ())
        return stop_code (runner_.answer ());
    KLVrescode_t code = KLV_RES_OK;
    try {
        code = solve ();
    } catch (const std::system_error& error) {
        code = task_.fail (KLV_RES_THREAD_FAILED, text ("No thread can be started: ", error.what (), "."));
    }
    information.set (RealItem::time_optimize, runner_.seconds ());
    information.set (IntItem::abandoned_workers, abandoned_workers ());
    // The answer of the last progress point ends nothing any more, but it is what the caller asked for.
    const std::int32_t before = runner_.answer ();
    runner_.ask (KLV_CALLER_END_OPTIMIZE);
    return code == KLV_RES_OK && before == 0 && answered () ? stop_code (runner_.answer ()) : code;
}

KLVrescode_t optimize (Task& task)
{
    return Optimization (task).run ();
}

}
