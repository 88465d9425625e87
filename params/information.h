// The information record: all information items of the library by name.
#pragma once

#include <cstdint>

#include "host/holders.h"
#include "kalvo.h"

// Number of items: the double items stand first, then the integer items.
constexpr std::int32_t information_items = KLV_DOUBLE_INFORMATION + KLV_INTEGER_INFORMATION;

// Reads item number k of the record. An item that can't be read leaves `value` as it is.
void read_information (KLVtask_t task, std::int32_t k, double& value);

// Makes the record. After a failure the record is null.
KLVrescode_t getinfo (KLVtask_t task, host::Array& record);
