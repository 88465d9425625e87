// What a plan needs from below: runs of engines are started, waited for and ended, while whoever asked for the
// optimisation is told how it goes on and may stop it.
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

// Entries, rows and columns of a problem that takes some 10 ms to look at.
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

    // Starts a run beside those that are at it; `why` is for the log. Throws std::system_error when there is no thread to be had.
    virtual Id start (const std::shared_ptr<Engine>& engine, Job job, const std::string& why) = 0;

    // Waits for the first run to end; nothing: none did for so long, or none is at it. When all must end, for a stop or for the
    // time limit, what could be copied out of one of them is claimed, as Outcome::stopped or Outcome::time_limit.
    virtual std::optional<Ended> wait (double seconds) = 0;

    virtual void drop (Id run) = 0;    // that nobody needs any more
    virtual bool running () const = 0;
    virtual const Progress& newest (Id run) const = 0;    // of a run that is at it
    virtual double seconds (Id run) const = 0;            // since it was started

    virtual void enter (std::uint32_t phase) = 0;        // of the calling thread
    virtual void no_run (const std::string& why) = 0;    // tells that the answer comes without one
    virtual std::int32_t answer () const = 0;            // other than 0: the run is to stop
    virtual double seconds_left () const = 0;            // of the time limit

    // A computation whose time grows with `work`, about the entries that it looks at; what it throws comes through. Long ones
    // are done beside the calling thread; they change nothing that a callback could see.
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
