// The methods by which engines solve.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/tables/settings.h"

#include <cstdint>

namespace klv {

// All but the last take every variable as continuous. A crossover is the interior-point method with a basic solution at its end.
enum class Method { primal_simplex, dual_simplex, interior_point, crossover, mixed_integer };

struct MethodRow {
    const char* name;
    std::uint32_t phase;       // KLVcallercode
    std::int32_t optimizer;    // KLVoptimizer
    IntSetting log;            // whether its progress is shown
};

constexpr MethodRow method_rows[] = {
    {"primal simplex", KLV_CALLER_PRIMAL_SIMPLEX, KLV_OPTIMIZER_PRIMAL_SIMPLEX, IntSetting::log_simplex},
    {"dual simplex", KLV_CALLER_DUAL_SIMPLEX, KLV_OPTIMIZER_DUAL_SIMPLEX, IntSetting::log_simplex},
    {"interior point", KLV_CALLER_INTERIOR_POINT, KLV_OPTIMIZER_INTERIOR_POINT,
     IntSetting::log_interior_point},
    {"interior point with crossover", KLV_CALLER_INTERIOR_POINT, KLV_OPTIMIZER_INTERIOR_POINT,
     IntSetting::log_interior_point},
    {"integer search", KLV_CALLER_MIXED_INTEGER, KLV_OPTIMIZER_MIXED_INTEGER, IntSetting::log_mixed_integer},
};

constexpr const MethodRow& about (Method method)
{
    return method_rows[static_cast<int> (method)];
}

constexpr bool is_simplex (Method method)
{
    return method == Method::primal_simplex || method == Method::dual_simplex;
}

constexpr bool is_interior (Method method)
{
    return method == Method::interior_point || method == Method::crossover;
}

}
