// MPS files: what reader and writer share.
#pragma once

#include "kalvo/files/text/name_rules.h"
#include "kalvo/files/text/output_file.h"
#include "kalvo/files/text/pacer.h"
#include "kalvo/task/task.h"

#include <string>
#include <string_view>

namespace klv {

// The problem of an MPS file, in the given form. Prints its warnings on the task.
Problem read_mps (Task& task, const std::string& path, FileForm form, Pacer& pacer);

// The same, in free form unless a line shows that names with blanks are in fixed columns.
Problem read_mps_of_any_form (Task& task, const std::string& path, Pacer& pacer);

// Writes what check_names has accepted; throws FileFault for bounds of a row that no range says. Variables and constraints without a name are written as C1, C2,
// ... and R1, R2, ... by their place, an objective without one as OBJ; "_" is added to these where others
// have such names.
void write_mps (Task& task, FileForm form, OutputFile& file);

}
