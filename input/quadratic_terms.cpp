// Quadratic terms: triplets in parallel vectors.

#include <algorithm>
#include <cmath>
#include <utility>

#include "common/arrays.h"
#include "common/refuse.h"
#include "host/holders.h"
#include "input/readers.h"

namespace {

std::uint64_t larger_dimension (const mxArray* a)
{
    return is_given (a) ? std::max<std::uint64_t> (mxGetM (a), mxGetN (a)) : 0;
}

bool is_index (std::int32_t index, std::int32_t count)
{
    return 0 <= index && index < count;
}

// Every term is handed over in the lower triangle.
void order_indices (std::int32_t& row, std::int32_t& column)
{
    if (row < column)
        std::swap (row, column);
}

// Indices from 1, truncated and then made 0-based.
KLVrescode_t read_variables (const double* indices, std::int32_t count, std::int32_t numvar,
                             KLVrescode_t fault, std::int32_t* variables)
{
    for (std::int32_t k = 0; k < count; ++k) {
        const std::int32_t index = truncate_to_int32 (indices[k]).value_or (0);
        if (index < 1 || index > numvar)
            return fault;
        variables[k] = index - 1;
    }
    return KLV_RES_OK;
}

KLVrescode_t put_objective_terms (KLVtask_t task, const ProblemFields& fields, std::int32_t count)
{
    const auto rows = host::allocate<std::int32_t> (static_cast<std::size_t> (count));
    const auto columns = host::allocate<std::int32_t> (static_cast<std::size_t> (count));
    const double *subj = mxGetPr (fields.qosubj), *subi = mxGetPr (fields.qosubi);
    const double* values = mxGetPr (fields.qoval);
    if (!rows || !columns || !subj || !subi || !values)
        return KLV_RES_OUT_OF_MEMORY;
    const auto numvar = static_cast<std::int32_t> (mxGetN (fields.a));
    if (const KLVrescode_t code =
            read_variables (subj, count, numvar, KLV_RES_QOBJ_COLUMN_RANGE, columns.get ()))
        return code;
    if (const KLVrescode_t code = read_variables (subi, count, numvar, KLV_RES_QOBJ_ROW_RANGE, rows.get ()))
        return code;
    for (std::int32_t k = 0; k < count; ++k)
        order_indices (rows[static_cast<std::size_t> (k)], columns[static_cast<std::size_t> (k)]);
    return KLV_putqobj (task, count, rows.get (), columns.get (), values);
}

// Index k of a vector of indices from 1, made 0-based and then truncated. A fault is told with index and position.
KLVrescode_t read_index (const double* indices, std::size_t k, std::int32_t limit, KLVrescode_t fault,
                         std::int32_t& index)
{
    index = truncate_to_int32 (indices[k] - 1.0).value_or (-1);
    if (is_index (index, limit))
        return KLV_RES_OK;
    return refuse (fault, "%.0f %zu", std::trunc (indices[k] - 1.0) + 1, k + 1);
}

KLVrescode_t put_constraint_terms (KLVtask_t task, const ProblemFields& fields, std::int32_t count)
{
    const auto terms = static_cast<std::size_t> (count);
    const auto constraints = host::allocate<std::int32_t> (terms);
    const auto rows = host::allocate<std::int32_t> (terms), columns = host::allocate<std::int32_t> (terms);
    const double *subk = mxGetPr (fields.qcsubk), *subi = mxGetPr (fields.qcsubi),
                 *subj = mxGetPr (fields.qcsubj), *values = mxGetPr (fields.qcval);
    if (!constraints || !rows || !columns || !subk || !subi || !subj || !values)
        return KLV_RES_OUT_OF_MEMORY;
    const auto numcon = static_cast<std::int32_t> (mxGetM (fields.a));
    const auto numvar = static_cast<std::int32_t> (mxGetN (fields.a));
    for (std::size_t k = 0; k < terms; ++k) {
        KLVrescode_t code = KLV_RES_OK;
        const auto read = [&] (const double* indices, std::int32_t limit, KLVrescode_t fault,
                               std::int32_t& index) {
            if (const KLVrescode_t failure = read_index (indices, k, limit, fault, index))
                code = failure;    // the position's other indices are looked at all the same
        };
        read (subk, numcon, KLV_RES_QCON_CONSTRAINT_RANGE, constraints[k]);
        read (subi, numvar, KLV_RES_QCON_ROW_RANGE, rows[k]);
        read (subj, numvar, KLV_RES_QCON_COLUMN_RANGE, columns[k]);
        if (code != KLV_RES_OK)
            return code;
        order_indices (rows[k], columns[k]);
    }
    return KLV_putqcon (task, count, constraints.get (), rows.get (), columns.get (), values);
}

}

// A fault is reported as an argument error, but the request fails with the code of a wrong length.
KLVrescode_t check_quadratic_fields (const ProblemFields& fields)
{
    KLVrescode_t code = KLV_RES_OK;
    const auto is_vector_of = [&] (const char* path, const mxArray* field, std::uint64_t length) {
        if (isvector (field, length, 0) && is_countable (length))
            return true;
        code = refuse (KLV_RES_ARGUMENT_LENGTH, "%s", path);
        return false;
    };

    const std::uint64_t objective_terms = larger_dimension (fields.qoval);
    if (is_vector_of ("prob.qoval", fields.qoval, objective_terms)) {
        is_vector_of ("prob.qosubj", fields.qosubj, objective_terms);
        is_vector_of ("prob.qosubi", fields.qosubi, objective_terms);
    }
    const std::uint64_t constraint_terms = larger_dimension (fields.qcval);
    if (is_vector_of ("prob.qcval", fields.qcval, constraint_terms)) {
        is_vector_of ("prob.qcsubk", fields.qcsubk, constraint_terms);
        is_vector_of ("prob.qcsubi", fields.qcsubi, constraint_terms);
        is_vector_of ("prob.qcsubj", fields.qcsubj, constraint_terms);
    }
    return code;
}

KLVrescode_t putquadratic (KLVtask_t task, const ProblemFields& fields)
{
    const auto objective_terms = static_cast<std::int32_t> (vectorlen (fields.qoval));
    const auto constraint_terms = static_cast<std::int32_t> (vectorlen (fields.qcval));
    KLVrescode_t code = KLV_RES_OK;
    if (objective_terms > 0 || constraint_terms > 0)
        code = KLV_putmaxnumqnz (task, std::int64_t{objective_terms} + constraint_terms);
    if (code == KLV_RES_OK && objective_terms > 0)
        code = put_objective_terms (task, fields, objective_terms);
    if (code == KLV_RES_OK && constraint_terms > 0)
        code = put_constraint_terms (task, fields, constraint_terms);
    return code;
}
