// Sparse SDPA files. Such a file states a pair of problems: min c'x with F1 x1 + F2 x2 + ... - F0 positive semidefinite, and its dual,
// max <F0, Y> with <Fi, Y> = ci and Y positive semidefinite.
#pragma once

#include "kalvo/files/text/output_file.h"

#include <string>

namespace klv {

// The dual, which has the data as they are: a semidefinite variable for each block, nonnegative variables for diagonal blocks and
// blocks of order 1. When the file has integer variables x, the problem in x instead: linear constraints for diagonal blocks, and
// affine conic constraints for the others, with entries off the diagonal times the root of 2, rounded.
Problem read_sdpa (Task& task, const std::string& path, Pacer& pacer);

// The first item that a file's dual cannot hold; problems in x are not written.
std::string unfit_for_sdpa (const Problem& problem);

void write_sdpa (Task& task, OutputFile& file);

}
