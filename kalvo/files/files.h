// Problem files: which format, and what a task gets to hold or to say of a fault.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

KLVrescode_t read_problem (Task& task, const char* path);
KLVrescode_t write_problem (Task& task, const char* path);

}
