// A worker's own guard: a thread that ends the process when its caller has gone, or when a run goes beyond its limits. It allocates
// nothing and takes no lock, so that it works whatever an engine does.
#pragma once

#include "kalvo/engines/events.h"
#include "kalvo/worker/socket.h"

#include <atomic>
#include <cstdint>
#include <thread>

namespace klv {

class Guard {
public:
    // Descriptors: the socket, and the calling process. Without work the process ends after some minutes.
    Guard (int socket, int parent);
    Guard (const Guard&) = delete;
    Guard& operator= (const Guard&) = delete;
    ~Guard () = delete;    // it lives as long as the process

    // Limits from now on: a number of seconds, and of megabytes, either of which may be infinite.
    void limit (double seconds, double megabytes);
    void begin_work () { working_ = true; }
    void end_work ();    // also ends the limits
    double resident_megabytes () const;

private:
    [[noreturn]] void watch ();

    int socket_, parent_, memory_;
    std::int64_t kilobytes_a_page_;
    Descriptor wake_;
    std::atomic<bool> working_ = false;
    std::atomic<std::int64_t> deadline_, idle_since_, most_kilobytes_;
    std::thread thread_;
};

}
