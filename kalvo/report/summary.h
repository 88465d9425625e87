// What was found, and how: the summaries that follow an optimisation.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

KLVrescode_t solution_summary (Task& task, std::int32_t stream);
KLVrescode_t optimizer_summary (Task& task, std::int32_t stream);

}
