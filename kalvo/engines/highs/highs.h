// The engine for linear and mixed-integer problems.
#pragma once

#include "kalvo/engines/engine.h"

#include <memory>

namespace klv::highs {

std::shared_ptr<Engine> make_engine ();

// The engine drops matrix entries up to this magnitude: by default, and at the smallest that it can be set to.
constexpr double default_smallest_entry = 1e-9;
constexpr double smallest_entry = 1e-12;

}
