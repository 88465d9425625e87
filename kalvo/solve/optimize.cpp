#include "kalvo/solve/optimize.h"

#include "kalvo/model/describe.h"
#include "kalvo/model/text.h"
#include "kalvo/report/log.h"
#include "kalvo/solve/runs.h"
#include "kalvo/solve/separable.h"
#include "kalvo/solve/start.h"
#include "kalvo/verify/certificate.h"
#include "kalvo/verify/check.h"
#include "kalvo/verify/quality.h"
#include "kalvo/worker/runner.h"
#include "kalvo/worker/worker.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace klv {

class Optimization {
public:
    // The problem's matrix is packed.
    explicit Optimization (Task& task)
        : task_ (task),
          log_ (task),
          runner_ (task, log_),
          settings_ (std::make_shared<Parameters> (task.parameters)),
          problem_ (task.share_problem ()),
          integers_ (problem_->integers > 0 && settings_->get (IntSetting::relax_integers) == 0),
          runs_ (task, runner_, settings_, problem_, integers_)
    {
        earlier_.swap (task.solutions);
        if (settings_->get (IntSetting::warm_start) == KLV_OFF)
            earlier_ = {};
        start_ = find_start (earlier_, integers_);
    }

    KLVrescode_t run ();

private:
    KLVrescode_t solve ();
    KLVrescode_t solve_with_engine ();

    Method first_method () const;
    Method method_from_start (Method method);
    std::optional<Answer> earlier_answer (KLVsoltype which);
    KLVrescode_t solve_by_interior_point ();
    KLVrescode_t finish (Answer&& interior);

    std::vector<KLVsoltype> slots () const;
    KLVrescode_t store (Answer&& answer, const std::vector<KLVsoltype>& slots, int source);
    void describe_slot (KLVsoltype slot, int source);
    KLVrescode_t code_of (const Answer& answer);
    bool answered () const { return runner_.answer () != 0; }

    Task& task_;
    Log log_;
    Runner runner_;
    std::shared_ptr<const Parameters> settings_;
    std::shared_ptr<const Problem> problem_;
    bool integers_;
    Runs runs_;
    Solutions earlier_;    // that the task held
    std::shared_ptr<const StartPoint> start_;
};

// What a solution that the task held is worth for the problem as it is now.
std::optional<Answer> Optimization::earlier_answer (KLVsoltype which)
{
    std::optional<Claims> claims = claim_again (earlier_[which]);
    return claims ? std::optional (runs_.judge (std::move (*claims))) : std::nullopt;
}

// ---- Slots and codes ---------------------------------------------------------------------------------------------------------

KLVrescode_t Optimization::code_of (const Answer& answer)
{
    if (answer.proved)
        return KLV_RES_OK;
    switch (answer.outcome) {
    case Outcome::time_limit:
        return KLV_RES_TIME_LIMIT;
    case Outcome::iteration_limit:
        return KLV_RES_ITERATION_LIMIT;
    case Outcome::node_limit:
        return KLV_RES_NODE_LIMIT;
    case Outcome::solution_limit:
        return KLV_RES_SOLUTION_LIMIT;
    case Outcome::objective_limit:
        return KLV_RES_OBJECTIVE_LIMIT;
    case Outcome::stopped:
        return stop_code (runner_.answer ());
    case Outcome::failed:
        return task_.fail (KLV_RES_ENGINE_FAILED, text ("The optimiser failed: ", answer.message, "."));
    case Outcome::out_of_memory:
        return task_.fail (KLV_RES_OUT_OF_MEMORY, "There is not enough memory for the optimiser.");
    default:
        break;
    }
    return KLV_RES_NUMERICAL_TROUBLE;
}

// Where there are two solutions, each has figures of its own.
void Optimization::describe_slot (KLVsoltype slot, int source)
{
    struct Items {
        KLVsoltype slot;
        IntItem source;
        RealItem primal_objective, dual_objective, primal_violation, dual_violation,
            complementarity_violation;
    };
    static constexpr Items each[] = {
        {KLV_SOL_ITR, IntItem::interior_source, RealItem::interior_primal_objective,
         RealItem::interior_dual_objective, RealItem::interior_primal_violation,
         RealItem::interior_dual_violation, RealItem::interior_complementarity_violation},
        {KLV_SOL_BAS, IntItem::basic_source, RealItem::basic_primal_objective, RealItem::basic_dual_objective,
         RealItem::basic_primal_violation, RealItem::basic_dual_violation,
         RealItem::basic_complementarity_violation},
    };
    Information& information = task_.information;
    const Solution& solution = *task_.solutions[slot];
    for (const Items& items : each) {
        if (items.slot != slot)
            continue;
        information.set (items.source, source + 1);
        information.set (items.primal_objective, solution.primal_objective);
        information.set (items.dual_objective, solution.dual_objective);
        information.set (items.primal_violation, solution.violations.primal);
        information.set (items.dual_violation, solution.violations.dual);
        information.set (items.complementarity_violation, solution.violations.complementarity);
    }
}

// Fills the slots with the answer; `source` is the optimiser that it came from.
KLVrescode_t Optimization::store (Answer&& answer, const std::vector<KLVsoltype>& slots, int source)
{
    const KLVrescode_t code = code_of (answer);
    if (!answer.solution && (ended_early (answer.outcome) || answer.outcome >= Outcome::out_of_memory))
        return code;    // no point was copied out
    Solution solution = answer.solution ? std::move (*answer.solution) : runs_.check ().unknown_solution ();
    Information& information = task_.information;
    const Violations& found = solution.violations;
    information.set (RealItem::primal_objective, solution.primal_objective);
    if (integers_) {
        information.set (RealItem::mip_objective, solution.primal_objective);
        information.set (RealItem::integer_violation, found.integer);
    }
    if (const std::optional<IntegerGap>& gap = answer.integer_gap) {
        information.set (RealItem::mip_bound, gap->bound);
        information.set (RealItem::mip_absolute_gap, gap->absolute);
        information.set (RealItem::mip_relative_gap, gap->relative);
    }
    information.set (RealItem::dual_objective,
                     integers_ ? information.get (RealItem::mip_bound) : solution.dual_objective);
    information.set (RealItem::primal_violation, found.primal);
    information.set (RealItem::primal_violation_absolute, found.primal_absolute);
    information.set (RealItem::dual_violation, found.dual);
    information.set (RealItem::dual_violation_absolute, found.dual_absolute);
    information.set (RealItem::relative_gap, found.gap);
    information.set (RealItem::complementarity_violation, found.complementarity);
    information.set (IntItem::optimizer_used, source);
    // Only where two slots hold one answer is it copied.
    for (std::size_t k = 1; k < slots.size (); ++k)
        task_.solutions[slots[k]] = solution;
    task_.solutions[slots.front ()] = std::move (solution);
    for (const KLVsoltype slot : slots)
        describe_slot (slot, source);
    return code;
}

// ---- The whole ------------------------------------------------------------------------------------------------------------------

Method Optimization::first_method () const
{
    if (integers_)
        return Method::mixed_integer;
    switch (settings_->get (IntSetting::optimizer)) {
    case KLV_OPTIMIZER_PRIMAL_SIMPLEX:
        return Method::primal_simplex;
    case KLV_OPTIMIZER_INTERIOR_POINT:
    case KLV_OPTIMIZER_CONIC:
        return Method::interior_point;
    default:
        return Method::dual_simplex;
    }
}

// From a basis that is feasible, but not optimal any more, the primal method has less to do.
Method Optimization::method_from_start (Method method)
{
    if (method != Method::dual_simplex ||
        settings_->get (IntSetting::optimizer) == KLV_OPTIMIZER_DUAL_SIMPLEX || start_->column_key.empty ())
        return method;
    const std::optional<Answer> earlier = earlier_answer (KLV_SOL_BAS);
    const bool feasible =
        earlier && earlier->solution && earlier->solution->solution_status == KLV_SOLSTA_PRIMAL_FEASIBLE;
    return feasible ? Method::primal_simplex : method;
}

// The slots that an optimum fills. Asked to choose, the library leaves an interior solution too, where an interior-point
// run would have left a basic one.
std::vector<KLVsoltype> Optimization::slots () const
{
    if (integers_)
        return {KLV_SOL_INT};
    const bool basis = settings_->get (IntSetting::interior_point_basis) != 0;
    switch (settings_->get (IntSetting::optimizer)) {
    case KLV_OPTIMIZER_PRIMAL_SIMPLEX:
    case KLV_OPTIMIZER_DUAL_SIMPLEX:
        return {KLV_SOL_BAS};
    case KLV_OPTIMIZER_INTERIOR_POINT:
    case KLV_OPTIMIZER_CONIC:
        return basis ? std::vector{KLV_SOL_ITR, KLV_SOL_BAS} : std::vector{KLV_SOL_ITR};
    default:
        return basis ? std::vector{KLV_SOL_ITR, KLV_SOL_BAS} : std::vector{KLV_SOL_BAS};
    }
}

static int optimizer_of (Method method)
{
    switch (method) {
    case Method::primal_simplex:
        return KLV_OPTIMIZER_PRIMAL_SIMPLEX;
    case Method::dual_simplex:
        return KLV_OPTIMIZER_DUAL_SIMPLEX;
    case Method::interior_point:
        return KLV_OPTIMIZER_INTERIOR_POINT;
    case Method::mixed_integer:
        return KLV_OPTIMIZER_MIXED_INTEGER;
    }
    return KLV_OPTIMIZER_AUTOMATIC;
}

static bool is_certificate (const Answer& answer)
{
    return answer.proved && answer.solution && answer.solution->solution_status != KLV_SOLSTA_OPTIMAL &&
           answer.solution->solution_status != KLV_SOLSTA_INTEGER_OPTIMAL;
}

KLVrescode_t Optimization::solve_with_engine ()
{
    const Method method = first_method ();
    if (const KLVrescode_t code = runs_.prepare (method))
        return code;

    if (method == Method::interior_point)
        return solve_by_interior_point ();
    Answer answer =
        start_ ? runs_.attempt_from (start_, method_from_start (method)) : runs_.attempt (method, nullptr);
    if (answer.method == Method::interior_point && !is_certificate (answer))
        return finish (std::move (answer));
    return store (std::move (answer), slots (), optimizer_of (answer.method));
}

KLVrescode_t Optimization::solve_by_interior_point ()
{
    // The method can't start from a point: one that is an answer already is all that it can use.
    std::optional<Answer> earlier = earlier_answer (KLV_SOL_ITR);
    if (!earlier || !earlier->proved)
        earlier = runs_.attempt (Method::interior_point, nullptr);
    else {
        task_.information.set (IntItem::start, 2);
        log_.no_run ("the given interior solution is an answer");
    }
    if (is_certificate (*earlier))
        return store (std::move (*earlier), slots (), KLV_OPTIMIZER_INTERIOR_POINT);
    return finish (std::move (*earlier));
}

// The interior solution, and the basic one that a simplex finish makes of it. What is certified holds for both slots.
KLVrescode_t Optimization::finish (Answer&& interior)
{
    const bool goes_on = std::ranges::count (slots (), KLV_SOL_BAS) > 0 && !answered () &&
                         !ended_early (interior.outcome) && interior.outcome != Outcome::out_of_memory;
    if (!goes_on)
        return store (std::move (interior), {KLV_SOL_ITR}, KLV_OPTIMIZER_INTERIOR_POINT);

    std::shared_ptr<StartPoint> start;
    if (const std::optional<Solution>& point = interior.solution) {
        start = std::make_shared<StartPoint> ();
        start->x = point->xx;
        start->activity = point->xc;
        start->y = point->y;
        start->reduced_cost = reduced_costs (problem_->matrix, problem_->cost, start->y);
        start->finishes = true;
    }
    Answer basic = runs_.attempt (Method::dual_simplex, std::move (start));
    // An interior point that is no proof stands back behind a basic solution that is one.
    if (basic.proved && !interior.proved && !is_certificate (basic))
        task_.warn ("The interior-point method proved nothing; the interior solution is the basic one.");
    if (is_certificate (basic) || (basic.proved && !interior.proved))
        return store (std::move (basic), slots (), KLV_OPTIMIZER_DUAL_SIMPLEX);
    if (interior.solution)
        store (std::move (interior), {KLV_SOL_ITR}, KLV_OPTIMIZER_INTERIOR_POINT);
    return store (std::move (basic), {KLV_SOL_BAS}, KLV_OPTIMIZER_INTERIOR_POINT);
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
        Answer answer{
            .outcome = Outcome::infeasible, .proved = true, .solution = certify_crossed (*problem_, crossed)};
        if (integers_) {
            answer.solution = runs_.check ().unknown_solution ();
            answer.solution->problem_status = KLV_PRO_PRIMAL_INFEASIBLE;
        }
        return store (std::move (answer), slots (), optimizer_of (first_method ()));
    }
    if (problem_->matrix.entries () == 0) {
        log_.no_run ("no entries: each variable goes to its better bound");
        Claims claims = solve_separable (*problem_, integers_);
        if (integers_ && claims.outcome == Outcome::optimal) {
            claims.best_bound = objective (*problem_, claims.x);
            claims.has_best_bound = true;
        }
        return store (runs_.judge (std::move (claims)), slots (), optimizer_of (first_method ()));
    }
    return solve_with_engine ();
}

KLVrescode_t Optimization::run ()
{
    Information& information = task_.information;
    information.set (IntItem::variables, problem_->variables ());
    information.set (IntItem::constraints, problem_->constraints ());
    information.set (IntItem::integers, problem_->integers);
    information.set (IntItem::matrix_entries, problem_->matrix.entries ());

    log_.header ();
    runner_.enter (KLV_CALLER_BEGIN_OPTIMIZE);
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
    // An answer at the last progress point ends nothing any more, but it is what the caller asked for.
    runner_.enter (KLV_CALLER_END_OPTIMIZE);
    const bool failed = code != KLV_RES_OK && code < KLV_FIRST_TERMINATION;
    return answered () && !failed ? stop_code (runner_.answer ()) : code;
}

// Every item but those of reading and writing belongs to one run.
static void forget_last_run (Information& information)
{
    const double read = information.get (RealItem::time_read);
    const double written = information.get (RealItem::time_write);
    information = {};
    information.set (RealItem::time_read, read);
    information.set (RealItem::time_write, written);
}

KLVrescode_t optimize (Task& task)
{
    forget_last_run (task.information);
    if (!task.problem ().matrix.packed ())
        task.edit_problem ().matrix.pack ();
    return Optimization (task).run ();
}

}
