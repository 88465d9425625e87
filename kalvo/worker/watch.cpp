#include "kalvo/worker/watch.h"

#include "kalvo/model/text.h"
#include "kalvo/tables/phases.h"

#include <algorithm>
#include <future>
#include <thread>
#include <utility>

namespace klv {

// Seconds that a run may take to answer a request to stop, and to notice by itself that its time is over.
constexpr double patience = 0.5;
constexpr double patience_with_clock = 0.1;

Watch::Watch (Task& task) : task_ (task), log_ (task)
{
    time_limit_ = task.parameters.get (RealSetting::time_limit);
    if (time_limit_ < 0)
        time_limit_ = infinity;
    log_.header ();
}

double Watch::seconds_left () const
{
    return std::max (time_limit_ - seconds (), 0.0);
}

void Watch::compute_beside (const std::function<void ()>& function)
{
    std::future<void> result;
    {
        const BlockedSignals blocked;
        result = std::async (std::launch::async, std::cref (function));
    }
    while (result.wait_for (between_questions) != std::future_status::ready)
        if (answer_ == 0)
            ask (phase_.caller);
    result.get ();
}

// ---- Phases -----------------------------------------------------------------------------------------------------------

void Watch::ask (std::uint32_t caller)
{
    task_.information.set (RealItem::time_optimize, seconds ());
    answer_ = task_.ask_callback (caller);
}

void Watch::change_phase (Phase& phase, std::uint32_t caller, Clock::time_point since)
{
    Information& information = task_.information;
    const auto* const row = std::ranges::find (phase_rows, phase.caller, &PhaseRow::caller);
    if (row != std::end (phase_rows))
        information.set (row->time, information.get (row->time) + seconds_between (phase.since, since));
    phase = {caller, since};
}

void Watch::enter (std::uint32_t phase)
{
    change_phase (phase_, phase, Clock::now ());
    if (answer_ == 0)
        ask (phase);
}

// ---- News of a run ------------------------------------------------------------------------------------------------------

void Watch::note (const Sizes& presolved)
{
    Information& information = task_.information;
    information.set (IntItem::presolved_constraints, presolved.rows);
    information.set (IntItem::presolved_variables, presolved.columns);
    information.set (IntItem::presolved_entries, presolved.entries);
    information.set (IntItem::presolved_integers, presolved.integers);
}

void Watch::note (const Search& search)
{
    Information& information = task_.information;
    for (const auto& [item, count] : {std::pair{IntItem::nodes, search.nodes},
                                      {IntItem::open_nodes, search.open_nodes},
                                      {IntItem::improving_solutions, search.solutions},
                                      {IntItem::restarts, search.restarts},
                                      {IntItem::cuts, search.cuts},
                                      {IntItem::cuts_in_use, search.cuts_in_use},
                                      {IntItem::conflicts, search.conflicts},
                                      {IntItem::strong_branching_iterations, search.strong_branching},
                                      {IntItem::separation_iterations, search.separation},
                                      {IntItem::heuristic_iterations, search.heuristics}})
        information.set (item, count);
    information.set (RealItem::mip_integral, search.integral);
    if (search.root_bound)
        information.set (RealItem::mip_root_bound, *search.root_bound);
    if (search.first_solution)
        information.set (RealItem::time_first_solution, seconds_between (began_, *search.first_solution));
    if (search.best_solution)
        information.set (RealItem::time_best_solution, seconds_between (began_, *search.best_solution));
}

void Watch::note (const Run& run)
{
    Information& information = task_.information;
    const Progress& now = run.progress;
    if (now.presolved)
        note (*now.presolved);
    if (run.method == Method::mixed_integer)
        note (now.search);
    switch (now.caller) {
    case KLV_CALLER_MIXED_INTEGER:
        information.set (IntItem::simplex_iterations, now.iterations);
        if (now.has_primal)
            information.set (RealItem::mip_objective, now.primal_objective);
        if (now.has_dual)
            information.set (RealItem::mip_bound, now.dual_objective);
        break;
    case KLV_CALLER_INTERIOR_POINT:
        information.set (IntItem::interior_iterations, now.iterations);
        break;
    case KLV_CALLER_CROSSOVER:
        information.set (IntItem::crossover_iterations, now.iterations);
        break;
    case KLV_CALLER_PRIMAL_SIMPLEX:
    case KLV_CALLER_DUAL_SIMPLEX:
        information.set (IntItem::simplex_iterations, now.iterations);
        break;
    default:
        return;
    }
    information.set (RealItem::primal_violation, now.primal_violation);
    information.set (RealItem::dual_violation, now.dual_violation);
    if (now.has_primal)
        information.set (RealItem::primal_objective, now.primal_objective);
    if (now.has_dual)
        information.set (RealItem::dual_objective, now.dual_objective);
}

// Progress with the signs of the stated problem's objective.
static Progress stated (Progress now, double sign)
{
    now.primal_objective *= sign;
    now.dual_objective *= sign;
    if (now.search.root_bound)
        *now.search.root_bound *= sign;
    return now;
}

void Watch::tell (const Run& run, const EventChannel::News& news)
{
    for (const auto& told : news.told)
        if (const auto* step = std::get_if<Progress> (&told))
            log_.step (run.id, stated (*step, run.sign), seconds_between (began_, step->at));
        else
            log_.engine_line (run.id, std::get<std::string> (told));
    if (news.dropped_lines > 0)
        log_.engine_line (run.id, text ("(", news.dropped_lines, " lines were lost)"));
    if (!news.finished)
        log_.pulse (run.id, run.progress, seconds ());
}

// Passes a run's news on. True when that asked the callback.
bool Watch::take_news (Run& run)
{
    const EventChannel::News news = run.worker->channel ().take_news ();
    run.progress = stated (news.progress, run.sign);
    tell (run, news);
    note (run);
    bool asked = false;
    const auto ask_once = [&] (std::uint32_t caller) {
        if (answer_ == 0) {
            ask (caller);
            asked = true;
        }
    };
    for (const PhaseChange& phase : news.phases) {
        change_phase (run.phase, phase.caller, phase.since);
        ask_once (phase.caller);
    }
    if (news.new_incumbent && !news.finished)
        ask_once (KLV_CALLER_NEW_INCUMBENT);
    run.finished = news.finished;
    return asked;
}

void Watch::take_all_news ()
{
    bool asked = false, finished = false;
    for (Run& run : runs_) {
        asked = take_news (run) || asked;
        finished = finished || run.finished;
    }
    if (!asked && !finished && answer_ == 0)
        ask (runs_.front ().phase.caller);
}

// ---- Runs -----------------------------------------------------------------------------------------------------------------

const Watch::Run& Watch::find (Id run) const
{
    return *std::ranges::find (runs_, run, &Run::id);
}

const Progress& Watch::newest (Id run) const
{
    return find (run).progress;
}

double Watch::seconds (Id run) const
{
    return seconds_between (find (run).began, Clock::now ());
}

void Watch::drop (Id run)
{
    std::erase_if (runs_, [run] (const Run& candidate) { return candidate.id == run; });
}

// Abandoned workers use up memory and processors: a new run waits while there are too many. False when the run must not begin,
// since the optimisation was stopped or is out of time.
bool Watch::wait_for_room ()
{
    while (answer_ == 0 && abandoned_workers () >= most_abandoned_workers && seconds_left () > 0) {
        std::this_thread::sleep_for (between_questions);
        ask (phase_.caller);
    }
    out_of_time_ = abandoned_workers () >= most_abandoned_workers && answer_ == 0;
    return answer_ == 0 && !out_of_time_;
}

Runs::Id Watch::start (const std::shared_ptr<Engine>& engine, Job job, const std::string& why)
{
    const bool joins = running ();
    const Log::Begin begin{job.method, joins, job.budget.threads, engine->name (), why, seconds ()};
    if (!joins && !wait_for_room ())
        return log_.runs ();    // nothing runs: wait () ends the optimisation
    const double left = seconds_left ();
    const Clock::time_point now = Clock::now ();
    if (left < infinity)
        job.budget.deadline = now + std::chrono::duration_cast<Clock::duration> (
                                        std::chrono::duration<double> (std::min (left, 1e9)));
    Run run{.id = log_.runs (),
            .method = job.method,
            .sign = std::visit ([] (const auto& form) { return form.sign; }, *job.form),
            .began = now,
            .late = seconds () + left + patience_with_clock,
            .phase = {KLV_CALLER_BEGIN_OPTIMIZE, now}};
    runs_.reserve (runs_.size () + 1);
    run.worker = std::make_unique<Worker> (engine, std::move (job), bell_);
    runs_.push_back (std::move (run));
    return log_.begin_run (begin);
}

std::optional<Runs::Ended> Watch::take_ended ()
{
    const auto ended = std::ranges::find_if (runs_, &Run::finished);
    if (ended == runs_.end ())
        return std::nullopt;
    change_phase (ended->phase, ended->phase.caller, Clock::now ());
    note (*ended);    // information items may show another run's figures
    ended->worker->join ();
    Ended result{ended->id, ended->worker->channel ().take_claims ()};
    runs_.erase (ended);
    return result;
}

// Asks all runs to stop, waits for their answers, and abandons runs that give none in time. The first answer with a point is
// returned.
Runs::Ended Watch::stop ()
{
    std::optional<Ended> best;
    for (const Run& run : runs_)
        run.worker->stop ();
    const Clock::time_point stopped = Clock::now ();
    for (double left = patience; left > 0 && running ();
         left = patience - seconds_between (stopped, Clock::now ())) {
        bell_->wait (std::min (left, between_questions.count ()));
        take_all_news ();
        while (std::optional<Ended> ended = take_ended ())
            if (!best || (best->claims.x.empty () && !ended->claims.x.empty ()))
                best = std::move (ended);
    }
    if (!best) {
        Run& run = runs_.front ();
        best.emplace (run.id);
        best->claims.outcome = Outcome::stopped;
        note (run);
        (is_interior (run.method) ? best->claims.interior_iterations : best->claims.simplex_iterations) =
            run.progress.iterations;
        if (run.method == Method::mixed_integer)
            best->claims.x = run.worker->channel ().take_incumbent ();
    }
    runs_.clear ();
    return std::move (*best);
}

std::optional<Runs::Ended> Watch::wait (double most_seconds)
{
    const Clock::time_point began = Clock::now ();
    std::optional<Ended> ended;
    while (running () && !ended) {
        bell_->wait (std::min (between_questions.count (), most_seconds));
        take_all_news ();
        ended = take_ended ();
        const bool late = std::ranges::any_of (runs_, [&] (const Run& run) { return seconds () > run.late; });
        if (!ended && (answer_ != 0 || late)) {
            out_of_time_ = answer_ == 0;
            ended = stop ();
        }
        if (!ended && seconds_between (began, Clock::now ()) >= most_seconds)
            return std::nullopt;
    }
    if (!ended) {    // no run could begin
        ended.emplace ();
        ended->claims.outcome = Outcome::stopped;
    }
    if (ended->claims.outcome == Outcome::stopped && out_of_time_)
        ended->claims.outcome = Outcome::time_limit;
    return ended;
}

}
