// Contradictory linear inequalities of which all are needed, found without a run.
#pragma once

#include "kalvo/model/conflict.h"
#include "kalvo/model/problem.h"

#include <functional>
#include <vector>

namespace klv {

// Members of a conflict, and their multipliers in a certificate: magnitudes, all positive.
struct WeightedMembers {
    std::vector<ConflictMember> members;
    std::vector<double> multipliers;
};

// Drops members of a linear problem that are not needed, until for each one that is left a point was found that satisfies all
// others. False, and nothing is dropped: no such points were found before `is_over`, or the members are too many for this way. That the
// members still contradict each other is up to a check of their multipliers.
bool keep_needed (const Problem& problem, WeightedMembers& conflict, const std::function<bool ()>& is_over);

}
