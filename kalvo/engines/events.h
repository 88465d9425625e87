// What an engine's run reports while it goes on.
#pragma once

#include "kalvo/include/kalvo.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace klv {

using Clock = std::chrono::steady_clock;

inline double seconds_between (Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double> (to - from).count ();
}

// Size of the problem that an optimiser works on; `integers` counts integer columns.
struct Sizes {
    std::int64_t rows = 0, columns = 0, entries = 0, integers = 0;
};

// Counts and times of an integer search.
struct Search {
    std::int64_t nodes = 0, open_nodes = 0, solutions = 0, restarts = 0;
    std::int64_t cuts = 0, cuts_in_use = 0,
                 conflicts = 0;    // cuts in the pool, in the relaxation; conflicts in the pool
    std::int64_t strong_branching = 0, separation = 0, heuristics = 0;    // simplex iterations spent in each
    std::optional<double> root_bound;                                     // objective of the first relaxation
    double integral = 0;                                                  // of the gap over time
    std::optional<Clock::time_point> first_solution, best_solution;       // times of discovery
};

// The newest state of a run, for progress lines, callbacks and information; objectives are the form's.
struct Progress {
    std::uint32_t caller = 0;    // KLVcallercode: the phase
    std::int64_t iterations = 0;
    double primal_objective = 0, dual_objective = 0;    // integer search: incumbent and bound
    double primal_violation = 0, dual_violation = 0;    // as the method measures them
    bool has_primal = false, has_dual = false;
    std::optional<Sizes> presolved = {};    // the presolved problem; without presolve the form
    Search search = {};
    Clock::time_point at = {};    // time of the report, set by its receiver
};

// Receives an engine's reports, on the engine's thread. Nothing throws: a report that can't be stored is dropped.
class Events {
public:
    Events () = default;
    Events (const Events&) = delete;
    Events& operator= (const Events&) = delete;
    virtual ~Events () = default;

    virtual void text (std::string_view piece) noexcept = 0;     // any piece of the engine's log
    virtual void progress (const Progress& now) noexcept = 0;    // another `caller` begins another phase
    virtual void step (const Progress& now) noexcept = 0;        // progress that is worth a line of the log
    virtual void incumbent (const double* x, std::size_t count) noexcept = 0;
};

}
