// The parameter record: parameters by name. setparams takes records that getparams has made.
#pragma once

#include <cstdint>

#include "host/holders.h"
#include "kalvo.h"

// Sets the parameters that the record names, in its order, up to the first fault. Null or an empty record
// sets nothing.
KLVrescode_t setparams (std::int32_t echo, KLVtask_t task, const mxArray* param);

// Makes the record of all parameters. After a failure the record is null.
KLVrescode_t getparams (KLVtask_t task, host::Array& record);
