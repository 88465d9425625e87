// The processes that this one has started.
#pragma once

#include "kalvo/engines/events.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace processes {

inline std::vector<pid_t> children ()
{
    std::vector<pid_t> found;
    std::ifstream list ("/proc/self/task/" + std::to_string (::getpid ()) + "/children");
    for (pid_t child = 0; list >> child;)
        found.push_back (child);
    return found;
}

// Whether a process may still compute: one that has ended and was not waited for may not.
inline bool is_alive (pid_t process)
{
    std::ifstream status ("/proc/" + std::to_string (process) + "/stat");
    std::string text;
    std::getline (status, text);
    const std::size_t end = text.rfind (") ");
    return end != text.npos && text[end + 2] != 'Z';
}

inline bool all_end (const std::vector<pid_t>& some, double seconds)
{
    const auto began = klv::Clock::now ();
    while (std::ranges::any_of (some, is_alive))
        if (klv::seconds_between (began, klv::Clock::now ()) > seconds)
            return false;
        else
            std::this_thread::sleep_for (std::chrono::milliseconds (5));
    return true;
}

// Kills all children after a time, on a thread of its own.
class Killer {
public:
    explicit Killer (std::chrono::microseconds wait)
        : thread_ ([this, wait] {
              std::this_thread::sleep_for (wait);
              for (const pid_t child : children ())
                  kills_ += is_alive (child) && ::kill (child, SIGKILL) == 0;
          })
    {}
    int kills ()    // waits for the thread
    {
        thread_.join ();
        return kills_;
    }

private:
    int kills_ = 0;
    std::jthread thread_;
};

}
