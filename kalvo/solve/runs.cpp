#include "kalvo/solve/runs.h"

#include "kalvo/forms/linear.h"
#include "kalvo/model/text.h"
#include "kalvo/task/task.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <thread>
#include <utility>

#include <malloc.h>

namespace klv {

// Asked once: the system looks into a file for it.
static int processors ()
{
    static const int count = static_cast<int> (std::thread::hardware_concurrency ());
    return count;
}

Runs::Runs (Task& task, Runner& runner, std::shared_ptr<const Parameters> settings,
            std::shared_ptr<const Problem> problem, bool integers)
    : task_ (task),
      runner_ (runner),
      settings_ (std::move (settings)),
      problem_ (std::move (problem)),
      integers_ (integers),
      check_ (problem_, *settings_, integers)
{}

KLVrescode_t Runs::find_engine (Method method)
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

KLVrescode_t Runs::lower_problem ()
{
    Lowering lowering = runner_.compute (work_of (*problem_), [&] { return lower (problem_); });
    if (!lowering.refused.empty ())
        return task_.fail (KLV_RES_TOO_LARGE,
                           text ("No optimiser can take this problem: ", lowering.refused, "."));
    task_.information.set (IntItem::lowered_infinite_bounds, lowering.infinite_bounds);
    task_.information.set (IntItem::lowered_dropped_entries, lowering.dropped_entries);
    if (lowering.infinite_bounds > 0)
        task_.warn (text (lowering.infinite_bounds,
                          " finite bounds are so large that the optimiser takes them as infinite; "
                          "the answer is checked on them as they are."));
    if (lowering.dropped_entries > 0)
        task_.warn (text (lowering.dropped_entries,
                          " entries of the constraint matrix are so small that the optimiser "
                          "leaves them out; the answer is checked with them."));
    lowered_ = std::move (lowering.problem);
    // What was freed after loading lies in holes that an engine's thread does not use.
    if (work_of (*problem_) >= large_work)
        malloc_trim (0);
    return KLV_RES_OK;
}

KLVrescode_t Runs::prepare (Method method)
{
    const KLVrescode_t code = find_engine (method);
    return code == KLV_RES_OK ? lower_problem () : code;
}

std::size_t work_of (const Problem& problem)
{
    return static_cast<std::size_t> (problem.matrix.entries () + problem.variables () +
                                     problem.constraints ());
}

Answer Runs::judge (Claims&& claims)
{
    runner_.enter (KLV_CALLER_CHECK);
    return runner_.compute (work_of (*problem_), [&] { return check_ (std::move (claims)); });
}

// Only the integer search has use for more than one thread, and dual simplex where it is asked to. Abandoned workers count as
// used.
int Runs::threads (Method method) const
{
    const int asked = settings_->get (IntSetting::threads);
    if (method != Method::mixed_integer && !is_parallel_simplex (*settings_, method))
        return 1;
    if (asked > 0)
        return asked;
    return std::max ((processors () + 1) / 2 - abandoned_workers (), 1);
}

void Runs::add (IntItem item)
{
    task_.information.set (item, task_.information.get (item) + 1);
}

void Runs::count (const Runner::Ended& run)
{
    const auto& [job, claims] = run;
    Information& information = task_.information;
    if (job.method != Method::interior_point || claims.simplex_iterations > 0)
        information.set (job.finishes () ? IntItem::finish_iterations : IntItem::simplex_iterations,
                         claims.simplex_iterations);
    if (job.method == Method::interior_point) {
        information.set (IntItem::interior_iterations, claims.interior_iterations);
        information.set (IntItem::interior_method, claims.interior_method);
    }
}

void Runs::start_run (Method method, bool reformulate, std::shared_ptr<const StartPoint> start)
{
    Job job;
    job.problem = lowered_;
    job.settings = settings_;
    job.method = method;
    job.reformulate = reformulate;
    job.threads = threads (method);
    job.start = std::move (start);
    task_.information.set (IntItem::threads_used, runner_.running () ? 2 : job.threads);
    runner_.start (engine_, std::move (job));
}

Answer Runs::judge_run (Runner::Ended&& run)
{
    count (run);
    if (!run.claims.warning.empty ())
        task_.warn (run.claims.warning);
    if (run.claims.outcome == Outcome::stopped && !answered ())
        run.claims.outcome = Outcome::unknown;    // nobody asked it to
    Answer answer = judge (std::move (run.claims));
    answer.method = run.job.method;
    if (answer.outcome == Outcome::optimal && !answer.proved)
        add (IntItem::engine_optimal_claims_rejected);
    return answer;
}

Answer Runs::run_once (Method method, bool reformulate, std::shared_ptr<const StartPoint> start)
{
    start_run (method, reformulate, std::move (start));
    return judge_run (*runner_.wait ());
}

// Whether interior point may join a simplex run: with two threads to be had, and nothing asked for that only simplex knows.
bool Runs::may_race () const
{
    const int optimizer = settings_->get (IntSetting::optimizer);
    const int asked = settings_->get (IntSetting::threads);
    return !integers_ && (optimizer == KLV_OPTIMIZER_AUTOMATIC || optimizer == KLV_OPTIMIZER_MIXED_INTEGER) &&
           (asked > 1 || (asked == 0 && processors () - abandoned_workers () > 1)) &&
           !std::isfinite (settings_->get (RealSetting::objective_limit));
}

// A simplex run that, when it takes long, interior point joins. The first answer that is proved wins, and nobody waits for the
// other.
Answer Runs::race (Method method, std::shared_ptr<const StartPoint> start)
{
    start_run (method, true, std::move (start));
    std::optional<Runner::Ended> ended = runner_.wait (settings_->get (RealSetting::race_delay));
    if (!ended) {    // it is still at it
        try {
            // A presolve that takes that long is not begun twice.
            start_run (Method::interior_point, runner_.phase_of_first () != KLV_CALLER_PRESOLVE, nullptr);
            task_.information.set (IntItem::race, 1);
        } catch (const std::system_error&) {    // no thread to be had: it goes on alone
        }
        ended = runner_.wait ();
    }
    Answer answer = judge_run (std::move (*ended));
    if (!runner_.running ())
        return answer;
    if (answer.proved || answered () || answer.outcome == Outcome::time_limit) {
        runner_.abandon ();
        return answer;
    }
    Answer other = judge_run (*runner_.wait ());
    return other.proved || !answer.solution ? other : answer;
}

Answer Runs::first_run (Method method, std::shared_ptr<const StartPoint> start)
{
    const bool simplex = method == Method::primal_simplex || method == Method::dual_simplex;
    const bool finishes = start && start->finishes;
    return simplex && !finishes && may_race () ? race (method, std::move (start))
                                               : run_once (method, true, std::move (start));
}

// Whether there is nothing to be won by another run.
bool Runs::settles (const Answer& answer) const
{
    return answer.proved || ended_early (answer.outcome) || answer.outcome == Outcome::out_of_memory ||
           answered ();
}

// A run, and one more without presolve and scaling when its answer does not hold and that is not what it was.
Answer Runs::attempt (Method method, std::shared_ptr<const StartPoint> start)
{
    const bool plain =
        settings_->get (IntSetting::presolve) == KLV_PRESOLVE_OFF &&
        (settings_->get (IntSetting::scaling) == KLV_SCALING_OFF || method == Method::interior_point);
    Answer answer = first_run (method, start);
    if (!settles (answer) && !plain) {
        const std::string what = answer.outcome == Outcome::failed
                                     ? text ("The optimiser failed (", answer.message, ")")
                                     : text ("An answer did not pass the check");
        task_.warn (text (what, "; trying again without presolve and scaling."));
        add (IntItem::presolve_rerun);
        Answer second = run_once (method, false, std::move (start));
        if (second.solution || !answer.solution)
            answer = std::move (second);
    }
    if (!settles (answer))
        task_.warn ("The answer does not pass the check; it is reported as what it is.");
    return answer;
}

// What a start does to an optimiser is not known: an answer that it leads to counts only when it is proved.
Answer Runs::attempt_from (std::shared_ptr<const StartPoint> start, Method method)
{
    task_.information.set (IntItem::start, integers_ ? 3 : start->column_key.empty () ? 2 : 1);
    Answer answer = first_run (method, std::move (start));
    if (settles (answer))
        return answer;
    task_.warn (
        "From the solution that was given no answer was found that passes the check; trying without it.");
    task_.information.set (IntItem::start, 0);
    return attempt (method, nullptr);
}

}
