#include "kalvo/worker/thread.h"

#include "kalvo/task/signals.h"

#include <exception>
#include <new>
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

void RunThread::work () noexcept
{
    Claims claims = run (*engine_, job_, stop_, channel_);
    job_ = {};    // a large problem is freed before the waiting thread goes on
    channel_.finish (std::move (claims));
}

RunThread::RunThread (std::shared_ptr<Engine> engine, Job job, std::shared_ptr<Bell> bell)
    : engine_ (std::move (engine)), job_ (std::move (job)), channel_ (std::move (bell))
{
    const BlockedSignals blocked;
    thread_ = std::thread ([this] { work (); });
}

RunThread::~RunThread ()
{
    stop ();
    thread_.join ();
}

}
