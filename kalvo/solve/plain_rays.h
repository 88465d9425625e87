// Proofs that take one look at the problem, for when optimisers come to no end.
#pragma once

#include "kalvo/model/point.h"
#include "kalvo/model/problem.h"

#include <optional>

namespace klv {

// A row that no point within the variables' bounds can satisfy, or a variable that improves the objective for ever while no row
// minds: a claim with its ray. One pass over the packed matrix.
std::optional<Point> find_plain_ray (const Problem& problem);

}
