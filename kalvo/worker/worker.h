// Threads that engines run on.
//
// Each run has a fresh thread with all signals blocked. A worker that does not stop when it is asked to is abandoned: it
// ends by itself, on data that it owns together with nobody who waits. At process end all workers are asked to stop and
// waited for; when one still runs then, the process ends without the destructors that would pull the ground away from
// under it.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/worker/channel.h"

#include <csignal>
#include <list>
#include <memory>
#include <thread>
#include <utility>

namespace klv {

// While it lives, threads start with all signals blocked: signals are to meet the host's thread.
class BlockedSignals {
public:
    BlockedSignals ();
    BlockedSignals (const BlockedSignals&) = delete;
    BlockedSignals& operator= (const BlockedSignals&) = delete;
    ~BlockedSignals ();

private:
    sigset_t before_;
};

class Worker {
public:
    // Starts the run; the bell rings when it has finished. Throws std::system_error when there is no thread to be had,
    // std::bad_alloc.
    Worker (std::shared_ptr<Engine> engine, Job job, std::shared_ptr<Bell> bell);
    Worker (const Worker&) = delete;
    Worker& operator= (const Worker&) = delete;
    ~Worker ();    // abandons a run that was not joined

    EventChannel& channel () { return shared_->channel; }
    void stop () { shared_->stop = true; }
    void join ();    // of a run that has finished

    struct Shared {
        explicit Shared (std::shared_ptr<Bell> bell) : channel (std::move (bell)) {}

        std::shared_ptr<Engine> engine;
        Job job;
        StopFlag stop = false;
        EventChannel channel;
        std::thread thread;    // these are guarded by the list of workers
        bool abandoned = false;
        bool ended = false;
    };

private:
    std::shared_ptr<Shared> shared_;
    std::list<std::shared_ptr<Shared>>::iterator place_;
    bool joined_ = false;
};

// Workers that were abandoned and still run.
int abandoned_workers ();
constexpr int most_abandoned_workers = 4;

}
