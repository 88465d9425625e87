// What memory this machine has left.
#pragma once

#include <string>

namespace klv {

// Megabytes that this process may still take: what the machine and the control groups above the process leave. Infinite where the
// system does not tell.
double free_megabytes ();

// Why work that takes so much is not to be begun, both figures in the text; empty where half of what is free is enough.
std::string lack_of_memory (double megabytes);

}
