#include "kalvo/worker/channel.h"

#include <utility>

namespace klv {

constexpr std::size_t most_told = 2000;
constexpr std::size_t longest_line = 1000;
constexpr std::size_t most_phases = 1000;

void Bell::ring () noexcept
{
    {
        const std::lock_guard lock (mutex_);
        rang_ = true;
    }
    condition_.notify_one ();    // a thread that wakes while the lock is held goes back to sleep
}

void Bell::wait (double seconds)
{
    std::unique_lock lock (mutex_);
    condition_.wait_for (lock, std::chrono::duration<double> (seconds), [&] { return rang_; });
    rang_ = false;
}

void EventChannel::end_line ()
{
    if (news_.told.size () < most_told)
        news_.told.emplace_back (std::move (partial_line_));
    else
        ++news_.dropped_lines;
    partial_line_.clear ();
}

void EventChannel::text (std::string_view piece) noexcept
{
    try {
        const std::lock_guard lock (mutex_);
        for (const char character : piece)
            if (character == '\n')
                end_line ();
            else if (partial_line_.size () < longest_line)
                partial_line_ += character;
    } catch (...) {    // out of memory: the text is lost, the run goes on
    }
}

void EventChannel::note (const Progress& now)
{
    const bool another_phase = now.caller != news_.progress.caller;
    news_.progress = now;
    news_.progress.at = Clock::now ();
    if (another_phase && news_.phases.size () < most_phases)
        news_.phases.push_back ({now.caller, news_.progress.at});
}

void EventChannel::progress (const Progress& now) noexcept
{
    try {
        const std::lock_guard lock (mutex_);
        note (now);
    } catch (...) {
    }
}

void EventChannel::step (const Progress& now) noexcept
{
    try {
        const std::lock_guard lock (mutex_);
        note (now);
        if (news_.told.size () < most_told)
            news_.told.emplace_back (news_.progress);
    } catch (...) {
    }
}

void EventChannel::incumbent (const double* x, std::size_t count) noexcept
{
    try {
        const std::lock_guard lock (mutex_);
        incumbent_.assign (x, x + count);
        news_.new_incumbent = true;
    } catch (...) {    // no memory: the calling thread does not learn of this incumbent
    }
}

void EventChannel::finish (Claims&& claims) noexcept
{
    const std::lock_guard lock (mutex_);
    claims_ = std::move (claims);
    news_.finished = true;
}

EventChannel::News EventChannel::take_news ()
{
    const std::lock_guard lock (mutex_);
    if (news_.finished && !partial_line_.empty ())
        end_line ();
    News news = std::move (news_);
    news_ = {};
    news_.progress = news.progress;
    news_.finished = news.finished;
    return news;
}

std::vector<double> EventChannel::take_incumbent ()
{
    const std::lock_guard lock (mutex_);
    return std::exchange (incumbent_, {});
}

Claims EventChannel::take_claims ()
{
    const std::lock_guard lock (mutex_);
    return std::exchange (claims_, {});
}

}
