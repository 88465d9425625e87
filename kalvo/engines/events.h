// What a run tells while it goes on.
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

// Of a problem that an optimiser works on; integers: columns.
struct Sizes {
    std::int64_t rows = 0, columns = 0, entries = 0, integers = 0;
};

// What an integer search counts.
struct Search {
    std::int64_t nodes = 0, open_nodes = 0, solutions = 0, restarts = 0;
    std::int64_t cuts = 0, cuts_in_use = 0, conflicts = 0;    // in its pool, in its relaxation; in its pool
    std::int64_t strong_branching = 0, separation = 0, heuristics = 0;    // of its iterations
    std::optional<double> root_bound;                                     // of the first relaxation
    double integral = 0;                                                  // of the gap over time
    std::optional<Clock::time_point> first_solution, best_solution;       // when they were found
};

// The newest state of a run, for progress lines, callbacks and information; objectives are those of the form.
struct Progress {
    std::uint32_t caller = 0;    // KLVcallercode: the phase
    std::int64_t iterations = 0;
    double primal_objective = 0, dual_objective = 0;    // or incumbent and bound
    double primal_violation = 0, dual_violation = 0;    // as the method measures them
    bool has_primal = false, has_dual = false;
    std::optional<Sizes> presolved = {};    // the problem that presolve left, or that goes without
    Search search = {};
    Clock::time_point at = {};    // set by who takes it
};

// Takes what engines tell, on the thread that runs them. None of it throws: what can't be stored is dropped.
class Events {
public:
    Events () = default;
    Events (const Events&) = delete;
    Events& operator= (const Events&) = delete;
    virtual ~Events () = default;

    virtual void text (std::string_view piece) noexcept = 0;     // of the engine's log, any piece
    virtual void progress (const Progress& now) noexcept = 0;    // another caller is another phase
    virtual void step (const Progress& now) noexcept = 0;        // the same, and worth a line of the log
    virtual void incumbent (const double* x, std::size_t count) noexcept = 0;
};

}
