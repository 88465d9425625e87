// Looks at a stop flag and a deadline between pieces of work.
#pragma once

#include "kalvo/engines/engine.h"

#include <optional>

namespace klv::semidefinite {

// Thrown out of the work that a stop or the deadline ends.
struct Interrupted {
    Outcome outcome;
};

class Watch {
public:
    Watch (const StopFlag& stop, std::optional<Clock::time_point> deadline)
        : stop_ (stop), deadline_ (deadline)
    {}

    // After so many multiplications.
    void look (double multiplications)
    {
        constexpr double between_looks = 2e6;
        done_ += multiplications;
        if (done_ >= between_looks)
            look ();
    }
    void look ()
    {
        done_ = 0;
        if (stop_.load (std::memory_order_relaxed))
            throw Interrupted{Outcome::stopped};
        if (deadline_ && Clock::now () > *deadline_)
            throw Interrupted{Outcome::time_limit};
    }

private:
    const StopFlag& stop_;
    const std::optional<Clock::time_point> deadline_;
    double done_ = 0;
};

}
