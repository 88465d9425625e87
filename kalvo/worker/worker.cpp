#include "kalvo/worker/worker.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <new>
#include <utility>

#include <pthread.h>
#include <unistd.h>

namespace klv {

constexpr std::chrono::seconds patience_at_process_end{10};

// All workers whose threads were not joined. Never destroyed: threads and the end of the process look at it when statics
// are gone.
struct Workers {
    std::mutex mutex;
    std::condition_variable ended;
    std::list<std::shared_ptr<Worker::Shared>> list;
    pid_t process = getpid ();

    // Joins those that have ended and that nobody else will join: what they still do takes no time.
    void reap ()
    {
        std::erase_if (list, [] (const std::shared_ptr<Worker::Shared>& worker) {
            const bool done = worker->abandoned && worker->ended;
            if (done)
                worker->thread.join ();
            return done;
        });
    }
};

static Workers& workers ()
{
    static Workers& all = *new Workers;
    return all;
}

static Claims failed (Outcome outcome, const char* why) noexcept
{
    Claims claims;
    claims.outcome = outcome;
    try {
        claims.message = why;
    } catch (...) {    // failed without words
    }
    return claims;
}

static Claims run (Worker::Shared& shared) noexcept
{
    try {
        const std::unique_ptr<Session> session = shared.engine->begin (shared.job.form);
        return run_with_proof (*session, shared.job, shared.stop, shared.channel);
    } catch (const std::bad_alloc&) {
        return failed (Outcome::out_of_memory, "");
    } catch (const std::exception& exception) {
        return failed (Outcome::failed, exception.what ());
    } catch (...) {
        return failed (Outcome::failed, "an unknown exception");
    }
}

static void work (const std::shared_ptr<Worker::Shared>& shared) noexcept
{
    Claims claims = run (*shared);
    shared->job = {};    // problem and settings may be large: gone before anyone goes on
    shared->channel.finish (std::move (claims));
    Workers& all = workers ();
    const std::lock_guard lock (all.mutex);
    shared->ended = true;
    all.ended.notify_all ();
}

BlockedSignals::BlockedSignals ()
{
    sigset_t all;
    sigfillset (&all);
    pthread_sigmask (SIG_SETMASK, &all, &before_);
}

BlockedSignals::~BlockedSignals ()
{
    pthread_sigmask (SIG_SETMASK, &before_, nullptr);
}

// Also when a callback ends the process in the middle of a run.
static void end_process (int status, void*)
{
    Workers& all = workers ();
    if (all.process != getpid ())
        return;
    std::unique_lock lock (all.mutex);
    for (const std::shared_ptr<Worker::Shared>& worker : all.list) {
        worker->stop = true;
        worker->abandoned = true;
    }
    const auto all_ended = [&] { return std::ranges::all_of (all.list, &Worker::Shared::ended); };
    if (all.ended.wait_for (lock, patience_at_process_end, all_ended)) {
        all.reap ();
        return;
    }
    std::fflush (nullptr);
    _exit (status);
}

// The first worker starts when an engine was loaded: its own end comes after this watch then.
static void watch_process_end ()
{
    static const int registered = on_exit (end_process, nullptr);
    static_cast<void> (registered);
}

Worker::Worker (std::shared_ptr<Engine> engine, Job job, std::shared_ptr<Bell> bell)
    : shared_ (std::make_shared<Shared> (std::move (bell)))
{
    watch_process_end ();
    shared_->engine = std::move (engine);
    shared_->job = std::move (job);
    std::list<std::shared_ptr<Shared>> one{shared_};
    place_ = one.begin ();
    Workers& all = workers ();
    const std::lock_guard lock (all.mutex);
    {
        const BlockedSignals blocked;
        shared_->thread = std::thread ([shared = shared_] { work (shared); });
    }
    all.list.splice (all.list.end (), one);
}

void Worker::join ()
{
    std::list<std::shared_ptr<Shared>> one;
    {
        Workers& all = workers ();
        const std::lock_guard lock (all.mutex);
        one.splice (one.end (), all.list, place_);
    }
    shared_->thread.join ();
    joined_ = true;
}

Worker::~Worker ()
{
    if (joined_)
        return;
    stop ();
    const std::lock_guard lock (workers ().mutex);
    shared_->abandoned = true;
}

int abandoned_workers ()
{
    Workers& all = workers ();
    const std::lock_guard lock (all.mutex);
    if (all.process != getpid ())
        return 0;    // a forked child has none of these threads
    all.reap ();
    return static_cast<int> (std::ranges::count_if (all.list, &Worker::Shared::abandoned));
}

}
