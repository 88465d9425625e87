#include "kalvo/solve/call.h"

#include "kalvo/tables/phases.h"
#include "kalvo/task/signals.h"

#include <algorithm>
#include <future>

namespace klv {

Call::Call (Task& task, double elapsed)
    : task_ (task),
      began_ (Clock::now () -
              std::chrono::duration_cast<Clock::duration> (std::chrono::duration<double> (elapsed))),
      time_limit_ (task.parameters.get (RealSetting::time_limit)),
      phase_{KLV_CALLER_BEGIN_OPTIMIZE, began_}
{
    if (time_limit_ < 0)
        time_limit_ = infinity;
}

double Call::seconds_left () const
{
    return std::max (time_limit_ - seconds (), 0.0);
}

void Call::ask (std::uint32_t caller)
{
    if (answer_ != 0)
        return;
    task_.information.set (RealItem::time_optimize, seconds ());
    answer_ = task_.ask_callback (caller);
}

void Call::change_phase (Phase& phase, std::uint32_t caller, Clock::time_point since)
{
    Information& information = task_.information;
    const auto* const row = std::ranges::find (phase_rows, phase.caller, &PhaseRow::caller);
    if (row != std::end (phase_rows))
        information.set (row->time, information.get (row->time) + seconds_between (phase.since, since));
    phase = {caller, since};
}

void Call::enter (std::uint32_t caller)
{
    change_phase (phase_, caller, Clock::now ());
    ask (caller);
}

void Call::leave ()
{
    change_phase (phase_, KLV_CALLER_BEGIN_OPTIMIZE, Clock::now ());
}

void Call::compute_beside (const std::function<void ()>& function)
{
    std::future<void> result;
    {
        const BlockedSignals blocked;
        result = std::async (std::launch::async, std::cref (function));
    }
    while (result.wait_for (between_questions) != std::future_status::ready)
        ask (phase_.caller);
    result.get ();
}

}
