// LP files: rows of named terms, as one writes them by hand.
#pragma once

#include "kalvo/files/text/output_file.h"
#include "kalvo/task/task.h"

namespace klv {

// The problem of an LP file. Prints its warnings on the task.
Problem read_lp (Task& task, const std::string& path, Pacer& pacer);

// Writes what check_names has accepted, so that reading it gives the same problem: the objective has a term for
// every variable, which keeps their order. Variables without a name are written as C1, C2, ... by their place;
// rows without one have no label.
void write_lp (Task& task, OutputFile& file);

}
