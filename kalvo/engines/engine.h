// The one interface between the library and the engines that solve.
//
// An engine runs on a worker thread and sees only what it is given: an immutable problem that it may share with other
// runs and outlive its task with, settings, a stop flag and an event channel. What it returns are claims: nothing of
// it is believed before it was checked on the problem as stated.
#pragma once

#include "kalvo/task/problem.h"
#include "kalvo/task/values.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace klv {

// min or max c'x + constant, row bounds on Ax, column bounds on x, some x integer. Costs, matrix (packed) and types are
// those of the stated problem; bounds that an engine would take as infinite are infinite here.
struct LinearProblem {
    std::shared_ptr<const Problem> stated;
    std::vector<double> column_lower, column_upper, row_lower, row_upper;
    std::vector<std::int32_t> starts;                    // of the packed matrix, columns + 1 entries
    bool integers = false;                               // whether types are to be regarded
};

enum class Method { primal_simplex, dual_simplex, interior_point, mixed_integer };

// A point to start from: the interior solution that a simplex finish turns into a basic one.
struct StartPoint {
    std::vector<double> x, activity, y, reduced_cost;
};

// What one run is asked for.
struct Job {
    std::shared_ptr<const LinearProblem> problem;
    std::shared_ptr<const Parameters> settings;
    Method method = Method::dual_simplex;
    bool presolve = true;                                // false whatever the settings say: the second try, rays
    bool scaling = true;
    bool rays = false;                                   // look for certificates: an answer alone does not end the run
    double seconds = -1;                                 // what is left of the time limit; negative: no limit
    int threads = 1;
    std::shared_ptr<const StartPoint> start;             // or null
};

enum class Outcome {
    unknown, optimal, infeasible, unbounded, infeasible_or_unbounded,
    time_limit, iteration_limit, node_limit, solution_limit, objective_limit,
    stopped, numerical_trouble, failed
};

// What an engine says of a run. Signs of duals are the library's (see kalvo.h); arrays are empty where nothing is claimed.
struct Claims {
    Outcome outcome = Outcome::unknown;
    std::vector<double> x, activity;                     // a primal point: columns, rows
    std::vector<double> y, reduced_cost;                 // duals: rows, columns; c - A'y
    std::vector<std::int32_t> column_key, row_key;       // status keys of a basis: KLVstakey
    std::vector<double> dual_ray;                        // rows: proves that no point is feasible
    std::vector<double> primal_ray;                      // columns: a direction of unbounded improvement
    double best_bound = 0;                               // integer problems: bound on the objective
    bool has_best_bound = false;
    std::int64_t simplex_iterations = 0, interior_iterations = 0, finish_iterations = 0, nodes = 0, solutions = 0;
    double presolve_seconds = 0;
    std::string message;                                 // why it failed, in plain words
};

// The newest state of a run, for progress lines and callbacks.
struct Progress {
    std::uint32_t caller = 0;                            // KLVcallercode: the phase
    std::int64_t iterations = 0, nodes = 0, solutions = 0;
    double primal_objective = 0, dual_objective = 0;     // or incumbent and bound
    double primal_violation = 0, dual_violation = 0;
    bool has_primal = false, has_dual = false;
    std::uint64_t version = 0;                           // changes with every report
};

// What a worker tells the calling thread; owned by both, so that either may go first. Text is bounded: when nobody empties
// it, the oldest lines are dropped and counted. Nothing here throws: what can't be stored is dropped.
class EventChannel {
public:
    // Worker side.
    void text (std::string_view piece) noexcept;         // any piece; handed on as whole lines
    void progress (const Progress& now) noexcept;
    void incumbent (const double *x, std::size_t count, double objective) noexcept;
    void finish (Claims&& claims) noexcept;              // last act of a worker

    // Calling side.
    struct News {
        std::deque<std::string> lines;
        std::uint64_t dropped_lines = 0;
        Progress progress;
        bool finished = false;
    };
    News wait (double seconds);                          // returns early when lines came or the run finished
    bool take_incumbent (std::vector<double>& x, double& objective);
    Claims take_claims ();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::string> lines_;
    std::string partial_line_;
    std::size_t characters_ = 0;
    std::uint64_t dropped_lines_ = 0;
    Progress progress_;
    std::vector<double> incumbent_;
    double incumbent_objective_ = 0;
    bool incumbent_is_new_ = false;
    bool finished_ = false;
    Claims claims_;
};

using StopFlag = std::atomic<bool>;

class Engine {
public:
    virtual ~Engine () = default;
    virtual const char *name () const = 0;
    virtual bool can (Method method) const = 0;
    virtual KLVrescode_t load (std::string& why) = 0;    // makes it ready, once; why it can't be
    // Runs on a worker thread; may throw, may never return.
    virtual Claims run (const Job& job, const StopFlag& stop, EventChannel& channel) = 0;
};

// Engines in order of preference. Tests put engines of their own in front.
std::vector<std::shared_ptr<Engine>>& engines ();

}
