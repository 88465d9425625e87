// The one interface between the library and the engines that solve.
//
// An engine runs on a worker thread and sees only what it is given: an immutable problem that it may share with other
// runs and outlive its task with, settings, a stop flag and an event channel. What it returns are claims: nothing of
// it is believed before it was checked on the problem as stated.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/task/values.h"
#include "kalvo/worker/channel.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace klv {

// Bounds as engines take them: ordered, and infinite where an engine would take them so. Mostly those of the stated problem.
class EngineBounds {
public:
    EngineBounds () = default;
    explicit EngineBounds (const Bounds& stated) : stated_ (&stated) {}

    const double* lower () const
    {
        return changed_lower_.empty () ? stated_->lower.data () : changed_lower_.data ();
    }
    const double* upper () const
    {
        return changed_upper_.empty () ? stated_->upper.data () : changed_upper_.data ();
    }
    void change (std::size_t item, Interval interval);

private:
    const Bounds* stated_ = nullptr;
    std::vector<double> changed_lower_, changed_upper_;    // all of them, or empty
};

// min or max c'x + constant, row bounds on Ax, column bounds on x. Costs, matrix (packed) and types are
// those of the stated problem.
struct LinearProblem {
    std::shared_ptr<const Problem> stated;
    EngineBounds columns, rows;
    double smallest_entry = infinity;    // of the matrix, in magnitude, zeros apart
};

// All but the last take every variable as continuous.
enum class Method { primal_simplex, dual_simplex, interior_point, mixed_integer };

// Whether a simplex run may use more than one thread.
inline bool is_parallel_simplex (const Parameters& settings, Method method)
{
    return method == Method::dual_simplex && settings.get (IntSetting::simplex_parallel) != KLV_OFF;
}

// Where a run starts. Arrays are empty where nothing is known.
struct StartPoint {
    std::vector<std::int32_t> row_key, column_key;    // a basis, of which nothing else is known: KLVstakey
    std::vector<double> x;    // for an integer search some entries may be NaN: unknown
    std::vector<double> activity, y, reduced_cost;    // of x, and its duals
    bool finishes = false;                            // a basic solution is to be made of it
};

// What one run is asked for.
struct Job {
    std::shared_ptr<const LinearProblem> problem;
    std::shared_ptr<const Parameters> settings;
    Method method = Method::dual_simplex;
    bool reformulate = true;      // false: no presolve, no scaling, whatever the settings say
    double seconds = infinity;    // what is left of the time limit
    int threads = 1;
    std::shared_ptr<const StartPoint> start;    // not for an interior-point method; or null

    bool finishes () const { return start && start->finishes; }    // an interior solution
};

using StopFlag = std::atomic<bool>;

class Engine {
public:
    virtual ~Engine () = default;
    virtual const char* name () const = 0;
    virtual bool can (Method method) const = 0;
    // Makes the engine ready, once; an empty text, or why it can't be used.
    virtual std::string load () = 0;
    // Runs on a worker thread; may throw, may never return. An answer of infeasible or unbounded comes with its ray
    // where there is one.
    virtual Claims run (const Job& job, const StopFlag& stop, EventChannel& channel) = 0;
};

// Engines in order of preference. Tests put engines of their own in front.
std::vector<std::shared_ptr<Engine>>& engines ();

}
