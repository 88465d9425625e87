// The one interface between the library and the engines that solve.
//
// An engine sees nothing but an immutable form, settings, a stop flag and a place for events. Runs share the form, and a run may
// outlive the task. An engine's answers are claims: none is believed before it was checked on the problem as stated.
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
    prove,    // find a ray of a form that is infeasible or unbounded: columns are continuous, nothing is presolved
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
    bool reformulate = true;    // false: no presolve and no scaling, whatever the settings say
    bool patient = false;       // goes on in steps so short that it would change its way or give up otherwise
    Budget budget = {};
    std::shared_ptr<const Start> start = {};    // null: none; interior-point methods ignore it
};

// Whether a simplex run may use more than one thread.
inline bool is_parallel_simplex (const Parameters& settings, Method method)
{
    return method == Method::dual_simplex && settings.get (IntSetting::simplex_parallel) != KLV_OFF;
}

using StopFlag = std::atomic<bool>;

// One object of an engine, for any number of jobs on one form. A session is made, used and destroyed on one thread.
class Session {
public:
    Session () = default;
    Session (const Session&) = delete;
    Session& operator= (const Session&) = delete;
    virtual ~Session () = default;

    // May throw, and may never return. Infeasible and unbounded forms are proved by a ray in the claims.
    virtual Claims run (const Job& job, const StopFlag& stop, Events& events) = 0;
};

class Engine {
public:
    virtual ~Engine () = default;
    virtual const char* name () const = 0;
    virtual bool has (Method method) const = 0;    // and takes the forms of that method
    virtual Limits limits () const = 0;
    // Why the engine does not take such a job, or an empty text. Asked before anything is allocated for the job.
    virtual std::string refuses (const Form& form, Method method, const Budget& budget) const = 0;
    // Makes the engine ready, once. Why it can't be used, or an empty text.
    virtual std::string load () = 0;
    virtual std::unique_ptr<Session> begin (std::shared_ptr<const Form> form) = 0;
};

// Engines in order of preference. Tests put engines of their own in front.
std::vector<std::shared_ptr<Engine>>& engines ();

// Runs a job; when it ends as infeasible or unbounded without a ray, a second job in the same session looks for the ray.
Claims run_with_proof (Session& session, const Job& job, const StopFlag& stop, Events& events);

}
