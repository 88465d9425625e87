// The engine for convex quadratic problems with linear constraints.
#pragma once

#include "kalvo/engines/engine.h"

#include <memory>

namespace klv::piqp {

std::shared_ptr<Engine> make_engine ();

}
