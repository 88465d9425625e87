#include "kalvo/engines/channel.h"

#include <chrono>
#include <utility>

namespace klv {

constexpr std::size_t most_lines = 2000;
constexpr std::size_t longest_line = 1000;

void EventChannel::end_line ()
{
    if (lines_.size () < most_lines)
        lines_.push_back (std::move (partial_line_));
    else
        ++dropped_lines_;
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
        if (!lines_.empty ())
            changed_.notify_one ();
    } catch (...) {             // out of memory: the text is lost, the run goes on
    }
}

void EventChannel::progress (const Progress& now) noexcept
{
    const std::lock_guard lock (mutex_);
    if (now.caller != progress_.caller) {
        phase_changed_ = true;
        changed_.notify_one ();
    }
    progress_ = now;
}

void EventChannel::incumbent (const double* x, std::size_t count) noexcept
{
    try {
        const std::lock_guard lock (mutex_);
        incumbent_.assign (x, x + count);
    } catch (...) {             // the earlier one stays
    }
}

void EventChannel::finish (Claims&& claims) noexcept
{
    const std::lock_guard lock (mutex_);
    claims_ = std::move (claims);
    finished_ = true;
    changed_.notify_one ();
}

EventChannel::News EventChannel::wait (double seconds)
{
    std::unique_lock lock (mutex_);
    changed_.wait_for (lock, std::chrono::duration<double> (seconds),
                       [&] { return finished_ || phase_changed_ || !lines_.empty (); });
    phase_changed_ = false;
    News news;
    news.lines = std::exchange (lines_, {});
    news.dropped_lines = std::exchange (dropped_lines_, 0);
    news.progress = progress_;
    news.finished = finished_;
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
