// What memory this machine has left.
#pragma once

namespace klv {

// Megabytes that this process may still take: what the machine and the control groups above the process leave. Infinite where the
// system does not tell.
double free_megabytes ();

}
