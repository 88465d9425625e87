// The affine conic constraints of a task's problem: a row of f and g for each of their rows, and the list of their domains.

#include <algorithm>

#include "common/console.h"
#include "common/records.h"
#include "output/extracts.h"
#include "output/sparse_columns.h"

namespace {

KLVrescode_t out_of_memory ()
{
    mx_error (KLV_RES_OUT_OF_MEMORY, "");
    return KLV_RES_OUT_OF_MEMORY;
}

constexpr bool has_exponents (std::int32_t type)
{
    return type == KLV_DOMAIN_PRIMAL_POWER_CONE || type == KLV_DOMAIN_DUAL_POWER_CONE;
}

// The numbers that describe a domain in the list.
KLVrescode_t count_numbers (KLVtask_t task, std::int64_t domain, std::int64_t& count)
{
    std::int32_t type = 0;
    std::int64_t size = 0, exponents = 0;
    KLVrescode_t code = KLV_getdomaintype (task, domain, &type);
    if (code == KLV_RES_OK && has_exponents (type))
        code = KLV_getpowerdomaininfo (task, domain, &size, &exponents);
    count += has_exponents (type) ? exponents + 3 : 2;
    return code;
}

KLVrescode_t describe_domain (KLVtask_t task, std::int64_t domain, double*& next)
{
    std::int32_t type = 0;
    std::int64_t size = 0, exponents = 0;
    KLVrescode_t code = KLV_getdomaintype (task, domain, &type);
    if (code == KLV_RES_OK)
        code = has_exponents (type) ? KLV_getpowerdomaininfo (task, domain, &size, &exponents)
                                    : KLV_getdomainn (task, domain, &size);
    if (code != KLV_RES_OK)
        return code;
    *next++ = type;
    *next++ = static_cast<double> (size);
    if (!has_exponents (type))
        return code;
    *next++ = static_cast<double> (exponents);
    code = KLV_getpowerdomainalpha (task, domain, next);
    next += exponents;
    return code;
}

KLVrescode_t get_domains (KLVtask_t task, const ProblemCounts& counts, const std::int64_t* domains,
                          mxArray* record)
{
    KLVrescode_t code = KLV_RES_OK;
    std::int64_t numbers = 0;
    for (std::int64_t k = 0; k < counts.affine && code == KLV_RES_OK; ++k)
        code = count_numbers (task, domains[k], numbers);
    if (code != KLV_RES_OK)
        return code;
    host::Array list = create_column (numbers);
    if (!list)
        return out_of_memory ();
    double* next = mxGetPr (list.get ());
    for (std::int64_t k = 0; k < counts.affine && code == KLV_RES_OK; ++k)
        code = describe_domain (task, domains[k], next);
    if (code == KLV_RES_OK)
        set_field (record, "accs", std::move (list));
    return code;
}

KLVrescode_t get_constants (KLVtask_t task, const ProblemCounts& counts, const double* b, mxArray* record)
{
    host::Array constants = create_column (counts.affine_rows);
    if (!constants)
        return out_of_memory ();
    double* values = mxGetPr (constants.get ());
    if (const KLVrescode_t code = KLV_getaccgvector (task, values))
        return code;
    for (std::int64_t row = 0; row < counts.affine_rows; ++row)
        values[row] -= b[row];
    set_field (record, "g", std::move (constants));
    return KLV_RES_OK;
}

// Entries of f, in any order.
struct Triplets {
    explicit Triplets (std::size_t count)
        : rows (host::allocate<std::int64_t> (count)),
          columns (host::allocate<std::int32_t> (count)),
          values (host::allocate<double> (count))
    {}

    explicit operator bool () const { return rows && columns && values; }

    host::Memory<std::int64_t> rows;
    host::Memory<std::int32_t> columns;
    host::Memory<double> values;
};

// Puts entries into the columns of a sparse array that has room for them.
KLVrescode_t assemble (const Triplets& entries, std::size_t count, std::int32_t numvar, const mxArray* f)
{
    const auto filled = host::allocate<mwIndex> (static_cast<std::size_t> (numvar));
    if (!filled)
        return out_of_memory ();
    mwIndex *starts = mxGetJc (f), *rows = mxGetIr (f);
    double* values = mxGetPr (f);
    std::fill_n (starts, numvar + 1, 0);
    for (std::size_t k = 0; k < count; ++k)
        ++starts[entries.columns[k] + 1];
    for (std::int32_t j = 0; j < numvar; ++j)
        starts[j + 1] += starts[j];
    for (std::size_t k = 0; k < count; ++k) {
        const auto column = static_cast<std::size_t> (entries.columns[k]);
        const mwIndex place = starts[column] + filled[column]++;
        rows[place] = static_cast<mwIndex> (entries.rows[k]);
        values[place] = entries.values[k];
    }
    KLVrescode_t code = KLV_RES_OK;
    for (std::int32_t j = 0; j < numvar && code == KLV_RES_OK; ++j)
        code = sort_mat_column (static_cast<std::size_t> (starts[j + 1] - starts[j]), rows + starts[j],
                                values + starts[j]);
    return code;
}

KLVrescode_t get_coefficients (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    std::int64_t count = 0;
    if (const KLVrescode_t code = KLV_getaccfnumnz (task, &count))
        return code;
    host::Array f (mxCreateSparse (static_cast<mwSize> (counts.affine_rows),
                                   static_cast<mwSize> (counts.variables), static_cast<mwSize> (count),
                                   mxREAL));
    if (!f)
        return out_of_memory ();
    const Triplets entries (static_cast<std::size_t> (count));
    if (!entries)
        return out_of_memory ();
    KLVrescode_t code =
        KLV_getaccftrip (task, entries.rows.get (), entries.columns.get (), entries.values.get ());
    if (code == KLV_RES_OK)
        code = assemble (entries, static_cast<std::size_t> (count), counts.variables, f.get ());
    if (code == KLV_RES_OK)
        set_field (record, "f", std::move (f));
    return code;
}

}

KLVrescode_t get_affine_constraints (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    const auto room = static_cast<std::size_t> (counts.affine_rows);
    const auto domains = host::allocate<std::int64_t> (static_cast<std::size_t> (counts.affine));
    const auto expressions = host::allocate<std::int64_t> (room);
    const auto b = host::allocate<double> (room);
    if (!domains || !expressions || !b)
        return out_of_memory ();
    KLVrescode_t code = KLV_getaccs (task, domains.get (), expressions.get (), b.get ());
    if (code == KLV_RES_OK)
        code = get_domains (task, counts, domains.get (), record);
    if (code == KLV_RES_OK)
        code = get_constants (task, counts, b.get (), record);
    return code == KLV_RES_OK ? get_coefficients (task, counts, record) : code;
}
