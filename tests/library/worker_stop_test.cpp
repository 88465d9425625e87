// The calling thread's side of a run: progress points, stops, engines that do not stop, the end of the process.

#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

#include <csignal>
#include <cstdlib>
#include <pthread.h>
#include <set>

namespace {

using klv::Claims;
using klv::Outcome;
using model::inf;
using scripted::claims;
using Clock = std::chrono::steady_clock;

const model::Model small{
    .cost = {1, 2}, .rows = {{1, 1}}, .row_bounds = {{2, inf}}, .bounds = {{0, 10}, {0, 10}}};

model::Model with_integers ()
{
    model::Model integers = small;
    integers.integer = {true, true};
    return integers;
}

Claims right ()
{
    Claims made = claims (Outcome::optimal);
    made.x = {2, 0};
    made.y = {1};
    made.reduced_cost = {0, 1};
    return made;
}

klv::Progress in_phase (std::uint32_t caller)
{
    klv::Progress now;
    now.caller = caller;
    return now;
}

// Answers once its caller code came, or after a time; remembers what it was asked.
struct Questions {
    std::uint32_t stop_at = 0;    // a caller code
    std::int32_t answer = 1;
    double after = inf;    // seconds
    std::vector<std::uint32_t> callers = {};
    std::set<std::thread::id> threads = {};
    Clock::time_point began = Clock::now ();

    static std::int32_t ask (KLVtask_t, void* handle, std::uint32_t caller, const double*,
                             const std::int32_t*, const std::int64_t*)
    {
        auto& self = *static_cast<Questions*> (handle);
        self.callers.push_back (caller);
        self.threads.insert (std::this_thread::get_id ());
        const double seconds = std::chrono::duration<double> (Clock::now () - self.began).count ();
        return caller == self.stop_at || seconds > self.after ? self.answer : 0;
    }
    void link (KLVtask_t task) { EXPECT_EQ (KLV_putcallbackfunc (task, ask, this), 0); }
    std::ptrdiff_t count (std::uint32_t caller) const { return std::ranges::count (callers, caller); }
};

double seconds_of (const std::function<void ()>& action)
{
    const auto began = Clock::now ();
    action ();
    return std::chrono::duration<double> (Clock::now () - began).count ();
}

void wait_until_none_is_abandoned ()
{
    for (int i = 0; i < 5000 && klv::abandoned_workers () > 0; ++i)
        std::this_thread::sleep_for (std::chrono::milliseconds (1));
    ASSERT_EQ (klv::abandoned_workers (), 0);
}

// ---- Progress points --------------------------------------------------------------------------------------------------

TEST (WorkerProgress, each_phase_is_told_in_order_however_short_it_is)
{
    scripted::InFront front ([] (const klv::Job&, const klv::StopFlag&, klv::EventChannel& channel) {
        channel.progress (in_phase (KLV_CALLER_PRESOLVE));
        channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
        channel.progress (in_phase (KLV_CALLER_CERTIFICATE));
        return right ();
    });
    model::Task task (small);
    Questions questions;
    questions.link (task);
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_EQ (questions.callers, (std::vector<std::uint32_t>{KLV_CALLER_BEGIN_OPTIMIZE, KLV_CALLER_PRESOLVE,
                                                              KLV_CALLER_DUAL_SIMPLEX, KLV_CALLER_CERTIFICATE,
                                                              KLV_CALLER_CHECK, KLV_CALLER_END_OPTIMIZE}));
    EXPECT_EQ (questions.threads, std::set{std::this_thread::get_id ()});
}

TEST (WorkerProgress, a_long_phase_is_asked_about_again_but_not_too_often)
{
    scripted::InFront front ([] (const klv::Job&, const klv::StopFlag&, klv::EventChannel& channel) {
        for (int i = 0; i < 400; ++i) {
            channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
            std::this_thread::sleep_for (std::chrono::milliseconds (1));
        }
        return right ();
    });
    model::Task task (small);
    Questions questions;
    questions.link (task);
    const double seconds = seconds_of ([&] { EXPECT_EQ (KLV_optimize (task), 0); });
    EXPECT_GE (questions.count (KLV_CALLER_DUAL_SIMPLEX), 4);
    EXPECT_LE (static_cast<double> (questions.count (KLV_CALLER_DUAL_SIMPLEX)), seconds / 0.02 + 1);
}

TEST (WorkerProgress, the_state_of_a_search_reaches_the_information_items_and_incumbents_the_callback)
{
    scripted::Gate seen;
    scripted::InFront front ([seen] (const klv::Job&, const klv::StopFlag&, klv::EventChannel& channel) {
        const double x[] = {3, 0};
        klv::Progress now = in_phase (KLV_CALLER_MIXED_INTEGER);
        now.nodes = 17;
        now.primal_objective = 3;
        now.dual_objective = 1.5;
        now.has_primal = now.has_dual = true;
        channel.progress (now);
        channel.incumbent (x, 2);
        seen.wait ();
        Claims made = right ();
        made.best_bound = 2;
        made.has_best_bound = true;
        return made;
    });
    model::Task task (with_integers ());
    struct Look {
        model::Task& task;
        scripted::Gate seen;
        int found = 0;
    } look{task, seen};
    KLV_putcallbackfunc (
        task,
        [] (KLVtask_t, void* handle, std::uint32_t caller, const double*, const std::int32_t*,
            const std::int64_t*) {
            auto& self = *static_cast<Look*> (handle);
            if (caller == KLV_CALLER_NEW_INCUMBENT) {
                ++self.found;
                EXPECT_EQ (self.task.information ("KLV_IINF_MIP_NODES"), 17);
                EXPECT_EQ (self.task.real_information ("KLV_DINF_MIP_OBJECTIVE"), 3);
                EXPECT_EQ (self.task.real_information ("KLV_DINF_MIP_BOUND"), 1.5);
                self.seen.open ();
            }
            return 0;
        },
        &look);
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_EQ (look.found, 1);
}

TEST (WorkerProgress, a_flood_of_text_is_bounded_and_what_is_lost_is_counted)
{
    constexpr int flood = 300'000;
    scripted::InFront front ([] (const klv::Job&, const klv::StopFlag&, klv::EventChannel& channel) {
        for (int i = 0; i < flood; ++i)
            channel.text ("one line of very many\n");
        channel.text ("the last one, without its end");
        return right ();
    });
    model::Task task (small);
    task.set ("KLV_IPAR_LOG", 3);
    struct Lines {
        long passed = 0, lost = 0;
    } lines;
    KLV_linkfunctotaskstream (task, KLV_STREAM_MESSAGES, &lines, [] (void* handle, const char* line) {
        auto& self = *static_cast<Lines*> (handle);
        const std::string text = line;
        if (text.find ("very many") != text.npos || text.find ("the last one") != text.npos)
            ++self.passed;
        else if (const auto place = text.find (" lines were lost"); place != text.npos)
            self.lost += std::stol (text.substr (text.find ('(') + 1));
    });
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_EQ (lines.passed + lines.lost, flood + 1);
}

// ---- Stops ------------------------------------------------------------------------------------------------------------

TEST (Stops, at_the_begin_no_engine_runs)
{
    scripted::InFront front (
        [] (const klv::Job&, const klv::StopFlag&, klv::EventChannel&) { return right (); });
    model::Task task (small);
    Questions questions{.stop_at = KLV_CALLER_BEGIN_OPTIMIZE};
    questions.link (task);
    EXPECT_EQ (KLV_optimize (task), KLV_RES_USER_STOP);
    EXPECT_EQ (front.engine ().runs, 0);
    EXPECT_FALSE (model::slot (task, KLV_SOL_BAS).defined);
}

TEST (Stops, at_the_end_the_answer_is_kept)
{
    scripted::InFront front (
        [] (const klv::Job&, const klv::StopFlag&, klv::EventChannel&) { return right (); });
    model::Task task (small);
    Questions questions{.stop_at = KLV_CALLER_END_OPTIMIZE};
    questions.link (task);
    EXPECT_EQ (KLV_optimize (task), KLV_RES_USER_STOP);
    model::expect_optimal (task, KLV_SOL_BAS);
}

struct Answered {
    std::int32_t answer;
    int code;
};

class StopAnswers : public testing::TestWithParam<Answered> {};

TEST_P (StopAnswers, give_their_code)
{
    scripted::InFront front ([] (const klv::Job&, const klv::StopFlag& stop, klv::EventChannel& channel) {
        channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
        scripted::wait_for (stop);
        return claims (Outcome::stopped);
    });
    model::Task task (small);
    Questions questions{.stop_at = KLV_CALLER_DUAL_SIMPLEX, .answer = GetParam ().answer};
    questions.link (task);
    EXPECT_EQ (KLV_optimize (task), GetParam ().code);
    EXPECT_FALSE (model::slot (task, KLV_SOL_BAS).defined) << "no point was copied out";
    EXPECT_EQ (questions.count (KLV_CALLER_DUAL_SIMPLEX), 1) << "who has stopped is not asked again";
}

INSTANTIATE_TEST_SUITE_P (Each, StopAnswers,
                          testing::Values (Answered{1, KLV_RES_USER_STOP}, Answered{-7, KLV_RES_USER_STOP},
                                           Answered{KLV_RES_USER_STOP, KLV_RES_USER_STOP},
                                           Answered{KLV_RES_OUT_OF_MEMORY, KLV_RES_OUT_OF_MEMORY}));

TEST (Stops, an_optimum_that_comes_with_the_stop_is_kept)
{
    scripted::InFront front ([] (const klv::Job&, const klv::StopFlag& stop, klv::EventChannel& channel) {
        channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
        scripted::wait_for (stop);
        return right ();
    });
    model::Task task (small);
    Questions questions{.stop_at = KLV_CALLER_DUAL_SIMPLEX};
    questions.link (task);
    EXPECT_EQ (KLV_optimize (task), KLV_RES_USER_STOP);
    model::expect_optimal (task, KLV_SOL_BAS);
}

TEST (Stops, the_time_limit_ends_what_does_not_watch_its_clock)
{
    scripted::InFront front ([] (const klv::Job& job, const klv::StopFlag& stop, klv::EventChannel&) {
        EXPECT_LE (job.seconds, 0.05);
        scripted::wait_for (stop);
        return claims (Outcome::stopped);
    });
    model::Task task (small);
    task.set ("KLV_DPAR_TIME_LIMIT", 0.05);
    EXPECT_LT (seconds_of ([&] { EXPECT_EQ (KLV_optimize (task), KLV_RES_TIME_LIMIT); }), 1.5);
}

// ---- Engines that do not stop -------------------------------------------------------------------------------------------

TEST (WorkerAbandoned, a_search_that_does_not_stop_leaves_its_incumbent)
{
    const scripted::Gate gate;
    scripted::InFront front ([gate] (const klv::Job&, const klv::StopFlag&, klv::EventChannel& channel) {
        const double poor[] = {9, 9}, better[] = {3, 0};
        channel.progress (in_phase (KLV_CALLER_MIXED_INTEGER));
        channel.incumbent (poor, 2);
        channel.incumbent (better, 2);
        gate.wait ();
        return claims (Outcome::stopped);
    });
    model::Task task (with_integers ());
    Questions questions{.stop_at = KLV_CALLER_NEW_INCUMBENT};
    questions.link (task);
    EXPECT_LT (seconds_of ([&] { EXPECT_EQ (KLV_optimize (task), KLV_RES_USER_STOP); }), 1.5);
    const model::Slot found = model::slot (task, KLV_SOL_INT);
    ASSERT_TRUE (found.defined);
    EXPECT_EQ (found.solution, KLV_SOLSTA_PRIMAL_FEASIBLE);
    EXPECT_EQ (found.xx, (std::vector<double>{3, 0}));
    EXPECT_EQ (task.information ("KLV_IINF_ABANDONED_WORKERS"), 1);
    gate.open ();
    wait_until_none_is_abandoned ();
}

TEST (WorkerAbandoned, its_data_is_its_own)
{
    const scripted::Gate gate, looked;
    std::atomic<double> seen = 0;
    scripted::InFront front (
        [&, gate, looked] (const klv::Job& job, const klv::StopFlag&, klv::EventChannel& channel) {
            channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
            gate.wait ();
            seen = job.problem->stated->cost[0] + job.problem->rows.lower ()[0] +
                   job.settings->get (klv::RealSetting::primal_tolerance);
            looked.open ();
            return claims (Outcome::stopped);
        });
    {
        model::Task task (small);
        Questions questions{.stop_at = KLV_CALLER_DUAL_SIMPLEX};
        questions.link (task);
        EXPECT_EQ (KLV_optimize (task), KLV_RES_USER_STOP);
        const double costs[] = {100, 100};
        EXPECT_EQ (KLV_putcslice (task, 0, 2, costs), 0);
        task.set ("KLV_DPAR_PRIMAL_TOLERANCE", 0.05);
    }
    gate.open ();
    looked.wait ();
    EXPECT_EQ (seen, 1 + 2 + 1e-6);
    wait_until_none_is_abandoned ();
}

TEST (WorkerAbandoned, with_too_many_a_new_run_waits_and_can_be_stopped)
{
    const scripted::Gate gate;
    scripted::InFront front ([gate] (const klv::Job&, const klv::StopFlag&, klv::EventChannel& channel) {
        channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
        gate.wait ();
        return right ();
    });
    for (int i = 0; i < klv::most_abandoned_workers; ++i) {
        model::Task task (small);
        Questions questions{.stop_at = KLV_CALLER_DUAL_SIMPLEX};
        questions.link (task);
        EXPECT_EQ (KLV_optimize (task), KLV_RES_USER_STOP);
        EXPECT_EQ (task.information ("KLV_IINF_ABANDONED_WORKERS"), i + 1);
    }
    const int runs = front.engine ().runs;
    {
        model::Task task (small);
        Questions questions{.after = 0.2};
        questions.link (task);
        EXPECT_EQ (KLV_optimize (task), KLV_RES_USER_STOP);
        EXPECT_EQ (front.engine ().runs, runs) << "it must not have begun";
    }
    {
        model::Task task (small);
        task.set ("KLV_DPAR_TIME_LIMIT", 0.1);
        EXPECT_EQ (KLV_optimize (task), KLV_RES_TIME_LIMIT);
        EXPECT_EQ (front.engine ().runs, runs);
    }
    std::thread opener ([gate] {
        std::this_thread::sleep_for (std::chrono::milliseconds (100));
        gate.open ();
    });
    model::Task task (small);
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_EQ (front.engine ().runs, runs + 1);
    opener.join ();
    wait_until_none_is_abandoned ();
}

TEST (Worker, receives_no_signals)
{
    scripted::InFront front ([] (const klv::Job&, const klv::StopFlag&, klv::EventChannel&) {
        sigset_t mask;
        pthread_sigmask (SIG_SETMASK, nullptr, &mask);
        for (const int signal : {SIGINT, SIGTERM, SIGALRM, SIGCHLD, SIGUSR1, SIGPIPE})
            EXPECT_EQ (sigismember (&mask, signal), 1) << signal;
        return right ();
    });
    sigset_t before, after;
    pthread_sigmask (SIG_SETMASK, nullptr, &before);
    model::Task task (small);
    EXPECT_EQ (KLV_optimize (task), 0);
    pthread_sigmask (SIG_SETMASK, nullptr, &after);
    for (int signal = 1; signal < 32; ++signal)
        EXPECT_EQ (sigismember (&before, signal), sigismember (&after, signal)) << signal;
}

// ---- The end of the process -----------------------------------------------------------------------------------------------

class WorkerProcessEnd : public testing::Test {
protected:
    void SetUp () override { GTEST_FLAG_SET (death_test_style, "threadsafe"); }

    static void leave_one_behind (const scripted::Script& script)
    {
        static scripted::InFront front (script);
        static model::Task task (small);
        static Questions questions{.stop_at = KLV_CALLER_DUAL_SIMPLEX};
        questions.link (task);
        KLV_optimize (task);
    }
};

TEST_F (WorkerProcessEnd, waits_for_a_run_that_stops_late)
{
    EXPECT_EXIT (
        {
            leave_one_behind ([] (const klv::Job&, const klv::StopFlag&, klv::EventChannel& channel) {
                channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
                std::this_thread::sleep_for (std::chrono::milliseconds (1500));
                std::fputs ("ended in order", stderr);
                return claims (Outcome::stopped);
            });
            std::exit (7);
        },
        testing::ExitedWithCode (7), "ended in order");
}

TEST_F (WorkerProcessEnd, does_not_wait_for_ever)
{
    const double seconds = seconds_of ([] {
        EXPECT_EXIT (
            {
                leave_one_behind ([] (const klv::Job&, const klv::StopFlag&, klv::EventChannel& channel) {
                    channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
                    for (;;)
                        std::this_thread::sleep_for (std::chrono::seconds (1));
                    return claims (Outcome::stopped);
                });
                std::exit (9);
            },
            testing::ExitedWithCode (9), "");
    });
    EXPECT_LT (seconds, 30);
}

// A callback that ends the process in the middle of a run.
TEST_F (WorkerProcessEnd, stops_a_run_that_goes_on)
{
    EXPECT_EXIT (
        {
            scripted::InFront front (
                [] (const klv::Job&, const klv::StopFlag& stop, klv::EventChannel& channel) {
                    channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
                    scripted::wait_for (stop);
                    std::fputs ("was stopped", stderr);
                    return claims (Outcome::stopped);
                });
            model::Task task (small);
            KLV_putcallbackfunc (
                task,
                [] (KLVtask_t, void*, std::uint32_t caller, const double*, const std::int32_t*,
                    const std::int64_t*) {
                    if (caller == KLV_CALLER_DUAL_SIMPLEX)
                        std::exit (5);
                    return 0;
                },
                nullptr);
            KLV_optimize (task);
        },
        testing::ExitedWithCode (5), "was stopped");
}

}
