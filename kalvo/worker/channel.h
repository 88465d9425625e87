// What a worker tells the calling thread.
#pragma once

#include "kalvo/include/kalvo.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace klv {

using Clock = std::chrono::steady_clock;

inline double seconds_between (Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double> (to - from).count ();
}

enum class Outcome {
    unknown,
    optimal,
    infeasible,
    unbounded,
    infeasible_or_unbounded,
    time_limit,
    iteration_limit,
    node_limit,
    solution_limit,
    objective_limit,
    stopped,
    out_of_memory,
    failed
};

inline bool ended_early (Outcome outcome)
{
    return outcome >= Outcome::time_limit && outcome <= Outcome::stopped;
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

// What an engine says of a run. Signs of duals are the library's (see kalvo.h); arrays are empty where nothing is claimed.
struct Claims {
    Outcome outcome = Outcome::unknown;
    std::vector<double> x;                  // a primal point: columns
    std::vector<double> y, reduced_cost;    // duals: rows, columns; c - A'y also where it is not claimed
    std::vector<std::int32_t> column_key, row_key;    // status keys of a basis: KLVstakey
    std::vector<double> dual_ray;                     // rows: proves that no point is feasible
    std::vector<double> primal_ray;                   // columns: a direction of unbounded improvement
    double best_bound = 0;                            // integer problems: bound on the objective
    bool has_best_bound = false;
    std::int64_t simplex_iterations = 0, interior_iterations = 0;
    std::int32_t interior_method = KLV_INTPNT_METHOD_AUTOMATIC;    // that was used, where it has several
    std::string message;                                           // why it failed, in plain words
    std::string warning;    // what was not done as it was asked for, a sentence
};

// The newest state of a run, for progress lines, callbacks and information.
struct Progress {
    std::uint32_t caller = 0;    // KLVcallercode: the phase
    std::int64_t iterations = 0;
    double primal_objective = 0, dual_objective = 0;    // or incumbent and bound
    double primal_violation = 0, dual_violation = 0;    // as the method measures them
    bool has_primal = false, has_dual = false;
    std::optional<Sizes> presolved = {};    // the problem that presolve left, or that goes without
    Search search = {};
    Clock::time_point at = {};    // set by the channel
};

struct PhaseChange {
    std::uint32_t caller = 0;
    Clock::time_point since;
};

// Rings when a run has finished; one for all runs that are waited for together.
class Bell {
public:
    void ring () noexcept;
    void wait (double seconds);    // not at all when it rang since the last wait

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool rang_ = false;
};

// Owned by worker and calling thread together, so that either may go first. All of it is bounded: when nobody empties it, new lines
// and steps are dropped, and lines counted. The worker's side never throws: what can't be stored is dropped. Only the end of a
// run wakes the calling thread, so that short runs are not slowed down; it looks often enough for all else.
class EventChannel {
public:
    explicit EventChannel (std::shared_ptr<Bell> bell) : bell_ (std::move (bell)) {}

    // Worker side.
    void text (std::string_view piece) noexcept;     // any piece; handed on as whole lines
    void progress (const Progress& now) noexcept;    // another caller is another phase
    void step (const Progress& now) noexcept;        // the same, and worth a line of the log
    void incumbent (const double* x, std::size_t count) noexcept;
    void finish (Claims&& claims) noexcept;    // last act of a run

    // Calling side.
    struct News {
        std::vector<std::variant<std::string, Progress>> told;    // lines and steps, as they came
        std::uint64_t dropped_lines = 0;
        std::vector<PhaseChange> phases;
        Progress progress;
        bool new_incumbent = false;
        bool finished = false;
    };
    News take_news ();                        // since they were taken last
    std::vector<double> take_incumbent ();    // the newest; empty: none came
    Claims take_claims ();

private:
    void end_line ();
    void note (const Progress& now);

    std::shared_ptr<Bell> bell_;
    std::mutex mutex_;
    News news_;
    std::string partial_line_;
    std::vector<double> incumbent_;
    Claims claims_;
};

}
