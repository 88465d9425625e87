// The channel from the thread of a run to the thread that waits for it.
#pragma once

#include "kalvo/engines/events.h"
#include "kalvo/forms/form.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace klv {

struct PhaseChange {
    std::uint32_t caller = 0;
    Clock::time_point since;
};

// Rings when a run has finished. Runs that are waited for together share a bell.
class Bell {
public:
    void ring () noexcept;
    void wait (double seconds);    // returns at once if the bell rang since the last wait

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool rang_ = false;
};

// Shared by both threads. The channel is bounded: when nobody empties it, new steps and
// lines are dropped, and dropped lines counted. The run's side never throws: reports that can't be stored are dropped. Only
// the end of a run wakes the calling thread, which polls for everything else: waking it more often would slow short runs down.
class EventChannel final : public Events {
public:
    // The run's side.
    void text (std::string_view piece) noexcept override;    // collected into lines
    void progress (const Progress& now) noexcept override;
    void step (const Progress& now) noexcept override;
    void incumbent (const double* x, std::size_t count) noexcept override;
    void finish (Claims&& claims) noexcept;    // nothing follows

    // Calling side.
    struct News {
        std::vector<std::variant<std::string, Progress>> told;    // lines and steps in their order
        std::uint64_t dropped_lines = 0;
        std::vector<PhaseChange> phases;
        Progress progress;
        bool new_incumbent = false;
        bool finished = false;
    };
    News take_news ();                        // all since the last call
    std::vector<double> take_incumbent ();    // the newest one, or empty
    Claims take_claims ();

private:
    void end_line ();
    void note (const Progress& now);

    std::mutex mutex_;
    News news_;
    std::string partial_line_;
    std::vector<double> incumbent_;
    Claims claims_;
};

}
