// The race of the automatic optimiser: who joins when, who wins, and that the loser is not waited for.
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

namespace {

using klv::Method;
using model::Task;
using scripted::claims;
using scripted::right;
using scripted::small;

constexpr const char* at_once = "RACE_SIZE 0 MAX_THREADS 2 ";
constexpr const char* wrong = "optimal x 0 0 y 1 d 0 1";

TEST (Race, IsWonByTheFirstProof)
{
    struct Race {
        const char *what, *simplex, *interior;    // who answers what; nothing: it runs until it is stopped
        int winner, rejected;
    };
    // A loser may outlive the test.
    static const Race races[] = {
        {"simplex", right, nullptr, KLV_OPTIMIZER_DUAL_SIMPLEX, 0},
        {"interior point", nullptr, right, KLV_OPTIMIZER_INTERIOR_POINT, 0},
        {"interior point is wrong", right, wrong, KLV_OPTIMIZER_DUAL_SIMPLEX, 1},
        {"simplex is wrong", wrong, right, KLV_OPTIMIZER_INTERIOR_POINT, 1},
        {"a point of no proof", "undecided", right, KLV_OPTIMIZER_INTERIOR_POINT, 0},
    };
    for (const Race& race : races) {
        SCOPED_TRACE (race.what);
        const auto running = std::make_shared<std::atomic<int>> (0);
        scripted::InFront front (
            [&race, running] (const klv::Job& job, const klv::StopFlag& stop, klv::Events&) {
                const char* answer = job.method == Method::crossover ? race.interior : race.simplex;
                ++*running;    // both are at it before one may answer, the right one last
                while (*running < 2)
                    std::this_thread::sleep_for (std::chrono::milliseconds (1));
                if (answer == right && race.rejected > 0)
                    std::this_thread::sleep_for (std::chrono::milliseconds (100));
                if (answer == nullptr)
                    scripted::Gate::wait_for (stop);
                return claims (answer != nullptr ? answer : "stopped");
            });
        const Task task (small, at_once);
        EXPECT_EQ (model::optimized (task), "OK itr OPTIMAL bas OPTIMAL");
        EXPECT_EQ (task.information ("RACE"), 1);
        EXPECT_EQ (task.information ("OPTIMIZER"), race.winner);
        EXPECT_EQ (task.information ("CLAIMS_REJECTED"), race.rejected);
        EXPECT_EQ (front.engine ().runs, 2);
    }
}

TEST (Race, IsRunOnlyWhereItMayBe)
{
    const struct {
        const char *what, *settings;
        const char* problem = small;
    } cases[] = {
        {"simplex is quick", "RACE_SIZE 0 RACE_DELAY 1 MAX_THREADS 2"},
        {"too small", "MAX_THREADS 2"},
        {"one thread", "RACE_SIZE 0 MAX_THREADS 1"},
        {"never", "RACE_SIZE 0 RACE_DELAY inf MAX_THREADS 2"},
        {"another optimiser", "RACE_SIZE 0 MAX_THREADS 2 OPTIMIZER 1"},
        {"what interior point does not know", "RACE_SIZE 0 MAX_THREADS 2 OBJECTIVE_LIMIT 100"},
        {"integers", "RACE_SIZE 0 MAX_THREADS 2", scripted::small_integers},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.what);
        scripted::InFront front ([] (auto& job, auto&, auto&) {
            EXPECT_FALSE (klv::is_interior (job.method));
            std::this_thread::sleep_for (std::chrono::milliseconds (30));
            return claims (right);
        });
        const Task task (c.problem, c.settings);
        EXPECT_EQ (KLV_optimize (task), 0);
        EXPECT_EQ (task.information ("RACE"), 0);
        EXPECT_EQ (front.engine ().runs, 1);
    }
}

TEST (Race, EndsForBothByAStopOrALimit)
{
    for (const bool limited : {true, false}) {
        SCOPED_TRACE (limited);
        std::atomic<int> stopped = 0;
        scripted::InFront front ([&] (const klv::Job& job, const klv::StopFlag& stop, klv::Events& channel) {
            channel.progress ({.caller = KLV_CALLER_DUAL_SIMPLEX});
            scripted::Gate::wait_for (stop);
            ++stopped;
            return claims (job.method == Method::crossover ? "stopped x 5 5 y 1 d 0 1" : "stopped");
        });
        Task task (small, at_once + std::string (limited ? "TIME_LIMIT 0.1" : ""));
        task.on_progress ([limited, calls = 0] (std::uint32_t) mutable { return !limited && ++calls > 6; });
        EXPECT_EQ (KLV_optimize (task), limited ? KLV_RES_TIME_LIMIT : KLV_RES_USER_STOP);
        EXPECT_EQ (stopped, 2);
        EXPECT_EQ (task.information ("ABANDONED_WORKERS"), 0);
        // The point is what one of them knew.
        EXPECT_EQ (model::slot (task, KLV_SOL_ITR).xx, (model::Values{5, 5}));
        EXPECT_FALSE (model::slot (task, KLV_SOL_BAS).defined);
    }
}

}
