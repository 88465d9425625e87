// One optimisation as its calling thread sees it: phases and their times, questions to the progress callback, the time limit.
#pragma once

#include "kalvo/engines/events.h"
#include "kalvo/task/task.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

namespace klv {

// Entries, rows and columns: one pass over a problem of this size takes some 10 ms.
constexpr std::size_t large_work = 1'000'000;

// A phase and when it began.
struct Phase {
    std::uint32_t caller;    // KLVcallercode
    Clock::time_point since;
};

class Call {
public:
    // `elapsed`: seconds since the optimisation began.
    explicit Call (Task& task, double elapsed = 0);
    Call (const Call&) = delete;
    Call& operator= (const Call&) = delete;

    // Between two questions to the callback lie at least 20 and at most 50 ms, changes of phase aside.
    static constexpr std::chrono::duration<double> between_questions{0.025};

    void enter (std::uint32_t caller);    // begins a phase of the calling thread
    void leave ();                        // ends it, without a question
    std::uint32_t phase () const { return phase_.caller; }
    void ask (std::uint32_t caller);                    // unless an answer was other than 0
    std::int32_t answer () const { return answer_; }    // of the callback; other than 0: stop

    // Ends a phase of a run, or of the calling thread, and begins the next one.
    void change_phase (Phase& phase, std::uint32_t caller, Clock::time_point since);

    Clock::time_point began () const { return began_; }
    double seconds () const { return seconds_between (began_, Clock::now ()); }
    double seconds_left () const;    // until the time limit

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
    void compute_beside (const std::function<void ()>& function);

    Task& task_;
    Clock::time_point began_;
    double time_limit_;
    Phase phase_;
    std::int32_t answer_ = 0;
};

}
