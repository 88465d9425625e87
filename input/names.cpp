#include <cstring>
#include <string_view>

#include "common/arrays.h"
#include "common/refuse.h"
#include "common/text.h"
#include "host/holders.h"
#include "input/readers.h"

namespace {

// Copies a name; KLV_RES_ARGUMENT if it is not text, or holds a zero character, which would end the name.
KLVrescode_t copy_name (const mxArray* name, host::Memory<char>& text)
{
    if (name == nullptr || !mxIsChar (name))
        return KLV_RES_ARGUMENT;
    char* raw = nullptr;
    const int copied = getstring (name, &raw);
    text.reset (raw);
    if (!copied)
        return KLV_RES_OUT_OF_MEMORY;
    return std::strlen (raw) < mxGetNumberOfElements (name) ? KLV_RES_ARGUMENT : KLV_RES_OK;
}

// The number of items of one field of names, and the function that names them.
struct ItemNames {
    const char* field;
    KLVrescode_t (*put) (KLVtask_t, std::int64_t, const char*);
    KLVrescode_t (*count) (KLVtask_t, std::int64_t*);
};

template <auto get_count>
KLVrescode_t count_items (KLVtask_t task, std::int64_t* count)
{
    std::int32_t narrow = 0;
    const KLVrescode_t code = get_count (task, &narrow);
    *count = narrow;
    return code;
}

template <auto put>
KLVrescode_t name_item (KLVtask_t task, std::int64_t k, const char* name)
{
    return put (task, static_cast<std::int32_t> (k), name);
}

constexpr ItemNames item_names[] = {
    {"var", name_item<KLV_putvarname>, count_items<KLV_getnumvar>},
    {"con", name_item<KLV_putconname>, count_items<KLV_getnumcon>},
    {"acc", KLV_putaccname, KLV_getnumacc},
    {"cone", name_item<KLV_putconename>, count_items<KLV_getnumcone>},
    {"barvar", name_item<KLV_putbarvarname>, count_items<KLV_getnumbarvar>},
};

KLVrescode_t put_item_names (KLVtask_t task, const ItemNames& items, const mxArray* list)
{
    std::int64_t count = 0;
    KLVrescode_t code = items.count (task, &count);
    if (code != KLV_RES_OK || count == 0)
        return code;
    if (list == nullptr || mxGetNumberOfElements (list) != static_cast<std::uint64_t> (count))
        return refuse (KLV_RES_ARGUMENT_LENGTH, "prob.names.%s", items.field);
    const bool is_cell = mxIsCell (list);
    host::Memory<char> name;
    for (std::int64_t k = 0; k < count && code == KLV_RES_OK; ++k) {
        code = copy_name (is_cell ? mxGetCell (list, static_cast<mwIndex> (k)) : nullptr, name);
        if (code == KLV_RES_OK)
            code = items.put (task, k, name.get ());
        else if (code == KLV_RES_ARGUMENT)
            refuse (code, "prob.names.%s{%lld}", items.field, static_cast<long long> (k) + 1);
    }
    return code;
}

KLVrescode_t put_single_name (KLVtask_t task, const char* field, const mxArray* value,
                              KLVrescode_t (*put) (KLVtask_t, const char*))
{
    host::Memory<char> name;
    const KLVrescode_t code = copy_name (value, name);
    if (code == KLV_RES_ARGUMENT)
        return refuse (code, "prob.names.%s", field);
    return code == KLV_RES_OK ? put (task, name.get ()) : code;
}

KLVrescode_t put_field (KLVtask_t task, std::string_view field, const mxArray* value)
{
    if (field == "name")
        return put_single_name (task, "name", value, KLV_puttaskname);
    if (field == "obj")
        return put_single_name (task, "obj", value, KLV_putobjname);
    for (const ItemNames& items : item_names)
        if (field == items.field)
            return put_item_names (task, items, value);
    return refuse (KLV_RES_ARGUMENT, "prob.names.%s", field.data ());
}

}

// Fields are read in the record's own order; of several records the first counts.
KLVrescode_t putnames (KLVtask_t task, const mxArray* names)
{
    if (!is_given (names) || !mxIsStruct (names))
        return KLV_RES_OK;
    KLVrescode_t code = KLV_RES_OK;
    const int fields = mxGetNumberOfFields (names);
    for (int number = 0; number < fields && code == KLV_RES_OK; ++number)
        code =
            put_field (task, mxGetFieldNameByNumber (names, number), mxGetFieldByNumber (names, 0, number));
    return code;
}
