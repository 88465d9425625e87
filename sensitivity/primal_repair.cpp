#include "sensitivity/primal_repair.h"

#include <algorithm>
#include <cstdint>

#include "common/arrays.h"
#include "common/refuse.h"
#include "host/holders.h"

namespace {

// Numbers of items of one kind: stated by the matrix, for which the user gives weights; and held by the task, for each of which the
// library takes a weight. A conversion of the problem adds items.
struct Items {
    std::int32_t stated = 0, held = 0;
};

using Weights = host::Memory<double>;

// Absent weights are null. Items that a conversion has added get weights with which their bounds may not move.
KLVrescode_t read_weights (const mxArray* record, const char* name, const Items& items, Weights& weights)
{
    const mxArray* field = mxGetField (record, 0, name);
    if (field == nullptr)
        return KLV_RES_OK;
    if (!isvector (field, static_cast<std::uint64_t> (items.stated), 0))
        return refuse (KLV_RES_ARGUMENT_LENGTH, "prob.primalrepair.%s", name);
    weights = host::allocate<double> (static_cast<std::size_t> (items.held));
    const double* const values = items.stated > 0 ? mxGetPr (field) : nullptr;
    if (!weights || (items.stated > 0 && !values))
        return KLV_RES_OUT_OF_MEMORY;
    std::fill_n (weights.get (), items.held, -1.0);
    std::copy_n (values, std::min (items.stated, items.held), weights.get ());
    return KLV_RES_OK;
}

}

KLVrescode_t primalrepair (KLVtask_t task, const mxArray* prob, bool from_file)
{
    const bool is_record = is_given (prob) && mxIsStruct (prob);
    const mxArray* record = is_record ? mxGetField (prob, 0, "primalrepair") : nullptr;
    if (record == nullptr)
        return refuse (KLV_RES_ARGUMENT, "prob.primalrepair");
    Items constraints, variables;
    KLV_getnumcon (task, &constraints.held);
    KLV_getnumvar (task, &variables.held);
    const mxArray* a = from_file ? nullptr : mxGetField (prob, 0, "a");
    constraints.stated = a ? static_cast<std::int32_t> (mxGetM (a)) : constraints.held;
    variables.stated = a ? static_cast<std::int32_t> (mxGetN (a)) : variables.held;

    Weights wuc, wlc, wux, wlx;
    if (mxIsStruct (record) && !mxIsEmpty (record)) {
        KLVrescode_t code = read_weights (record, "wuc", constraints, wuc);
        if (code == KLV_RES_OK)
            code = read_weights (record, "wlc", constraints, wlc);
        if (code == KLV_RES_OK)
            code = read_weights (record, "wux", variables, wux);
        if (code == KLV_RES_OK)
            code = read_weights (record, "wlx", variables, wlx);
        if (code != KLV_RES_OK)
            return code;
    }
    return KLV_primalrepair (task, wlc.get (), wuc.get (), wlx.get (), wux.get ());
}
