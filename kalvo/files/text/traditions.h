// Points on which programs differ in reading a file. Each text is the warning, which says what our readers do.
#pragma once

#include "kalvo/task/task.h"

#include <array>
#include <string>
#include <string_view>

namespace klv {

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
    repeated_term,
    binary_bound,
    quadratic_section,
    later_field,
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
    "terms of a variable that comes twice in an expression are added",
    "a binary variable has no bound beyond 0 and 1",
    "QSECTION is one triangle of Q in 1/2 x'Qx of the objective or of the row that it names",
    "a field that only a later version of the format has is skipped",
};

// The traditions that were met in a file, each with its first line and its count.
class Warnings {
public:
    void note (Tradition kind, std::int64_t line, std::string_view item);
    void print (Task& task, const std::string& path) const;

private:
    struct Note {
        std::int64_t count = 0;
        std::int64_t line = 0;
        std::string item;
    };
    std::array<Note, tradition_texts.size ()> notes_;
};

}
