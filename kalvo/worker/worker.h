// Threads that engines run on.
//
// Each run has a fresh thread with all signals blocked. A worker that does not stop when asked is abandoned: it goes on with data
// that it shares with nobody, and ends by itself. At the process's end all workers are asked to stop and waited for; if one still
// runs then, the process ends without running destructors, since these would destroy what the worker uses.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/worker/channel.h"

#include <csignal>
#include <list>
#include <memory>
#include <thread>
#include <utility>

namespace klv {

// Threads that are started during the lifetime of such an object have all signals blocked, so that the host's thread gets them.
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
    // Starts the run; the bell rings when the run has finished. Throws std::system_error when no thread can be started, and
    // std::bad_alloc.
    Worker (std::shared_ptr<Engine> engine, Job job, std::shared_ptr<Bell> bell);
    Worker (const Worker&) = delete;
    Worker& operator= (const Worker&) = delete;
    ~Worker ();    // abandons a run that was not joined

    EventChannel& channel () { return shared_->channel; }
    void stop () { shared_->stop = true; }
    void join ();    // the run must have finished

    struct Shared {
        explicit Shared (std::shared_ptr<Bell> bell) : channel (std::move (bell)) {}

        std::shared_ptr<Engine> engine;
        Job job;
        StopFlag stop = false;
        EventChannel channel;
        std::thread thread;    // this and the members below are guarded by the mutex of the list of workers
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
