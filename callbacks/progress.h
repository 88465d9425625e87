// Progress reports to a function of the session, which can stop the run.
#pragma once

#include <cstdint>

#include "host/holders.h"
#include "kalvo.h"

extern "C" {

// A member of the callback chain; its handle is the CallbackHandle of kind iteration. Returns 0 to go on, or the code to stop with.
std::int32_t iterlog (KLVtask_t task, void* handle, std::uint32_t caller, const double* douinf,
                      const std::int32_t* intinf, const std::int64_t* lintinf);
}

// Updates all fields of an information record. An absent record is no error.
KLVrescode_t updateinfo (KLVtask_t task, const host::Array& info);
