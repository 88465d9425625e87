#include <cstdio>

#include "common/arrays.h"
#include "common/console.h"
#include "common/number.h"
#include "common/refuse.h"
#include "common/text.h"
#include "params/parameters.h"

namespace {

struct Field {
    const char* name = nullptr;
    const mxArray* value = nullptr;
    std::int32_t index = 0;    // of the parameter among its kind
};

constexpr std::int32_t first_echo_level = 6;    // prints a line for each parameter

KLVrescode_t refuse_field (const Field& field)
{
    return refuse (KLV_RES_ARGUMENT, "param.%s", field.name);
}

bool is_number (const mxArray* value)
{
    return mxIsDouble (value) && mxGetM (value) == 1 && mxGetN (value) == 1;
}

KLVrescode_t set_double (std::int32_t echo, KLVtask_t task, const Field& field)
{
    if (!is_number (field.value))
        return refuse_field (field);
    const auto value = first_number (field.value);
    if (!value)
        return KLV_RES_OUT_OF_MEMORY;
    if (echo >= first_echo_level)
        mx_printf ("Setting double param %s to %e\n", field.name, *value);
    return KLV_putdouparam (task, field.index, *value);
}

KLVrescode_t put_integer (KLVtask_t task, const Field& field, std::int32_t value)
{
    return KLV_putintparam (task, field.index, value) == KLV_RES_OK ? KLV_RES_OK : refuse_field (field);
}

KLVrescode_t set_integer_by_symbol (std::int32_t echo, KLVtask_t task, const Field& field)
{
    const host::Memory<char> symbol = copy_text (field.value);
    if (!symbol)
        return KLV_RES_OUT_OF_MEMORY;
    char value[KLV_MAX_TEXT] = "";
    if (!KLV_symnamtovalue (symbol.get (), value))
        return refuse (KLV_RES_SYMBOL_UNKNOWN, "%s param.%s", symbol.get (), field.name);
    if (echo >= first_echo_level)
        mx_printf ("Setting int param to %s to %s\n", field.name, symbol.get ());
    std::int32_t number = 0;
    strtointeger (value, &number);
    return put_integer (task, field, number);
}

// A number outside 32 bits, or NaN, is refused.
KLVrescode_t set_integer (std::int32_t echo, KLVtask_t task, const Field& field)
{
    if (mxIsChar (field.value))
        return set_integer_by_symbol (echo, task, field);
    if (!is_number (field.value))
        return refuse_field (field);
    const auto value = first_number (field.value);
    if (!value)
        return KLV_RES_OUT_OF_MEMORY;
    const auto number = truncate_to_int32 (*value);
    if (!number)
        return refuse_field (field);
    if (echo >= first_echo_level)
        mx_printf ("Setting int param %s to %d\n", field.name, *number);
    return put_integer (task, field, *number);
}

// Longer text is cut to the buffer.
KLVrescode_t set_string (KLVtask_t task, const Field& field)
{
    if (!mxIsChar (field.value))
        return refuse_field (field);
    char text[KLV_MAX_TEXT] = "";
    if (mxGetM (field.value) != 0 && mxGetN (field.value) != 0) {
        if (mxGetM (field.value) != 1)
            return refuse_field (field);
        mxGetString (field.value, text, sizeof text);
    }
    return KLV_putstrparam (task, field.index, text);
}

KLVrescode_t set_parameter (std::int32_t echo, KLVtask_t task, Field field)
{
    char name[65];
    std::snprintf (name, sizeof name, "%s", field.name);
    std::int32_t kind = KLV_PAR_NONE;
    KLV_whichparam (task, name, &kind, &field.index);
    if (field.value == nullptr)    // a field that was never set
        return refuse_field (field);
    switch (kind) {
    case KLV_PAR_DOUBLE:
        return set_double (echo, task, field);
    case KLV_PAR_INTEGER:
        return set_integer (echo, task, field);
    case KLV_PAR_STRING:
        return set_string (task, field);
    default:
        return refuse_field (field);
    }
}

}

KLVrescode_t setparams (std::int32_t echo, KLVtask_t task, const mxArray* param)
{
    if (param == nullptr || mxIsEmpty (param))
        return KLV_RES_OK;
    if (!mxIsStruct (param))
        return refuse (KLV_RES_ARGUMENT, "param");
    if (mxGetM (param) != 1 || mxGetN (param) != 1)
        return KLV_RES_OK;

    KLVrescode_t code = KLV_RES_OK;
    for (int k = 0; k < mxGetNumberOfFields (param) && code == KLV_RES_OK; ++k)
        code = set_parameter (
            echo, task,
            {.name = mxGetFieldNameByNumber (param, k), .value = mxGetFieldByNumber (param, 0, k)});
    return code;
}
