// The linear part of a task's problem: costs, matrix, bounds, integer variables.

#include <cmath>

#include "common/console.h"
#include "common/records.h"
#include "output/extracts.h"
#include "output/problem.h"
#include "output/sparse_columns.h"

KLVrescode_t get_costs (KLVtask_t task, mxArray* record)
{
    return KLV_getc (task, field_values (record, "c"));
}

// The library writes the values in place; row indices are widened on their way to the array.
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
        if (code != KLV_RES_OK)    // columns after a failure are empty
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

template <auto get_bound>
KLVrescode_t get_bounds_of (KLVtask_t task, std::int32_t count, double* lower, double* upper)
{
    KLVrescode_t code = KLV_RES_OK;
    std::int32_t key = KLV_BK_FR;
    for (std::int32_t i = 0; i < count && code == KLV_RES_OK; ++i)
        code = get_bound (task, i, &key, &lower[i], &upper[i]);
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

// The problem record has bounds in full columns, which can't state some bounds that files and sparse columns can.
void warn_of_large_bounds (KLVtask_t task, const mxArray* prob)
{
    double threshold = mxGetInf ();
    KLV_getdouparam (task, KLV_DPAR_BOUND_INFINITY_NUMBER, &threshold);
    const char* first_field = nullptr;
    std::size_t first = 0, count = 0;
    for (const char* field : {"blc", "buc", "blx", "bux"}) {
        const mxArray* bounds = mxGetField (prob, 0, field);
        const double* values = mxGetPr (bounds);
        const bool upper = field[1] == 'u';
        for (std::size_t i = 0; i < mxGetNumberOfElements (bounds); ++i) {
            const bool differs =
                upper ? values[i] > threshold || values[i] <= -threshold : values[i] >= threshold;
            if (!differs || std::isinf (values[i]))
                continue;
            if (count++ == 0) {
                first_field = field;
                first = i + 1;
            }
        }
    }
    if (count > 0)
        mx_printf (
            "Warning: res.prob.%s(%zu) is beyond the bound infinity (%zu in all): as an input res.prob needs "
            "KLV_DPAR_BOUND_INFINITY = Inf.\n",
            first_field, first, count);
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
