// An optimisation whose engines run on threads of this process.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

KLVrescode_t optimize_in_process (Task& task);

}
