// Runs an engine on a worker while the calling thread passes on what it reports and asks the progress callback.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/report/log.h"
#include "kalvo/task/task.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace klv {

// What came of a run. When its worker had to be abandoned, what was copied out is all there is: an incumbent, or nothing.
struct RunResult {
    Claims claims;
    bool abandoned = false;
};

class Runner {
public:
    Runner (Task& task, Log& log) : task_ (task), log_ (log) {}

    // Outcome::stopped and Outcome::time_limit also when the engine did not stop by itself.
    RunResult run (const std::shared_ptr<Engine>& engine, const Job& job);

    // Asks the callback at a progress point; its first answer other than 0 stays.
    void ask (std::uint32_t caller);
    std::int32_t answer () const { return answer_; }
    double seconds () const;                            // since the begin of the optimisation

private:
    using Clock = std::chrono::steady_clock;

    void show (const EventChannel::News& news);
    void note (const Progress& now);
    void ask_in_time (std::uint32_t caller);
    void wait_for_room ();

    Task& task_;
    Log& log_;
    Clock::time_point began_ = Clock::now ();
    Clock::time_point asked_ = began_;
    std::uint32_t asked_phase_ = 0;
    std::int32_t answer_ = 0;
};

}
