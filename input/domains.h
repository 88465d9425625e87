// Domains of affine conic constraints.
#pragma once

#include <cstdint>
#include <span>

#include "kalvo.h"

constexpr bool is_power_domain (std::int32_t type)
{
    return type == KLV_DOMAIN_PRIMAL_POWER_CONE || type == KLV_DOMAIN_DUAL_POWER_CONE;
}

// Makes a domain of a KLVdomaintype; only power cones have exponents, exponential cones one size whatever is given.
KLVrescode_t make_domain (KLVtask_t task, std::int32_t type, std::int64_t size,
                          std::span<const double> exponents, std::int64_t* domain);
