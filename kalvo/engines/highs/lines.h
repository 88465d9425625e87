// Reads figures from the log of HiGHS that its interface does not have. A line of unexpected form is ignored.
#pragma once

#include "kalvo/engines/events.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace klv::highs {

// One step of a linear method; the objectives have the line's digits and signs.
struct Iteration {
    std::int64_t number = 0;
    bool first_phase = false;    // of a simplex method, whose objective is then not the problem's
    double objective = 0, dual_objective = 0;    // a simplex method has only the first
    double primal_violation = 0, dual_violation = 0;
};

std::optional<Iteration> read_simplex_iteration (std::string_view line);
std::optional<Iteration> read_interior_iteration (std::string_view line);

// Whether a line says that the interior-point method has ended and the search for a basis begins.
bool is_crossover_begin (std::string_view line);

// Sizes of the presolved problem; the number of its integer columns comes in a line of its own.
std::optional<Sizes> read_presolved (std::string_view line);
std::optional<std::int64_t> read_integers (std::string_view line);

// Takes the figures of an integer search from a line. True for a row of the search's table, whose figures are current.
bool read_search (std::string_view line, Search& search);

}
