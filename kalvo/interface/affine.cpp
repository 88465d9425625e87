// The C interface: affine expressions, domains and affine conic constraints.

#include "kalvo/interface/entry.h"

#include <algorithm>

using namespace klv;

static constexpr const char* expression = "affine expression";
static constexpr const char* domain_item = "domain";
static constexpr const char* constraint = "affine conic constraint";

// ---- Affine expressions ----------------------------------------------------------------------------------

KLVrescode_t KLV_appendafes (KLVtask_t task, int64_t count)
{
    return load (task, count, [&] (Task& t) {
        check_append (count, t.problem ().affine.count (), expression);
        Problem& problem = t.edit_problem ();
        problem.affine.append (static_cast<std::int32_t> (count), problem.variables ());
    });
}

// Expressions of a column of F, narrowed.
static std::vector<std::int32_t> checked_expressions (const Task& task, std::int32_t j,
                                                      std::span<const std::int64_t> given,
                                                      std::span<const double> values)
{
    const std::int32_t limit = task.problem ().affine.count ();
    std::vector<std::int32_t> rows;
    rows.reserve (given.size ());
    for (std::size_t k = 0; k < given.size (); ++k) {
        if (given[k] < 0 || given[k] >= limit)
            refuse (KLV_RES_INDEX_RANGE, "Entry ", k + 1, " of the coefficients of ",
                    describe_variable (task.problem (), j), " is for the affine expression ", given[k],
                    ", but there are ", limit, ".");
        rows.push_back (static_cast<std::int32_t> (given[k]));
    }
    if (const auto k = not_finite (values))
        refuse (KLV_RES_VALUE_NOT_FINITE, "The coefficient of ", describe_variable (task.problem (), j),
                " in ", describe (expression, rows[*k], {}), " is ", values[*k],
                "; coefficients must be finite.");
    return rows;
}

KLVrescode_t KLV_putafefcol (KLVtask_t task, int32_t j, int64_t count, const int64_t* expressions,
                             const double* values)
{
    return load (task, count, [&] (Task& t) {
        check_index (j, t.problem ().variables (), "variable");
        check_count (count, "coefficients");
        const auto given_values = array (values, count, "values");
        const std::vector<std::int32_t> rows =
            checked_expressions (t, j, array (expressions, count, "expressions"), given_values);
        if (const std::int64_t again = t.repeated_rows.find (rows, t.problem ().affine.count ()); again >= 0)
            refuse (KLV_RES_DUPLICATE_ENTRY, "The coefficients of ", describe_variable (t.problem (), j),
                    " name ", describe (expression, rows[static_cast<std::size_t> (again)], {}), " twice.");
        Problem& problem = t.edit_problem ();
        if (!rows.empty () || j < problem.affine.f.columns ())
            problem.affine.f.put (j, rows, given_values);
    });
}

KLVrescode_t KLV_putafegslice (KLVtask_t task, int64_t first, int64_t last, const double* values)
{
    return load (task, last - first, [&] (Task& t) {
        check_slice (first, last, t.problem ().affine.count (), expression);
        const auto given = array (values, last - first, "values");
        if (const auto k = not_finite (given))
            refuse (
                KLV_RES_VALUE_NOT_FINITE, "The constant of ",
                describe (expression, static_cast<std::int32_t> (first) + static_cast<std::int32_t> (*k), {}),
                " is ", given[*k], "; it must be finite.");
        std::ranges::copy (given, t.edit_problem ().affine.g.begin () + first);
    });
}

// ---- Domains ---------------------------------------------------------------------------------------------

static KLVrescode_t append_domain (KLVtask_t task, std::int32_t type, std::int64_t size, std::int64_t count,
                                   const double* exponents, std::int64_t* domain,
                                   const std::source_location& where = std::source_location::current ())
{
    return load (
        task, count,
        [&] (Task& t) {
            std::int64_t& place = output (domain, "domain");
            const std::int32_t number = t.problem ().domain.count ();
            check_append (1, number, domain_item);
            check_count (count, "exponents");
            const auto given = array (exponents, count, "exponents");
            if (const auto fault = domain_fault (type, size, given))
                refuse (KLV_RES_ARGUMENT, "Domain ", std::int64_t{number} + 1, " (index ", number, "), a ",
                        domain_rows[static_cast<std::size_t> (type)].name, " of size ", size, ", ", *fault,
                        ".");
            t.edit_problem ().domain.append (type, static_cast<std::int32_t> (size), given);
            place = number;
        },
        where);
}

KLVrescode_t KLV_appendrdomain (KLVtask_t task, int64_t size, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_FREE, size, 0, nullptr, domain);
}

KLVrescode_t KLV_appendrzerodomain (KLVtask_t task, int64_t size, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_ZERO, size, 0, nullptr, domain);
}

KLVrescode_t KLV_appendrplusdomain (KLVtask_t task, int64_t size, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_NONNEGATIVE, size, 0, nullptr, domain);
}

KLVrescode_t KLV_appendrminusdomain (KLVtask_t task, int64_t size, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_NONPOSITIVE, size, 0, nullptr, domain);
}

KLVrescode_t KLV_appendquadraticconedomain (KLVtask_t task, int64_t size, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_QUADRATIC_CONE, size, 0, nullptr, domain);
}

KLVrescode_t KLV_appendrquadraticconedomain (KLVtask_t task, int64_t size, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_ROTATED_QUADRATIC_CONE, size, 0, nullptr, domain);
}

KLVrescode_t KLV_appendprimalexpconedomain (KLVtask_t task, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE, 3, 0, nullptr, domain);
}

KLVrescode_t KLV_appenddualexpconedomain (KLVtask_t task, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_DUAL_EXPONENTIAL_CONE, 3, 0, nullptr, domain);
}

KLVrescode_t KLV_appendprimalpowerconedomain (KLVtask_t task, int64_t size, int64_t count,
                                              const double* exponents, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_PRIMAL_POWER_CONE, size, count, exponents, domain);
}

KLVrescode_t KLV_appenddualpowerconedomain (KLVtask_t task, int64_t size, int64_t count,
                                            const double* exponents, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_DUAL_POWER_CONE, size, count, exponents, domain);
}

KLVrescode_t KLV_appendprimalgeomeanconedomain (KLVtask_t task, int64_t size, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE, size, 0, nullptr, domain);
}

KLVrescode_t KLV_appenddualgeomeanconedomain (KLVtask_t task, int64_t size, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE, size, 0, nullptr, domain);
}

KLVrescode_t KLV_appendsvecpsdconedomain (KLVtask_t task, int64_t size, int64_t* domain)
{
    return append_domain (task, KLV_DOMAIN_SEMIDEFINITE_CONE, size, 0, nullptr, domain);
}

static std::int32_t checked_domain (const Problem& problem, std::int64_t which)
{
    check_index (which, problem.domain.count (), domain_item);
    return static_cast<std::int32_t> (which);
}

KLVrescode_t KLV_getdomaintype (KLVtask_t task, int64_t domain, int32_t* type)
{
    return give (task, type, "type", [&] (const Problem& problem) {
        return problem.domain.type[static_cast<std::size_t> (checked_domain (problem, domain))];
    });
}

KLVrescode_t KLV_getdomainn (KLVtask_t task, int64_t domain, int64_t* size)
{
    return give (task, size, "size", [&] (const Problem& problem) {
        return problem.domain.size[static_cast<std::size_t> (checked_domain (problem, domain))];
    });
}

KLVrescode_t KLV_getpowerdomaininfo (KLVtask_t task, int64_t domain, int64_t* size, int64_t* count)
{
    return read (task, [&] (Task& t) {
        const std::int32_t which = checked_domain (t.problem (), domain);
        std::int64_t& size_place = output (size, "size");
        output (count, "count") = std::ssize (t.problem ().domain.exponents (which));
        size_place = t.problem ().domain.size[static_cast<std::size_t> (which)];
    });
}

KLVrescode_t KLV_getpowerdomainalpha (KLVtask_t task, int64_t domain, double* exponents)
{
    return read (task, [&] (Task& t) {
        const auto found = t.problem ().domain.exponents (checked_domain (t.problem (), domain));
        std::ranges::copy (found, array (exponents, std::ssize (found), "exponents").begin ());
    });
}

// ---- Constraints -----------------------------------------------------------------------------------------

KLVrescode_t KLV_appendaccseq (KLVtask_t task, int64_t domain, int64_t size, int64_t first, const double* b)
{
    return load (task, size, [&] (Task& t) {
        const std::int32_t number = t.problem ().affine_constraint.count ();
        check_append (1, number, constraint);
        const std::int32_t which = checked_domain (t.problem (), domain);
        const Domains& domains = t.problem ().domain;
        const auto place = static_cast<std::size_t> (which);
        const std::string words =
            text ("Affine conic constraint ", std::int64_t{number} + 1, " (index ", number, ")");
        if (size != domains.size[place])
            refuse (KLV_RES_ARGUMENT, words, " has ", size, " rows, but its domain, a ",
                    domain_rows[domains.type[place]].name, ", has the size ", domains.size[place], ".");
        const std::int32_t expressions = t.problem ().affine.count ();
        if (first < 0 || first > expressions || size > expressions - first)
            refuse (KLV_RES_INDEX_RANGE, words, " is for ", size, " affine expressions from index ", first,
                    " on, but there are ", expressions, ".");
        check_append (size, t.problem ().affine_constraint.rows (), "row of affine conic constraint");
        const auto given = b != nullptr ? array (b, size, "b") : std::span<const double> ();
        if (const auto k = not_finite (given))
            refuse (KLV_RES_VALUE_NOT_FINITE, "Entry ", *k + 1, " of b of the ", words.substr (1), " is ",
                    given[*k], "; it must be finite.");
        t.edit_problem ().affine_constraint.append (which, static_cast<std::int32_t> (first),
                                                    static_cast<std::int32_t> (size), given);
        t.drop_solutions ();
    });
}

KLVrescode_t KLV_getnumacc (KLVtask_t task, int64_t* count)
{
    return give (task, count, "count",
                 [] (const Problem& problem) { return problem.affine_constraint.count (); });
}

KLVrescode_t KLV_getaccntot (KLVtask_t task, int64_t* count)
{
    return give (task, count, "count",
                 [] (const Problem& problem) { return problem.affine_constraint.rows (); });
}

KLVrescode_t KLV_getaccs (KLVtask_t task, int64_t* domains, int64_t* expressions, double* b)
{
    return read (task, [&] (Task& t) {
        const AffineConstraints& constraints = t.problem ().affine_constraint;
        const auto domain_places = array (domains, constraints.count (), "domains");
        const auto expression_places = array (expressions, constraints.rows (), "expressions");
        const auto b_places = array (b, constraints.rows (), "b");
        std::ranges::copy (constraints.domain, domain_places.begin ());
        std::ranges::copy (constraints.expression, expression_places.begin ());
        std::ranges::copy (constraints.b, b_places.begin ());
    });
}

KLVrescode_t KLV_getaccgvector (KLVtask_t task, double* values)
{
    return read (task, [&] (Task& t) {
        const Problem& problem = t.problem ();
        double* place = array (values, problem.affine_constraint.rows (), "values").data ();
        for (const std::int32_t row : problem.affine_constraint.expression)
            *place++ = problem.affine.g[static_cast<std::size_t> (row)];
    });
}

// Calls take (row, variable, value) for each coefficient of each row of the constraints.
template <class Take>
static void for_each_coefficient (const Problem& problem, const Take& take)
{
    const RowsOfExpressions rows_of (problem.affine_constraint, problem.affine.count ());
    for (std::int32_t j = 0; j < problem.affine.f.columns (); ++j) {
        const Column column = problem.affine.f.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            for (const std::int32_t row : rows_of (column.rows[k]))
                take (row, j, column.values[k]);
    }
}

KLVrescode_t KLV_getaccfnumnz (KLVtask_t task, int64_t* count)
{
    return give (task, count, "count", [] (const Problem& problem) {
        std::int64_t entries = 0;
        for_each_coefficient (problem, [&] (std::int32_t, std::int32_t, double) { ++entries; });
        return entries;
    });
}

KLVrescode_t KLV_getaccftrip (KLVtask_t task, int64_t* rows, int32_t* columns, double* values)
{
    return read (task, [&] (Task& t) {
        std::size_t k = 0;
        for_each_coefficient (t.problem (), [&] (std::int32_t row, std::int32_t variable, double value) {
            (&output (rows, "rows"))[k] = row;
            (&output (columns, "columns"))[k] = variable;
            (&output (values, "values"))[k] = value;
            ++k;
        });
    });
}

KLVrescode_t KLV_putaccname (KLVtask_t task, int64_t k, const char* name)
{
    return load (task, 0, [&] (Task& t) {
        put_name (t, &Problem::affine_constraint_name, k, t.problem ().affine_constraint.count (), constraint,
                  name);
    });
}

KLVrescode_t KLV_getaccname (KLVtask_t task, int64_t k, int32_t size, char* name)
{
    return read (task, [&] (Task& t) {
        check_index (k, t.problem ().affine_constraint.count (), constraint);
        return give_text (t.problem ().affine_constraint_name.get (static_cast<std::int32_t> (k)), size, name,
                          "name");
    });
}
