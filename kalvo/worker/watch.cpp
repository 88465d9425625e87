#include "kalvo/worker/watch.h"

#include "kalvo/model/text.h"

#include <algorithm>
#include <utility>

namespace klv {

// Seconds in which a run is to notice by itself that its time is over.
constexpr double patience_with_clock = 0.1;

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
        information.set (RealItem::time_first_solution,
                         seconds_between (call_.began (), *search.first_solution));
    if (search.best_solution)
        information.set (RealItem::time_best_solution,
                         seconds_between (call_.began (), *search.best_solution));
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
            log_.step (run.id, stated (*step, run.sign), seconds_between (call_.began (), step->at));
        else
            log_.engine_line (run.id, std::get<std::string> (told));
    if (news.dropped_lines > 0)
        log_.engine_line (run.id, text ("(", news.dropped_lines, " lines were lost)"));
    if (!news.finished)
        log_.pulse (run.id, run.progress, call_.seconds ());
}

// Passes a run's news on. True when that asked the callback.
bool Watch::take_news (Run& run)
{
    const EventChannel::News news = run.thread->channel ().take_news ();
    run.progress = stated (news.progress, run.sign);
    tell (run, news);
    note (run);
    bool asked = false;
    const auto ask = [&] (std::uint32_t caller) {
        call_.ask (caller);
        asked = true;
    };
    for (const PhaseChange& phase : news.phases) {
        call_.change_phase (run.phase, phase.caller, phase.since);
        ask (phase.caller);
    }
    if (news.new_incumbent && !news.finished) {
        if (run.on_incumbent)
            run.on_incumbent (run.thread->channel ().take_incumbent ());
        ask (KLV_CALLER_NEW_INCUMBENT);
    }
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
    if (!asked && !finished)
        call_.ask (runs_.front ().phase.caller);
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
    const auto place = std::ranges::find (runs_, run, &Run::id);
    if (place == runs_.end ())
        return;    // a stop has ended it
    place->thread->stop ();
    dropped_.push_back (std::move (*place));
    runs_.erase (place);
}

Runs::Id Watch::start (const std::shared_ptr<Engine>& engine, Job job, const std::string& why,
                       OnIncumbent on_incumbent)
{
    const bool joins = !runs_.empty ();
    const Log::Begin begin{job.method, joins, job.budget.threads, engine->name (), why, call_.seconds ()};
    if (!joins && call_.answer () != 0)
        return log_.runs ();    // nothing runs: wait () ends the optimisation
    const double left = call_.seconds_left ();
    const Clock::time_point now = Clock::now ();
    if (left < infinity)
        job.budget.deadline = now + std::chrono::duration_cast<Clock::duration> (
                                        std::chrono::duration<double> (std::min (left, 1e9)));
    Run run{.id = log_.runs (),
            .method = job.method,
            .sign = std::visit ([] (const auto& form) { return form.sign; }, *job.form),
            .began = now,
            .late = call_.seconds () + left + patience_with_clock,
            .phase = {KLV_CALLER_BEGIN_OPTIMIZE, now},
            .on_incumbent = std::move (on_incumbent)};
    runs_.reserve (runs_.size () + 1);
    dropped_.reserve (dropped_.size () + runs_.size () + 1);
    run.thread = std::make_unique<RunThread> (engine, std::move (job), bell_);
    runs_.push_back (std::move (run));
    return log_.begin_run (begin);
}

std::optional<Runs::Ended> Watch::take_ended ()
{
    const auto ended = std::ranges::find_if (runs_, &Run::finished);
    if (ended == runs_.end ())
        return std::nullopt;
    call_.change_phase (ended->phase, ended->phase.caller, Clock::now ());
    note (*ended);    // information items may show another run's figures
    Ended result{ended->id, ended->thread->channel ().take_claims ()};
    runs_.erase (ended);
    const Outcome outcome = result.claims.outcome;
    has_seen_failure_ = has_seen_failure_ || outcome == Outcome::failed || outcome == Outcome::out_of_memory;
    return result;
}

// Stops all runs and waits for them. The first answer with a point is returned.
Runs::Ended Watch::stop ()
{
    for (const Run& run : runs_)
        run.thread->stop ();
    std::optional<Ended> best;
    while (!runs_.empty ()) {
        bell_->wait (Call::between_questions.count ());
        take_all_news ();
        while (std::optional<Ended> ended = take_ended ())
            if (!best || (best->claims.x.empty () && !ended->claims.x.empty ()))
                best = std::move (ended);
    }
    return std::move (*best);
}

std::optional<Runs::Ended> Watch::wait (double most_seconds)
{
    const Clock::time_point began = Clock::now ();
    std::optional<Ended> ended;
    while (!runs_.empty () && !ended) {
        bell_->wait (std::min (Call::between_questions.count (), most_seconds));
        take_all_news ();
        ended = take_ended ();
        const bool late =
            std::ranges::any_of (runs_, [&] (const Run& run) { return call_.seconds () > run.late; });
        if (!ended && (call_.answer () != 0 || late)) {
            out_of_time_ = call_.answer () == 0;
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
