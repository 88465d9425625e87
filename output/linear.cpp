// The linear part of a task's problem: costs, matrix, bounds, integer variables.

#include "output/extracts.h"
#include "output/records.h"
#include "output/sparse_columns.h"

KLVrescode_t get_costs (KLVtask_t task, mxArray* record)
{
    return KLV_getc (task, field_values (record, "c"));
}

// The library writes values in place; rows are widened on their way.
KLVrescode_t get_matrix (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    const mxArray* a = mxGetField (record, 0, "a");
    mwIndex *starts = mxGetJc (a), *rows = mxGetIr (a);
    double* values = mxGetPr (a);
    const auto narrow_rows = host::allocate<std::int32_t> (static_cast<std::size_t> (counts.constraints));
    if (!narrow_rows)
        return KLV_RES_OUT_OF_MEMORY;

    KLVrescode_t code = KLV_RES_OK;
    mwIndex start = 0;
    for (std::int32_t j = 0; j < counts.variables; ++j) {
        starts[j] = start;
        if (code != KLV_RES_OK)    // the columns from a failure on are empty
            continue;
        std::int32_t count = 0;
        code = KLV_getacol (task, j, &count, narrow_rows.get (), values + start);
        if (code != KLV_RES_OK)
            continue;
        ivec_cp_to_mwIndex (narrow_rows.get (), rows + start, static_cast<std::size_t> (count));
        code = sort_mat_column (static_cast<std::size_t> (count), rows + start, values + start);
        if (code == KLV_RES_OK)
            start += static_cast<mwIndex> (count);
    }
    starts[counts.variables] = start;
    return code;
}

KLVrescode_t get_integers (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    mxArray* sub = set_field (mxGetField (record, 0, "ints"), "sub", create_column (counts.integers));
    if (!sub)
        return KLV_RES_OUT_OF_MEMORY;
    double* next = mxGetPr (sub);
    KLVrescode_t code = KLV_RES_OK;
    for (std::int32_t j = 0; j < counts.variables && code == KLV_RES_OK; ++j) {
        std::int32_t type = KLV_VAR_CONTINUOUS;
        code = KLV_getvartype (task, j, &type);
        if (code == KLV_RES_OK && type == KLV_VAR_INTEGER)
            *next++ = j + 1.0;
    }
    return code;
}

namespace {

// Bounds that don't exist are infinities, whatever values the library keeps for them.
template <auto get_bound>
KLVrescode_t get_bounds_of (KLVtask_t task, std::int32_t count, double* lower, double* upper)
{
    KLVrescode_t code = KLV_RES_OK;
    for (std::int32_t i = 0; i < count && code == KLV_RES_OK; ++i) {
        std::int32_t key = KLV_BK_RA;
        code = get_bound (task, i, &key, &lower[i], &upper[i]);
        if (key == KLV_BK_UP || key == KLV_BK_FR)
            lower[i] = -mxGetInf ();
        if (key == KLV_BK_LO || key == KLV_BK_FR)
            upper[i] = mxGetInf ();
    }
    return code;
}

}

KLVrescode_t get_bounds (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    const KLVrescode_t code = get_bounds_of<KLV_getconbound> (
        task, counts.constraints, field_values (record, "blc"), field_values (record, "buc"));
    if (code != KLV_RES_OK)
        return code;
    return get_bounds_of<KLV_getvarbound> (task, counts.variables, field_values (record, "blx"),
                                           field_values (record, "bux"));
}

KLVrescode_t get_sense (KLVtask_t task, mxArray* record)
{
    std::int32_t sense = KLV_SENSE_MINIMIZE;
    const KLVrescode_t code = KLV_getobjsense (task, &sense);
    if (code != KLV_RES_OK)
        return code;
    host::Array text (mxCreateString (sense == KLV_SENSE_MINIMIZE ? "minimize" : "maximize"));
    return append_field (record, "objsense", std::move (text)) ? KLV_RES_OK : KLV_RES_OUT_OF_MEMORY;
}
