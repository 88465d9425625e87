// Constraints that follow from others, or contradict them.
#pragma once

#include "kalvo/engines/semidefinite/program.h"

#include <cstdint>
#include <vector>

namespace klv::semidefinite {

struct Dependence {
    std::vector<std::int32_t> redundant;    // equations that follow from the others
    Vector contradiction;    // multipliers with which the equations add up to 0 = 1; empty: none was found
};

// Of the equations <column, .> = right.
Dependence find_dependence (const SparseColumns& columns, std::span<const double> right, Watch& watch,
                            const StopFlag& stop);

}
