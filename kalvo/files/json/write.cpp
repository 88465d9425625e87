#include "kalvo/files/json/json.h"

#include "kalvo/files/json/conic.h"
#include "kalvo/files/json/writer.h"

#include <algorithm>
#include <cmath>

namespace klv {

// ---- The task

static void write_items (JsonWriter& json, const Bounds& bounds, const Names& names)
{
    json.words ("keys", Group::bound_key, bounds.key);
    json.numbers ("lower", bounds.lower);
    json.numbers ("upper", bounds.upper);
    json.names ("names", names, bounds.count ());
}

static void write_matrix (JsonWriter& json, const ColumnMatrix& matrix)
{
    const auto for_each_column = [&] (const auto& put) {
        for (std::int32_t j = 0; j < matrix.columns (); ++j)
            put (matrix.column (j));
    };
    json.list ("counts", [&] (auto next) {
        for_each_column ([&] (Column column) { append (next (), column.rows.size ()); });
    });
    json.list ("rows", [&] (auto next) {
        for_each_column ([&] (Column column) {
            for (const std::int32_t row : column.rows)
                append (next (), row);
        });
    });
    json.list ("values", [&] (auto next) {
        for_each_column ([&] (Column column) {
            for (const double value : column.values)
                append_number (next (), value);
        });
    });
}

static void write_problem (JsonWriter& json, const Problem& problem)
{
    json.open ("problem");
    json.name ("name", problem.name);
    json.open ("objective");
    json.name ("name", problem.objective_name);
    json.word ("sense", Group::sense, problem.sense);
    json.number ("constant", problem.constant);
    json.close ();
    json.open ("variables");
    write_items (json, problem.variable, problem.variable_name);
    json.numbers ("costs", problem.cost);
    json.list ("integers", [&] (auto next) {
        for (std::size_t j = 0; j < problem.integer.size (); ++j)
            if (problem.integer[j] == KLV_VAR_INTEGER)
                append (next (), j);
    });
    json.close ();
    json.open ("constraints");
    write_items (json, problem.constraint, problem.constraint_name);
    json.close ();
    json.open ("matrix");
    write_matrix (json, problem.matrix);
    json.close ();
    write_conic (json, problem);
    json.close ();
}

static void write_parameters (JsonWriter& json, const Parameters& parameters)
{
    json.open ("parameters");
    const auto write = [&] (const auto& rows, const auto& values) {
        for (std::size_t i = 0; i < rows.size (); ++i)
            if (is_kept_in_json (rows[i].drives) && values[i] != rows[i].fallback)
                json.number (rows[i].name, values[i]);
    };
    write (real_parameters, parameters.doubles);
    write (int_parameters, parameters.integers);
    json.close ();
}

// Leaves out arrays without a known value.
static void write_solution (JsonWriter& json, const Solution& solution)
{
    const std::int32_t status = solution.solution_status;
    json.words ("skc", Group::status_key, solution.skc);
    json.words ("skx", Group::status_key, solution.skx);
    if (status == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE ||
        status == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE)
        json.word ("certificate", Group::problem_status, solution.problem_status);
    if (solution.has_primal || status == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE ||
        std::ranges::any_of (solution.xx, [] (double value) { return std::isnan (value); }))
        json.numbers ("xx", solution.xx);
    if (solution.has_dual || status == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE) {
        json.numbers ("y", solution.y);
        json.numbers ("slx", solution.slx);
        json.numbers ("sux", solution.sux);
    }
    if (!solution.skn.empty ())
        json.words ("skn", Group::status_key, solution.skn);
    for (const auto& [name, values] : {std::pair ("snx", &solution.snx),
                                       {"barx", &solution.barx},
                                       {"bars", &solution.bars},
                                       {"doty", &solution.doty}})
        if (!values->empty ())
            json.numbers (name, *values);
}

// The lowest version that has all fields of the task.
static double version_of (const Task& task)
{
    const std::optional<Solution>& interior = task.solutions[KLV_SOL_ITR];
    const bool has_conic_values =
        interior && !(interior->skn.empty () && interior->snx.empty () && interior->barx.empty () &&
                      interior->bars.empty () && interior->doty.empty ());
    return has_conic_values || has_conic_fields (task.problem ()) ? json_version : 1;
}

void write_json (Task& task, OutputFile& file)
{
    JsonWriter json (file);
    json.open ("");
    json.name ("format", std::string (json_format));
    json.number ("version", version_of (task));
    write_problem (json, task.problem ());
    write_parameters (json, task.parameters);
    json.open ("solutions");
    for (std::size_t which = 0; which < task.solutions.size (); ++which)
        if (task.solutions[which]) {
            json.open (json_solutions[which]);
            write_solution (json, *task.solutions[which]);
            json.close ();
        }
    json.close ();
    json.close ();
    json.finish ();
}

}
