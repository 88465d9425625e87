// The methods by which engines solve.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/tables/settings.h"

#include <cstdint>
#include <iterator>

namespace klv {

// All methods but mixed_integer take every variable as continuous. `crossover` is the interior-point method followed by the
// search for a basic solution. `quadratic` takes quadratic forms, the last two take conic ones, the others linear ones.
enum class Method {
    primal_simplex,
    dual_simplex,
    interior_point,
    crossover,
    mixed_integer,
    quadratic,
    conic,
    semidefinite    // with equations of the order of the constraints, for large matrices
};

constexpr Method last_method = Method::semidefinite;

struct MethodRow {
    const char* name;
    std::uint32_t phase;       // KLVcallercode
    std::int32_t optimizer;    // KLVoptimizer
    IntSetting log;            // whether progress lines are printed
};

constexpr MethodRow method_rows[] = {
    {"primal simplex", KLV_CALLER_PRIMAL_SIMPLEX, KLV_OPTIMIZER_PRIMAL_SIMPLEX, IntSetting::log_simplex},
    {"dual simplex", KLV_CALLER_DUAL_SIMPLEX, KLV_OPTIMIZER_DUAL_SIMPLEX, IntSetting::log_simplex},
    {"interior point", KLV_CALLER_INTERIOR_POINT, KLV_OPTIMIZER_INTERIOR_POINT,
     IntSetting::log_interior_point},
    {"interior point with crossover", KLV_CALLER_INTERIOR_POINT, KLV_OPTIMIZER_INTERIOR_POINT,
     IntSetting::log_interior_point},
    {"integer search", KLV_CALLER_MIXED_INTEGER, KLV_OPTIMIZER_MIXED_INTEGER, IntSetting::log_mixed_integer},
    {"quadratic interior point", KLV_CALLER_INTERIOR_POINT, KLV_OPTIMIZER_INTERIOR_POINT,
     IntSetting::log_interior_point},
    {"conic interior point", KLV_CALLER_INTERIOR_POINT, KLV_OPTIMIZER_CONIC, IntSetting::log_interior_point},
    {"semidefinite interior point", KLV_CALLER_INTERIOR_POINT, KLV_OPTIMIZER_CONIC,
     IntSetting::log_interior_point},
};
static_assert (std::size (method_rows) == static_cast<std::size_t> (last_method) + 1);

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
    return method == Method::interior_point || method == Method::crossover || method == Method::quadratic ||
           method == Method::conic || method == Method::semidefinite;
}

constexpr bool is_linear (Method method)
{
    return method < Method::quadratic;
}

}
