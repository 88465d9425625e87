// What finds the answers of one optimisation: plans on engines, in this process or in another.
#pragma once

#include "kalvo/solve/attempt.h"
#include "kalvo/solve/plans.h"

#include <optional>
#include <string>
#include <vector>

namespace klv {

// Attempts that found something; or why none was made.
struct Solved {
    std::optional<Failure> failure = {};
    bool separable = false;    // the form has no entries: no engine is needed
    Found found = {};
};

class Solver {
public:
    Solver () = default;
    Solver (const Solver&) = delete;
    Solver& operator= (const Solver&) = delete;
    virtual ~Solver () = default;

    // `earlier`: solutions to start from. `integers`: whether integer variables must be whole.
    virtual Solved solve (const Solutions& earlier, bool integers) = 0;
    virtual void no_run (const std::string& why) = 0;    // logs that the answer needs no run
};

// Solves the task's problem by the plan for its kind.
Solved solve_by_plan (Attempts& attempts, const Solutions& earlier, bool integers);

}
