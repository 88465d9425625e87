// Summaries of an optimisation's solutions, and of its course.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

KLVrescode_t solution_summary (Task& task, std::int32_t stream);
KLVrescode_t optimizer_summary (Task& task, std::int32_t stream);

}
