// LP files: rows of named terms, as people write them by hand.
#pragma once

#include "kalvo/files/text/output_file.h"

#include <string>

namespace klv {

// The problem of an LP file. Prints its warnings on the task.
Problem read_lp (Task& task, const std::string& path, Pacer& pacer);

// The first item whose name LP cannot hold: a name with blanks or signs of LP, or a word of LP.
std::string unfit_for_lp (const Problem& problem);

// Writes a problem that LP can hold, so that reading the file gives the same problem: the objective has a term for every variable,
// which keeps the variables' order. Items without a name are written as in MPS files.
void write_lp (Task& task, OutputFile& file);

}
