// Our own engine for problems with semidefinite matrices: an interior-point method whose equations are of the order of the
// constraints.
#pragma once

#include "kalvo/engines/engine.h"

#include <memory>

namespace klv::semidefinite {

std::shared_ptr<Engine> make_engine ();

}
