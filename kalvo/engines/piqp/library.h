// One solve by the library PIQP.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/engines/piqp/newton.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace klv::piqp {

struct Options {
    double tolerance = 1e-8;
    std::int32_t iterations = 250;      // at least 1
    double least_regularization = 0;    // 0: the library's
    bool scales = true;
};

struct Iteration {
    std::int64_t number = 0;
    double primal_objective = 0, dual_objective = 0;    // without constant
    double primal_residual = 0, dual_residual = 0;
};

enum class Status { solved, iteration_limit, infeasible, unbounded, broke_down, refused };

// Multipliers are positive at lower bounds and negative at upper ones.
struct Answer {
    Status status = Status::refused;
    std::vector<double> x, equality, range, reduced_cost;
    Iteration last;
};

// Calls `goes_on` before each factorisation and once after the last; the run ends when it returns false or `stop` is set. The form
// has no fault.
Answer solve (const QuadraticForm& form, NewtonSystem& system, const Options& options, const StopFlag& stop,
              const std::function<bool (const Iteration&)>& goes_on);

}
