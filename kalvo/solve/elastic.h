// The elastic problem: bounds may move, at a price for each unit; what is minimised is the price of all movements.
#pragma once

#include "kalvo/model/problem.h"

#include <span>
#include <vector>

namespace klv {

// Prices of moving a bound by one unit, one for each item: 0 moves at no cost, a negative one forbids to move. Empty: all are 1.
struct Weights {
    std::vector<double> lower, upper;

    double of_lower (std::size_t item) const { return lower.empty () ? 1 : lower[item]; }
    double of_upper (std::size_t item) const { return upper.empty () ? 1 : upper[item]; }
};

// Bounds and weights of one kind of item.
struct Movable {
    Bounds bounds;
    Weights weights;
};

// The problem's variables come first in the elastic one, in their order, and likewise its constraints. Bounds crossed by at most
// `tolerance` are no contradiction.
Problem make_elastic (const Problem& stated, const Movable& constraints, const Movable& variables,
                      double tolerance);

}
