// MPS files. Free form separates fields by blanks, so names have none. Fixed form has them in the columns 2-3 (key),
// 5-12 and 15-22 (names), 25-36 (number), 40-47 (name), 50-61 (number): names have up to 8 bytes and may have blanks
// inside.
#pragma once

#include "kalvo/files/text/output_file.h"

#include <string>

namespace klv {

// Read a file in the given form. Print warnings on the task.
Problem read_free_mps (Task& task, const std::string& path, Pacer& pacer);
Problem read_fixed_mps (Task& task, const std::string& path, Pacer& pacer);

// Reads a file in free form, unless a line shows that names with blanks stand in fixed columns.
Problem read_mps_of_any_form (Task& task, const std::string& path, Pacer& pacer);

// QUADOBJ, one triangle, and QMATRIX, both, are Q of 1/2 x'Qx in the objective; QCMATRIX is both triangles of M of x'Mx in a row;
// QSECTION is one triangle of Q of 1/2 x'Qx in the objective or the row that it names.
constexpr double mps_factor (bool of_objective, bool)
{
    return of_objective ? 1 : 2;
}

// The first item that a form cannot hold: its name, bounds of a row that no range says, or a term whose half is no number.
std::string unfit_for_free_mps (const Problem& problem);
std::string unfit_for_fixed_mps (const Problem& problem);

// Write a problem that the form can hold. Variables and constraints without a name are written as C1, C2, ... and R1, R2, ... by
// their place, an objective without a name as OBJ; "_" is added to C, R and OBJ where given names look like that.
void write_free_mps (Task& task, OutputFile& file);
void write_fixed_mps (Task& task, OutputFile& file);

}
