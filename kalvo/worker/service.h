// What a worker process does: it solves what its caller sends, one problem after another.
#pragma once

namespace klv {

// Runs until the caller has gone; returns the status with which the process is to end.
int run_worker ();

}
