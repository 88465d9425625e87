// Runs of engines, as plans start them, wait for them and end them.
#pragma once

#include "kalvo/engines/engine.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace klv {

class Runs {
public:
    using Id = std::size_t;
    struct Ended {
        Id id = 0;
        Claims claims;
    };

    Runs () = default;
    Runs (const Runs&) = delete;
    Runs& operator= (const Runs&) = delete;
    virtual ~Runs () = default;

    // Takes a new incumbent of a run, a point of its form.
    using OnIncumbent = std::function<void (std::vector<double>&& x)>;

    // Starts a run beside those that are under way; `why` is for the log. Throws std::system_error when no thread can be started.
    virtual Id start (const std::shared_ptr<Engine>& engine, Job job, const std::string& why,
                      OnIncumbent on_incumbent) = 0;

    // Waits for the first run to end; nothing when none ends in time. A stop or the time limit ends all runs: the claims then hold
    // what one of them had found, as Outcome::stopped or Outcome::time_limit.
    virtual std::optional<Ended> wait (double seconds) = 0;

    virtual void drop (Id run) = 0;    // stops the run, if it is under way: its answer is of no use
    virtual const Progress& newest (Id run) const = 0;    // the run must be under way
    virtual double seconds (Id run) const = 0;            // since the run was started
    virtual void no_run (const std::string& why) = 0;     // logs that the answer needs no run
};

}
