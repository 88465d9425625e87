// Plans whose engines run on threads of this process.
#pragma once

#include "kalvo/solve/solver.h"
#include "kalvo/worker/watch.h"

#include <string>

namespace klv {

// A stop waits for the engine. Nothing of a run is left when the solver has gone.
class InProcess final : public Solver {
public:
    InProcess (Task& task, Call& call) : task_ (task), call_ (call), watch_ (task, call) {}

    Solved solve (const Solutions& earlier, bool integers) override
    {
        Attempts attempts (task_, call_, watch_, integers);
        return solve_by_plan (attempts, earlier, integers);
    }
    void no_run (const std::string& why) override { watch_.no_run (why); }

private:
    Task& task_;
    Call& call_;
    Watch watch_;
};

}
