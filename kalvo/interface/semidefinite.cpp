// The C interface: semidefinite variables and their terms.

#include "kalvo/interface/entry.h"

#include <algorithm>
#include <limits>

using namespace klv;

static constexpr const char* item = "semidefinite variable";
static constexpr const char* terms_name = "semidefinite terms";

// ---- Variables -------------------------------------------------------------------------------------------

KLVrescode_t KLV_putmaxnumbarvar (KLVtask_t task, int32_t maxnumbarvar)
{
    return change (task, [&] (Task& t) {
        check_count (maxnumbarvar, "semidefinite variables");
        t.edit_problem ().semidefinite.order.reserve (static_cast<std::size_t> (maxnumbarvar));
    });
}

KLVrescode_t KLV_appendbarvars (KLVtask_t task, int32_t count, const int32_t* orders)
{
    return load (task, count, [&] (Task& t) {
        const SemidefiniteVariables& present = t.problem ().semidefinite;
        check_append (count, present.count (), item);
        const auto given = array (orders, count, "orders");
        std::int64_t entries = present.length ();
        for (std::size_t k = 0; k < given.size (); ++k) {
            const auto number = present.count () + static_cast<std::int32_t> (k);
            if (given[k] < 0)
                refuse (KLV_RES_ARGUMENT, "The order of ", describe (item, number, {}), " is ", given[k],
                        "; it must not be negative.");
            entries += packed_length (given[k]);
            if (entries > std::numeric_limits<std::int32_t>::max ())
                refuse (KLV_RES_TOO_LARGE, "The order of ", describe (item, number, {}), " is ", given[k],
                        ": the entries of all semidefinite variables are more than can be counted.");
        }
        t.edit_problem ().semidefinite.append (given);
        if (count > 0)
            t.drop_solutions ();
    });
}

KLVrescode_t KLV_getnumbarvar (KLVtask_t task, int32_t* count)
{
    return give (task, count, "count", [] (const Problem& problem) { return problem.semidefinite.count (); });
}

static std::int32_t order_of (const Problem& problem, std::int32_t j)
{
    check_index (j, problem.semidefinite.count (), item);
    return problem.semidefinite.order[static_cast<std::size_t> (j)];
}

KLVrescode_t KLV_getdimbarvarj (KLVtask_t task, int32_t j, int32_t* dimension)
{
    return give (task, dimension, "dimension",
                 [&] (const Problem& problem) { return order_of (problem, j); });
}

KLVrescode_t KLV_getlenbarvarj (KLVtask_t task, int32_t j, int64_t* length)
{
    return give (task, length, "length",
                 [&] (const Problem& problem) { return packed_length (order_of (problem, j)); });
}

KLVrescode_t KLV_putbarvarname (KLVtask_t task, int32_t j, const char* name)
{
    return load (task, 0, [&] (Task& t) {
        put_name (t, &Problem::semidefinite_name, j, t.problem ().semidefinite.count (), item, name);
    });
}

KLVrescode_t KLV_getbarvarname (KLVtask_t task, int32_t j, int32_t size, char* name)
{
    return read (task, [&] (Task& t) {
        check_index (j, t.problem ().semidefinite.count (), item);
        return give_text (t.problem ().semidefinite_name.get (j), size, name, "name");
    });
}

// ---- Terms -----------------------------------------------------------------------------------------------

template <class Index>
static void check_items (std::span<const Index> given, std::int32_t count, const char* owner)
{
    for (std::size_t k = 0; k < given.size (); ++k)
        if (given[k] < 0 || given[k] >= count)
            refuse (KLV_RES_INDEX_RANGE, "Semidefinite term ", k + 1, " of ", owner, " belongs to index ",
                    given[k], ", but there are ", count, ".");
}

// `owner`: "the objective", "the constraints" ...
static SymmetricTerms checked_terms (const Problem& problem, const char* owner, const GivenTerms& given)
{
    for (std::size_t k = 0; k < given.value.size (); ++k) {
        const auto fault = [&] (KLVrescode_t code, const auto&... words) {
            refuse (code, "Semidefinite term ", k + 1, " of ", owner, words...);
        };
        if (given.variable[k] < 0 || given.variable[k] >= problem.semidefinite.count ())
            fault (KLV_RES_INDEX_RANGE, " has the variable index ", given.variable[k], ", but there are ",
                   problem.semidefinite.count (), " semidefinite variables.");
        const std::int32_t order = order_of (problem, given.variable[k]);
        for (const std::int32_t index : {given.row[k], given.column[k]})
            if (index < 0 || index >= order)
                fault (KLV_RES_INDEX_RANGE, " has the row index ", given.row[k], " and the column index ",
                       given.column[k], ", but ",
                       describe (item, given.variable[k], problem.semidefinite_name.get (given.variable[k])),
                       " has the order ", order, ".");
        if (given.row[k] < given.column[k])
            fault (KLV_RES_ARGUMENT, " has the row index ", given.row[k], " and the column index ",
                   given.column[k], ": entries are given in the lower triangle.");
    }
    SymmetricTerms terms = add_up (given);
    if (const auto k = not_finite (terms.value))
        refuse (KLV_RES_VALUE_NOT_FINITE, "The semidefinite term of ", owner, " for row index ",
                terms.row[*k], " and column index ", terms.column[*k], " of ",
                describe (item, terms.variable[*k], problem.semidefinite_name.get (terms.variable[*k])),
                " is ", terms.value[*k], "; it must be finite.");
    return terms;
}

KLVrescode_t KLV_putbarcblocktriplet (KLVtask_t task, int64_t count, const int32_t* variables,
                                      const int32_t* rows, const int32_t* columns, const double* values)
{
    return load (task, count, [&] (Task& t) {
        check_count (count, terms_name);
        SymmetricTerms terms = checked_terms (t.problem (), "the objective",
                                              {.item = {},
                                               .variable = array (variables, count, "variables"),
                                               .row = array (rows, count, "rows"),
                                               .column = array (columns, count, "columns"),
                                               .value = array (values, count, "values")});
        t.edit_problem ().semidefinite.objective = std::move (terms);
    });
}

KLVrescode_t KLV_putbarablocktriplet (KLVtask_t task, int64_t count, const int32_t* constraints,
                                      const int32_t* variables, const int32_t* rows, const int32_t* columns,
                                      const double* values)
{
    return load (task, count, [&] (Task& t) {
        check_count (count, terms_name);
        static constexpr const char* owner = "the constraints";
        const auto items = array (constraints, count, "constraints");
        check_items (items, t.problem ().constraints (), owner);
        SymmetricTerms terms = checked_terms (t.problem (), owner,
                                              {.item = items,
                                               .variable = array (variables, count, "variables"),
                                               .row = array (rows, count, "rows"),
                                               .column = array (columns, count, "columns"),
                                               .value = array (values, count, "values")});
        t.edit_problem ().semidefinite.constraint = std::move (terms);
    });
}

KLVrescode_t KLV_putafebarfblocktriplet (KLVtask_t task, int64_t count, const int64_t* expressions,
                                         const int32_t* variables, const int32_t* rows,
                                         const int32_t* columns, const double* values)
{
    return load (task, count, [&] (Task& t) {
        check_count (count, terms_name);
        static constexpr const char* owner = "the affine expressions";
        const auto items = array (expressions, count, "expressions");
        check_items (items, t.problem ().affine.count (), owner);
        const std::vector<std::int32_t> narrow (items.begin (), items.end ());
        SymmetricTerms terms = checked_terms (t.problem (), owner,
                                              {.item = narrow,
                                               .variable = array (variables, count, "variables"),
                                               .row = array (rows, count, "rows"),
                                               .column = array (columns, count, "columns"),
                                               .value = array (values, count, "values")});
        t.edit_problem ().semidefinite.expression = std::move (terms);
    });
}

KLVrescode_t KLV_getnumbarcblocktriplets (KLVtask_t task, int64_t* count)
{
    return give (task, count, "count",
                 [] (const Problem& problem) { return problem.semidefinite.objective.count (); });
}

KLVrescode_t KLV_getnumbarablocktriplets (KLVtask_t task, int64_t* count)
{
    return give (task, count, "count",
                 [] (const Problem& problem) { return problem.semidefinite.constraint.count (); });
}

// Calls take (row, term) for each term of each row of the affine conic constraints.
template <class Take>
static void for_each_term_of_rows (const Problem& problem, const Take& take)
{
    const SymmetricTerms& terms = problem.semidefinite.expression;
    if (terms.count () == 0)
        return;
    std::int64_t row = 0;
    for (const std::int32_t expression : problem.affine_constraint.expression) {
        const TermRange range = terms.of_item (expression);
        for (std::size_t k = range.begin; k < range.end; ++k)
            take (row, k);
        ++row;
    }
}

static std::int64_t count_terms_of_rows (const Problem& problem)
{
    std::int64_t count = 0;
    for_each_term_of_rows (problem, [&] (std::int64_t, std::size_t) { ++count; });
    return count;
}

KLVrescode_t KLV_getaccbarfnumblocktriplets (KLVtask_t task, int64_t* count)
{
    return give (task, count, "count", count_terms_of_rows);
}

static void give_all (const auto& source, auto* places, const char* name)
{
    std::ranges::copy (source, array (places, std::ssize (source), name).begin ());
}

static void give_terms (const SymmetricTerms& terms, std::int32_t* variables, std::int32_t* rows,
                        std::int32_t* columns, double* values)
{
    give_all (terms.variable, variables, "variables");
    give_all (terms.row, rows, "rows");
    give_all (terms.column, columns, "columns");
    give_all (terms.value, values, "values");
}

KLVrescode_t KLV_getbarcblocktriplet (KLVtask_t task, int64_t room, int64_t* count, int32_t* variables,
                                      int32_t* rows, int32_t* columns, double* values)
{
    return read (task, [&] (Task& t) {
        const SymmetricTerms& terms = t.problem ().semidefinite.objective;
        std::int64_t& count_place = output (count, "count");
        check_room (room, terms.count (), terms_name);
        give_terms (terms, variables, rows, columns, values);
        count_place = terms.count ();
    });
}

KLVrescode_t KLV_getbarablocktriplet (KLVtask_t task, int64_t room, int64_t* count, int32_t* constraints,
                                      int32_t* variables, int32_t* rows, int32_t* columns, double* values)
{
    return read (task, [&] (Task& t) {
        const SymmetricTerms& terms = t.problem ().semidefinite.constraint;
        std::int64_t& count_place = output (count, "count");
        check_room (room, terms.count (), terms_name);
        give_all (terms.item, constraints, "constraints");
        give_terms (terms, variables, rows, columns, values);
        count_place = terms.count ();
    });
}

KLVrescode_t KLV_getaccbarfblocktriplet (KLVtask_t task, int64_t room, int64_t* count, int64_t* accrows,
                                         int32_t* variables, int32_t* rows, int32_t* columns, double* values)
{
    return read (task, [&] (Task& t) {
        const Problem& problem = t.problem ();
        const SymmetricTerms& terms = problem.semidefinite.expression;
        std::int64_t& count_place = output (count, "count");
        const std::int64_t found = count_terms_of_rows (problem);
        check_room (room, found, terms_name);
        const auto row_places = array (accrows, found, "accrows");
        const auto variable_places = array (variables, found, "variables");
        const auto matrix_rows = array (rows, found, "rows");
        const auto matrix_columns = array (columns, found, "columns");
        const auto value_places = array (values, found, "values");
        std::size_t next = 0;
        for_each_term_of_rows (problem, [&] (std::int64_t row, std::size_t k) {
            row_places[next] = row;
            variable_places[next] = terms.variable[k];
            matrix_rows[next] = terms.row[k];
            matrix_columns[next] = terms.column[k];
            value_places[next++] = terms.value[k];
        });
        count_place = found;
    });
}
