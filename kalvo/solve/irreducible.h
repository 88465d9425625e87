// A proof, without a run, that of some contradictory linear inequalities all are needed.
#pragma once

#include "kalvo/model/conflict.h"
#include "kalvo/model/problem.h"

#include <span>

namespace klv {

// Whether a point was found for each member that satisfies all others; `multipliers` are those of a certificate and positive. False:
// none was found, or the members are too many for this way.
bool has_point_without_each (const Problem& problem, std::span<const ConflictMember> members,
                             std::span<const double> multipliers);

}
