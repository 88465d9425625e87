// The lengths of a solution's fields.
#pragma once

#include <cstdint>

#include "kalvo.h"

struct SolutionSizes {
    std::int64_t one = 1;
    std::int64_t constraints = 0, variables = 0, cones = 0, semidefinite = 0;
    std::int64_t affine_entries = 0;    // in all affine conic constraints
    std::int64_t packed_entries = 0;    // in all semidefinite variables
};

SolutionSizes read_solution_sizes (KLVtask_t task);
