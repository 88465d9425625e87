#include "kalvo/report/log.h"

#include "kalvo/model/text.h"
#include "kalvo/verify/quality.h"

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

static std::string counted (std::int64_t count, const char* noun)
{
    return text (count, " ", noun, count == 1 ? "" : "s");
}

static std::string further_classes (const Problem& problem)
{
    std::string words;
    const auto add = [&] (std::int64_t count, const char* noun) {
        if (count > 0)
            words += ", " + counted (count, noun);
    };
    add (problem.quadratic_objective.count (), "quadratic term");
    add (problem.quadratic_constraint.count (), "quadratic constraint term");
    add (problem.affine_constraint.count (), "affine conic constraint");
    add (problem.cone.count (), "cone");
    add (problem.semidefinite.count (), "semidefinite variable");
    if (problem.semidefinite.count () > 0)
        words += text (" (largest order ", *std::ranges::max_element (problem.semidefinite.order), ")");
    return words;
}

void Log::header ()
{
    if (level_ < 1)
        return;
    const Problem& problem = task_.problem ();
    std::string line = text ("Problem", problem.name.empty () ? "" : " " + problem.name,
                             problem.sense == KLV_SENSE_MAXIMIZE ? ": maximise, " : ": minimise, ",
                             counted (problem.constraints (), "constraint"), ", ",
                             counted (problem.variables (), "variable"));
    if (problem.integers > 0)
        line += text (" (", problem.integers, " integer)");
    line += text (", ", problem.matrix.entries (), problem.matrix.entries () == 1 ? " entry" : " entries");
    if (!problem.is_linear ())
        line += further_classes (problem);
    task_.say (line);
}

void Log::no_run (const std::string& why)
{
    if (level_ >= 2)
        task_.say (text ("Optimiser: none (", why, ")"));
}

std::size_t Log::begin_run (const Begin& begin)
{
    const MethodRow& method = about (begin.method);
    const bool shows_progress = level_ >= 2 && task_.parameters.get (method.log) != 0;
    runs_.push_back ({begin.method, shows_progress, begin.seconds});
    side_by_side_ = begin.joins;
    titled_ = titled_ && begin.joins;
    if (shows_progress)
        task_.say (text (
            begin.joins ? formatted ("Joined after %.2f s: ", begin.seconds) : "Optimiser: ", method.name,
            " (", begin.why, "); ", begin.engine, ", ", counted (begin.threads, "thread")));
    return runs_.size () - 1;
}

// ---- Progress -------------------------------------------------------------------------------------------------------------

void Log::presolved (const Run& run, const Sizes& left, double seconds)
{
    const Problem& problem = task_.problem ();
    std::string change;
    bool reduced = false;
    const auto add = [&] (std::int64_t from, std::int64_t to, const char* what) {
        change += text (" ", from, " -> ", to, " ", what, ",");
        reduced = reduced || from != to;
    };
    add (problem.constraints (), left.rows, "constraints");
    add (problem.variables (), left.columns, "variables");
    add (problem.matrix.entries (), left.entries, "entries");
    task_.say (text ("Presolve", side_by_side_ ? text (" of ", about (run.method).name) : "", ":",
                     reduced ? change : " nothing to reduce,", formatted (" %.2f s", seconds - run.began)));
}

static std::string number (int width, int digits, bool known, double value)
{
    return known && std::isfinite (value) ? formatted (" %*.*e", width, digits, value)
                                          : formatted (" %*s", width, "-");
}

// The engine prints objectives with 8 digits in interior-point methods, 10 in simplex.
static std::string linear_row (Method method, const Progress& now, bool measured)
{
    const int digits = is_interior (method) ? 8 : 10;
    return formatted ("%10lld", static_cast<long long> (now.iterations)) +
           number (18, digits, now.has_primal, now.primal_objective) +
           number (18, digits, now.has_dual, now.dual_objective) +
           number (9, 1, measured, now.primal_violation) + number (9, 1, measured, now.dual_violation);
}

// The gap between incumbent and bound.
static std::string percentage (const Progress& now)
{
    const double gap = 100 * relative_gap (now.primal_objective, now.dual_objective);
    if (!now.has_primal || !now.has_dual)
        return "-";
    return gap < 1e5 ? formatted ("%.2f%%", gap) : "large";
}

// A star: since the last row the search found a better point.
static std::string search_row (const Progress& now, bool improved)
{
    const auto value = [] (bool known, double number) {
        return known ? formatted ("%.10g", number) : std::string ("-");
    };
    return formatted (
        "%c%8lld %7lld %16s %16s %9s %10lld", improved ? '*' : ' ', static_cast<long long> (now.search.nodes),
        static_cast<long long> (now.search.open_nodes), value (now.has_primal, now.primal_objective).c_str (),
        value (now.has_dual, now.dual_objective).c_str (), percentage (now).c_str (),
        static_cast<long long> (now.iterations));
}

void Log::row (Run& run, const Progress& now, bool measured, double seconds)
{
    const bool search = run.method == Method::mixed_integer;
    const std::string line = search ? search_row (now, now.search.solutions > run.solutions)
                                    : linear_row (run.method, now, measured);
    if (line == run.printed && seconds - run.printed_at < 1)
        return;
    if (!titled_)
        task_.say (search ? formatted ("%9s %7s %16s %16s %9s %10s %8s", "nodes", "open", "incumbent",
                                       "bound", "gap", "iterations", "seconds")
                          : formatted ("%10s %18s %18s %9s %9s %8s", "iteration", "primal objective",
                                       "dual objective", "primal", "dual", "seconds"));
    task_.say (line + formatted (" %8.2f", seconds) +
               (side_by_side_ ? text ("  ", about (run.method).name) : ""));
    titled_ = true;
    run.printed = line;
    run.printed_at = seconds;
    run.solutions = now.search.solutions;
}

void Log::step (std::size_t number_of_run, const Progress& now, double seconds)
{
    Run& run = runs_[number_of_run];
    if (!run.shows_progress)
        return;
    if (now.caller == KLV_CALLER_PRESOLVE && now.presolved)
        presolved (run, *now.presolved, seconds);
    else
        row (run, now, true, seconds);
}

// Pulses become rarer as a run grows longer. Between the steps of a linear method only its iteration count is current.
void Log::pulse (std::size_t number_of_run, const Progress& now, double seconds)
{
    Run& run = runs_[number_of_run];
    const bool search = run.method == Method::mixed_integer;
    if (!run.shows_progress || seconds - run.printed_at < std::max (1.0, seconds / 20) ||
        (now.iterations == 0 && !search) || now.caller == KLV_CALLER_PRESOLVE)
        return;
    Progress known = now;
    known.has_primal = known.has_primal && search;
    known.has_dual = known.has_dual && search;
    row (run, known, false, seconds);
}

void Log::engine_line (std::size_t number_of_run, const std::string& line)
{
    if (level_ >= 3)
        task_.say (text ("  ", side_by_side_ ? text (about (runs_[number_of_run].method).name, " ") : "",
                         "| ", line));
}

}
