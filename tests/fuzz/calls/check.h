// Answers of calls, held to what their status claims for the problem as the user stated it.
#pragma once

#include <string>

#include "host/standalone/standalone.h"

namespace fuzz {

// Throws what is wrong. `tolerance`: the largest that the call's parameters allow.
void check_solutions (standalone::View prob, standalone::View solutions, bool maximize, double tolerance);

}
