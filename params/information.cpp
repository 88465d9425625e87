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
    Fields fields (information_items);
    for (std::int32_t k = 0; k < information_items; ++k) {
        const bool is_double = k < KLV_DOUBLE_INFORMATION;
        char name[KLV_MAX_TEXT] = "";
        KLV_getinfname (task, is_double ? KLV_INF_DOUBLE : KLV_INF_INTEGER,
                        is_double ? k : k - KLV_DOUBLE_INFORMATION, name);
        double value = 0;
        read_information (task, k, value);
        fields.add (name, host::Array (mxCreateDoubleScalar (value)));
    }
    return fields.make_record (record);
}
