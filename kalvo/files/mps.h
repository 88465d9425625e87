// MPS files: what reader and writer share.
#pragma once

#include "kalvo/files/output_file.h"
#include "kalvo/files/pacer.h"
#include "kalvo/task/task.h"

#include <array>
#include <string>
#include <string_view>

namespace klv {

// Free form separates fields by blanks, so names have none. Fixed form has them in the columns 2-3 (key),
// 5-12 and 15-22 (names), 25-36 (number), 40-47 (name), 50-61 (number): names have up to 8 bytes and may have
// blanks inside.
enum class MpsForm { free, fixed };

// Points on which programs differ. What is decided here is what the reader does, and its warning says so.
enum class Tradition {
    integer_without_bounds,
    negative_upper_alone,
    minus_infinity_alone,
    objective_right_hand_side,
    negative_range,
    further_free_row,
    free_row_side,
    open_marker,
    further_set,
    huge_bound,
    no_objective,
    count
};

constexpr std::array<std::string_view, static_cast<std::size_t> (Tradition::count)> tradition_texts{
    "an integer column between markers without any bound gets the bounds 0 and 1",
    "a negative upper bound without a lower bound takes the lower bound 0 away",
    "MI without an upper bound leaves the upper bound infinite",
    "the right-hand side of the objective is minus its constant",
    "the sign of a range of an L or G row is not looked at",
    "an N row after the objective is kept as a free constraint",
    "a right-hand side or range of a free row has no effect",
    "an INTORG marker that no INTEND follows holds to the end of COLUMNS",
    "only the first set of RHS, RANGES or BOUNDS is used",
    "a bound at or beyond the bound infinity threshold is no bound",
    "without an N row the objective is zero",
};

// The problem of an MPS file, in the given form. Prints its warnings on the task.
Problem read_mps (Task& task, const std::string& path, MpsForm form, Pacer& pacer);

// The same, in free form unless a line shows that names with blanks are in fixed columns.
Problem read_mps_of_any_form (Task& task, const std::string& path, Pacer& pacer);

// Whether all names have the length and the characters that the form can hold.
bool mps_holds_names (const Problem& problem, MpsForm form);

// Refuses, naming the item, what the form cannot hold.
void check_mps_holds (const Problem& problem, MpsForm form);

// Writes what check_mps_holds has accepted. Variables and constraints without a name are written as C1, C2,
// ... and R1, R2, ... by their place, an objective without one as OBJ; "_" is added to these where others
// have such names.
void write_mps (Task& task, MpsForm form, OutputFile& file);

}
