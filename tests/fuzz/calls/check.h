// A judge of answers that shares nothing with the library's: it reads the problem as the user stated it, and
// holds each solution to what its status claims.
#pragma once

#include <string>

#include "host/standalone/standalone.h"

namespace fuzz {

// Throws what is wrong. `tolerance`: the largest that the call's parameters allow.
void check_solutions (standalone::View prob, standalone::View solutions, bool maximize, double tolerance);

}
