// Lines of the log of HiGHS whose figures come in no other way. A line that is not quite what it is taken for says nothing.
#pragma once

#include "kalvo/engines/events.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace klv::highs {

// One step of a linear method; objectives as they stand in the line.
struct Iteration {
    std::int64_t number = 0;
    bool first_phase = false;                    // of a simplex method: its objective is not the problem's
    double objective = 0, dual_objective = 0;    // a simplex method has one
    double primal_violation = 0, dual_violation = 0;
};

std::optional<Iteration> read_simplex_iteration (std::string_view line);
std::optional<Iteration> read_interior_iteration (std::string_view line);

// Whether the interior-point method has ended and the search for a basis begins.
bool is_crossover_begin (std::string_view line);

// What presolve left; of an integer problem the integers come in a line of their own.
std::optional<Sizes> read_presolved (std::string_view line);
std::optional<std::int64_t> read_integers (std::string_view line);

// Takes what lines of an integer search say of it. True: it is a line of its table, which tells of this moment.
bool read_search (std::string_view line, Search& search);

}
