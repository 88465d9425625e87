// The symbolic-constant record: every symbolic constant of the library with its value.
#pragma once

#include "host/holders.h"
#include "kalvo.h"

// Makes the record; there is none when the library has no constants. After a failure it is empty or partly
// filled.
KLVrescode_t getsymbcon (KLVtask_t task, host::Array& record);
