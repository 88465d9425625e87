// The engine for conic problems with any cone.
#pragma once

#include "kalvo/engines/engine.h"

#include <memory>

namespace klv::clarabel {

std::shared_ptr<Engine> make_engine ();

}
