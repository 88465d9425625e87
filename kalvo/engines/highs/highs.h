// The engine for linear and mixed-integer problems.
#pragma once

#include "kalvo/engines/engine.h"

#include <memory>

namespace klv::highs {

std::shared_ptr<Engine> make_engine ();

// Larger magnitudes the engine takes as infinite (bounds, costs) or refuses (matrix). Entries it drops up to its default, or
// as little as it can be told to.
constexpr double infinite_bound = 1e20;
constexpr double infinite_cost = 1e20;
constexpr double largest_entry = 1e15;
constexpr double default_smallest_entry = 1e-9;
constexpr double smallest_entry = 1e-12;

}
