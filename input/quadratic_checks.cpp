// Shapes of the quadratic terms. A fault is reported as an argument error, but the request fails with the
// code of a wrong length.

#include <algorithm>

#include "common/arrays.h"
#include "common/refuse.h"
#include "input/readers.h"

namespace {

std::uint64_t larger_dimension (const mxArray* a)
{
    return is_given (a) ? std::max<std::uint64_t> (mxGetM (a), mxGetN (a)) : 0;
}

}

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
