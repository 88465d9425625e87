#include "callbacks/chain.h"

#include "host/host.h"

void addcbfunc (CallbackChain& chain, KLVcallbackfunc function, void* handle)
{
    chain.functions[chain.count] = function;
    chain.handles[chain.count] = handle;
    ++chain.count;
}

std::int32_t multicallbackfunc (KLVtask_t task, void* handle, std::uint32_t caller, const double* douinf,
                                const std::int32_t* intinf, const std::int64_t* lintinf)
{
    const CallbackChain& chain = *static_cast<const CallbackChain*> (handle);
    for (std::int32_t k = 0; k < chain.count; ++k)
        if (const std::int32_t answer =
                chain.functions[k](task, chain.handles[k], caller, douinf, intinf, lintinf))
            return answer;
    return 0;
}

bool take_interrupt ()
{
    if (!utIsInterruptPending ())
        return false;
    utSetInterruptPending (false);
    return true;
}

std::int32_t ctrlccb (KLVtask_t, void*, std::uint32_t, const double*, const std::int32_t*,
                      const std::int64_t*)
{
    return take_interrupt () ? 1 : 0;
}
