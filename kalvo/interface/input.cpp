// The C interface: problem input.

#include "kalvo/interface/entry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

using namespace klv;

// ---- Sizes -----------------------------------------------------------------------------------------------

KLVrescode_t KLV_appendvars (KLVtask_t task, int32_t count)
{
    return load (task, count, [&] (Task& t) {
        check_append (count, t.problem ().variables (), "variable");
        t.edit_problem ().append_variables (count);
        if (count > 0)
            t.drop_solutions ();
    });
}

KLVrescode_t KLV_appendcons (KLVtask_t task, int32_t count)
{
    return load (task, count, [&] (Task& t) {
        check_append (count, t.problem ().constraints (), "constraint");
        t.edit_problem ().append_constraints (count);
        if (count > 0)
            t.drop_solutions ();
    });
}

KLVrescode_t KLV_putmaxnumanz (KLVtask_t task, int64_t maxnumanz)
{
    return change (task, [&] (Task& t) {
        if (maxnumanz < 0)
            refuse (KLV_RES_INDEX_RANGE, "The number of entries to make room for is negative: ", maxnumanz,
                    ".");
        t.edit_problem ().matrix.reserve (maxnumanz);
    });
}

// ---- Constraint matrix -----------------------------------------------------------------------------------

[[noreturn]] static void refuse_row (const Task& task, std::int32_t j, std::size_t entry, std::int32_t row)
{
    refuse (KLV_RES_INDEX_RANGE, "Entry ", entry + 1, " of the matrix column of ",
            describe_variable (task.problem (), j), " has the row index ", row, ", but there are ",
            task.problem ().constraints (), " constraints.");
}

static void check_entries (const Task& task, std::int32_t j, std::span<const std::int32_t> rows,
                           std::span<const double> values)
{
    const auto limit = static_cast<std::uint32_t> (task.problem ().constraints ());
    for (std::size_t k = 0; k < rows.size (); ++k) {
        if (static_cast<std::uint32_t> (rows[k]) >= limit)
            refuse_row (task, j, k, rows[k]);
        if (!std::isfinite (values[k]))
            refuse (KLV_RES_VALUE_NOT_FINITE, "The matrix entry of ",
                    describe_constraint (task.problem (), rows[k]), " and ",
                    describe_variable (task.problem (), j), " is ", values[k], "; entries must be finite.");
    }
}

KLVrescode_t KLV_putacol (KLVtask_t task, int32_t j, int32_t count, const int32_t* rows, const double* values)
{
    return load (task, count, [&] (Task& t) {
        check_index (j, t.problem ().variables (), "variable");
        if (count < 0)
            refuse (KLV_RES_INDEX_RANGE, "The number of entries of the matrix column of ",
                    describe_variable (t.problem (), j), " is negative: ", count, ".");
        const auto given_rows = array (rows, count, "rows");
        const auto given_values = array (values, count, "values");
        check_entries (t, j, given_rows, given_values);
        if (const std::int64_t again = t.repeated_rows.find (given_rows, t.problem ().constraints ());
            again >= 0)
            refuse (KLV_RES_DUPLICATE_ENTRY, "The matrix column of ", describe_variable (t.problem (), j),
                    " names ",
                    describe_constraint (t.problem (), given_rows[static_cast<std::size_t> (again)]),
                    " twice.");
        t.edit_problem ().matrix.put (j, given_rows, given_values);
    });
}

// ---- Bounds ----------------------------------------------------------------------------------------------

struct Bound {
    std::int32_t key;
    double lower, upper;
};

// A bound whose absent sides are infinite, with the key of the sides that exist.
static Bound settle (std::int32_t key, double lower, double upper)
{
    const bool below = key == KLV_BK_LO || key == KLV_BK_RA || key == KLV_BK_FX;
    const bool above = key == KLV_BK_UP || key == KLV_BK_RA || key == KLV_BK_FX;
    const Bound bound{key, below ? lower : -infinity, above ? upper : infinity};
    if (key == KLV_BK_FX)
        return bound;
    const bool has_lower = bound.lower > -infinity, has_upper = bound.upper < infinity;
    return {has_lower ? (has_upper ? KLV_BK_RA : KLV_BK_LO) : (has_upper ? KLV_BK_UP : KLV_BK_FR),
            bound.lower, bound.upper};
}

// The code for a bound that can't be taken, else 0.
static KLVrescode_t fault (std::int32_t key, double lower, double upper)
{
    if (key < KLV_BK_LO || key > KLV_BK_RA)
        return KLV_RES_VALUE_UNKNOWN;
    const Bound bound = settle (key, lower, upper);
    if (std::isnan (bound.lower) || std::isnan (bound.upper))
        return KLV_RES_VALUE_NOT_FINITE;
    if (bound.lower == infinity || bound.upper == -infinity)
        return KLV_RES_BOUND_BEYOND_INFINITY;
    if (key == KLV_BK_FX && bound.lower != bound.upper)
        return KLV_RES_ARGUMENT;
    return KLV_RES_OK;
}

[[noreturn]] static void refuse_bound (KLVrescode_t code, const std::string& item, std::int32_t key,
                                       double lower, double upper)
{
    switch (code) {
    case KLV_RES_VALUE_UNKNOWN:
        refuse (code, "The bound key of ", item, " is ", key, "; keys are 0 to 4.");
    case KLV_RES_VALUE_NOT_FINITE:
        refuse (code, "A bound of ", item, " is not a number.");
    case KLV_RES_BOUND_BEYOND_INFINITY:
        refuse (code, "No value lies between the bounds of ", item, ": lower ", lower, ", upper ", upper,
                ".");
    default:
        refuse (code, "The bounds of ", item, " are to be one value, but differ: lower ", lower, ", upper ",
                upper, ".");
    }
}

static KLVrescode_t put_bounds (KLVtask_t task, Bounds Problem::*which, const char* item,
                                std::string (*describe_item) (const Problem&, std::int32_t),
                                std::int32_t first, std::int32_t last, const std::int32_t* keys,
                                const double* lower, const double* upper,
                                const std::source_location& where = std::source_location::current ())
{
    return load (
        task, std::int64_t{last} - first,
        [&] (Task& t) {
            check_slice (first, last, (t.problem ().*which).count (), item);
            const std::int32_t count = last - first;
            const auto given_keys = array (keys, count, "keys");
            const auto given_lower = array (lower, count, "lower");
            const auto given_upper = array (upper, count, "upper");
            for (std::size_t i = 0; i < given_keys.size (); ++i)
                if (const KLVrescode_t code = fault (given_keys[i], given_lower[i], given_upper[i]))
                    refuse_bound (code, describe_item (t.problem (), first + static_cast<std::int32_t> (i)),
                                  given_keys[i], given_lower[i], given_upper[i]);

            Bounds& bounds = t.edit_problem ().*which;
            auto place = static_cast<std::size_t> (first);
            for (std::size_t i = 0; i < given_keys.size (); ++i, ++place) {
                const Bound bound = settle (given_keys[i], given_lower[i], given_upper[i]);
                bounds.key[place] = static_cast<std::uint8_t> (bound.key);
                bounds.lower[place] = bound.lower;
                bounds.upper[place] = bound.upper;
            }
        },
        where);
}

KLVrescode_t KLV_putvarboundslice (KLVtask_t task, int32_t first, int32_t last, const int32_t* keys,
                                   const double* lower, const double* upper)
{
    return put_bounds (task, &Problem::variable, "variable", describe_variable, first, last, keys, lower,
                       upper);
}

KLVrescode_t KLV_putconboundslice (KLVtask_t task, int32_t first, int32_t last, const int32_t* keys,
                                   const double* lower, const double* upper)
{
    return put_bounds (task, &Problem::constraint, "constraint", describe_constraint, first, last, keys,
                       lower, upper);
}

// ---- Objective and types ---------------------------------------------------------------------------------

KLVrescode_t KLV_putcslice (KLVtask_t task, int32_t first, int32_t last, const double* costs)
{
    return load (task, std::int64_t{last} - first, [&] (Task& t) {
        check_slice (first, last, t.problem ().variables (), "variable");
        const auto given = array (costs, last - first, "costs");
        for (std::size_t k = 0; k < given.size (); ++k)
            if (!std::isfinite (given[k]))
                refuse (KLV_RES_VALUE_NOT_FINITE, "The cost of ",
                        describe_variable (t.problem (), first + static_cast<std::int32_t> (k)), " is ",
                        given[k], "; costs must be finite.");
        std::ranges::copy (given, t.edit_problem ().cost.begin () + first);
    });
}

KLVrescode_t KLV_putcfix (KLVtask_t task, double constant)
{
    return change (task, [&] (Task& t) {
        if (!std::isfinite (constant))
            refuse (KLV_RES_VALUE_NOT_FINITE, "The constant of the objective is ", constant,
                    "; it must be finite.");
        t.edit_problem ().constant = constant;
    });
}

KLVrescode_t KLV_putobjsense (KLVtask_t task, int32_t sense)
{
    return change (task, [&] (Task& t) {
        if (sense != KLV_SENSE_MINIMIZE && sense != KLV_SENSE_MAXIMIZE)
            refuse (KLV_RES_VALUE_UNKNOWN, "The objective sense is ", sense, "; it must be 0 or 1.");
        t.edit_problem ().sense = sense;
    });
}

KLVrescode_t KLV_putvartype (KLVtask_t task, int32_t j, int32_t type)
{
    return load (task, 0, [&] (Task& t) {
        check_index (j, t.problem ().variables (), "variable");
        if (type != KLV_VAR_CONTINUOUS && type != KLV_VAR_INTEGER)
            refuse (KLV_RES_VALUE_UNKNOWN, "The type of ", describe_variable (t.problem (), j), " is ", type,
                    "; it must be 0 or 1.");
        Problem& problem = t.edit_problem ();
        std::uint8_t& place = problem.integer[static_cast<std::size_t> (j)];
        problem.integers += type - place;
        place = static_cast<std::uint8_t> (type);
    });
}

// ---- Names -----------------------------------------------------------------------------------------------

KLVrescode_t KLV_puttaskname (KLVtask_t task, const char* name)
{
    return change (task, [&] (Task& t) {
        std::string words = checked_name (name);
        t.edit_problem ().name = std::move (words);
    });
}

KLVrescode_t KLV_putobjname (KLVtask_t task, const char* name)
{
    return change (task, [&] (Task& t) {
        std::string words = checked_name (name);
        t.edit_problem ().objective_name = std::move (words);
    });
}

KLVrescode_t KLV_putvarname (KLVtask_t task, int32_t j, const char* name)
{
    return load (task, 0, [&] (Task& t) {
        put_name (t, &Problem::variable_name, j, t.problem ().variables (), "variable", name);
    });
}

KLVrescode_t KLV_putconname (KLVtask_t task, int32_t i, const char* name)
{
    return load (task, 0, [&] (Task& t) {
        put_name (t, &Problem::constraint_name, i, t.problem ().constraints (), "constraint", name);
    });
}
