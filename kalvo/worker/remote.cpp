#include "kalvo/worker/remote.h"

#include "kalvo/model/text.h"
#include "kalvo/worker/in_process.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <system_error>
#include <utility>

#include <poll.h>

namespace klv {

// Seconds in which a worker has to answer a stop.
constexpr double patience = 0.2;

// Seconds after the end of its time after which a worker, which keeps its limit by itself, is ended.
constexpr double patience_with_guard = 0.1;

// Between two questions to the callback in one phase.
constexpr std::chrono::milliseconds shortest_silence{20}, longest_silence{40};
constexpr std::size_t most_under_way = 8;
constexpr int most_deaths = 20;
constexpr int most_early_deaths = 3;    // before a run has begun

Remote::Remote (Task& task, Call& call, std::function<void ()> on_death)
    : task_ (task), call_ (call), on_death_ (std::move (on_death))
{}

// ---- Messages of a worker ------------------------------------------------------------------------------------------------------

void Remote::ask (std::uint32_t caller)
{
    call_.ask (caller);
    asked_at_ = Clock::now ();
}

// The worker asks at its own pace, whatever the callback takes: only a new phase is always told, for the rest the newest counts.
void Remote::take (const Question& question)
{
    if (question.caller == KLV_CALLER_NEW_INCUMBENT)
        has_new_incumbent_ = true;
    else if (std::exchange (phase_, question.caller) != question.caller)
        ask (phase_);
}

void Remote::take (Item&& item)
{
    if (const auto* line = std::get_if<Line> (&item))
        task_.streams.print (line->kind, line->text);
    else if (const auto* question = std::get_if<Question> (&item))
        take (*question);
    else if (auto* run = std::get_if<BegunRun> (&item)) {
        if (under_way_.size () == most_under_way)
            throw BrokenMessage ("there are too many runs");
        under_way_.push_back (std::move (*run));
    } else if (auto* past = std::get_if<Past> (&item)) {
        if (std::erase_if (under_way_, [&] (const BegunRun& begun) { return begun.begun == past->begun; }) ==
            0)
            throw BrokenMessage ("a run ends that was not begun");
        past_.push_back (std::move (*past));
    } else
        incumbent_ = std::move (std::get<NewIncumbent> (item).x);
}

// What this process counts itself stays.
void Remote::take (const Information& told)
{
    Information& information = task_.information;
    const Information own = std::exchange (information, told);
    for (const RealItem item : {RealItem::time_read, RealItem::time_write})
        information.set (item, own.get (item));
    information.set (IntItem::worker_deaths, own.get (IntItem::worker_deaths));
    information.set (RealItem::worker_memory,
                     std::max (own.get (RealItem::worker_memory), information.get (RealItem::worker_memory)));
}

void Remote::take (News&& news)
{
    take (news.information);
    for (Item& item : news.items)
        take (std::move (item));
}

// Takes what has come, but no flood, and counts it. Nothing: the worker has closed its socket.
std::optional<int> Remote::take_messages (WorkerProcess& worker)
{
    int count = 0;
    for (; count < 100 && !result_; ++count) {
        const Socket::Received received = worker.socket ().receive ();
        if (received.closed)
            return std::nullopt;
        if (!received.message)
            break;
        if (received.message->run != run_)
            continue;
        if (received.message->kind == MessageKind::news)
            take (read_news (*received.message));
        else if (received.message->kind == MessageKind::result) {
            result_ = read_result (*received.message);
            take (std::move (result_->news));
        } else
            throw BrokenMessage ("a message does not belong here");
    }
    return count;
}

static int milliseconds_until (Clock::time_point time)
{
    return std::max (0, static_cast<int> (std::ceil (1000 * seconds_between (Clock::now (), time))));
}

Remote::Ending Remote::converse (WorkerProcess& worker)
{
    std::optional<Clock::time_point> told_to_stop;
    const double limit = call_.seconds () + call_.seconds_left ();
    asked_at_ = Clock::now ();
    for (;;) {
        pollfd places[] = {{worker.socket ().number (), POLLIN, 0},
                           {worker.output (), POLLIN, 0},
                           {worker.process (), POLLIN, 0}};
        ::poll (places, std::size (places), milliseconds_until (asked_at_ + longest_silence));
        if (!worker.is_ours ())
            return Ending::ended_by_us;    // a fork of the calling process goes on with this code
        if (places[1].revents != 0)
            worker.read_output ();
        const std::optional<int> taken = take_messages (worker);
        if (result_)
            return Ending::answered;
        // What a worker said before its end counts.
        if (!taken || (places[2].revents != 0 && *taken == 0))
            return Ending::died;
        const auto silence = Clock::now () - asked_at_;
        if (has_new_incumbent_ && silence >= shortest_silence) {
            has_new_incumbent_ = false;
            ask (KLV_CALLER_NEW_INCUMBENT);
        } else if (silence >= longest_silence)
            ask (phase_);
        if (call_.answer () != 0 && !told_to_stop) {
            told_to_stop = Clock::now ();
            worker.socket ().send (MessageKind::stop, run_);
        }
        if (told_to_stop && seconds_between (*told_to_stop, Clock::now ()) > patience)
            return Ending::ended_by_us;
        out_of_time_ = call_.seconds () > limit + grace (limit) + patience_with_guard;
        if (out_of_time_)
            return Ending::ended_by_us;
    }
}

// ---- Workers that die ------------------------------------------------------------------------------------------------------------

std::string Remote::name_runs () const
{
    std::string names;
    for (const BegunRun& run : under_way_)
        names +=
            text (names.empty () ? "" : ", ", about (run.begun.attempt.method).name, " (", run.engine, ")");
    return names.empty () ? "before a run" : "in " + names;
}

// What was under way has failed; all that came before it is known to the next worker.
void Remote::bury (WorkerProcess& worker, const Solutions& earlier, const std::string& fault)
{
    const WorkerProcess::End end = worker.end ();
    const double limit = task_.parameters.get (RealSetting::memory_limit);
    if (end.status == status_out_of_time && call_.seconds_left () == 0) {
        out_of_time_ = true;
        return;
    }
    const double megabytes = task_.information.get (RealItem::worker_memory);
    const bool beyond_limit = end.status == status_out_of_memory && limit >= 0;
    const bool near_limit = limit >= 0 && megabytes > 0.8 * limit;
    const bool by_system = end.signal == SIGKILL && fault.empty ();
    out_of_memory_ = beyond_limit || near_limit || by_system;
    std::string how = !fault.empty () ? fault
                      : beyond_limit  ? text ("went beyond the memory limit of ", limit, " MB")
                                      : text (end.how, out_of_memory_ ? ", probably out of memory" : "");
    if (megabytes > 0)
        how += text (", with ", static_cast<std::int64_t> (megabytes), " MB");
    if (!end.last_line.empty ())
        how += text (" (it wrote: ", end.last_line, ")");
    how = text ("the optimiser's process ", how, ", ", name_runs ());
    for (const BegunRun& run : under_way_)
        past_.push_back ({run.begun, {.outcome = Outcome::failed, .message = how}});
    task_.warn (text ("T", how.substr (1), "."));
    Information& information = task_.information;
    information.set (IntItem::worker_deaths, information.get (IntItem::worker_deaths) + 1);
    if (on_death_) {
        task_.solutions = earlier;
        std::exchange (on_death_, nullptr) ();
        task_.drop_solutions ();
    }
}

// ---- One optimisation --------------------------------------------------------------------------------------------------------------

// The numbers of runs are this process's; workers only repeat them.
static std::uint64_t next_run ()
{
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

// False: the worker has ended.
bool Remote::send (WorkerProcess& worker, const Solutions& earlier, bool integers)
{
    run_ = next_run ();
    under_way_.clear ();
    result_.reset ();
    has_new_incumbent_ = false;
    phase_ = call_.phase ();
    const Problem& problem = task_.problem ();
    const auto items = work_of (problem);
    worker.socket ().accept_up_to (items * 64 + (16 << 20));
    const double limit = task_.parameters.get (RealSetting::memory_limit);
    Parameters parameters = task_.parameters;
    if (!task_.streams.anyone_listens (Kind::message))
        parameters.integers[parameter_number (IntSetting::log_level)] = 0;
    const Request request{.elapsed = call_.seconds (),
                          .most_megabytes = limit < 0 ? infinity : limit,
                          .integers = integers,
                          .parameters = parameters,
                          .information = task_.information,
                          .earlier = earlier,
                          .past = past_};
    return call_.compute (items, [&] {
        Writer body;
        write (body, request, problem);
        return worker.socket ().send (MessageKind::solve, run_, body) == Socket::Sent::yes;
    });
}

Solved Remote::solve_in_process (const std::string& why, const Solutions& earlier, bool integers)
{
    if (task_.parameters.get (IntSetting::log_level) >= 1)
        task_.say (text ("The optimiser runs in this process: ", why));
    return InProcess (task_, call_).solve (earlier, integers);
}

// What had been told when the worker was ended.
Solved Remote::stopped (bool integers)
{
    Point claim{.outcome = out_of_time_ ? Outcome::time_limit : Outcome::stopped};
    if (integers) {
        claim.x = std::move (incumbent_);
        claim.bound = task_.information.get (RealItem::mip_bound);
    }
    Attempt attempt{first_method (task_.problem (), task_.parameters, integers)};
    if (!under_way_.empty ())
        attempt = under_way_.front ().begun.attempt;
    result_.emplace ();
    Found& found = result_->solved.found;
    Tried& tried = (integers                       ? found.integer
                    : is_interior (attempt.method) ? found.interior
                                                   : found.basic)
                       .emplace (attempt);
    tried.answer.claim = std::move (claim);
    return finish (integers);
}

// Judges all claims on the problem as stated.
Solved Remote::finish (bool integers)
{
    Solved solved = std::move (result_->solved);
    Found& found = solved.found;
    if (solved.failure || solved.separable)
        return solved;
    if (integers ? !found.integer : !found.interior && !found.basic)
        throw BrokenMessage ("a result lacks an answer");
    const Check check (task_.share_problem (), task_.parameters, integers);
    for (std::optional<Tried>* tried : {&found.interior, &found.basic, &found.integer}) {
        if (!*tried)
            continue;
        Point& claim = (*tried)->answer.claim;
        if (claim.outcome == Outcome::failed && out_of_memory_)
            claim.outcome = Outcome::out_of_memory;
        (*tried)->answer = judge (call_, check, task_.problem (), std::move (claim));
    }
    return solved;
}

// After anything else a worker is not used again.
static bool has_ended_normally (const Solved& solved)
{
    const auto is_normal = [] (const std::optional<Tried>& tried) {
        return !tried || tried->answer.claim.outcome < Outcome::time_limit;
    };
    const Found& found = solved.found;
    return !solved.failure && is_normal (found.interior) && is_normal (found.basic) &&
           is_normal (found.integer);
}

Solved Remote::solve (const Solutions& earlier, bool integers)
{
    for (int deaths = 0, early_deaths = 0;;) {
        std::unique_ptr<WorkerProcess> worker;
        try {
            worker = take_worker (task_.parameters.get (IntSetting::threads),
                                  task_.parameters.get (RealSetting::memory_limit), [&] {
                                      call_.ask (call_.phase ());
                                      return call_.answer () == 0 && call_.seconds_left () > 0;
                                  });
            if (!send (*worker, earlier, integers) && ++deaths < most_deaths)
                continue;
        } catch (const NoProcess& error) {
            return solve_in_process (error.what (), earlier, integers);
        } catch (const std::system_error& error) {
            return solve_in_process (error.what (), earlier, integers);
        } catch (const NotWaitedFor&) {
            out_of_time_ = call_.answer () == 0;
            return stopped (integers);
        } catch (const NoWorker& error) {
            if (error.was_ended && ++early_deaths < most_early_deaths)
                continue;
            return {.failure = Failure{KLV_RES_WORKER_MISSING, error.what (), {}}};
        }
        Ending ending = Ending::died;
        std::string fault;
        try {
            ending = converse (*worker);
            if (ending == Ending::answered) {
                const bool ended_normally = has_ended_normally (result_->solved);
                Solved solved = finish (integers);
                if (call_.answer () == 0 && ended_normally)
                    keep_worker (std::move (worker));
                return solved;
            }
        } catch (const BrokenMessage& error) {
            fault = text ("sent what can't be read (", std::string_view (error.what ()), ")");
            worker->kill ();
        }
        if (ending == Ending::died)
            bury (*worker, earlier, fault);
        if (ending == Ending::ended_by_us || out_of_time_ || call_.answer () != 0)
            return stopped (integers);
        early_deaths += under_way_.empty ();
        if (early_deaths >= most_early_deaths || ++deaths >= most_deaths)
            return {.failure = Failure{
                        out_of_memory_ ? KLV_RES_OUT_OF_MEMORY : KLV_RES_ENGINE_FAILED,
                        out_of_memory_ ? "There is not enough memory for the optimiser."
                                       : "The optimiser's process ended before it could begin, or too often.",
                        {}}};
    }
}

}
