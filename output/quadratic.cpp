// The quadratic terms of a task's problem. The library writes the values in place; indices are made 1-based.

#include "common/console.h"
#include "common/records.h"
#include "output/extracts.h"

namespace {

void put_indices (const std::int32_t* indices, std::int64_t count, double* destination)
{
    for (std::int64_t k = 0; k < count; ++k)
        destination[k] = indices[k] + 1.0;
}

KLVrescode_t get_objective_terms (KLVtask_t task, const ProblemCounts& counts, std::int32_t* rows,
                                  std::int32_t* columns, mxArray* record)
{
    std::int64_t count = 0;
    const KLVrescode_t code =
        KLV_getqobj (task, counts.quadratic_objective, &count, rows, columns, field_values (record, "qoval"));
    if (code == KLV_RES_OK) {
        put_indices (rows, count, field_values (record, "qosubi"));
        put_indices (columns, count, field_values (record, "qosubj"));
    }
    return code;
}

KLVrescode_t get_constraint_terms (KLVtask_t task, const ProblemCounts& counts, std::int32_t* rows,
                                   std::int32_t* columns, mxArray* record)
{
    double *constraints = field_values (record, "qcsubk"), *subi = field_values (record, "qcsubi"),
           *subj = field_values (record, "qcsubj"), *values = field_values (record, "qcval");
    std::int64_t total = 0;
    for (std::int32_t i = 0; i < counts.constraints; ++i) {
        std::int64_t count = 0;
        const KLVrescode_t code = KLV_getqconk (task, i, counts.quadratic_constraints - total, &count, rows,
                                                columns, values + total);
        if (code != KLV_RES_OK)
            return code;
        std::fill_n (constraints + total, count, i + 1.0);
        put_indices (rows, count, subi + total);
        put_indices (columns, count, subj + total);
        total += count;
    }
    if (total != counts.quadratic_constraints) {
        mx_printf ("qcnz=%d  cur=%d\n", static_cast<int> (counts.quadratic_constraints),
                   static_cast<int> (total));
        mexErrMsgTxt ("qcnz!=cur");
    }
    return KLV_RES_OK;
}

}

KLVrescode_t get_quadratic_terms (KLVtask_t task, const ProblemCounts& counts, std::int32_t* rows,
                                  std::int32_t* columns, mxArray* record)
{
    KLVrescode_t code = KLV_RES_OK;
    if (counts.quadratic_objective > 0)
        code = get_objective_terms (task, counts, rows, columns, record);
    if (code == KLV_RES_OK && counts.quadratic_constraints > 0)
        code = get_constraint_terms (task, counts, rows, columns, record);
    return code;
}
