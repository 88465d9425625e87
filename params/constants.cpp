#include "params/constants.h"

#include <cstdint>

#include "params/record.h"

KLVrescode_t getsymbcon (KLVtask_t task, host::Array& record)
{
    record.reset ();
    std::int32_t count = 0;
    std::size_t longest = 0;
    KLVrescode_t code = KLV_getsymbcondim (nullptr, &count, &longest);
    if (code != KLV_RES_OK || count == 0)
        return code;

    const auto name = host::allocate<char> (longest + 1);
    if (!name)
        return KLV_RES_OUT_OF_MEMORY;
    Fields fields (static_cast<std::size_t> (count));
    for (std::int32_t k = 0; k < count && code == KLV_RES_OK; ++k) {
        std::int32_t value = 0;
        code = KLV_getsymbcon (task, k, static_cast<std::int32_t> (longest + 1), name.get (), &value);
        if (code == KLV_RES_OK)
            fields.add (name.get (), host::Array (mxCreateDoubleScalar (value)));
    }
    return code == KLV_RES_OK ? fields.make_record (record) : code;
}
