// A task has one progress callback. The chain shares it between the interrupt check and the user's function.
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

// Clears a pending Ctrl-C. True if there was one.
bool take_interrupt ();

extern "C" {

// The task's callback; its handle is the CallbackChain. Calls the members in order up to the first answer other than 0, which it
// returns.
std::int32_t multicallbackfunc (KLVtask_t task, void* chain, std::uint32_t caller, const double* douinf,
                                const std::int32_t* intinf, const std::int64_t* lintinf);

// The interrupt check: clears a pending Ctrl-C; 1 if there was one, else 0.
std::int32_t ctrlccb (KLVtask_t task, void* handle, std::uint32_t caller, const double* douinf,
                      const std::int32_t* intinf, const std::int64_t* lintinf);
}
