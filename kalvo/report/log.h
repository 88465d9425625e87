// The log of an optimisation: one header, one line a progress step in aligned columns, and the engine's own lines where
// they are asked for.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/task/task.h"

#include <string>

namespace klv {

#if defined(__GNUC__)
__attribute__ ((format (printf, 1, 2)))
#endif
std::string formatted (const char* format, ...);

std::string method_name (Method method, bool finish);

class Log {
public:
    explicit Log (Task& task) : task_ (task), level_ (task.parameters.get (IntSetting::log_level)) {}

    void header ();
    void begin_run (const Job& job, const char* engine);
    void progress (const Progress& now, double seconds);        // prints a line when it is time for one
    void engine_line (const std::string& line);
    void summary_line (const std::string& line);                // where anything at all is printed

private:
    bool due (const Progress& now, double seconds) const;

    Task& task_;
    int level_;
    Method method_ = Method::dual_simplex;
    bool shows_progress_ = false;
    bool titled_ = false;
    double printed_at_ = 0;
    std::int64_t printed_iterations_ = -1;
    std::int64_t printed_solutions_ = 0;
};

}
