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
    case Method::primal_simplex:
        return "primal simplex";
    case Method::dual_simplex:
        return "dual simplex";
    case Method::interior_point:
        return "interior point";
    case Method::mixed_integer:
        return "integer search";
    }
    return {};
}

void Log::header ()
{
    if (level_ < 1)
        return;
    const Problem& problem = task_.problem ();
    std::string line =
        text ("Optimising, ",
              problem.sense == KLV_SENSE_MAXIMIZE ? "maximise: " : "minimise: ", problem.constraints (),
              " constraints, ", problem.variables (), " variables");
    if (problem.integers > 0)
        line += text (" (", problem.integers, " integer)");
    task_.say (line + text (", ", problem.matrix.entries (), " entries"));
}

std::size_t Log::begin_run (const Job& job, const char* engine, bool joins)
{
    const IntSetting switched = job.method == Method::interior_point  ? IntSetting::log_interior_point
                                : job.method == Method::mixed_integer ? IntSetting::log_mixed_integer
                                                                      : IntSetting::log_simplex;
    const bool shows_progress = level_ >= 2 && task_.parameters.get (switched) != 0;
    runs_.push_back ({job.method, method_name (job.method, job.finishes ()), shows_progress});
    side_by_side_ = joins;
    titled_ = titled_ && joins;
    if (shows_progress)
        task_.say (text (joins ? "Joined by " : "Running ", runs_.back ().name, " (", engine, "), ",
                         job.threads, job.threads == 1 ? " thread" : " threads",
                         job.reformulate ? "" : ", without presolve and scaling"));
    return runs_.size () - 1;
}

static std::string number (bool known, double value)
{
    return known && std::isfinite (value) ? formatted (" %18.10e", value) : formatted (" %18s", "-");
}

static std::string violation (bool known, double value)
{
    return known ? formatted (" %9.1e", value) : formatted (" %9s", "-");
}

// What is left to prove, relative to the incumbent.
static std::string percentage (const Progress& now)
{
    const double distance = std::abs (now.primal_objective - now.dual_objective);
    return now.has_primal && now.has_dual
               ? formatted (" %8.2f%%", 100 * distance / std::max (1.0, std::abs (now.primal_objective)))
               : formatted (" %9s", "-");
}

void Log::step (std::size_t number_of_run, const Progress& now, double seconds)
{
    Run& run = runs_[number_of_run];
    if (!run.shows_progress)
        return;
    const bool integer = run.method == Method::mixed_integer;
    if (!titled_)
        task_.say (integer ? formatted ("%10s %10s %18s %18s %9s %8s", "node", "points", "incumbent", "bound",
                                        "gap", "seconds")
                           : formatted ("%10s %18s %18s %9s %9s %8s", "iteration", "primal objective",
                                        "dual objective", "primal", "dual", "seconds"));
    std::string line =
        formatted ("%10lld", static_cast<long long> (integer ? now.search.nodes : now.iterations));
    if (integer)
        line += formatted (" %10lld", static_cast<long long> (now.search.solutions));
    line += number (now.has_primal, now.primal_objective) + number (now.has_dual, now.dual_objective);
    const bool measured =
        now.has_primal || now.has_dual || now.primal_violation != 0 || now.dual_violation != 0;
    line += integer ? percentage (now)
                    : violation (measured, now.primal_violation) + violation (measured, now.dual_violation);
    line += formatted (" %8.2f", seconds);
    task_.say (side_by_side_ ? line + "  " + run.name : line);
    titled_ = true;
    run.printed_at = seconds;
}

// The longer a run takes, the more rarely. Between its steps a linear method tells the iteration only.
void Log::pulse (std::size_t number_of_run, const Progress& now, double seconds)
{
    const Run& run = runs_[number_of_run];
    if (seconds - run.printed_at < std::max (1.0, seconds / 20) ||
        (now.iterations == 0 && run.method != Method::mixed_integer))
        return;
    Progress known = now;
    if (run.method != Method::mixed_integer) {
        known.has_primal = known.has_dual = false;
        known.primal_violation = known.dual_violation = 0;
    }
    step (number_of_run, known, seconds);
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
