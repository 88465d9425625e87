// What other folders do for a task: the entry points call these.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

KLVrescode_t optimize (Task& task);
KLVrescode_t read_problem (Task& task, const char* path);
KLVrescode_t write_problem (Task& task, const char* path);
KLVrescode_t solution_summary (Task& task, std::int32_t stream);
KLVrescode_t optimizer_summary (Task& task, std::int32_t stream);

}
