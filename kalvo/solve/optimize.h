// One optimisation: from the problem as stated to checked answers in the task's slots.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

KLVrescode_t optimize (Task& task);

}
