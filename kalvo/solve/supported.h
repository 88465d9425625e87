// What can't be solved yet.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/refusal.h"

namespace klv {

inline void check_supported (const Problem& problem)
{
    if (const char* feature = problem.features ().missing_in (linear_features))
        refuse (KLV_RES_NOT_AVAILABLE, "This version can't optimise a problem with ", feature, ".");
}

}
