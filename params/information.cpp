#include "params/information.h"

#include "params/record.h"

void read_information (KLVtask_t task, std::int32_t k, double& value)
{
    if (k < KLV_DOUBLE_INFORMATION) {
        KLV_getdouinf (task, k, &value);
    } else {
        std::int32_t integer = 0;
        KLV_getintinf (task, k - KLV_DOUBLE_INFORMATION, &integer);
        value = integer;
    }
}

KLVrescode_t getinfo (KLVtask_t task, host::Array& record)
{
    record.reset ();
    FieldNames names (information_items);
    names.add_all (task, KLV_INF_DOUBLE, KLV_DOUBLE_INFORMATION, KLV_getinfname);
    names.add_all (task, KLV_INF_INTEGER, KLV_INTEGER_INFORMATION, KLV_getinfname);

    KLVrescode_t code = names.make_record (record);
    for (std::int32_t k = 0; k < information_items && code == KLV_RES_OK; ++k) {
        double value = 0;
        read_information (task, k, value);
        code = fill_field (record, k, mxCreateDoubleScalar (value));
    }
    return code;
}
