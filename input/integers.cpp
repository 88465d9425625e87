#include "common/arrays.h"
#include "common/refuse.h"
#include "input/readers.h"

// Of several records the first counts. A sub that is no dense vector marks nothing; an index out of range is refused.
KLVrescode_t putints (KLVtask_t task, const mxArray* ints)
{
    if (!is_given (ints))
        return KLV_RES_OK;
    if (!mxIsStruct (ints))
        return refuse (KLV_RES_ARGUMENT, "prob.ints");
    std::int32_t numvar = 0;
    KLVrescode_t code = KLV_getnumvar (task, &numvar);
    if (code != KLV_RES_OK)
        return code;

    const mxArray* sub = mxGetField (ints, 0, "sub");
    const std::uint64_t count = vectorlen (sub);
    if (count == 0 || !isvector (sub, count, 0))
        return KLV_RES_OK;
    if ((code = check_values ("ints.sub", sub)) != KLV_RES_OK)
        return code;
    const double* indices = mxGetPr (sub);
    for (std::uint64_t k = 0; k < count && code == KLV_RES_OK; ++k) {
        const std::int32_t variable = truncate_to_int32 (indices[k]).value_or (0);
        if (1 <= variable && variable <= numvar)
            code = KLV_putvartype (task, variable - 1, KLV_VAR_INTEGER);
        else
            code = refuse (KLV_RES_ARGUMENT, "prob.ints.sub(%llu)", static_cast<unsigned long long> (k) + 1);
    }
    return code;
}
