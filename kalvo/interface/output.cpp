// The C interface: problem output.

#include "kalvo/interface/entry.h"

#include <algorithm>

using namespace klv;

// ---- Counts ----------------------------------------------------------------------------------------------

KLVrescode_t KLV_getnumvar (KLVtask_t task, int32_t* count)
{
    return give (task, count, "count", [] (const Problem& problem) { return problem.variables (); });
}

KLVrescode_t KLV_getnumcon (KLVtask_t task, int32_t* count)
{
    return give (task, count, "count", [] (const Problem& problem) { return problem.constraints (); });
}

KLVrescode_t KLV_getnumintvar (KLVtask_t task, int32_t* count)
{
    return give (task, count, "count", [] (const Problem& problem) { return problem.integers; });
}

KLVrescode_t KLV_getnumanz (KLVtask_t task, int64_t* count)
{
    return give (task, count, "count", [] (const Problem& problem) { return problem.matrix.entries (); });
}

// Disjunctive constraints can't be stated.
KLVrescode_t KLV_getnumdjc (KLVtask_t task, int64_t* count)
{
    return give (task, count, "count", [] (const Problem&) { return 0; });
}

// ---- Objective, matrix, bounds, types --------------------------------------------------------------------

KLVrescode_t KLV_getc (KLVtask_t task, double* costs)
{
    return read (task, [&] (Task& t) {
        const std::vector<double>& cost = t.problem ().cost;
        std::ranges::copy (cost, array (costs, static_cast<std::int64_t> (cost.size ()), "costs").begin ());
    });
}

KLVrescode_t KLV_getcfix (KLVtask_t task, double* constant)
{
    return give (task, constant, "constant", [] (const Problem& problem) { return problem.constant; });
}

KLVrescode_t KLV_getobjsense (KLVtask_t task, int32_t* sense)
{
    return give (task, sense, "sense", [] (const Problem& problem) { return problem.sense; });
}

KLVrescode_t KLV_getvartype (KLVtask_t task, int32_t j, int32_t* type)
{
    return give (task, type, "type", [&] (const Problem& problem) {
        check_index (j, problem.variables (), "variable");
        return problem.integer[static_cast<std::size_t> (j)];
    });
}

KLVrescode_t KLV_getacol (KLVtask_t task, int32_t j, int32_t* count, int32_t* rows, double* values)
{
    return read (task, [&] (Task& t) {
        check_index (j, t.problem ().variables (), "variable");
        const Column column = t.problem ().matrix.column (j);
        const auto size = static_cast<std::int32_t> (column.rows.size ());
        std::int32_t& size_place = output (count, "count");
        const auto row_places = array (rows, size, "rows");
        const auto value_places = array (values, size, "values");
        std::ranges::copy (column.rows, row_places.begin ());
        std::ranges::copy (column.values, value_places.begin ());
        size_place = size;
    });
}

static KLVrescode_t give_bound (KLVtask_t task, const Bounds Problem::*which, const char* item,
                                std::int32_t index, std::int32_t* key, double* lower, double* upper)
{
    return read (task, [&] (Task& t) {
        const Bounds& bounds = t.problem ().*which;
        check_index (index, bounds.count (), item);
        const auto place = static_cast<std::size_t> (index);
        std::int32_t& key_place = output (key, "key");
        double& lower_place = output (lower, "lower");
        double& upper_place = output (upper, "upper");
        key_place = bounds.key[place];
        lower_place = bounds.lower[place];
        upper_place = bounds.upper[place];
    });
}

KLVrescode_t KLV_getvarbound (KLVtask_t task, int32_t j, int32_t* key, double* lower, double* upper)
{
    return give_bound (task, &Problem::variable, "variable", j, key, lower, upper);
}

KLVrescode_t KLV_getconbound (KLVtask_t task, int32_t i, int32_t* key, double* lower, double* upper)
{
    return give_bound (task, &Problem::constraint, "constraint", i, key, lower, upper);
}

// ---- Names -----------------------------------------------------------------------------------------------

KLVrescode_t KLV_gettasknamelen (KLVtask_t task, int32_t* length)
{
    return give (task, length, "length",
                 [] (const Problem& problem) { return static_cast<std::int32_t> (problem.name.size ()); });
}

KLVrescode_t KLV_getobjnamelen (KLVtask_t task, int32_t* length)
{
    return give (task, length, "length", [] (const Problem& problem) {
        return static_cast<std::int32_t> (problem.objective_name.size ());
    });
}

KLVrescode_t KLV_getmaxnamelen (KLVtask_t task, int32_t* length)
{
    return give (task, length, "length", [] (const Problem& problem) {
        return static_cast<std::int32_t> (
            std::max ({problem.variable_name.longest (), problem.constraint_name.longest (),
                       problem.affine_constraint_name.longest (), problem.cone_name.longest (),
                       problem.semidefinite_name.longest ()}));
    });
}

KLVrescode_t KLV_gettaskname (KLVtask_t task, int32_t size, char* name)
{
    return read (task, [&] (Task& t) { return give_text (t.problem ().name, size, name, "name"); });
}

KLVrescode_t KLV_getobjname (KLVtask_t task, int32_t size, char* name)
{
    return read (task, [&] (Task& t) { return give_text (t.problem ().objective_name, size, name, "name"); });
}

KLVrescode_t KLV_getvarname (KLVtask_t task, int32_t j, int32_t size, char* name)
{
    return read (task, [&] (Task& t) {
        check_index (j, t.problem ().variables (), "variable");
        return give_text (t.problem ().variable_name.get (j), size, name, "name");
    });
}

KLVrescode_t KLV_getconname (KLVtask_t task, int32_t i, int32_t size, char* name)
{
    return read (task, [&] (Task& t) {
        check_index (i, t.problem ().constraints (), "constraint");
        return give_text (t.problem ().constraint_name.get (i), size, name, "name");
    });
}
