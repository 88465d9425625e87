// LP files: rows of named terms, as people write them by hand.
#pragma once

#include "kalvo/files/text/output_file.h"

#include <string>

namespace klv {

// The problem of an LP file. Prints its warnings on the task.
Problem read_lp (Task& task, const std::string& path, Pacer& pacer);

// The objective states 1/2 x'Qx as [ ... ] / 2 and a constraint as [ ... ], both with squares and products, each product once.
constexpr double lp_factor (bool of_objective, bool is_square)
{
    return (of_objective ? 0.5 : 1) * (is_square ? 2 : 1);
}

// The first item that LP cannot hold: a name with blanks or signs of LP, a word of LP, or a quadratic term whose number is no double.
std::string unfit_for_lp (const Problem& problem);

// Writes a problem that LP can hold, so that reading the file gives the same problem: the objective has a term for every variable,
// which keeps the variables' order. Items without a name are written as in MPS files.
void write_lp (Task& task, OutputFile& file);

}
