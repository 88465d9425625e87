#include "kalvo/solve/attempt.h"

#include "kalvo/forms/sizes.h"
#include "kalvo/model/text.h"
#include "kalvo/verify/products.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <thread>
#include <utility>

#include <malloc.h>

namespace klv {

// Seconds between two looks at how interior-point runs get on.
constexpr double between_looks = 0.05;

// Counted once, since the system reads a file for it.
static int processors ()
{
    static const int count = static_cast<int> (std::thread::hardware_concurrency ());
    return count;
}

std::size_t work_of (const Problem& problem)
{
    const SemidefiniteVariables& bar = problem.semidefinite;
    return static_cast<std::size_t> (
        problem.matrix.entries () + problem.variables () + problem.constraints () +
        problem.quadratic_objective.count () + problem.quadratic_constraint.count () +
        problem.affine.f.entries () + problem.affine.count () + problem.affine_constraint.rows () +
        std::ssize (problem.cone.member) + bar.length () + bar.objective.count () + bar.constraint.count () +
        bar.expression.count ());
}

Answer judge (Call& call, const Check& check, const Problem& problem, Point&& claimed)
{
    call.enter (KLV_CALLER_CHECK);
    Answer answer = call.compute (work_of (problem), [&] { return check (std::move (claimed)); });
    call.leave ();
    return answer;
}

void add_one (Task& task, IntItem item)
{
    task.information.set (item, task.information.get (item) + 1);
}

Attempts::Attempts (Task& task, Call& call, Runs& runs, bool integers, Journal* journal,
                    std::vector<Past> past)
    : task_ (task),
      call_ (call),
      runs_ (runs),
      settings_ (std::make_shared<Parameters> (task.parameters)),
      problem_ (task.share_problem ()),
      integers_ (integers),
      check_ (problem_, *settings_, integers,
              journal != nullptr ? Check::Claims::kept : Check::Claims::dropped),
      journal_ (journal),
      past_ (std::move (past))
{}

// ---- Engine and form ---------------------------------------------------------------------------------------------------

Lowered Attempts::make_form (double far) const
{
    Limits limits = engine_->limits ();
    limits.infinite_bound = std::min (limits.infinite_bound, far);
    switch (method_) {
    case Method::quadratic:
        return lower_quadratic (*problem_, limits.infinite_bound, scaled_);
    case Method::conic:
    case Method::semidefinite:
        return lower_conic (problem_, limits.infinite_bound, scaled_, centre_ ? &*centre_ : nullptr);
    default:
        return lower_linear (problem_, limits, integers_);
    }
}

void Attempts::tell_form ()
{
    const FormSizes sizes = sizes_of (*lowered_.form);
    Information& information = task_.information;
    for (const auto& [item, count] : {std::pair{IntItem::form_columns, sizes.columns},
                                      {IntItem::form_rows, sizes.rows},
                                      {IntItem::form_entries, sizes.entries},
                                      {IntItem::second_order_cones, sizes.second_order},
                                      {IntItem::exponential_cones, sizes.exponential},
                                      {IntItem::power_cones, sizes.power},
                                      {IntItem::matrices, sizes.matrices},
                                      {IntItem::largest_matrix, std::int64_t{sizes.largest_matrix}}})
        information.set (item, count);
    if (settings_->get (IntSetting::log_level) < 2)
        return;
    task_.say (text (method_ == Method::quadratic ? "Quadratic form" : "Conic form",
                     lowered_.centred ? " about the point that was found: " : ": ", describe (sizes)));
    if (without_far_bounds_)
        task_.say (
            text ("Bounds so large that they bind rarely are left out at first: ", lowered_.infinite_bounds));
}

void Attempts::lower (double far)
{
    far_ = far;
    lowered_ = call_.compute (work_of (*problem_), [&] { return make_form (far); });
    without_far_bounds_ = far < engine_->limits ().infinite_bound && lowered_.infinite_bounds > 0;
    if (!lowered_.form)
        return;
    task_.information.set (IntItem::lowered_infinite_bounds, lowered_.infinite_bounds);
    task_.information.set (IntItem::lowered_dropped_entries, lowered_.dropped_entries);
    if (lowered_.infinite_bounds > 0 && !without_far_bounds_)
        task_.warn (text ("Finite bounds so large that the optimiser takes them as infinite: ",
                          lowered_.infinite_bounds, "; the answer is checked on them as they are."));
    if (lowered_.dropped_entries > 0)
        task_.warn (text ("Matrix entries so small that the optimiser leaves them out: ",
                          lowered_.dropped_entries, "; the answer is checked with them."));
    if (!is_linear (method_))
        tell_form ();
    // What was freed after loading lies in holes that an engine's thread does not use.
    if (work_of (*problem_) >= large_work)
        malloc_trim (0);
}

bool Attempts::leave_out_far_bounds (double far)
{
    const double infinite = engine_->limits ().infinite_bound;
    const auto is_far = [&] (double bound) { return std::abs (bound) >= far && std::abs (bound) < infinite; };
    const auto any_far = [&] (const Bounds& bounds) {
        return std::ranges::any_of (bounds.lower, is_far) || std::ranges::any_of (bounds.upper, is_far);
    };
    if (!any_far (problem_->variable) && !any_far (problem_->constraint))
        return false;
    Lowered nearer = make_form (far);
    if (!nearer.form)
        return false;
    task_.warn (text ("Bounds beyond ", far, " are left out: ", nearer.infinite_bounds,
                      "; the answer is checked with them."));
    lowered_ = std::move (nearer);
    without_far_bounds_ = true;
    return true;
}

void Attempts::take_back_far_bounds ()
{
    lower (infinity);
}

static bool bends_wrong (const Refused& refused)
{
    return refused.item == Refused::Item::objective_curvature ||
           refused.item == Refused::Item::constraint_curvature;
}

std::optional<Failure> Attempts::prepare (Method method, double far, bool scaled)
{
    std::string why = "there is none";
    KLVrescode_t code = KLV_RES_ENGINE_MISSING;
    for (const std::shared_ptr<Engine>& engine : engines ()) {
        if (!engine->has (method))
            continue;
        why = engine->load ();
        if (!why.empty ())
            continue;
        engine_ = engine;
        method_ = method;
        scaled_ = scaled && settings_->get (IntSetting::scaling) != KLV_SCALING_OFF;
        centre_.reset ();
        centred_ = 0;
        try {
            lower (far);
        } catch (const std::length_error& error) {
            why = error.what ();
            code = KLV_RES_TOO_LARGE;
            continue;
        }
        if (!lowered_.form)
            return Failure{bends_wrong (lowered_.refused) ? KLV_RES_NOT_CONVEX : KLV_RES_TOO_LARGE,
                           {},
                           lowered_.refused};
        why = engine->refuses (*lowered_.form, method, {.threads = threads (method)});
        if (why.empty ())
            return std::nullopt;
        code = KLV_RES_TOO_LARGE;
    }
    return Failure{code, text ("No optimiser can be used: ", why, "."), {}};
}

bool Attempts::centre (const Solution& about)
{
    if (!about.has_primal)
        return false;
    const Primal point{about.xx, about.barx};
    centre_ = {about.xx, activities (*problem_, point, false), affine_rows (*problem_, point, false)};
    ++centred_;
    lower (far_);
    return lowered_.centred;
}

std::size_t Attempts::size () const
{
    return std::visit ([] (const auto& form) { return form.size (); }, *lowered_.form);
}

bool Attempts::has_asymmetric_cones () const
{
    return std::ranges::any_of (std::get<ConicForm> (*lowered_.form).cones, [] (const ElementaryCone& cone) {
        return cone.kind == ConeKind::exponential || cone.kind == ConeKind::power;
    });
}

bool Attempts::has_entries () const
{
    return !std::get<LinearForm> (*lowered_.form).entries.empty ();
}

// ---- Runs ----------------------------------------------------------------------------------------------------------------

int Attempts::threads_to_be_had () const
{
    const int asked = settings_->get (IntSetting::threads);
    return asked > 0 ? asked : std::max (processors (), 1);
}

// Only the integer search uses several threads, and parallel dual simplex.
int Attempts::threads (Method method) const
{
    if (method != Method::mixed_integer && !is_parallel_simplex (*settings_, method))
        return 1;
    const int asked = settings_->get (IntSetting::threads);
    return asked > 0 ? asked : std::max ((processors () + 1) / 2, 1);
}

void Attempts::start (const Attempt& attempt, const std::shared_ptr<const Start>& start,
                      const std::string& why)
{
    const Begun begun{attempt, start != nullptr, without_far_bounds_, scaled_, centred_};
    if (recall (begun))
        return;
    tell_ends ();
    Job job{.form = lowered_.form,
            .settings = settings_,
            .method = attempt.method,
            .reformulate = attempt.reformulate,
            .patient = attempt.patient,
            .budget = {.threads = threads (attempt.method)},
            .start = lowered_.recovery->forth (start)};
    running_.reserve (running_.size () + 1);
    const int used = job.budget.threads + static_cast<int> (running_.size ());
    Runs::OnIncumbent on_incumbent;
    if (journal_ != nullptr)
        on_incumbent = [this, recovery = lowered_.recovery] (std::vector<double>&& x) {
            journal_->incumbent (recovery->back ({.x = std::move (x)}).x);
        };
    if (journal_ != nullptr)
        journal_->begun (begun, engine_->name ());
    const Runs::Id id = runs_.start (engine_, std::move (job), why, std::move (on_incumbent));
    task_.information.set (IntItem::threads_used,
                           std::max (used, task_.information.get (IntItem::threads_used)));
    running_.push_back ({id, begun, Stagnation (size ())});
}

// ---- Attempts of the past --------------------------------------------------------------------------------------------------

// Whether the attempt was made in another process: its claim is then what it leaves.
bool Attempts::recall (const Begun& begun)
{
    const auto made = std::ranges::find (past_, begun, &Past::begun);
    if (made == past_.end ())
        return false;
    recalled_.push_back (*made);
    return true;
}

std::optional<Tried> Attempts::take_recalled ()
{
    if (recalled_.empty ())
        return std::nullopt;
    Past past = std::move (recalled_.back ());
    recalled_.pop_back ();
    return Tried{past.begun.attempt, judge (std::move (past.claim))};
}

void Attempts::note_end (const Begun& begun, const Answer& answer)
{
    if (journal_ == nullptr)
        return;
    untold_.push_back ({begun, answer.claim});
    if (!running_.empty ())
        tell_ends ();
}

// The end of the last attempt is told only when another one follows: else the answer says it all.
void Attempts::tell_ends ()
{
    for (const Past& past : std::exchange (untold_, {}))
        journal_->ended (past);
}

// ---- Answers ---------------------------------------------------------------------------------------------------------------

void Attempts::drop_all ()
{
    for (const Running& run : std::exchange (running_, {}))
        runs_.drop (run.id);
    recalled_.clear ();
}

void Attempts::count (Method method, const Claims& claims)
{
    Information& information = task_.information;
    if (!is_interior (method) || claims.simplex_iterations > 0)
        information.set (IntItem::simplex_iterations, claims.simplex_iterations);
    if (is_interior (method)) {
        information.set (IntItem::interior_iterations, claims.interior_iterations);
        information.set (IntItem::interior_method, claims.interior_method);
    }
    if (method == Method::crossover)
        information.set (IntItem::crossover_iterations, claims.crossover_iterations);
}

Answer Attempts::judge (Point&& claimed)
{
    return klv::judge (call_, check_, *problem_, std::move (claimed));
}

Tried Attempts::take (Runs::Ended&& ended)
{
    auto run = std::ranges::find (running_, ended.id, &Running::id);
    if (run == running_.end ())
        run = running_.begin ();    // the optimisation was stopped before a run could begin
    const Begun begun = run->begun;
    Tried tried{.attempt = begun.attempt};
    running_.erase (run);
    Claims& claims = ended.claims;
    count (tried.attempt.method, claims);
    if (!claims.warning.empty ())
        task_.warn (claims.warning);
    if (claims.outcome == Outcome::stopped && !stopped ())
        claims.outcome = Outcome::unknown;    // the engine stopped without being asked to
    if (stopped () || claims.outcome == Outcome::time_limit)
        drop_all ();    // the other runs end for the same reason
    tried.answer = judge (lowered_.recovery->back (std::move (claims)));
    if (tried.answer.outcome == Outcome::optimal && !tried.answer.conclusive)
        add_one (task_, IntItem::engine_optimal_claims_rejected);
    note_end (begun, tried.answer);
    return tried;
}

std::optional<Tried> Attempts::give_up_one ()
{
    const auto idle = std::ranges::find_if (running_, [&] (Running& run) {
        return is_interior (run.begun.attempt.method) &&
               run.stagnation.note (runs_.newest (run.id), runs_.seconds (run.id));
    });
    if (idle == running_.end ())
        return std::nullopt;
    Tried tried{.attempt = idle->begun.attempt};
    tried.answer.message = tried.answer.claim.message = "the interior-point method made no progress";
    note_end (idle->begun, tried.answer);
    runs_.drop (idle->id);
    running_.erase (idle);
    return tried;
}

std::optional<Tried> Attempts::next (double seconds)
{
    if (std::optional<Tried> recalled = take_recalled ())
        return recalled;
    for (double left = seconds; under_way () > 0; left -= between_looks) {
        if (std::optional<Runs::Ended> ended = runs_.wait (std::min (left, between_looks)))
            return take (std::move (*ended));
        if (std::optional<Tried> idle = give_up_one ())
            return idle;
        if (left <= between_looks)
            return std::nullopt;
    }
    return std::nullopt;
}

Tried Attempts::run (const Attempt& attempt, const std::shared_ptr<const Start>& start,
                     const std::string& why)
{
    this->start (attempt, start, why);
    return *next ();
}

bool Attempts::settles (const Answer& answer) const
{
    return answer.conclusive || ended_early (answer.outcome) || answer.outcome == Outcome::out_of_memory ||
           stopped ();
}

}
