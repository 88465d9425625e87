// Turns the callbacks and log lines of HiGHS into events. HiGHS calls back only on the thread that runs it.
#pragma once

#include "kalvo/engines/engine.h"

#include <interfaces/highs_c_api.h>

#include <string>
#include <string_view>

namespace klv::highs {

class Listener {
public:
    Listener (const Job& job, const StopFlag& stop, Events& events, const Search& search);

    static void called (int type, const char* message, const HighsCallbackDataOut* out,
                        HighsCallbackDataIn* in, void* listener);

    void begin (std::uint32_t phase);
    bool stopped () const { return stop_.load (std::memory_order_relaxed); }
    void count_nodes (std::int64_t nodes) { now_.search.nodes = nodes; }
    void end ();    // reports the last figures
    const Search& search () const { return now_.search; }
    std::int64_t solutions () const { return now_.search.solutions; }
    const std::string& last_error () const { return last_error_; }

private:
    void take_message (std::string_view message, int type);
    void read_line (std::string_view line);
    bool read_iteration (std::string_view line);
    void take_iterations (std::int64_t iterations);
    void take_integer_state (const HighsCallbackDataOut& out);
    void take_row (const HighsCallbackDataOut& out);
    void take_solution_time ();

    const StopFlag& stop_;
    Events& events_;
    const Method method_;
    const std::uint32_t phase_of_method_;
    const bool passes_text_on_;
    Progress now_;
    Clock::time_point reported_ = Clock::now ();
    std::string last_error_;
};

}
