// Problem files: what a task gets to hold of one, puts into one, or has to say of a fault.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

// In the format that the parameter or the file's extension names. A file that cannot be read leaves the task with an
// empty problem; one that cannot be written leaves what had its name.
KLVrescode_t read_problem (Task& task, const char* path);
KLVrescode_t write_problem (Task& task, const char* path);

}
