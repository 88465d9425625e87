#include "kalvo/engines/worker.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include <pthread.h>
#include <unistd.h>

namespace klv {

// Abandoned runs. Never destroyed: threads and the end of the process look at it when statics are gone.
struct Abandoned {
    struct Run {
        std::shared_ptr<Worker::Shared> shared;
        std::thread thread;
    };

    std::mutex mutex;
    std::condition_variable ended;
    std::vector<Run> runs;

    bool all_ended () const
    {
        return std::ranges::all_of (runs, [] (const Run& run) { return run.shared->ended; });
    }
    // Joins those that have ended: what they still do takes no time.
    void reap ()
    {
        std::erase_if (runs, [] (Run& run) {
            if (run.shared->ended)
                run.thread.join ();
            return run.shared->ended;
        });
    }
};

static Abandoned& abandoned ()
{
    static Abandoned& list = *new Abandoned;
    return list;
}

static Claims failed (const char* why) noexcept
{
    Claims claims;
    claims.outcome = Outcome::failed;
    try {
        claims.message = why;
    } catch (...) {             // failed without words
    }
    return claims;
}

static Claims run (Worker::Shared& shared) noexcept
{
    try {
        return shared.engine->run (shared.job, shared.stop, shared.channel);
    } catch (const std::bad_alloc&) {
        return failed ("out of memory");
    } catch (const std::exception& exception) {
        return failed (exception.what ());
    } catch (...) {
        return failed ("an unknown exception");
    }
}

static void work (std::shared_ptr<Worker::Shared> shared) noexcept
{
    Claims claims = run (*shared);
    shared->job = {};           // problem and settings may be large: gone before anyone goes on
    shared->channel.finish (std::move (claims));
    Abandoned& list = abandoned ();
    const std::lock_guard lock (list.mutex);
    shared->ended = true;
    list.ended.notify_all ();
}

// Signals meet the host's thread, never a worker.
class BlockedSignals {
public:
    BlockedSignals ()
    {
        sigset_t all;
        sigfillset (&all);
        pthread_sigmask (SIG_SETMASK, &all, &before_);
    }
    BlockedSignals (const BlockedSignals&) = delete;
    BlockedSignals& operator= (const BlockedSignals&) = delete;
    ~BlockedSignals () { pthread_sigmask (SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_;
};

Worker::Worker (std::shared_ptr<Engine> engine, Job job) : shared_ (std::make_shared<Shared> ())
{
    shared_->engine = std::move (engine);
    shared_->job = std::move (job);
    {
        // Room for this worker, so that abandoning it can't fail.
        Abandoned& list = abandoned ();
        const std::lock_guard lock (list.mutex);
        list.runs.reserve (list.runs.size () + 1);
    }
    const BlockedSignals blocked;
    thread_ = std::thread (work, shared_);
}

void Worker::join ()
{
    if (thread_.joinable ())
        thread_.join ();
}

Worker::~Worker ()
{
    if (!thread_.joinable ())
        return;
    stop ();
    Abandoned& list = abandoned ();
    const std::lock_guard lock (list.mutex);
    list.runs.push_back ({ shared_, std::move (thread_) });
}

int abandoned_workers ()
{
    Abandoned& list = abandoned ();
    const std::lock_guard lock (list.mutex);
    list.reap ();
    return static_cast<int> (list.runs.size ());
}

static void end_process (int status, void*)
{
    Abandoned& list = abandoned ();
    std::unique_lock lock (list.mutex);
    for (const Abandoned::Run& run : list.runs)
        run.shared->stop = true;
    if (list.ended.wait_for (lock, std::chrono::seconds (10), [&] { return list.all_ended (); })) {
        list.reap ();
        return;
    }
    std::fflush (nullptr);
    _exit (status);
}

void watch_process_end ()
{
    static const int registered = on_exit (end_process, nullptr);
    static_cast<void> (registered);
}

}
