// The symbolic-constant record: every symbolic constant of the library with its value.
#pragma once

#include "host/holders.h"
#include "kalvo.h"

// Makes the record; null when the library has no constants. After a failure the record is null.
KLVrescode_t getsymbcon (KLVtask_t task, host::Array& record);
