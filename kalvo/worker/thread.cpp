#include "kalvo/worker/thread.h"

#include "kalvo/task/environment.h"
#include "kalvo/task/signals.h"

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

namespace klv {

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

static Claims run (Engine& engine, const Job& job, const StopFlag& stop, Events& events) noexcept
{
    try {
        const std::unique_ptr<Session> session = engine.begin (job.form);
        return run_with_proof (*session, job, stop, events);
    } catch (const std::bad_alloc&) {
        return failed (Outcome::out_of_memory, "");
    } catch (const std::exception& exception) {
        return failed (Outcome::failed, exception.what ());
    } catch (...) {
        return failed (Outcome::failed, "an unknown exception");
    }
}

// A thread for one call after another. Engines keep for their thread what takes long to make.
class KeptThread {
public:
    KeptThread ()
    {
        const BlockedSignals blocked;
        thread_ = std::thread ([this] { serve (); });
    }
    KeptThread (const KeptThread&) = delete;
    KeptThread& operator= (const KeptThread&) = delete;
    ~KeptThread ()
    {
        start (nullptr, nullptr);
        thread_.join ();
    }

    // The bell rings when the call has ended. An empty call is the last.
    void start (std::function<void ()> call, std::shared_ptr<Bell> bell)
    {
        {
            const std::lock_guard lock (mutex_);
            call_ = std::move (call);
            bell_ = std::move (bell);
            busy_ = true;
        }
        condition_.notify_one ();
    }
    void wait ()
    {
        std::unique_lock lock (mutex_);
        condition_.wait (lock, [&] { return !busy_; });
    }

private:
    void serve ()
    {
        std::unique_lock lock (mutex_);
        for (;;) {
            condition_.wait (lock, [&] { return busy_; });
            if (!call_)
                return;
            lock.unlock ();
            call_ ();
            const std::shared_ptr<Bell> bell = std::move (bell_);
            lock.lock ();
            busy_ = false;
            lock.unlock ();
            condition_.notify_one ();
            bell->ring ();
            lock.lock ();
        }
    }

    std::mutex mutex_;
    std::condition_variable condition_;
    std::function<void ()> call_;
    std::shared_ptr<Bell> bell_;
    bool busy_ = false;
    std::thread thread_;
};

// The thread that is kept for the next run, in a process that is there for runs only. The thread of the process uses it alone.
static std::unique_ptr<KeptThread>& kept_thread ()
{
    static auto& kept = *new std::unique_ptr<KeptThread>;
    return kept;
}

void RunThread::work () noexcept
{
    Claims claims = run (*engine_, job_, stop_, channel_);
    job_ = {};    // a large problem is freed before the waiting thread goes on
    channel_.finish (std::move (claims));
}

RunThread::RunThread (std::shared_ptr<Engine> engine, Job job, std::shared_ptr<Bell> bell)
    : engine_ (std::move (engine)), job_ (std::move (job))
{
    // An integer search was measured to take a tenth longer on a used thread.
    is_kept_ = environment::alone () && job_.method != Method::mixed_integer;
    thread_ = is_kept_ && kept_thread () ? std::move (kept_thread ()) : std::make_unique<KeptThread> ();
    thread_->start ([this] { work (); }, std::move (bell));
}

RunThread::~RunThread ()
{
    stop ();
    thread_->wait ();
    if (is_kept_ && !kept_thread ())
        kept_thread () = std::move (thread_);
}

}
