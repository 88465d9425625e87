// The log of an optimisation: a header, a line for each step of a method in aligned columns, and on request the engine's own
// lines.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/task/task.h"

#include <cstddef>
#include <string>
#include <vector>

namespace klv {

#if defined(__GNUC__)
__attribute__ ((format (printf, 1, 2)))
#endif
std::string
formatted (const char* format, ...);

class Log {
public:
    explicit Log (Task& task) : task_ (task), level_ (task.parameters.get (IntSetting::log_level)) {}

    void header ();
    void no_run (const std::string& why);

    struct Begin {
        Method method;
        bool joins;    // another run is under way
        int threads;
        const char* engine;
        const std::string& why;
        double seconds;    // here and below: since the optimisation began
    };
    std::size_t runs () const { return runs_.size (); }
    std::size_t begin_run (const Begin& begin);                           // returns the run's number
    void step (std::size_t run, const Progress& now, double seconds);     // prints one line
    void pulse (std::size_t run, const Progress& now, double seconds);    // prints one after a long silence
    void engine_line (std::size_t run, const std::string& line);

private:
    // Runs side by side share the columns; each line then names its method.
    struct Run {
        Method method;
        bool shows_progress;
        double began, printed_at = 0;
        std::int64_t solutions = 0;
        std::string printed = {};
    };

    void presolved (const Run& run, const Sizes& left, double seconds);
    void row (Run& run, const Progress& now, bool measured, double seconds);

    Task& task_;
    int level_;
    std::vector<Run> runs_;
    bool titled_ = false;
    bool side_by_side_ = false;
};

}
