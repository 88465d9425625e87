// What can't be solved yet.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/refusal.h"

namespace klv {

inline void check_supported (const Problem& problem)
{
    constexpr Features solved{Feature::integers, Feature::affine_expressions};
    if (const char* feature = problem.features ().missing_in (solved))
        refuse (KLV_RES_NOT_AVAILABLE, "This version can't optimise a problem with ", feature, ".");
}

}
