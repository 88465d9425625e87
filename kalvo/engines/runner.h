// Runs an engine on a worker while the calling thread passes on what it reports and asks the progress callback.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/engines/worker.h"
#include "kalvo/report/log.h"
#include "kalvo/task/task.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <type_traits>

namespace klv {

// Entries, rows and columns of a problem that takes some 10 ms to look at.
constexpr std::size_t large_work = 1'000'000;

class Runner {
public:
    Runner (Task& task, Log& log);

    // A run that must end and does not is abandoned: what was copied out of it is claimed, an incumbent or nothing. Outcome::stopped
    // and Outcome::time_limit also then.
    Claims run (const std::shared_ptr<Engine>& engine, Job job);

    // A computation of our own whose time grows with `work`, about the entries that it looks at; what it throws comes through.
    // Long ones are done on a thread of their own, while the callback is asked; they change nothing that it could see.
    template <class Function>
    auto compute (std::size_t work, const Function& function)
    {
        if (work < large_work)
            return function ();
        std::future<std::invoke_result_t<Function>> result;
        {
            const BlockedSignals blocked;
            result = std::async (std::launch::async, std::cref (function));
        }
        while (result.wait_for (between_questions) != std::future_status::ready)
            ask_once_more ();
        return result.get ();
    }

    // Begins a phase: asks the callback, and counts the time from `since` as this phase's.
    void enter (std::uint32_t phase, Clock::time_point since = Clock::now ());

    std::int32_t answer () const { return answer_; }    // the callback's first other than 0
    double seconds () const { return seconds_between (began_, Clock::now ()); }    // since the begin
    double seconds_left () const;                                                  // of the time limit

private:
    // Between two questions to the callback lie at least 20 and at most 50 ms, changes of phase aside.
    static constexpr std::chrono::duration<double> between_questions{0.025};

    void ask (std::uint32_t caller);
    void ask_once_more ();
    void take (const EventChannel::News& news);
    void note (const Progress& now);
    bool wait_for_room ();
    Claims stop (Worker& worker, bool integers);

    Task& task_;
    Log& log_;
    Clock::time_point began_ = Clock::now ();
    double time_limit_;
    std::uint32_t phase_ = KLV_CALLER_BEGIN_OPTIMIZE;
    Clock::time_point phase_since_ = began_;
    std::int32_t answer_ = 0;
    bool out_of_time_ = false;
};

}
