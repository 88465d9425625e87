#include "kalvo/engines/runner.h"

#include "kalvo/task/text.h"

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
    case KLV_CALLER_SIMPLEX_FINISH:
    case KLV_CALLER_CERTIFICATE:
        return RealItem::time_simplex;
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
        ask (phase_);
}

void Runner::enter (std::uint32_t phase, Clock::time_point since)
{
    Information& information = task_.information;
    if (const auto item = time_of (phase_))
        information.set (*item, information.get (*item) + seconds_between (phase_since_, since));
    phase_ = phase;
    phase_since_ = since;
    if (answer_ == 0 || phase == KLV_CALLER_END_OPTIMIZE)
        ask (phase);
}

// ---- News of a run ------------------------------------------------------------------------------------------------------

void Runner::note (const Progress& now)
{
    Information& information = task_.information;
    switch (now.caller) {
    case KLV_CALLER_MIXED_INTEGER:
        information.set (IntItem::nodes, now.nodes);
        information.set (IntItem::improving_solutions, now.solutions);
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

void Runner::take (const EventChannel::News& news)
{
    for (const std::string& line : news.lines)
        log_.engine_line (line);
    if (news.dropped_lines > 0)
        log_.engine_line (text ("(", news.dropped_lines, " lines were lost)"));
    for (const Progress& step : news.steps)
        log_.step (step, seconds ());
    if (!news.finished)
        log_.pulse (news.progress, seconds ());
    note (news.progress);
    for (const PhaseChange& phase : news.phases)
        enter (phase.caller, phase.since);
    if (answer_ != 0 || news.finished)
        return;
    if (news.new_incumbent)
        ask (KLV_CALLER_NEW_INCUMBENT);
    else if (news.phases.empty ())
        ask (phase_);
}

// ---- Runs -----------------------------------------------------------------------------------------------------------------

// Abandoned workers use up memory and processors: with too many of them a new one waits. False: it must not begin any more.
bool Runner::wait_for_room ()
{
    while (answer_ == 0 && abandoned_workers () >= most_abandoned_workers && seconds_left () > 0) {
        std::this_thread::sleep_for (between_questions);
        ask (phase_);
    }
    out_of_time_ = abandoned_workers () >= most_abandoned_workers && answer_ == 0;
    return answer_ == 0 && !out_of_time_;
}

// Waits for the answer of a run that must end, and abandons it when there is none in time.
Claims Runner::stop (Worker& worker, bool integers)
{
    worker.stop ();
    const Clock::time_point stopped = Clock::now ();
    for (double left = patience; left > 0; left = patience - seconds_between (stopped, Clock::now ())) {
        const EventChannel::News news = worker.channel ().wait (std::min (left, between_questions.count ()));
        take (news);
        if (news.finished) {
            worker.join ();
            return worker.channel ().take_claims ();
        }
    }
    Claims claims;
    claims.outcome = Outcome::stopped;
    if (integers)
        claims.x = worker.channel ().take_incumbent ();
    return claims;
}

Claims Runner::run (const std::shared_ptr<Engine>& engine, Job job)
{
    Claims claims;
    claims.outcome = Outcome::stopped;
    if (wait_for_room ()) {
        job.seconds = seconds_left ();
        const bool integers = job.method == Method::mixed_integer;
        const double late = seconds () + job.seconds + patience_with_clock;
        log_.begin_run (job, engine->name ());
        Worker worker (engine, std::move (job));
        for (bool running = true; running;) {
            const EventChannel::News news = worker.channel ().wait (between_questions.count ());
            take (news);
            running = !news.finished;
            if (news.finished) {
                worker.join ();
                claims = worker.channel ().take_claims ();
            } else if (answer_ != 0 || seconds () > late) {
                out_of_time_ = answer_ == 0;
                claims = stop (worker, integers);
                running = false;
            }
        }
    }
    if (claims.outcome == Outcome::stopped && out_of_time_)
        claims.outcome = Outcome::time_limit;
    return claims;
}

}
