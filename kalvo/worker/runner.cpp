#include "kalvo/worker/runner.h"

#include "kalvo/model/text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace klv {

// How long a run that was asked to stop may take to answer, and one whose time is over to see it by itself.
constexpr double patience = 0.5;
constexpr double patience_with_clock = 0.1;

Runner::Runner (Task& task, Log& log) : task_ (task), log_ (log)
{
    time_limit_ = task.parameters.get (RealSetting::time_limit);
    if (time_limit_ < 0)
        time_limit_ = infinity;
}

double Runner::seconds_left () const
{
    return std::max (time_limit_ - seconds (), 0.0);
}

// ---- Phases -----------------------------------------------------------------------------------------------------------

static std::optional<RealItem> time_of (std::uint32_t phase)
{
    switch (phase) {
    case KLV_CALLER_PRESOLVE:
        return RealItem::time_presolve;
    case KLV_CALLER_PRIMAL_SIMPLEX:
    case KLV_CALLER_DUAL_SIMPLEX:
    case KLV_CALLER_CERTIFICATE:
        return RealItem::time_simplex;
    case KLV_CALLER_SIMPLEX_FINISH:
        return RealItem::time_finish;
    case KLV_CALLER_INTERIOR_POINT:
        return RealItem::time_interior_point;
    case KLV_CALLER_MIXED_INTEGER:
        return RealItem::time_mixed_integer;
    case KLV_CALLER_CHECK:
        return RealItem::time_check;
    default:
        return std::nullopt;
    }
}

void Runner::ask (std::uint32_t caller)
{
    task_.information.set (RealItem::time_optimize, seconds ());
    if (const std::int32_t answer = task_.ask_callback (caller); answer_ == 0)
        answer_ = answer;
}

void Runner::ask_once_more ()
{
    if (answer_ == 0)
        ask (phase_.caller);
}

void Runner::change_phase (Phase& phase, std::uint32_t caller, Clock::time_point since)
{
    Information& information = task_.information;
    if (const auto item = time_of (phase.caller))
        information.set (*item, information.get (*item) + seconds_between (phase.since, since));
    phase = {caller, since};
}

void Runner::enter (std::uint32_t phase)
{
    change_phase (phase_, phase, Clock::now ());
    if (answer_ == 0 || phase == KLV_CALLER_END_OPTIMIZE)
        ask (phase);
}

// ---- News of a run ------------------------------------------------------------------------------------------------------

void Runner::note (const Sizes& presolved)
{
    Information& information = task_.information;
    information.set (IntItem::presolved_constraints, presolved.rows);
    information.set (IntItem::presolved_variables, presolved.columns);
    information.set (IntItem::presolved_entries, presolved.entries);
    information.set (IntItem::presolved_integers, presolved.integers);
}

void Runner::note (const Search& search)
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

void Runner::note (const Run& run)
{
    Information& information = task_.information;
    const Progress& now = run.progress;
    if (now.presolved)
        note (*now.presolved);
    if (run.job.method == Method::mixed_integer)
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
    case KLV_CALLER_SIMPLEX_FINISH:
        information.set (IntItem::finish_iterations, now.iterations);
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

// True when the callback was asked.
bool Runner::take_news (Run& run)
{
    const EventChannel::News news = run.worker->channel ().take_news ();
    for (const auto& told : news.told)
        if (const auto* step = std::get_if<Progress> (&told))
            log_.step (run.log, *step, seconds_between (began_, step->at));
        else
            log_.engine_line (run.log, std::get<std::string> (told));
    if (news.dropped_lines > 0)
        log_.engine_line (run.log, text ("(", news.dropped_lines, " lines were lost)"));
    if (!news.finished)
        log_.pulse (run.log, news.progress, seconds ());
    run.progress = news.progress;
    note (run);
    bool asked = false;
    for (const PhaseChange& phase : news.phases) {
        change_phase (run.phase, phase.caller, phase.since);
        asked = answer_ == 0;
        if (asked)
            ask (phase.caller);
    }
    if (news.new_incumbent && !news.finished && answer_ == 0) {
        ask (KLV_CALLER_NEW_INCUMBENT);
        asked = true;
    }
    run.finished = news.finished;
    return asked;
}

void Runner::take_all_news ()
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

// Abandoned workers use up memory and processors: with too many of them a new one waits. False: it must not begin any more.
bool Runner::wait_for_room ()
{
    while (answer_ == 0 && abandoned_workers () >= most_abandoned_workers && seconds_left () > 0) {
        std::this_thread::sleep_for (between_questions);
        ask (phase_.caller);
    }
    out_of_time_ = abandoned_workers () >= most_abandoned_workers && answer_ == 0;
    return answer_ == 0 && !out_of_time_;
}

void Runner::start (const std::shared_ptr<Engine>& engine, Job job)
{
    if (!running () && !wait_for_room ())
        return;
    job.seconds = seconds_left ();
    Run run{.late = seconds () + job.seconds + patience_with_clock,
            .log = log_.begin_run (job, engine->name (), running (), seconds ()),
            .phase = {KLV_CALLER_BEGIN_OPTIMIZE, Clock::now ()}};
    run.job = job;
    run.job.problem.reset ();
    run.job.settings.reset ();
    run.worker = std::make_unique<Worker> (engine, std::move (job), bell_);
    runs_.push_back (std::move (run));
}

std::optional<Runner::Ended> Runner::take_ended ()
{
    const auto ended = std::ranges::find_if (runs_, &Run::finished);
    if (ended == runs_.end ())
        return std::nullopt;
    change_phase (ended->phase, ended->phase.caller, Clock::now ());
    note (*ended);    // not that of a run beside it
    ended->worker->join ();
    Ended result{std::move (ended->job), ended->worker->channel ().take_claims ()};
    runs_.erase (ended);
    return result;
}

// Waits for the answers of runs that must end, and abandons those that give none in time. The first that knows a point is
// the answer.
Runner::Ended Runner::stop ()
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
        best = Ended{std::move (run.job), {}};
        best->claims.outcome = Outcome::stopped;
        note (run);
        (best->job.method == Method::interior_point ? best->claims.interior_iterations
                                                    : best->claims.simplex_iterations) =
            run.progress.iterations;
        if (best->job.method == Method::mixed_integer)
            best->claims.x = run.worker->channel ().take_incumbent ();
    }
    abandon ();
    return std::move (*best);
}

std::optional<Runner::Ended> Runner::wait (double most_seconds)
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
    if (!ended) {    // none could begin
        ended.emplace ();
        ended->claims.outcome = Outcome::stopped;
    }
    if (ended->claims.outcome == Outcome::stopped && out_of_time_)
        ended->claims.outcome = Outcome::time_limit;
    return ended;
}

}
