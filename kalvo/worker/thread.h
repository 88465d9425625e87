// A thread that runs an engine.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/worker/channel.h"

#include <memory>

namespace klv {

class KeptThread;

class RunThread {
public:
    // Starts the run; the bell rings when it has finished. Throws std::system_error when no thread can be started, and
    // std::bad_alloc.
    RunThread (std::shared_ptr<Engine> engine, Job job, std::shared_ptr<Bell> bell);
    RunThread (const RunThread&) = delete;
    RunThread& operator= (const RunThread&) = delete;
    ~RunThread ();    // stops the run and waits for it

    EventChannel& channel () { return channel_; }
    void stop () { stop_ = true; }

private:
    void work () noexcept;

    std::shared_ptr<Engine> engine_;
    Job job_;
    StopFlag stop_ = false;
    EventChannel channel_;
    bool is_kept_ = false;    // whether the thread is left for the next run
    std::unique_ptr<KeptThread> thread_;
};

}
