#include "kalvo/solve/optimize.h"

#include "kalvo/model/describe.h"
#include "kalvo/model/text.h"
#include "kalvo/solve/separable.h"
#include "kalvo/tables/constants.h"
#include "kalvo/verify/certificate.h"
#include "kalvo/verify/products.h"

#include <algorithm>
#include <utility>

namespace klv {

class Optimization {
public:
    // The problem's matrix must be packed.
    Optimization (Task& task, Call& call, Solver& solver)
        : task_ (task),
          call_ (call),
          solver_ (solver),
          problem_ (task.share_problem ()),
          integers_ (problem_->integers > 0 && task.parameters.get (IntSetting::relax_integers) == KLV_OFF),
          check_ (problem_, task.parameters, integers_)
    {
        earlier_.swap (task.solutions);
        if (setting (IntSetting::warm_start) == KLV_OFF)
            earlier_ = {};
    }

    KLVrescode_t run ();

private:
    int setting (IntSetting which) const { return task_.parameters.get (which); }
    const Problem& problem () const { return *problem_; }
    bool stopped () const { return call_.answer () != 0; }
    int first_optimizer () const
    {
        return about (first_method (problem (), task_.parameters, integers_)).optimizer;
    }

    KLVrescode_t solve ();
    KLVrescode_t report_crossed (const CrossedBounds& crossed);
    KLVrescode_t report_separable ();
    KLVrescode_t store (Found&& found);
    KLVrescode_t store_basic (Tried&& basic);
    KLVrescode_t store_interior (Found&& found);

    std::vector<KLVsoltype> slots () const;
    KLVrescode_t store (Answer&& answer, const std::vector<KLVsoltype>& slots, int source);
    void fill (Answer&& answer, const std::vector<KLVsoltype>& slots, int source);
    void describe_slot (KLVsoltype slot, int source);
    KLVrescode_t code_of (const Answer& answer);

    Task& task_;
    Call& call_;
    Solver& solver_;
    std::shared_ptr<const Problem> problem_;
    bool integers_;
    Check check_;
    Solutions earlier_;    // from before this optimisation
};

// ---- Slots and codes ---------------------------------------------------------------------------------------------------------

KLVrescode_t Optimization::code_of (const Answer& answer)
{
    if (answer.conclusive)
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
        return stop_code (call_.answer ());
    case Outcome::failed:
        return task_.fail (KLV_RES_ENGINE_FAILED, text ("The optimiser failed: ", answer.message, "."));
    case Outcome::out_of_memory:
        return task_.fail (KLV_RES_OUT_OF_MEMORY, "There is not enough memory for the optimiser.");
    default:
        break;
    }
    return KLV_RES_NUMERICAL_TROUBLE;
}

// The interior and the basic solution have information items of their own.
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

// Puts the answer into the slots; `source` is the optimiser that gave it.
void Optimization::fill (Answer&& answer, const std::vector<KLVsoltype>& slots, int source)
{
    const bool has_ended_without = ended_early (answer.outcome) || answer.outcome >= Outcome::out_of_memory;
    if (!answer.solution && has_ended_without)
        return;    // the run ended early and left no point
    const bool has_basis = answer.has_basis;
    Solution solution = answer.solution ? std::move (*answer.solution) : check_.unknown_solution ();
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
    information.set (RealItem::cone_violation, found.primal_cone);
    information.set (RealItem::matrix_violation, found.primal_matrix);
    information.set (RealItem::dual_cone_violation, found.dual_cone);
    information.set (RealItem::dual_matrix_violation, found.dual_matrix);
    information.set (IntItem::optimizer_used, source);
    for (std::size_t k = 1; k < slots.size (); ++k)
        task_.solutions[slots[k]] = solution;
    // The keys of an interior solution follow from its complementarity; those of a basic one are a basis, or unknown.
    if (slots.front () == KLV_SOL_ITR && !has_basis && solution.solution_status == KLV_SOLSTA_OPTIMAL)
        derive_keys (problem (), task_.parameters.get (RealSetting::primal_tolerance), solution);
    task_.solutions[slots.front ()] = std::move (solution);
    for (const KLVsoltype slot : slots)
        describe_slot (slot, source);
}

KLVrescode_t Optimization::store (Answer&& answer, const std::vector<KLVsoltype>& slots, int source)
{
    const KLVrescode_t code = code_of (answer);
    fill (std::move (answer), slots, source);
    return code;
}

// ---- Answers of plans ----------------------------------------------------------------------------------------------------------

// The slots that an optimum fills. The automatic optimiser fills both, whichever method wins, unless no basis is asked for.
std::vector<KLVsoltype> Optimization::slots () const
{
    if (integers_)
        return {KLV_SOL_INT};
    if (!problem ().is_linear ())
        return {KLV_SOL_ITR};
    const bool basis = setting (IntSetting::interior_point_basis) != 0;
    switch (setting (IntSetting::optimizer)) {
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

static int source_of (const Tried& tried)
{
    return about (tried.attempt.method).optimizer;
}

static bool is_certificate (const std::optional<Tried>& tried)
{
    return tried && tried->answer.conclusive && tried->answer.outcome != Outcome::optimal;
}

static bool is_conclusive (const std::optional<Tried>& tried)
{
    return tried && tried->answer.conclusive;
}

// An interior-point run that ended before it had a basis has left an interior solution, not a basic one.
KLVrescode_t Optimization::store_basic (Tried&& basic)
{
    const std::optional<Solution>& solution = basic.answer.solution;
    const bool lacks_basis = slots ().size () > 1 && !basic.answer.conclusive &&
                             is_interior (basic.attempt.method) && solution &&
                             std::ranges::count (solution->skx, KLV_SK_UNKNOWN) == std::ssize (solution->skx);
    const int source = source_of (basic);
    return store (std::move (basic.answer), lacks_basis ? std::vector{KLV_SOL_ITR} : slots (), source);
}

// A certificate fills both slots, and so does a conclusive basic solution beside an interior one that is not. A conclusive
// interior solution stands without a basic one.
KLVrescode_t Optimization::store_interior (Found&& found)
{
    auto& [interior, basic, integer] = found;
    if (is_certificate (interior) || !basic)
        return store (std::move (interior->answer),
                      is_certificate (interior) ? slots () : std::vector{KLV_SOL_ITR}, source_of (*interior));
    if (is_certificate (basic) || (is_conclusive (basic) && !is_conclusive (interior))) {
        if (!is_certificate (basic))
            task_.warn ("The interior-point method proved nothing; the interior solution is the basic one.");
        return store_basic (std::move (*basic));
    }
    const int source = source_of (*interior);
    const bool is_point = is_interior (basic->attempt.method) && !basic->answer.has_basis;
    if (!is_conclusive (interior) && !is_point) {
        fill (std::move (interior->answer), {KLV_SOL_ITR}, source);
        return store (std::move (basic->answer), {KLV_SOL_BAS}, source_of (*basic));
    }
    const KLVrescode_t code = store (std::move (interior->answer), {KLV_SOL_ITR}, source);
    if (code == KLV_RES_OK && !is_conclusive (basic))
        task_.warn ("There is no basic solution that passes the check; the interior one is the answer.");
    if (!is_point || is_conclusive (basic))
        fill (std::move (basic->answer), {KLV_SOL_BAS}, source_of (*basic));
    return code;
}

KLVrescode_t Optimization::store (Found&& found)
{
    if (found.integer)
        return store (std::move (found.integer->answer), slots (), source_of (*found.integer));
    return found.interior ? store_interior (std::move (found)) : store_basic (std::move (*found.basic));
}

// ---- Without a run -------------------------------------------------------------------------------------------------------------

KLVrescode_t Optimization::report_crossed (const CrossedBounds& crossed)
{
    const Bounds& bounds = crossed.variable ? problem ().variable : problem ().constraint;
    const auto item = static_cast<std::size_t> (crossed.item);
    const std::string name = crossed.variable ? describe_variable (problem (), crossed.item)
                                              : describe_constraint (problem (), crossed.item);
    task_.warn (text ("The lower bound ", bounds.lower[item], " of ", name, " is above its upper bound ",
                      bounds.upper[item], ": the problem is infeasible."));
    Answer answer{.outcome = Outcome::infeasible,
                  .conclusive = true,
                  .solution = certify_crossed (problem (), crossed)};
    if (integers_) {
        answer.solution = check_.unknown_solution ();
        answer.solution->problem_status = KLV_PRO_PRIMAL_INFEASIBLE;
    }
    return store (std::move (answer), slots (), first_optimizer ());
}

KLVrescode_t Optimization::report_separable ()
{
    solver_.no_run ("no constraint that binds has an entry: each variable goes to its better bound");
    Point claimed =
        solve_separable (problem (), integers_, task_.parameters.get (RealSetting::primal_tolerance));
    if (integers_ && claimed.outcome == Outcome::optimal)
        claimed.bound = objective (problem (), {claimed.x});
    return store (judge (call_, check_, problem (), std::move (claimed)), slots (), first_optimizer ());
}

// ---- The optimisation ----------------------------------------------------------------------------------------------------------

KLVrescode_t Optimization::solve ()
{
    const CrossedBounds crossed =
        find_crossed (problem (), task_.parameters.get (RealSetting::fixing_tolerance));
    task_.information.set (IntItem::crossed_bounds, crossed.count);
    if (crossed.item >= 0)
        return report_crossed (crossed);
    if (problem ().is_linear () && problem ().is_separable ())
        return report_separable ();
    Solved solved = solver_.solve (earlier_, integers_);
    if (const std::optional<Failure>& failure = solved.failure)
        return task_.fail (failure->code, failure->refused.item != Refused::Item::none
                                              ? text ("No optimiser can take this problem: ",
                                                      describe (problem (), failure->refused), ".")
                                              : failure->message);
    return solved.separable ? report_separable () : store (std::move (solved.found));
}

KLVrescode_t Optimization::run ()
{
    Information& information = task_.information;
    information.set (IntItem::variables, problem ().variables ());
    information.set (IntItem::constraints, problem ().constraints ());
    information.set (IntItem::integers, problem ().integers);
    information.set (IntItem::matrix_entries, problem ().matrix.entries ());

    call_.enter (KLV_CALLER_BEGIN_OPTIMIZE);
    if (stopped ())
        return stop_code (call_.answer ());
    KLVrescode_t code = solve ();
    // A callback that asks to stop at the last progress point gets the code of a stop; the solutions stay.
    call_.enter (KLV_CALLER_END_OPTIMIZE);
    const bool failed = code != KLV_RES_OK && code < KLV_FIRST_TERMINATION;
    if (stopped () && !failed)
        code = stop_code (call_.answer ());
    if (code >= KLV_FIRST_TERMINATION && setting (IntSetting::log_level) >= 1)
        task_.say (text ("Ended early: ", find_constant (Group::response, code)->description));
    return code;
}

KLVrescode_t optimize (Task& task, Call& call, Solver& solver)
{
    return Optimization (task, call, solver).run ();
}

}
