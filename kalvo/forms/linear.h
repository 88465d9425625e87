// The problem as engines take it.
#pragma once

#include "kalvo/engines/engine.h"

#include <memory>
#include <string>

namespace klv {

struct Lowering {
    std::shared_ptr<const LinearProblem> problem;
    std::int64_t infinite_bounds = 0;    // finite ones that an engine takes as infinite
    std::int64_t dropped_entries = 0;    // so small that an engine leaves them out
    std::string refused;                 // what no engine takes; then there is no problem
};

// The stated problem's matrix is packed.
Lowering lower (std::shared_ptr<const Problem> stated);

}
