#include "params/record.h"

#include "common/records.h"

FieldNames::~FieldNames ()
{
    for (std::size_t k = 0; k < count_; ++k)
        mxFree (names_[k]);
}

void FieldNames::add (const char* name)
{
    char* copy = names_ ? mx_strdup (name) : nullptr;
    if (copy)
        names_[count_++] = copy;
    else
        complete_ = false;
}

void FieldNames::add_all (KLVtask_t task, std::int32_t kind, std::int32_t count,
                          KLVrescode_t (*get_name) (KLVtask_t, std::int32_t, std::int32_t, char*))
{
    for (std::int32_t k = 0; k < count; ++k) {
        char name[KLV_MAX_TEXT] = "";
        get_name (task, kind, k, name);
        add (name);
    }
}

KLVrescode_t FieldNames::make_record (host::Array& record) const
{
    if (!complete_ || !names_)
        return KLV_RES_OUT_OF_MEMORY;
    record = create_record ({names_.get (), count_});
    return record ? KLV_RES_OK : KLV_RES_OUT_OF_MEMORY;
}

KLVrescode_t fill_field (const host::Array& record, int k, mxArray* value)
{
    if (value == nullptr)
        return KLV_RES_OUT_OF_MEMORY;
    mxSetFieldByNumber (record.get (), 0, k, value);
    return KLV_RES_OK;
}
