// Problem files, read into a task and written from it.
#pragma once

#include "kalvo/task/task.h"

namespace klv {

// The parameter of the format, else the file's extension, names the format. When reading fails the task has an empty problem; when
// writing fails an old file of that name stays.
KLVrescode_t read_problem (Task& task, const char* path);
KLVrescode_t write_problem (Task& task, const char* path);

}
