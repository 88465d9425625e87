// Phases of an optimisation whose time is counted: by which information item, and under which title in summaries.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/tables/items.h"

#include <cstdint>

namespace klv {

struct PhaseRow {
    std::uint32_t caller;    // KLVcallercode
    RealItem time;
    const char* title;
};

// Phases that share an item stand together.
constexpr PhaseRow phase_rows[] = {
    {KLV_CALLER_PRESOLVE, RealItem::time_presolve, "presolve"},
    {KLV_CALLER_PRIMAL_SIMPLEX, RealItem::time_simplex, "simplex"},
    {KLV_CALLER_DUAL_SIMPLEX, RealItem::time_simplex, "simplex"},
    {KLV_CALLER_CERTIFICATE, RealItem::time_simplex, "simplex"},
    {KLV_CALLER_INTERIOR_POINT, RealItem::time_interior_point, "interior point"},
    {KLV_CALLER_CROSSOVER, RealItem::time_crossover, "crossover"},
    {KLV_CALLER_MIXED_INTEGER, RealItem::time_mixed_integer, "integer search"},
    {KLV_CALLER_CHECK, RealItem::time_check, "check"},
};

}
