// The information record: every item that the library counts or measures, under its name.
#pragma once

#include <cstdint>

#include "host/holders.h"
#include "kalvo.h"

// The double items, then the integer items.
constexpr std::int32_t information_items = KLV_DOUBLE_INFORMATION + KLV_INTEGER_INFORMATION;

// Item number k of the record; an item that can't be read leaves `value` as it is.
void read_information (KLVtask_t task, std::int32_t k, double& value);

// Makes the record. After a failure `record` is empty or partly filled.
KLVrescode_t getinfo (KLVtask_t task, host::Array& record);
