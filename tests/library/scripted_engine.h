// An engine that does what a test tells it, in front of the real ones and in this process for as long as it lives.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/worker/process.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

namespace scripted {

using Script = std::function<klv::Claims (const klv::Job&, const klv::StopFlag&, klv::Events&)>;

class Engine : public klv::Engine {
public:
    explicit Engine (Script script) : script_ (std::move (script)) {}

    const char* name () const override { return "scripted"; }
    bool has (klv::Method method) const override { return klv::is_linear (method); }
    klv::Limits limits () const override { return {}; }
    std::string refuses (const klv::Form&, klv::Method, const klv::Budget&) const override { return ""; }
    std::string load () override { return why_not; }
    std::unique_ptr<klv::Session> begin (std::shared_ptr<const klv::Form>) override
    {
        return std::make_unique<Session> (*this);
    }

    std::atomic<int> runs = 0;
    std::string why_not;

private:
    // Asked for a proof, it has nothing to add.
    class Session final : public klv::Session {
    public:
        explicit Session (Engine& engine) : engine_ (engine) {}
        klv::Claims run (const klv::Job& job, const klv::StopFlag& stop, klv::Events& events) override
        {
            if (job.goal == klv::Goal::optimise) {
                ++engine_.runs;
                last_ = engine_.script_ (job, stop, events);
            }
            return last_;
        }

    private:
        Engine& engine_;
        klv::Claims last_;
    };

    Script script_;
};

class InFront {
public:
    explicit InFront (Script script) : engine_ (std::make_shared<Engine> (std::move (script)))
    {
        klv::engines ().insert (klv::engines ().begin (), engine_);
        worker_file_.swap (klv::worker_file ());
    }
    InFront (const InFront&) = delete;
    InFront& operator= (const InFront&) = delete;
    ~InFront ()
    {
        std::erase (klv::engines (), std::static_pointer_cast<klv::Engine> (engine_));
        worker_file_.swap (klv::worker_file ());
    }

    Engine& engine () { return *engine_; }

private:
    std::shared_ptr<Engine> engine_;
    std::filesystem::path worker_file_;    // of this process's other engines
};

// What a run that ignores its stop flag waits for. Copies are one gate.
class Gate {
public:
    void open () const { *open_ = true; }
    void wait () const { wait_for (*open_); }

    static void wait_for (const std::atomic<bool>& flag)
    {
        while (!flag)
            std::this_thread::sleep_for (std::chrono::milliseconds (1));
    }

private:
    std::shared_ptr<std::atomic<bool>> open_ = std::make_shared<std::atomic<bool>> (false);
};

// "optimal x 2 0 y 1 d 0 1": an outcome, then point, multipliers, reduced costs, rays (dual: ray, primal: way), a bound.
inline klv::Claims claims (const std::string& text)
{
    static constexpr const char* outcomes[] = {
        "unknown",         "optimal",    "infeasible",     "unbounded",       "undecided", "time_limit",
        "iteration_limit", "node_limit", "solution_limit", "objective_limit", "stopped"};
    klv::Claims made;
    std::vector<double> bound;
    std::map<std::string, std::vector<double>*> places{{"x", &made.x},
                                                       {"y", &made.y},
                                                       {"d", &made.reduced_cost},
                                                       {"ray", &made.dual_ray},
                                                       {"way", &made.primal_ray},
                                                       {"bound", &bound}};
    std::istringstream words (text);
    std::string word;
    words >> word;
    made.outcome = static_cast<klv::Outcome> (std::ranges::find (outcomes, word) - outcomes);
    for (std::vector<double>* place = nullptr; words >> word;)
        if (word == "basis") {    // of the problem below
            made.column_key = {KLV_SK_BASIC, KLV_SK_LOWER};
            made.row_key = {KLV_SK_LOWER};
        } else if (const auto found = places.find (word); found != places.end ())
            place = found->second;
        else
            place->push_back (std::stod (word));
    if (!bound.empty ())
        made.bound = bound.front ();
    return made;
}

// A problem and its optimum, 2 at (2, 0), with multiplier 1.
constexpr const char* small = "min 1 2; 0..10 0..10; 1 1 in 2..";
constexpr const char* small_integers = "min 1 2; 0..10i 0..10i; 1 1 in 2..";
constexpr const char* right = "optimal x 2 0 y 1 d 0 1 bound 2 basis";

}
