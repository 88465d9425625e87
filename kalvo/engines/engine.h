// The one interface between the library and the engines that solve.
//
// An engine sees only what it is given: an immutable form that it shares with other runs and may outlive its task with,
// settings, a stop flag and a place for events. What it returns are claims: nothing of them is believed before it was
// checked on the problem as stated.
#pragma once

#include "kalvo/engines/events.h"
#include "kalvo/engines/method.h"
#include "kalvo/forms/form.h"
#include "kalvo/task/values.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace klv {

enum class Goal {
    optimise,
    prove,    // that the form is infeasible or unbounded, by a ray: types and presolve are left aside
};

// What a run may use up.
struct Budget {
    std::optional<Clock::time_point> deadline = {};
    int threads = 1;
};

// What one run is asked for.
struct Job {
    std::shared_ptr<const Form> form;
    std::shared_ptr<const Parameters> settings;
    Goal goal = Goal::optimise;
    Method method = Method::dual_simplex;
    bool reformulate = true;    // false: no presolve, no scaling, whatever the settings say
    Budget budget = {};
    std::shared_ptr<const Start> start = {};    // not for an interior-point method; or null
};

// Whether a simplex run may use more than one thread.
inline bool is_parallel_simplex (const Parameters& settings, Method method)
{
    return method == Method::dual_simplex && settings.get (IntSetting::simplex_parallel) != KLV_OFF;
}

using StopFlag = std::atomic<bool>;

// One object of an engine for as many jobs on one form as come. It is made, used and destroyed on one thread.
class Session {
public:
    Session () = default;
    Session (const Session&) = delete;
    Session& operator= (const Session&) = delete;
    virtual ~Session () = default;

    // May throw, may never return. A proof comes as a ray.
    virtual Claims run (const Job& job, const StopFlag& stop, Events& events) = 0;
};

class Engine {
public:
    virtual ~Engine () = default;
    virtual const char* name () const = 0;
    virtual Limits limits () const = 0;
    // An empty text, or why the engine does not take this job. Nothing was allocated for it.
    virtual std::string refuses (const Form& form, Method method, const Budget& budget) const = 0;
    // Makes the engine ready, once; an empty text, or why it can't be used.
    virtual std::string load () = 0;
    virtual std::unique_ptr<Session> begin (std::shared_ptr<const Form> form) = 0;
};

// Engines in order of preference. Tests put engines of their own in front.
std::vector<std::shared_ptr<Engine>>& engines ();

// Runs a job. An answer of infeasible or unbounded that comes without its ray is proved by a second one in the same session.
Claims run_with_proof (Session& session, const Job& job, const StopFlag& stop, Events& events);

}
