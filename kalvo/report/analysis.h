// Descriptions of a problem for people: sizes, and an analysis of its numbers.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

// A few lines on sizes.
KLVrescode_t problem_summary (Task& task, std::int32_t stream);

// Kinds of bounds, density, ranges of coefficients with a warning where a range is too wide.
KLVrescode_t analyze_problem (Task& task, std::int32_t stream);

}
