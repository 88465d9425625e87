// Quadratic terms of text formats. A format writes numbers for the entries of Q in 1/2 x'Qx: the entries themselves, or half or twice
// of them.
#pragma once

#include "kalvo/model/problem.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <tuple>
#include <vector>

namespace klv {

// An entry of Q that a file gives.
struct QuadraticTerm {
    static constexpr std::int32_t objective = -1;

    std::int32_t item;             // the constraint, or `objective`
    std::int32_t first, second;    // the variables, in the order in which the file names them
    double value;
    std::int64_t line;

    std::int32_t row () const { return std::max (first, second); }
    std::int32_t column () const { return std::min (first, second); }
    std::tuple<std::int32_t, std::int32_t, std::int32_t> place () const { return {item, column (), row ()}; }
};

// In the order in which problems have them; terms of one place stay in the order given.
void sort (std::vector<QuadraticTerm>& terms);

// Stores terms that are sorted and have each place once.
void store (Problem& problem, std::span<const QuadraticTerm> terms);

// An entry of Q divided by the number that a format writes for it, a power of 2.
using QuadraticFactor = double (*) (bool of_objective, bool is_square);

// Throws FileFault for a number whose entry is no double.
double entry_of (double number, double factor);

// The first term whose number is no double, in words; empty when there is none.
std::string unfit_term (const Problem& problem, QuadraticFactor factor);

}
