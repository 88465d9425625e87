// What a stop must hold: answered in time with its code, and what is proved is kept.
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

namespace {

using model::Task;
using scripted::claims;
using scripted::Gate;
using scripted::InFront;
using scripted::right;
using scripted::small;

void enter (klv::Events& channel, std::uint32_t caller)
{
    klv::Progress now;
    now.caller = caller;
    channel.progress (now);
}

// Answers once its caller code comes; remembers what it was asked.
struct Questions {
    std::uint32_t stop_at = 0;    // a caller code
    std::int32_t answer = 1;
    std::vector<std::uint32_t> callers = {};
    klv::Clock::time_point since = klv::Clock::now ();    // the begin, or the stop

    KLVrescode_t optimize (Task& task)
    {
        task.on_progress ([this, calling = std::this_thread::get_id ()] (std::uint32_t caller) {
            EXPECT_EQ (std::this_thread::get_id (), calling);
            callers.push_back (caller);
            if (caller != stop_at || count (caller) > 1)
                return 0;
            since = klv::Clock::now ();
            return answer;
        });
        return KLV_optimize (task);
    }
    std::ptrdiff_t count (std::uint32_t caller) const { return std::ranges::count (callers, caller); }
    double seconds () const { return klv::seconds_between (since, klv::Clock::now ()); }
};

TEST (Progress, EachPhaseIsToldInOrderAndALongOneAgainButNotTooOften)
{
    const InFront front ([] (auto&, auto&, auto& channel) {
        enter (channel, KLV_CALLER_PRESOLVE);
        for (int i = 0; i < 400; ++i) {
            enter (channel, KLV_CALLER_DUAL_SIMPLEX);
            std::this_thread::sleep_for (std::chrono::milliseconds (1));
        }
        enter (channel, KLV_CALLER_CERTIFICATE);
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

TEST (Stops, GiveTheirCodeAndKeepWhatIsProved)
{
    struct Stop {
        std::uint32_t at;
        const char* claims;    // of the stopped run
        std::int32_t answer = 1, code = KLV_RES_USER_STOP;
        int runs = 1;    // of the engine, in each of which it asks the callback once
    };
    for (const Stop& stop :
         {Stop{KLV_CALLER_BEGIN_OPTIMIZE, right, 1, KLV_RES_USER_STOP, 0},
          {KLV_CALLER_DUAL_SIMPLEX, "stopped"},
          {KLV_CALLER_DUAL_SIMPLEX, "stopped", KLV_RES_OUT_OF_MEMORY, KLV_RES_OUT_OF_MEMORY},
          {KLV_CALLER_DUAL_SIMPLEX, right},
          {KLV_CALLER_END_OPTIMIZE, right}}) {
        SCOPED_TRACE (testing::Message () << stop.at << ' ' << stop.claims << ' ' << stop.answer);
        InFront front ([&] (auto&, auto& flag, auto& channel) {
            enter (channel, KLV_CALLER_DUAL_SIMPLEX);
            if (stop.at == KLV_CALLER_DUAL_SIMPLEX)
                Gate::wait_for (flag);
            return claims (stop.claims);
        });
        Task task (small, "OPTIMIZER 1");
        Questions questions{.stop_at = stop.at, .answer = stop.answer};
        EXPECT_EQ (questions.optimize (task), stop.code);
        EXPECT_EQ (front.engine ().runs, stop.runs);
        EXPECT_EQ (questions.count (KLV_CALLER_DUAL_SIMPLEX), stop.runs) << "who stops is not asked again";
        EXPECT_EQ (model::proved (task), stop.runs > 0 && stop.claims == right ? "bas OPTIMAL" : "");
    }
}

// The real engine, in the middle of each phase. Equal costs and rows of some ones leave each of them much to do.
TEST (Stops, EndTheRealEngineInEachPhase)
{
    std::mt19937 random (7);
    std::string costs = "min", bounds = ";", rows;
    for (int i = 0; i < 900; ++i, rows += " in 1..") {
        costs += " 1";
        bounds += " 0..";
        rows += ';';
        for (int j = 0; j < 900; ++j)
            rows += random () % 30 == 0 ? " 1" : " 0";
    }
    for (const auto& [caller, settings] : {std::pair{KLV_CALLER_PRESOLVE, "OPTIMIZER 1"},
                                           {KLV_CALLER_DUAL_SIMPLEX, "OPTIMIZER 1"},
                                           {KLV_CALLER_PRIMAL_SIMPLEX, "OPTIMIZER 0"},
                                           {KLV_CALLER_INTERIOR_POINT, "OPTIMIZER 3"},
                                           {KLV_CALLER_INTERIOR_POINT, "OPTIMIZER 3 INTPNT_METHOD 2"},
                                           {KLV_CALLER_CROSSOVER, "OPTIMIZER 3"},
                                           {KLV_CALLER_MIXED_INTEGER, "OPTIMIZER 5"}}) {
        SCOPED_TRACE (caller);
        const bool integer = caller == KLV_CALLER_MIXED_INTEGER;
        Task task (integer ? model::knapsack (20, 100) : costs + bounds + rows, settings);
        Questions questions{.stop_at = static_cast<std::uint32_t> (caller)};
        EXPECT_EQ (questions.optimize (task), KLV_RES_USER_STOP);
        EXPECT_LT (questions.seconds (), 1.5);
        EXPECT_TRUE (model::proved (task).find ("OPTIMAL") == std::string::npos ||
                     !(integer || caller == KLV_CALLER_PRIMAL_SIMPLEX));    // which take long
    }
}

}
