// What a worker tells the calling thread.
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
class EventChannel final : public Events {
public:
    explicit EventChannel (std::shared_ptr<Bell> bell) : bell_ (std::move (bell)) {}

    // Worker side.
    void text (std::string_view piece) noexcept override;    // handed on as whole lines
    void progress (const Progress& now) noexcept override;
    void step (const Progress& now) noexcept override;
    void incumbent (const double* x, std::size_t count) noexcept override;
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
