// The log of an optimisation: one header, one line a step of a method in aligned columns, and the engine's own lines where
// they are asked for.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/task/task.h"

#include <string>

namespace klv {

#if defined(__GNUC__)
__attribute__ ((format (printf, 1, 2)))
#endif
std::string
formatted (const char* format, ...);

std::string method_name (Method method, bool finish);

class Log {
public:
    explicit Log (Task& task) : task_ (task), level_ (task.parameters.get (IntSetting::log_level)) {}

    void header ();
    void begin_run (const Job& job, const char* engine);
    void step (const Progress& now, double seconds);     // one line
    void pulse (const Progress& now, double seconds);    // the same, but only after a long silence
    void engine_line (const std::string& line);
    void summary_line (const std::string& line);    // where anything at all is printed

private:
    Task& task_;
    int level_;
    Method method_ = Method::dual_simplex;
    bool shows_progress_ = false;
    bool titled_ = false;
    double printed_at_ = 0;
};

}
