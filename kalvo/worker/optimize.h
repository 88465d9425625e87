// An optimisation as a task asks for it: in a worker process, or in this one.
#pragma once

#include "kalvo/task/task.h"

#include <functional>

namespace klv {

// `on_death` is called when a worker process has died for the first time; it may throw nothing.
KLVrescode_t optimize_task (Task& task, std::function<void ()> on_death);

}
