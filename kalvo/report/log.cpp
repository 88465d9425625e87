#include "kalvo/report/log.h"

#include "kalvo/task/text.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace klv {

std::string formatted (const char* format, ...)
{
    char line[400];
    std::va_list arguments;
    va_start (arguments, format);
    std::vsnprintf (line, sizeof line, format, arguments);
    va_end (arguments);
    return line;
}

std::string method_name (Method method, bool finish)
{
    if (finish)
        return "simplex finish";
    switch (method) {
    case Method::primal_simplex: return "primal simplex";
    case Method::dual_simplex: return "dual simplex";
    case Method::interior_point: return "interior point";
    case Method::mixed_integer: return "integer search";
    }
    return {};
}

void Log::header ()
{
    if (level_ < 1)
        return;
    const Problem& problem = task_.problem ();
    std::string line = text ("Optimising, ", problem.sense == KLV_SENSE_MAXIMIZE ? "maximise: " : "minimise: ",
                             problem.constraints (), " constraints, ", problem.variables (), " variables");
    if (problem.integers > 0)
        line += text (" (", problem.integers, " integer)");
    task_.say (line + text (", ", problem.matrix.entries (), " entries"));
}

void Log::begin_run (const Job& job, const char* engine)
{
    method_ = job.method;
    const IntSetting switched = method_ == Method::interior_point  ? IntSetting::log_interior_point
                                : method_ == Method::mixed_integer ? IntSetting::log_mixed_integer
                                                                   : IntSetting::log_simplex;
    shows_progress_ = level_ >= 2 && task_.parameters.get (switched) != 0;
    titled_ = false;
    printed_iterations_ = -1;
    printed_solutions_ = 0;
    if (shows_progress_)
        task_.say (text ("Running ", method_name (method_, job.start != nullptr), " (", engine, "), ", job.threads,
                         job.threads == 1 ? " thread" : " threads", job.reformulate ? "" : ", without presolve and scaling"));
}

// Interior point has a line for each iteration, the integer search one for each new point; all others come by the
// clock, more rarely the longer a run takes.
bool Log::due (const Progress& now, double seconds) const
{
    const double since = seconds - printed_at_;
    if (method_ == Method::interior_point)
        return now.has_primal && now.iterations != printed_iterations_;
    if (now.solutions != printed_solutions_ && since >= 0.1)
        return true;
    return since >= std::max (0.5, seconds / 20) && (now.iterations > 0 || now.has_dual);
}

static std::string number (bool known, double value)
{
    return known && std::isfinite (value) ? formatted ("%20.10e", value) : formatted ("%20s", "-");
}

void Log::progress (const Progress& now, double seconds)
{
    if (!shows_progress_ || !due (now, seconds))
        return;
    if (method_ == Method::mixed_integer) {
        if (!titled_)
            task_.say ("     nodes            incumbent                bound       gap  seconds");
        const double distance = std::abs (now.primal_objective - now.dual_objective);
        const bool both = now.has_primal && now.has_dual;
        const std::string gap = both ? formatted ("%8.3f%%", 100 * distance / std::max (1.0, std::abs (now.primal_objective)))
                                     : formatted ("%9s", "-");
        task_.say (formatted ("%10lld %s %s %s %8.2f", static_cast<long long> (now.nodes),
                              number (now.has_primal, now.primal_objective).c_str (),
                              number (now.has_dual, now.dual_objective).c_str (), gap.c_str (), seconds));
    } else if (method_ == Method::interior_point) {
        if (!titled_)
            task_.say (" iteration     primal objective       dual objective  seconds");
        task_.say (formatted ("%10lld %s %s %8.2f", static_cast<long long> (now.iterations),
                              number (now.has_primal, now.primal_objective).c_str (),
                              number (now.has_dual, now.dual_objective).c_str (), seconds));
    } else {
        if (!titled_)
            task_.say (" iteration            objective  seconds");
        task_.say (formatted ("%10lld %s %8.2f", static_cast<long long> (now.iterations),
                              number (now.has_primal, now.primal_objective).c_str (), seconds));
    }
    titled_ = true;
    printed_at_ = seconds;
    printed_iterations_ = now.iterations;
    printed_solutions_ = now.solutions;
}

void Log::engine_line (const std::string& line)
{
    if (level_ >= 3)
        task_.say (text ("  | ", line));
}

void Log::summary_line (const std::string& line)
{
    if (level_ >= 1)
        task_.say (line);
}

}
