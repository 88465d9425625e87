#include "kalvo/engines/runner.h"

#include "kalvo/engines/worker.h"
#include "kalvo/task/text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace klv {

// The callback is asked at least and at most once in these times, and at each change of phase.
constexpr double longest_silence = 0.05;
constexpr double shortest_silence = 0.02;
// How long a run that was asked to stop may take to answer, and one that has passed its time limit to see it.
constexpr double patience = 0.5;

double Runner::seconds () const
{
    return std::chrono::duration<double> (Clock::now () - began_).count ();
}

void Runner::ask (std::uint32_t caller)
{
    asked_ = Clock::now ();
    asked_phase_ = caller;
    if (const std::int32_t answer = task_.ask_callback (caller); answer_ == 0)
        answer_ = answer;
}

void Runner::ask_in_time (std::uint32_t caller)
{
    const double silence = std::chrono::duration<double> (Clock::now () - asked_).count ();
    if (answer_ == 0 && (caller != asked_phase_ || silence >= shortest_silence))
        ask (caller);
}

void Runner::note (const Progress& now)
{
    Information& information = task_.information;
    if (now.caller == KLV_CALLER_MIXED_INTEGER) {
        information.set (IntItem::nodes, now.nodes);
        information.set (IntItem::improving_solutions, now.solutions);
        if (now.has_primal)
            information.set (RealItem::mip_objective, now.primal_objective);
        if (now.has_dual)
            information.set (RealItem::mip_bound, now.dual_objective);
    } else if (now.caller == KLV_CALLER_INTERIOR_POINT)
        information.set (IntItem::interior_iterations, now.iterations);
    else if (now.caller == KLV_CALLER_SIMPLEX_FINISH)
        information.set (IntItem::finish_iterations, now.iterations);
    else
        information.set (IntItem::simplex_iterations, now.iterations);
    if (now.has_primal)
        information.set (RealItem::primal_objective, now.primal_objective);
    if (now.has_dual)
        information.set (RealItem::dual_objective, now.dual_objective);
}

void Runner::show (const EventChannel::News& news)
{
    for (const std::string& line : news.lines)
        log_.engine_line (line);
    if (news.dropped_lines > 0)
        log_.engine_line (text ("(", news.dropped_lines, " lines were lost)"));
    if (news.progress.caller == 0)
        return;
    note (news.progress);
    log_.progress (news.progress, seconds ());
}

// Abandoned workers use up memory and processors: with too many of them a new one waits.
void Runner::wait_for_room ()
{
    while (abandoned_workers () >= most_abandoned_workers && answer_ == 0) {
        std::this_thread::sleep_for (std::chrono::duration<double> (shortest_silence));
        ask_in_time (KLV_CALLER_PRESOLVE);
    }
}

RunResult Runner::run (const std::shared_ptr<Engine>& engine, const Job& job)
{
    RunResult result;
    wait_for_room ();
    if (answer_ != 0) {
        result.claims.outcome = Outcome::stopped;
        return result;
    }
    log_.begin_run (job, engine->name ());
    Worker worker (engine, job);
    const double started = seconds ();
    const double late = job.seconds >= 0 ? started + job.seconds + patience : infinity;
    std::optional<double> stopped_at;
    bool out_of_time = false;
    for (;;) {
        const EventChannel::News news = worker.channel ().wait (stopped_at ? shortest_silence : longest_silence);
        show (news);
        if (news.finished) {
            worker.join ();
            result.claims = worker.channel ().take_claims ();
            break;
        }
        if (stopped_at) {
            if (seconds () - *stopped_at < patience)
                continue;
            result.abandoned = true;
            break;
        }
        if (news.progress.caller != 0)
            ask_in_time (news.progress.caller);
        else
            ask_in_time (asked_phase_);
        out_of_time = seconds () > late;
        if (answer_ != 0 || out_of_time) {
            worker.stop ();
            stopped_at = seconds ();
        }
    }
    if (result.abandoned || result.claims.outcome == Outcome::stopped) {
        result.claims.outcome = out_of_time ? Outcome::time_limit : Outcome::stopped;
        if (result.claims.x.empty () && job.method == Method::mixed_integer)
            result.claims.x = worker.channel ().take_incumbent ();
    }
    return result;
}

}
