// Runs of engines, as plans start them, wait for them and end them. Meanwhile the caller of the optimisation receives progress
// and may stop it.
#pragma once

#include "kalvo/engines/engine.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

namespace klv {

// Entries, rows and columns: one pass over a problem of this size takes some 10 ms.
constexpr std::size_t large_work = 1'000'000;

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

    // Starts a run beside those that are under way; `why` is for the log. Throws std::system_error when no thread can be started.
    virtual Id start (const std::shared_ptr<Engine>& engine, Job job, const std::string& why) = 0;

    // Waits for the first run to end; nothing when none ends in time. A stop or the time limit ends all runs: the claims then hold
    // what one of them had found, as Outcome::stopped or Outcome::time_limit.
    virtual std::optional<Ended> wait (double seconds) = 0;

    virtual void drop (Id run) = 0;    // abandons the run
    virtual bool running () const = 0;
    virtual const Progress& newest (Id run) const = 0;    // the run must be under way
    virtual double seconds (Id run) const = 0;            // since the run was started

    virtual void enter (std::uint32_t phase) = 0;        // begins a phase of the calling thread
    virtual void no_run (const std::string& why) = 0;    // logs that the answer needs no run
    virtual std::int32_t answer () const = 0;            // of the progress callback; other than 0: stop
    virtual double seconds_left () const = 0;            // until the time limit

    // Calls a function that looks at about `work` entries. A long computation takes place on another thread while the callback
    // goes on being asked: it must change nothing that a callback can see. Exceptions come through.
    template <class Function>
    auto compute (std::size_t work, const Function& function)
    {
        if (work < large_work)
            return function ();
        std::optional<std::invoke_result_t<Function>> result;
        compute_beside ([&] { result.emplace (function ()); });
        return std::move (*result);
    }

private:
    virtual void compute_beside (const std::function<void ()>& function) = 0;
};

}
