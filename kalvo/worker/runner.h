// Runs engines on workers while the calling thread passes on what they report and asks the progress callback.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/report/log.h"
#include "kalvo/task/task.h"
#include "kalvo/worker/worker.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

namespace klv {

// Entries, rows and columns of a problem that takes some 10 ms to look at.
constexpr std::size_t large_work = 1'000'000;

class Runner {
public:
    Runner (Task& task, Log& log);

    struct Ended {
        Job job;    // without problem and settings
        Claims claims;
    };

    // Starts a run, beside those that are at it.
    void start (const std::shared_ptr<Engine>& engine, Job job);

    // Waits for the first run to end; nothing: none did for so long. When all must end, for a stop or for the time limit, what
    // could be copied out of one of them is claimed, and those that do not end are abandoned: Outcome::stopped and
    // Outcome::time_limit also then.
    std::optional<Ended> wait (double seconds = infinity);
    bool running () const { return !runs_.empty (); }
    std::uint32_t phase_of_first () const
    {
        return runs_.front ().phase.caller;
    }    // of the runs that are at it
    void abandon () { runs_.clear (); }    // runs that nobody needs any more

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

    // Begins a phase of the calling thread: asks the callback, and counts the time from now on as this phase's.
    void enter (std::uint32_t phase);

    std::int32_t answer () const { return answer_; }    // the callback's first other than 0
    double seconds () const { return seconds_between (began_, Clock::now ()); }    // since the begin
    double seconds_left () const;                                                  // of the time limit

private:
    // Between two questions to the callback lie at least 20 and at most 50 ms, changes of phase aside.
    static constexpr std::chrono::duration<double> between_questions{0.025};

    // A phase of a run, or of the calling thread.
    struct Phase {
        std::uint32_t caller;
        Clock::time_point since;
    };
    struct Run {
        double late;
        std::size_t log;
        Phase phase;
        Job job = {};    // without problem and settings
        std::unique_ptr<Worker> worker = nullptr;
        Progress progress = {};    // the newest
        bool finished = false;
    };

    void ask (std::uint32_t caller);
    void ask_once_more ();
    void change_phase (Phase& phase, std::uint32_t caller, Clock::time_point since);
    void note (const Sizes& presolved);
    void note (const Search& search);
    void note (const Run& run);
    bool take_news (Run& run);
    void take_all_news ();
    bool wait_for_room ();
    std::optional<Ended> take_ended ();
    Ended stop ();

    Task& task_;
    Log& log_;
    Clock::time_point began_ = Clock::now ();
    double time_limit_;
    Phase phase_{KLV_CALLER_BEGIN_OPTIMIZE, began_};
    std::shared_ptr<Bell> bell_ = std::make_shared<Bell> ();
    std::vector<Run> runs_;
    std::int32_t answer_ = 0;
    bool out_of_time_ = false;
};

}
