// The C interface: quadratic terms.

#include "kalvo/interface/entry.h"

#include <algorithm>

using namespace klv;

static constexpr const char* terms_name = "quadratic terms";

static bool is_variable (const Task& task, std::int32_t j)
{
    return j >= 0 && j < task.problem ().variables ();
}

static void check_variables (const Task& task, const char* term, std::span<const std::int32_t> indices,
                             KLVrescode_t code, const char* place)
{
    for (std::size_t k = 0; k < indices.size (); ++k)
        if (!is_variable (task, indices[k]))
            refuse (code, "Quadratic term ", k + 1, " of ", term, " has the ", place, " ", indices[k],
                    ", but there are ", task.problem ().variables (), " variables.");
}

// The place of an entry, in words.
static std::string place (const Task& task, const SymmetricTerms& terms, std::size_t k)
{
    return text (describe_variable (task.problem (), terms.row[k]), " and ",
                 describe_variable (task.problem (), terms.column[k]));
}

KLVrescode_t KLV_putmaxnumqnz (KLVtask_t task, int64_t maxnumqnz)
{
    return change (task, [&] (Task&) {
        if (maxnumqnz < 0)
            refuse (KLV_RES_INDEX_RANGE, "The number of ", terms_name,
                    " to make room for is negative: ", maxnumqnz, ".");
    });
}

KLVrescode_t KLV_putqobj (KLVtask_t task, int32_t count, const int32_t* rows, const int32_t* columns,
                          const double* values)
{
    return load (task, count, [&] (Task& t) {
        check_count (count, terms_name);
        const GivenTerms given{.item = {},
                               .variable = {},
                               .row = array (rows, count, "rows"),
                               .column = array (columns, count, "columns"),
                               .value = array (values, count, "values")};
        check_variables (t, "the objective", given.column, KLV_RES_QOBJ_COLUMN_RANGE, "column");
        check_variables (t, "the objective", given.row, KLV_RES_QOBJ_ROW_RANGE, "row");
        SymmetricTerms terms = add_up (given);
        if (const auto k = not_finite (terms.value))
            refuse (KLV_RES_VALUE_NOT_FINITE, "The quadratic term of the objective for ",
                    place (t, terms, *k), " is ", terms.value[*k], "; it must be finite.");
        t.edit_problem ().quadratic_objective = std::move (terms);
    });
}

KLVrescode_t KLV_putqcon (KLVtask_t task, int32_t count, const int32_t* constraints, const int32_t* rows,
                          const int32_t* columns, const double* values)
{
    return load (task, count, [&] (Task& t) {
        check_count (count, terms_name);
        const Problem& problem = t.problem ();
        const GivenTerms given{.item = array (constraints, count, "constraints"),
                               .variable = {},
                               .row = array (rows, count, "rows"),
                               .column = array (columns, count, "columns"),
                               .value = array (values, count, "values")};
        for (std::size_t k = 0; k < given.item.size (); ++k)
            if (given.item[k] < 0 || given.item[k] >= problem.constraints ())
                refuse (KLV_RES_QCON_CONSTRAINT_RANGE, "Quadratic term ", k + 1,
                        " belongs to the constraint ", given.item[k], ", but there are ",
                        problem.constraints (), ".");
        check_variables (t, "the constraints", given.row, KLV_RES_QCON_ROW_RANGE, "row");
        check_variables (t, "the constraints", given.column, KLV_RES_QCON_COLUMN_RANGE, "column");
        SymmetricTerms terms = add_up (given);
        if (const auto k = not_finite (terms.value))
            refuse (KLV_RES_VALUE_NOT_FINITE, "The quadratic term of ",
                    describe_constraint (problem, terms.item[*k]), " for ", place (t, terms, *k), " is ",
                    terms.value[*k], "; it must be finite.");
        t.edit_problem ().quadratic_constraint = std::move (terms);
    });
}

// ---- Output ----------------------------------------------------------------------------------------------

KLVrescode_t KLV_getnumqobjnz (KLVtask_t task, int64_t* count)
{
    return give (task, count, "count",
                 [] (const Problem& problem) { return problem.quadratic_objective.count (); });
}

static TermRange terms_of (const Problem& problem, std::int32_t i)
{
    check_index (i, problem.constraints (), "constraint");
    return problem.quadratic_constraint.of_item (i);
}

KLVrescode_t KLV_getnumqconknz (KLVtask_t task, int32_t i, int64_t* count)
{
    return give (task, count, "count", [&] (const Problem& problem) {
        const TermRange range = terms_of (problem, i);
        return range.end - range.begin;
    });
}

static void give_terms (const SymmetricTerms& terms, TermRange range, std::int64_t room, std::int64_t* count,
                        std::int32_t* rows, std::int32_t* columns, double* values)
{
    std::int64_t& count_place = output (count, "count");
    const auto found = static_cast<std::int64_t> (range.end - range.begin);
    check_room (room, found, terms_name);
    const auto give_some = [&] (const auto& source, auto* places, const char* name) {
        std::copy_n (source.begin () + static_cast<std::ptrdiff_t> (range.begin), found,
                     array (places, found, name).begin ());
    };
    give_some (terms.row, rows, "rows");
    give_some (terms.column, columns, "columns");
    give_some (terms.value, values, "values");
    count_place = found;
}

KLVrescode_t KLV_getqobj (KLVtask_t task, int64_t room, int64_t* count, int32_t* rows, int32_t* columns,
                          double* values)
{
    return read (task, [&] (Task& t) {
        const SymmetricTerms& terms = t.problem ().quadratic_objective;
        give_terms (terms, {0, terms.value.size ()}, room, count, rows, columns, values);
    });
}

KLVrescode_t KLV_getqconk (KLVtask_t task, int32_t i, int64_t room, int64_t* count, int32_t* rows,
                           int32_t* columns, double* values)
{
    return read (task, [&] (Task& t) {
        give_terms (t.problem ().quadratic_constraint, terms_of (t.problem (), i), room, count, rows, columns,
                    values);
    });
}
