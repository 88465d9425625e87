// The cones of a task's problem.

#include <algorithm>

#include "common/records.h"
#include "output/extracts.h"

KLVrescode_t get_cones (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    host::Array types = create_column (counts.cones), members = create_column (counts.cone_members),
                starts = create_column (counts.cones), parameters = create_column (counts.cones);
    const auto indices = host::allocate<std::int32_t> (static_cast<std::size_t> (counts.largest_cone));
    if (!types || !members || !starts || !parameters || !indices)
        return KLV_RES_OUT_OF_MEMORY;
    double* next = mxGetPr (members.get ());
    for (std::int32_t k = 0; k < counts.cones; ++k) {
        std::int32_t type = 0, count = 0;
        if (const KLVrescode_t code =
                KLV_getcone (task, k, &type, mxGetPr (parameters.get ()) + k, &count, indices.get ()))
            return code;
        mxGetPr (types.get ())[k] = type;
        mxGetPr (starts.get ())[k] = static_cast<double> (next - mxGetPr (members.get ())) + 1.0;
        next = std::transform (indices.get (), indices.get () + count, next,
                               [] (std::int32_t variable) { return variable + 1.0; });
    }
    mxArray* cones = mxGetField (record, 0, "cones");
    set_field (cones, "type", std::move (types));
    set_field (cones, "conepar", std::move (parameters));
    set_field (cones, "sub", std::move (members));
    set_field (cones, "subptr", std::move (starts));
    return KLV_RES_OK;
}
