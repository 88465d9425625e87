// The one progress callback of a task, shared by a short list: the interrupt check, then the user's function.
#pragma once

#include <cstdint>

#include "kalvo.h"

struct CallbackChain {
    KLVcallbackfunc functions[2] = {};
    void* handles[2] = {};
    std::int32_t count = 0;
};

// Appends a member; there is room for two.
void addcbfunc (CallbackChain& chain, KLVcallbackfunc function, void* handle);

// Takes a pending Ctrl-C; whether there was one.
bool take_interrupt ();

extern "C" {

// Calls the members of the chain, its handle, in order: the first answer that is not 0, else 0.
std::int32_t multicallbackfunc (KLVtask_t task, void* chain, std::uint32_t caller, const double* douinf,
                                const std::int32_t* intinf, const std::int64_t* lintinf);

// The interrupt check: 1 if there was a Ctrl-C, else 0.
std::int32_t ctrlccb (KLVtask_t task, void* handle, std::uint32_t caller, const double* douinf,
                      const std::int32_t* intinf, const std::int64_t* lintinf);
}
