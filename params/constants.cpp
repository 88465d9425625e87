#include "params/constants.h"

#include <cstdint>

#include "params/record.h"

namespace {

KLVrescode_t read_constants (KLVtask_t task, std::size_t longest, std::int32_t count, FieldNames& names,
                             std::int32_t* values)
{
    const auto name = host::allocate<char> (longest + 1);
    if (!name)
        return KLV_RES_OUT_OF_MEMORY;
    KLVrescode_t code = KLV_RES_OK;
    for (std::int32_t k = 0; k < count && code == KLV_RES_OK; ++k) {
        code = KLV_getsymbcon (task, k, static_cast<std::int32_t> (longest + 1), name.get (), &values[k]);
        if (code == KLV_RES_OK)
            names.add (name.get ());
    }
    return code;
}

}

KLVrescode_t getsymbcon (KLVtask_t task, host::Array& record)
{
    record.reset ();
    std::int32_t count = 0;
    std::size_t longest = 0;
    KLVrescode_t code = KLV_getsymbcondim (nullptr, &count, &longest);
    if (code != KLV_RES_OK || count == 0)
        return code;

    FieldNames names (static_cast<std::size_t> (count));
    const auto values = host::allocate<std::int32_t> (static_cast<std::size_t> (count));
    if (!values)
        return KLV_RES_OUT_OF_MEMORY;
    code = read_constants (task, longest, count, names, values.get ());
    if (code == KLV_RES_OK)
        code = names.make_record (record);
    for (std::int32_t k = 0; k < count && code == KLV_RES_OK; ++k)
        code = fill_field (record, k, mxCreateDoubleScalar (values[k]));
    return code;
}
