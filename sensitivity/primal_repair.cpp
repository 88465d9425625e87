#include "sensitivity/primal_repair.h"

#include <cstdint>

#include "gateway/refuse.h"
#include "input/arrays.h"

namespace {

struct Weights {
    const double* wuc = nullptr;
    const double* wlc = nullptr;
    const double* wux = nullptr;
    const double* wlx = nullptr;
};

// A weight vector that is not there is null. The line of a wrong one shows the code of an argument error.
KLVrescode_t read_weights (const mxArray* record, const char* name, const char* path, std::int32_t length,
                           const double*& weights)
{
    const mxArray* field = mxGetField (record, 0, name);
    if (field == nullptr)
        return KLV_RES_OK;
    if (!isvector (field, static_cast<std::uint64_t> (length), 0))
        return refuse (KLV_RES_ARGUMENT_LENGTH, "prob.%s", path);
    if (length == 0)
        return KLV_RES_OK;
    if (const KLVrescode_t code = check_values (path, field))
        return code;
    weights = mxGetPr (field);
    return KLV_RES_OK;
}

KLVrescode_t read_all_weights (KLVtask_t task, const mxArray* record, Weights& weights)
{
    std::int32_t numcon = 0, numvar = 0;
    KLV_getnumcon (task, &numcon);
    KLV_getnumvar (task, &numvar);
    KLVrescode_t code = read_weights (record, "wuc", "primalrepair.wuc", numcon, weights.wuc);
    if (code == KLV_RES_OK)
        code = read_weights (record, "wlc", "primalrepair.wlc", numcon, weights.wlc);
    if (code == KLV_RES_OK)
        code = read_weights (record, "wux", "primalrepair.wux", numvar, weights.wux);
    if (code == KLV_RES_OK)
        code = read_weights (record, "wlx", "primalrepair.wlx", numvar, weights.wlx);
    return code;
}

}

KLVrescode_t primalrepair (KLVtask_t task, const mxArray* prob)
{
    const bool is_record = is_given (prob) && mxIsStruct (prob);
    const mxArray* field = is_record ? mxGetField (prob, 0, "primalrepair") : nullptr;
    if (field == nullptr)
        return refuse (KLV_RES_ARGUMENT, "prob.primalrepair");
    Weights weights;
    if (mxIsStruct (field) && !mxIsEmpty (field))
        if (const KLVrescode_t code = read_all_weights (task, field, weights); code != KLV_RES_OK)
            return code;
    return KLV_primalrepair (task, weights.wlc, weights.wuc, weights.wlx, weights.wux);
}
