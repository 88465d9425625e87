// The calling thread's side of a run: progress points, stops, engines that do not stop, the end of the process.
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

#include <csignal>
#include <cstdlib>
#include <pthread.h>

namespace {

using model::Task;
using scripted::claims;
using scripted::Gate;
using scripted::InFront;
using scripted::right;
using scripted::small;

klv::Progress in_phase (std::uint32_t caller)
{
    klv::Progress now;
    now.caller = caller;
    return now;
}

// Answers once its caller code comes for the n-th time; remembers what it was asked.
struct Questions {
    std::uint32_t stop_at = 0;    // a caller code
    std::int32_t answer = 1;
    std::ptrdiff_t nth = 1;
    std::function<void ()> look = [] {};
    std::vector<std::uint32_t> callers = {};
    klv::Clock::time_point began = klv::Clock::now ();

    KLVrescode_t optimize (Task& task)
    {
        began = klv::Clock::now ();
        task.on_progress ([this, calling = std::this_thread::get_id ()] (std::uint32_t caller) {
            EXPECT_EQ (std::this_thread::get_id (), calling);
            callers.push_back (caller);
            look ();
            const bool stops = caller == stop_at && count (caller) == nth;
            if (stops)
                began = klv::Clock::now ();
            return stops ? answer : 0;
        });
        return KLV_optimize (task);
    }
    std::ptrdiff_t count (std::uint32_t caller) const { return std::ranges::count (callers, caller); }
    // Since it began, or stopped.
    double seconds () const { return klv::seconds_between (began, klv::Clock::now ()); }
};

void wait_until_none_is_abandoned ()
{
    for (int i = 0; i < 5000 && klv::abandoned_workers () > 0; ++i)
        std::this_thread::sleep_for (std::chrono::milliseconds (1));
    ASSERT_EQ (klv::abandoned_workers (), 0);
}

// ---- Progress points --------------------------------------------------------------------------------------------------

TEST (WorkerProgress, EachPhaseIsToldInOrderAndALongOneAgainButNotTooOften)
{
    const InFront front ([] (auto&, auto&, auto& channel) {
        channel.progress (in_phase (KLV_CALLER_PRESOLVE));
        for (int i = 0; i < 400; ++i) {
            channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
            std::this_thread::sleep_for (std::chrono::milliseconds (1));
        }
        channel.progress (in_phase (KLV_CALLER_CERTIFICATE));
        return claims (right);
    });
    Task task (small, "OPTIMIZER 1");
    Questions questions;
    EXPECT_EQ (questions.optimize (task), 0);
    const auto asked = static_cast<double> (questions.count (KLV_CALLER_DUAL_SIMPLEX));
    EXPECT_GE (asked, 4);
    EXPECT_LE (asked, questions.seconds () / 0.02 + 1);
    const auto repeated = std::ranges::unique (questions.callers);
    questions.callers.erase (repeated.begin (), repeated.end ());
    EXPECT_EQ (questions.callers, (std::vector<std::uint32_t>{KLV_CALLER_BEGIN_OPTIMIZE, KLV_CALLER_PRESOLVE,
                                                              KLV_CALLER_DUAL_SIMPLEX, KLV_CALLER_CERTIFICATE,
                                                              KLV_CALLER_CHECK, KLV_CALLER_END_OPTIMIZE}));
}

TEST (WorkerProgress, AFloodOfTextIsBoundedAndWhatIsLostIsCounted)
{
    constexpr int flood = 300'000;
    const InFront front ([] (auto&, auto&, auto& channel) {
        for (int i = 0; i < flood; ++i)
            channel.text ("one line of very many\n");
        channel.text ("the last one, without its end");
        return claims (right);
    });
    const Task task (small, "OPTIMIZER 1 LOG 3");
    long lines = 0;    // passed, and said to be lost
    KLV_linkfunctotaskstream (task, KLV_STREAM_MESSAGES, &lines, [] (void* handle, const char* line) {
        const std::string text = line;
        const bool is_lost = text.find (" lines were lost") != text.npos;
        const bool is_one = text.find ("very many") != text.npos || text.find ("the last one") != text.npos;
        *static_cast<long*> (handle) += is_lost ? std::stol (text.substr (text.find ('(') + 1)) : is_one;
    });
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_EQ (lines, flood + 1);
}

// ---- Stops ------------------------------------------------------------------------------------------------------------

TEST (Stops, GiveTheirCodeAndKeepWhatIsProved)
{
    struct Stop {
        std::uint32_t at;
        const char* claims;    // of the stopped run
        std::int32_t answer, code;
        int runs, asked;    // how often the engine ran, and the callback was asked there
    };
    for (const Stop& stop :
         {Stop{KLV_CALLER_BEGIN_OPTIMIZE, right, 1, KLV_RES_USER_STOP, 0, 0},
          {KLV_CALLER_DUAL_SIMPLEX, "stopped", 1, KLV_RES_USER_STOP, 1, 1},
          {KLV_CALLER_DUAL_SIMPLEX, "stopped", KLV_RES_OUT_OF_MEMORY, KLV_RES_OUT_OF_MEMORY, 1, 1},
          {KLV_CALLER_DUAL_SIMPLEX, right, 1, KLV_RES_USER_STOP, 1, 1},
          {KLV_CALLER_END_OPTIMIZE, right, 1, KLV_RES_USER_STOP, 1, 1}}) {
        SCOPED_TRACE (testing::Message () << stop.at << ' ' << stop.claims << ' ' << stop.answer);
        InFront front ([&] (auto&, auto& flag, auto& channel) {
            channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
            if (stop.at == KLV_CALLER_DUAL_SIMPLEX)
                Gate::wait_for (flag);
            return claims (stop.claims);
        });
        Task task (small, "OPTIMIZER 1");
        Questions questions{.stop_at = stop.at, .answer = stop.answer};
        EXPECT_EQ (questions.optimize (task), stop.code);
        EXPECT_EQ (front.engine ().runs, stop.runs);
        EXPECT_EQ (questions.count (KLV_CALLER_DUAL_SIMPLEX), stop.asked)
            << "who has stopped is not asked again";
        EXPECT_EQ (model::proved (task), stop.runs > 0 && stop.claims == right ? "bas OPTIMAL" : "");
    }
}

// The real engine, in the middle of each phase. Equal costs leave the simplex finish much to do.
TEST (RealEngine, CanBeStoppedInEachPhase)
{
    klv::Problem linear = model::parse (model::dense (900, 900));
    linear.sense = KLV_SENSE_MINIMIZE;
    linear.cost.assign (900, 1);
    linear.constraint = {std::vector<std::uint8_t> (900, KLV_BK_LO), model::Values (900, 1),
                         model::Values (900, model::inf)};
    for (std::int32_t j = 0; j < 900; ++j) {
        const klv::Column column = linear.matrix.column (j);
        std::vector<std::int32_t> rows;
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            if (column.values[k] > 0.97)
                rows.push_back (column.rows[k]);
        linear.matrix.put (j, rows, model::Values (rows.size (), 1));
    }
    for (const auto& [caller, settings] : {std::pair{KLV_CALLER_PRESOLVE, "OPTIMIZER 1"},
                                           {KLV_CALLER_DUAL_SIMPLEX, "OPTIMIZER 1"},
                                           {KLV_CALLER_PRIMAL_SIMPLEX, "OPTIMIZER 0"},
                                           {KLV_CALLER_INTERIOR_POINT, "OPTIMIZER 3"},
                                           {KLV_CALLER_INTERIOR_POINT, "OPTIMIZER 3 INTPNT_METHOD 2"},
                                           {KLV_CALLER_CROSSOVER, "OPTIMIZER 3"},
                                           {KLV_CALLER_MIXED_INTEGER, "OPTIMIZER 5"}}) {
        SCOPED_TRACE (caller);
        Task task (caller == KLV_CALLER_MIXED_INTEGER ? model::parse (model::knapsack (20, 100)) : linear,
                   settings);
        Questions questions{.stop_at = static_cast<std::uint32_t> (caller)};
        EXPECT_EQ (questions.optimize (task), KLV_RES_USER_STOP);
        EXPECT_LT (questions.seconds (), 1.5);
        if (caller == KLV_CALLER_PRIMAL_SIMPLEX || caller == KLV_CALLER_MIXED_INTEGER) {    // these take long
            EXPECT_EQ (model::proved (task).find ("OPTIMAL"), std::string::npos) << model::proved (task);
        }
    }
    wait_until_none_is_abandoned ();
}

// ---- Engines that do not stop -------------------------------------------------------------------------------------------

// What it tells reaches the callback, its incumbent the slot, and its data stays what it was.
TEST (WorkerAbandoned, ASearchThatDoesNotStopLeavesItsIncumbent)
{
    const Gate gate, looked;
    std::atomic<double> seen = 0;
    const InFront front ([&] (auto& job, auto&, auto& channel) {
        const double poor[] = {9, 9}, better[] = {3, 0};
        klv::Progress now = in_phase (KLV_CALLER_MIXED_INTEGER);
        now.search.nodes = 17;
        now.dual_objective = 1.5;
        now.has_dual = true;
        channel.progress (now);
        channel.incumbent (poor, 2);
        channel.incumbent (better, 2);
        gate.wait ();
        seen = std::get<klv::LinearForm> (*job.form).cost.get ()[0] +
               std::get<klv::LinearForm> (*job.form).row_lower.get ()[0] +
               job.settings->get (klv::RealSetting::primal_tolerance);
        looked.open ();
        return claims ("stopped");
    });
    {
        Task task (scripted::small_integers);
        Questions questions{.stop_at = KLV_CALLER_NEW_INCUMBENT};
        questions.look = [&] {
            if (questions.callers.back () == KLV_CALLER_NEW_INCUMBENT) {
                EXPECT_EQ (task.information ("MIP_NODES"), 17);
                EXPECT_EQ (task.information ("MIP_BOUND"), 1.5);
            }
        };
        EXPECT_EQ (questions.optimize (task), KLV_RES_USER_STOP);
        EXPECT_LT (questions.seconds (), 1.5);
        EXPECT_EQ (questions.count (KLV_CALLER_NEW_INCUMBENT), 1);
        EXPECT_EQ (model::proved (task), "int PRIMAL_FEASIBLE");
        EXPECT_EQ (model::slot (task, KLV_SOL_INT).xx, (model::Values{3, 0}));
        EXPECT_EQ (task.information ("ABANDONED_WORKERS"), 1);
        EXPECT_EQ (task.information ("MIP_NODES"), 17);
        const double costs[] = {100, 100};
        EXPECT_EQ (KLV_putcslice (task, 0, 2, costs), 0);
        task.set ("PRIMAL_TOLERANCE 0.05");
    }
    gate.open ();
    looked.wait ();
    EXPECT_EQ (seen, 1 + 2 + 1e-6);
    wait_until_none_is_abandoned ();
}

TEST (WorkerAbandoned, WithTooManyANewRunWaitsAndCanBeStopped)
{
    const Gate gate;
    InFront front ([gate] (auto&, auto&, auto& channel) {
        channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
        gate.wait ();
        return claims (right);
    });
    for (int i = 1; i <= klv::most_abandoned_workers; ++i) {
        Task task (small);
        Questions questions{.stop_at = KLV_CALLER_DUAL_SIMPLEX};
        EXPECT_EQ (questions.optimize (task), KLV_RES_USER_STOP);
        EXPECT_EQ (task.information ("ABANDONED_WORKERS"), i);
    }
    Task stopped (small), late (small, "TIME_LIMIT 0.1"), patient (small);
    EXPECT_EQ ((Questions{.stop_at = KLV_CALLER_BEGIN_OPTIMIZE, .nth = 5}.optimize (stopped)),
               KLV_RES_USER_STOP);
    EXPECT_EQ (KLV_optimize (late), KLV_RES_TIME_LIMIT);
    EXPECT_EQ (front.engine ().runs, klv::most_abandoned_workers) << "none of them may have begun";
    std::thread opener ([gate] {
        std::this_thread::sleep_for (std::chrono::milliseconds (100));
        gate.open ();
    });
    EXPECT_EQ (KLV_optimize (patient), 0);
    EXPECT_EQ (front.engine ().runs, klv::most_abandoned_workers + 1);
    opener.join ();
    wait_until_none_is_abandoned ();
}

TEST (Worker, ReceivesNoSignals)
{
    const auto is_blocked = [] (int signal) {
        sigset_t mask;
        pthread_sigmask (SIG_SETMASK, nullptr, &mask);
        return sigismember (&mask, signal) == 1;
    };
    const InFront front ([&] (auto&, auto&, auto&) {
        EXPECT_TRUE (is_blocked (SIGINT) && is_blocked (SIGALRM) && is_blocked (SIGCHLD));
        return claims (right);
    });
    EXPECT_EQ (KLV_optimize (Task (small)), 0);
    EXPECT_FALSE (is_blocked (SIGINT));
}

// ---- The end of the process -----------------------------------------------------------------------------------------------

// The callback or, when it stops the run instead, the main program ends the process while the run does what the script says.
void exit_during (const scripted::Script& script, std::int32_t answer)
{
    static const InFront front ([&] (auto& job, auto& stop, auto& channel) {
        channel.progress (in_phase (KLV_CALLER_DUAL_SIMPLEX));
        return script (job, stop, channel);
    });
    static Task task (small);
    task.on_progress ([&] (std::uint32_t caller) {
        if (caller == KLV_CALLER_DUAL_SIMPLEX && answer == 0)
            std::exit (7);
        return caller == KLV_CALLER_DUAL_SIMPLEX ? answer : 0;
    });
    KLV_optimize (task);
    std::exit (7);
}

TEST (WorkerProcessEnd, StopsTheRunAndWaitsButNotForEver)
{
    GTEST_FLAG_SET (death_test_style, "threadsafe");
    const auto stops_late = [] (auto&, auto& stop, auto&) {
        Gate::wait_for (stop);
        std::this_thread::sleep_for (std::chrono::milliseconds (600));
        std::fputs ("ended in order", stderr);
        return claims ("stopped");
    };
    const auto never_stops = [] (auto&, auto&, auto&) {
        Gate ().wait ();
        return claims ("stopped");
    };
    for (const int answer : {0, 1})
        EXPECT_EXIT (exit_during (stops_late, answer), testing::ExitedWithCode (7), "ended in order");
    const auto began = klv::Clock::now ();
    EXPECT_EXIT (exit_during (never_stops, 1), testing::ExitedWithCode (7), "");
    EXPECT_LT (klv::seconds_between (began, klv::Clock::now ()), 30);
}

}
