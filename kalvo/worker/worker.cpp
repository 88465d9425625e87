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

// All workers whose threads were not joined. The list is never destroyed: threads and end_process use it after the destructors
// of statics have run.
struct Workers {
    std::mutex mutex;
    std::condition_variable ended;
    std::list<std::shared_ptr<Worker::Shared>> list;
    pid_t process = getpid ();

    // Joins abandoned workers that have ended, which nobody else joins. Their threads are at their last instructions.
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
    } catch (...) {    // no memory for a message
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
    shared->job = {};    // a large problem is freed before the calling thread goes on
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

// The exit handler; a callback may end the process in the middle of a run.
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

// Exit handlers run in reverse order: this one is registered when an engine has been loaded, so it runs before the engine's.
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
        return 0;    // a forked child has no threads of its parent's
    all.reap ();
    return static_cast<int> (std::ranges::count_if (all.list, &Worker::Shared::abandoned));
}

}
