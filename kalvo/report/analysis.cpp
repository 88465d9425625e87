#include "kalvo/report/analysis.h"

#include "kalvo/engines/engine.h"
#include "kalvo/model/describe.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <vector>

namespace klv {

// ---- Collecting -----------------------------------------------------------------------------------

// Smallest and largest magnitude of the values that are neither 0 nor infinite.
struct Magnitudes {
    double smallest = infinity;
    double largest = 0;

    void add (double value)
    {
        const double magnitude = std::abs (value);
        if (magnitude > 0 && magnitude < infinity) {
            smallest = std::min (smallest, magnitude);
            largest = std::max (largest, magnitude);
        }
    }
    bool any () const { return largest > 0; }
    double ratio () const { return largest / smallest; }
};

struct BoundKinds {
    std::array<std::int32_t, 5> of_key{};
    std::int32_t crossed = 0;
    std::int32_t first_crossed = -1;
    Magnitudes magnitudes;
};

struct Analysis {
    BoundKinds constraint, variable;
    std::int32_t empty_columns = 0, empty_rows = 0;
    std::int32_t longest_column = 0, longest_row = 0;
    std::int32_t binaries = 0;
    std::int64_t zeros = 0, tiny = 0, huge = 0;
    Magnitudes matrix, cost;
    Limits limits = engines ().front ()->limits ();
};

constexpr double wide_ratio = 1e9;

static BoundKinds look_at (const Bounds& bounds, double tolerance)
{
    BoundKinds kinds;
    for (std::size_t i = 0; i < bounds.key.size (); ++i) {
        ++kinds.of_key[bounds.key[i]];
        kinds.magnitudes.add (bounds.lower[i]);
        kinds.magnitudes.add (bounds.upper[i]);
        if (bounds.lower[i] - bounds.upper[i] > tolerance && kinds.crossed++ == 0)
            kinds.first_crossed = static_cast<std::int32_t> (i);
    }
    return kinds;
}

static void look_at (Column column, std::vector<std::int32_t>& row_lengths, Analysis& analysis)
{
    analysis.empty_columns += column.rows.empty ();
    analysis.longest_column =
        std::max (analysis.longest_column, static_cast<std::int32_t> (column.rows.size ()));
    for (const std::int32_t row : column.rows)
        ++row_lengths[static_cast<std::size_t> (row)];
    for (const double value : column.values) {
        const double magnitude = std::abs (value);
        analysis.matrix.add (magnitude);
        analysis.zeros += magnitude == 0;
        analysis.tiny += magnitude > 0 && magnitude <= analysis.limits.smallest_entry;
        analysis.huge += magnitude >= analysis.limits.largest_entry;
    }
}

// Returns the progress callback's answer when that ends the analysis, else 0.
static std::int32_t look_at (Task& task, Analysis& analysis)
{
    const Problem& problem = task.problem ();
    const double tolerance = task.parameters.get (RealSetting::fixing_tolerance);
    analysis.constraint = look_at (problem.constraint, tolerance);
    analysis.variable = look_at (problem.variable, tolerance);
    for (const double cost : problem.cost)
        analysis.cost.add (cost);

    std::vector<std::int32_t> row_lengths (static_cast<std::size_t> (problem.constraints ()), 0);
    std::size_t work = 0;
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        const Column column = problem.matrix.column (j);
        look_at (column, row_lengths, analysis);
        const auto place = static_cast<std::size_t> (j);
        analysis.binaries += problem.integer[place] == KLV_VAR_INTEGER &&
                             problem.variable.lower[place] == 0 && problem.variable.upper[place] == 1;
        work += column.rows.size () + 1;
        if (work > 1'000'000) {
            work = 0;
            if (const std::int32_t answer = task.ask_callback_in_time (KLV_CALLER_ANALYZE))
                return answer;
        }
    }
    for (const std::int32_t length : row_lengths) {
        analysis.empty_rows += length == 0;
        analysis.longest_row = std::max (analysis.longest_row, length);
    }
    return 0;
}

static void note (Information& information, const Analysis& analysis)
{
    const auto set = [&] (RealItem smallest, RealItem largest, const Magnitudes& magnitudes) {
        information.set (smallest, magnitudes.any () ? magnitudes.smallest : 0);
        information.set (largest, magnitudes.largest);
    };
    Magnitudes bounds = analysis.constraint.magnitudes;
    bounds.smallest = std::min (bounds.smallest, analysis.variable.magnitudes.smallest);
    bounds.largest = std::max (bounds.largest, analysis.variable.magnitudes.largest);
    set (RealItem::smallest_matrix_value, RealItem::largest_matrix_value, analysis.matrix);
    set (RealItem::smallest_cost, RealItem::largest_cost, analysis.cost);
    set (RealItem::smallest_bound, RealItem::largest_bound, bounds);
    information.set (IntItem::crossed_bounds, analysis.constraint.crossed + analysis.variable.crossed);
}

// ---- Printing -------------------------------------------------------------------------------------

class Page {
public:
    Page (Task& task, std::int32_t stream) : task_ (task), stream_ (stream) {}

    __attribute__ ((format (printf, 2, 3))) void line (const char* format, ...)
    {
        char words[256];
        va_list arguments;
        va_start (arguments, format);
        std::vsnprintf (words, sizeof words, format, arguments);
        va_end (arguments);
        task_.streams.print_on (stream_, words);
    }
    void line (const std::string& words) { task_.streams.print_on (stream_, words); }

private:
    Task& task_;
    std::int32_t stream_;
};

static void print_title (Page& page, const char* title, const Problem& problem)
{
    page.line (problem.name.empty () ? std::string (title) : text (title, " '", problem.name, "'"));
    page.line ("  Objective            %12s", problem.sense == KLV_SENSE_MINIMIZE ? "minimize" : "maximize");
}

static void print_bounds (Page& page, const Analysis& analysis)
{
    static constexpr struct {
        std::size_t key;
        const char* words;
    } kinds[] = {{KLV_BK_LO, "lower bound only"},
                 {KLV_BK_UP, "upper bound only"},
                 {KLV_BK_RA, "both bounds"},
                 {KLV_BK_FX, "fixed, or equality"},
                 {KLV_BK_FR, "no bound"}};
    for (const auto& kind : kinds)
        page.line ("    %-19s%12d %12d", kind.words, analysis.constraint.of_key[kind.key],
                   analysis.variable.of_key[kind.key]);
}

static void print_ranges (Page& page, const char* what, const Magnitudes& magnitudes)
{
    if (magnitudes.any ())
        page.line ("  %-21s%12.2e %12.2e %12.1e", what, magnitudes.smallest, magnitudes.largest,
                   magnitudes.ratio ());
    else
        page.line ("  %-21s%12s %12s %12s", what, "-", "-", "-");
}

static void print_conic_ranges (Page& page, const Problem& problem)
{
    const auto ranges = [&] (const char* what, std::initializer_list<std::span<const double>> lists) {
        Magnitudes magnitudes;
        for (const auto& values : lists)
            for (const double value : values)
                magnitudes.add (value);
        if (magnitudes.any ())
            print_ranges (page, what, magnitudes);
    };
    const SemidefiniteVariables& matrices = problem.semidefinite;
    ranges ("Quadratic terms", {problem.quadratic_objective.value, problem.quadratic_constraint.value});
    ranges ("Affine constants", {problem.affine.g});
    ranges ("Semidefinite terms",
            {matrices.objective.value, matrices.constraint.value, matrices.expression.value});
}

static void print_warnings (Page& page, const Problem& problem, const Analysis& analysis)
{
    const auto ratio = [&] (const char* what, const Magnitudes& magnitudes) {
        if (magnitudes.any () && magnitudes.ratio () > wide_ratio)
            page.line (
                text ("Warning: ", what, " differ by a factor of more than 1e9; expect numerical trouble."));
    };
    ratio ("magnitudes in the matrix", analysis.matrix);
    ratio ("magnitudes of costs", analysis.cost);
    ratio ("magnitudes of constraint bounds", analysis.constraint.magnitudes);
    ratio ("magnitudes of variable bounds", analysis.variable.magnitudes);
    const Limits& limits = analysis.limits;
    if (analysis.tiny > 0)
        page.line (text ("Warning: ", analysis.tiny, " matrix entries of at most ", limits.smallest_entry,
                         "; the optimiser takes them as 0."));
    if (analysis.huge > 0)
        page.line (text ("Warning: ", analysis.huge, " matrix entries of ", limits.largest_entry,
                         " and more can't be handled."));
    if (std::max (analysis.constraint.magnitudes.largest, analysis.variable.magnitudes.largest) >=
        limits.infinite_bound)
        page.line (text ("Warning: bounds of ", limits.infinite_bound,
                         " and more are taken as infinite by the optimiser."));
    if (analysis.cost.largest >= limits.infinite_cost)
        page.line (text ("Warning: costs of ", limits.infinite_cost, " and more can't be handled."));
    if (analysis.zeros > 0)
        page.line (text ("Note: ", analysis.zeros, " matrix entries are 0."));
    if (analysis.constraint.crossed > 0)
        page.line (text ("Warning: ", analysis.constraint.crossed,
                         " constraints have crossed bounds, the first is ",
                         describe_constraint (problem, analysis.constraint.first_crossed), "."));
    if (analysis.variable.crossed > 0)
        page.line (text ("Warning: ", analysis.variable.crossed,
                         " variables have crossed bounds, the first is ",
                         describe_variable (problem, analysis.variable.first_crossed), "."));
}

// Lines for those classes of terms and items that the problem has.
static void print_conic (Page& page, const Problem& problem)
{
    const auto count = [&] (const char* what, std::int64_t items) {
        if (items > 0)
            page.line ("  %-21s%12lld", what, static_cast<long long> (items));
    };
    count ("Quadratic objective", problem.quadratic_objective.count ());
    count ("Quadratic constraints", problem.quadratic_constraint.count ());
    count ("Affine expressions", problem.affine.count ());
    count ("  their entries", problem.affine.f.entries ());
    count ("Affine conic constr.", problem.affine_constraint.count ());
    count ("  their rows", problem.affine_constraint.rows ());
    count ("Cones", problem.cone.count ());
    count ("  their members", std::ssize (problem.cone.member));
    count ("Semidefinite matrices", problem.semidefinite.count ());
    count ("  their entries", problem.semidefinite.length ());
    count ("  their terms", problem.semidefinite.objective.count () +
                                problem.semidefinite.constraint.count () +
                                problem.semidefinite.expression.count ());
}

KLVrescode_t problem_summary (Task& task, std::int32_t stream)
{
    const Problem& problem = task.problem ();
    Page page (task, stream);
    print_title (page, "Problem", problem);
    page.line ("  Constraints          %12d", problem.constraints ());
    page.line ("  Variables            %12d", problem.variables ());
    page.line ("  Integer variables    %12d", problem.integers);
    page.line ("  Matrix entries       %12lld", static_cast<long long> (problem.matrix.entries ()));
    print_conic (page, problem);
    return KLV_RES_OK;
}

KLVrescode_t analyze_problem (Task& task, std::int32_t stream)
{
    const Problem& problem = task.problem ();
    Analysis analysis;
    if (const std::int32_t answer = look_at (task, analysis))
        return stop_code (answer);
    note (task.information, analysis);

    Page page (task, stream);
    print_title (page, "Analysis of the problem", problem);
    page.line ("%-23s%12s %12s", "", "constraints", "variables");
    page.line ("  %-21s%12d %12d", "All", problem.constraints (), problem.variables ());
    print_bounds (page, analysis);
    page.line ("  %-21s%12d %12d", "Without entries", analysis.empty_rows, analysis.empty_columns);
    page.line ("  %-21s%12d %12d", "Most entries of one", analysis.longest_row, analysis.longest_column);
    page.line ("  %-21s%12s %12d", "Integer", "", problem.integers);
    page.line ("  %-21s%12s %12d", "  of them binary", "", analysis.binaries);
    const double places = static_cast<double> (problem.constraints ()) * problem.variables ();
    const double entries = static_cast<double> (problem.matrix.entries ());
    page.line ("  %-21s%12.0f", "Matrix entries", entries);
    page.line ("  %-21s%11.3g%%", "  of all places", places > 0 ? 100 * entries / places : 0.0);
    print_conic (page, problem);
    page.line ("%-23s%12s %12s %12s", "Magnitudes", "smallest", "largest", "ratio");
    print_ranges (page, "Matrix", analysis.matrix);
    print_ranges (page, "Costs", analysis.cost);
    print_conic_ranges (page, problem);
    print_ranges (page, "Constraint bounds", analysis.constraint.magnitudes);
    print_ranges (page, "Variable bounds", analysis.variable.magnitudes);
    print_warnings (page, problem, analysis);
    return KLV_RES_OK;
}

}
