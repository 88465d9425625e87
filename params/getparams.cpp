#include <utility>

#include "params/parameters.h"
#include "params/record.h"

namespace {

KLVrescode_t get_double (KLVtask_t task, std::int32_t index, host::Array& array)
{
    double value = 0;
    KLV_getdouparam (task, index, &value);
    array.reset (mxCreateDoubleScalar (value));
    return KLV_RES_OK;
}

// A value that has a name is given as that name.
KLVrescode_t get_integer (KLVtask_t task, std::int32_t index, host::Array& array)
{
    std::int32_t value = 0;
    KLV_getintparam (task, index, &value);
    char symbol[KLV_MAX_TEXT] = "";
    KLV_iparvaltosymnam (nullptr, index, value, symbol);
    array.reset (symbol[0] != '\0' ? mxCreateString (symbol) : mxCreateDoubleScalar (value));
    return KLV_RES_OK;
}

KLVrescode_t get_string (KLVtask_t task, std::int32_t index, host::Array& array)
{
    std::int32_t length = 0;
    const KLVrescode_t code = KLV_getstrparam (task, index, 0, &length, nullptr);
    if (code != KLV_RES_OK)
        return code;
    const auto text = host::allocate<char> (static_cast<std::size_t> (length) + 1);
    if (!text)
        return KLV_RES_OUT_OF_MEMORY;
    KLV_getstrparam (task, index, length + 1, &length, text.get ());
    array.reset (mxCreateString (text.get ()));
    return KLV_RES_OK;
}

struct Block {
    KLVparamtype kind;
    std::int32_t count;
    KLVrescode_t (*get) (KLVtask_t task, std::int32_t index, host::Array& array);
};

constexpr Block blocks[] = {
    {KLV_PAR_DOUBLE, KLV_DOUBLE_PARAMETERS, get_double},
    {KLV_PAR_INTEGER, KLV_INTEGER_PARAMETERS, get_integer},
    {KLV_PAR_STRING, KLV_STRING_PARAMETERS, get_string},
};

}

KLVrescode_t getparams (KLVtask_t task, host::Array& record)
{
    record.reset ();
    Fields fields (KLV_DOUBLE_PARAMETERS + KLV_INTEGER_PARAMETERS + KLV_STRING_PARAMETERS);
    for (const Block& block : blocks)
        for (std::int32_t index = 0; index < block.count; ++index) {
            char name[KLV_MAX_TEXT] = "";
            KLV_getparamname (task, block.kind, index, name);
            host::Array value;
            if (const KLVrescode_t code = block.get (task, index, value))
                return code;
            fields.add (name, std::move (value));
        }
    return fields.make_record (record);
}
