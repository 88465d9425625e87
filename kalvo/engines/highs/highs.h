// The engine for linear and mixed-integer problems.
#pragma once

#include "kalvo/engines/engine.h"

#include <memory>

namespace klv::highs {

std::shared_ptr<Engine> make_engine ();

// Entries of the matrix the engine drops up to its default, or as little as it can be told to.
constexpr double default_smallest_entry = 1e-9;
constexpr double smallest_entry = 1e-12;

}
