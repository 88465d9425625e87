// Runs of engines on one problem: each answer is checked, a run whose answer does not hold is repeated, one that takes long is
// raced.
#pragma once

#include "kalvo/verify/check.h"
#include "kalvo/worker/runner.h"

#include <memory>

namespace klv {

class Runs {
public:
    // `integers`: whether integer variables are to be whole.
    Runs (Task& task, Runner& runner, std::shared_ptr<const Parameters> settings,
          std::shared_ptr<const Problem> problem, bool integers);

    // Finds an engine for the method and lowers the problem for it; before all attempts.
    KLVrescode_t prepare (Method method);

    // A run, or a race of two, and one more without presolve and scaling when its answer does not hold.
    Answer attempt (Method method, std::shared_ptr<const StartPoint> start);

    // The same from a start of which nothing is known: when it leads to no answer that holds, all is tried without it.
    Answer attempt_from (std::shared_ptr<const StartPoint> start, Method method);

    Answer judge (Claims&& claims);
    const Check& check () const { return check_; }

private:
    KLVrescode_t find_engine (Method method);
    KLVrescode_t lower_problem ();

    Answer first_run (Method method, std::shared_ptr<const StartPoint> start);
    Answer race (Method method, std::shared_ptr<const StartPoint> start);
    Answer run_once (Method method, bool reformulate, std::shared_ptr<const StartPoint> start);
    void start_run (Method method, bool reformulate, std::shared_ptr<const StartPoint> start);
    Answer judge_run (Runner::Ended&& run);
    void count (const Runner::Ended& run);
    void add (IntItem item);
    bool settles (const Answer& answer) const;
    bool may_race () const;
    int threads (Method method) const;
    bool answered () const { return runner_.answer () != 0; }

    Task& task_;
    Runner& runner_;
    std::shared_ptr<const Parameters> settings_;
    std::shared_ptr<const Problem> problem_;
    bool integers_;
    Check check_;
    std::shared_ptr<const LinearProblem> lowered_;
    std::shared_ptr<Engine> engine_;
};

// What one pass over the problem has to look at.
std::size_t work_of (const Problem& problem);

}
