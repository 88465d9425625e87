// What can't be solved yet.
#pragma once

#include "kalvo/model/problem.h"
#include "kalvo/model/refusal.h"
#include "kalvo/task/values.h"

namespace klv {

inline void check_supported (const Problem& problem, const Parameters& parameters)
{
    const bool integers = problem.integers > 0 && parameters.get (IntSetting::relax_integers) == KLV_OFF;
    if (const char* feature = problem.features ().missing_in (linear_features);
        integers && feature != nullptr)
        refuse (KLV_RES_NOT_AVAILABLE, "This version can't optimise a problem with integer variables and ",
                feature, "; KLV_IPAR_RELAX_INTEGERS takes them as continuous.");
}

}
