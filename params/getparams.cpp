#include "params/parameters.h"
#include "params/record.h"

namespace {

KLVrescode_t get_double (KLVtask_t task, std::int32_t index, const host::Array& record, int field)
{
    double value = 0;
    KLV_getdouparam (task, index, &value);
    return fill_field (record, field, mxCreateDoubleScalar (value));
}

// A value that has a name is given as that name.
KLVrescode_t get_integer (KLVtask_t task, std::int32_t index, const host::Array& record, int field)
{
    std::int32_t value = 0;
    KLV_getintparam (task, index, &value);
    char symbol[KLV_MAX_TEXT] = "";
    KLV_iparvaltosymnam (nullptr, index, value, symbol);
    return fill_field (record, field,
                       symbol[0] != '\0' ? mxCreateString (symbol) : mxCreateDoubleScalar (value));
}

KLVrescode_t get_string (KLVtask_t task, std::int32_t index, const host::Array& record, int field)
{
    std::int32_t length = 0;
    const KLVrescode_t code = KLV_getstrparam (task, index, 0, &length, nullptr);
    if (code != KLV_RES_OK)
        return code;
    const auto text = host::allocate<char> (static_cast<std::size_t> (length) + 1);
    if (!text)
        return KLV_RES_OUT_OF_MEMORY;
    KLV_getstrparam (task, index, length + 1, &length, text.get ());
    return fill_field (record, field, mxCreateString (text.get ()));
}

using GetParameter = KLVrescode_t (KLVtask_t task, std::int32_t index, const host::Array& record, int field);

struct Block {
    KLVparamtype kind;
    std::int32_t count;
    GetParameter* get;
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
    FieldNames names (KLV_DOUBLE_PARAMETERS + KLV_INTEGER_PARAMETERS + KLV_STRING_PARAMETERS);
    for (const Block& block : blocks)
        names.add_all (task, block.kind, block.count, KLV_getparamname);

    KLVrescode_t code = names.make_record (record);
    int field = 0;
    for (const Block& block : blocks)
        for (std::int32_t index = 0; index < block.count && code == KLV_RES_OK; ++index)
            code = block.get (task, index, record, field++);
    return code;
}
