// Engines that are wrong: what is reported follows from the check alone.
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

#include <new>
#include <stdexcept>

namespace {

using model::optimized;
using model::Values;
using scripted::claims;
using scripted::right;
using scripted::small;

// Runs that a continuous problem is worth: three methods, each also without presolve and scaling.
constexpr int all = 6;

struct Answer {
    const char *what, *claims;    // of the first run and, behind |, of a second one
    std::string result;
    int runs = 1, rejected = 0;
    const char* problem = small;
};

void expect_reported (const Answer& answer)
{
    SCOPED_TRACE (answer.what);
    const std::string both = answer.claims;
    const std::string first = both.substr (0, both.find ('|'));
    const std::string second = both.substr (first.size () == both.size () ? 0 : first.size () + 1);
    scripted::InFront front ([&, run = 0] (auto& job, auto&, auto&) mutable {
        EXPECT_TRUE (run > 1 || job.reformulate == (run == 0))
            << "the second try is without presolve and scaling";
        return claims (run++ == 0 ? first : second);
    });
    const model::Task task (answer.problem, "OPTIMIZER 1");
    EXPECT_EQ (optimized (task), answer.result);
    EXPECT_EQ (front.engine ().runs, answer.runs);
    EXPECT_EQ (task.information ("CLAIMS_REJECTED"), answer.rejected);
    EXPECT_EQ (task.information ("SECOND_TRIES"), answer.runs - 1);
    if (answer.result.ends_with ("INTEGER_OPTIMAL")) {
        EXPECT_EQ (model::slot (task, KLV_SOL_INT).xx, (Values{2, 0})) << "whole numbers come as such";
    }
}

const std::string trouble = "NUMERICAL_TROUBLE bas ", nothing = trouble + "UNKNOWN",
                  optimal = "OK bas OPTIMAL";

TEST (Scripted, AnswersAreReportedAsWhatTheyAre)
{
    for (const Answer& answer : {
             Answer{"the truth", right, optimal},
             {"wrong once", "optimal x 0 0 y 1 d 0 1|optimal x 2 0 y 1 d 0 1", optimal, 2, 1},
             {"an infeasible point", "optimal x 0 0 y 1 d 0 1", trouble + "DUAL_FEASIBLE", all, all},
             {"a poor point", "optimal x 5 5 y 1 d 0 1", trouble + "FEASIBLE", all, all},
             {"wrong signs", "optimal x 2 0 y -1 d 2 3", trouble + "PRIMAL_FEASIBLE", all, all},
             {"not c - A'y", "optimal x 2 0 y 1 d 0 2", trouble + "PRIMAL_FEASIBLE", all, all},
             {"no point at all", "optimal", nothing, all, all},
             {"not a number", "optimal x nan 0 y nan d 0 1", nothing, all, all},
             {"wrong sizes", "optimal x 2 0 0 d 1", nothing, all, all},
             {"infeasible without a ray", "infeasible", nothing, all},
             {"undecided", "undecided", nothing, all},
             {"a limit without a point", "time_limit", "TIME_LIMIT"},
             {"a limit with a point", "time_limit x 5 5 y 1 d 0 1", "TIME_LIMIT bas FEASIBLE"},
             {"an iteration limit", "iteration_limit x 5 5", "ITERATION_LIMIT bas PRIMAL_FEASIBLE"},
             {"a node limit", "node_limit", "NODE_LIMIT"},
             {"a limit just when it was done", "time_limit x 2 0 y 1 d 0 1", optimal},
             {"unsure of an optimum", "unknown x 2 0 y 1 d 0 1", optimal},
         })
        expect_reported (answer);
}

TEST (Scripted, RaysBecomeCertificatesByDefinitionOnly)
{
    const std::string infeasible = "OK bas PRIMAL_INFEASIBLE_CERTIFICATE";
    const std::string unbounded = "OK bas DUAL_INFEASIBLE_CERTIFICATE";
    const char *boxed = "min 1 1; 0..1 0..1; 1 1 in 3..", *half_boxed = "min 1 1; 0..1 0..; 1 1 in 3..";
    const char *strip = "min -1 0; 0.. 0..; 1 -1 in -1..1", *up = "min 1 0; 0.. 0..; 1 -1 in -1..1";
    for (const Answer& answer : {
             Answer{"a true one is scaled to value 1", "infeasible ray 7", infeasible, 1, 0, boxed},
             {"up to its sign", "infeasible ray -7", infeasible, 1, 0, boxed},
             {"zero", "infeasible ray 0", infeasible, all, 0, boxed},
             {"wrong size", "infeasible ray 1 1", infeasible, all, 0, boxed},
             {"the problem is feasible", "infeasible ray 1", nothing, all, 0, "min 1; 0..1; 1 in 1.."},
             {"a bound that does not exist", "infeasible ray 1", nothing, all, 0, half_boxed},
             {"a free one", "infeasible ray 1", nothing, all, 0, "min 0 0; ..0.9999999 ..; 1 1e-8 in 1.."},
             {"noise there", "infeasible ray 1 0.3333333333", infeasible, 1, 0,
              "min 0 0; 0..1 ..; 1 1 in 3..; 0 -3 in 0.."},
             {"noise at a bound far away", "infeasible ray 0.3333333333333333 -1", infeasible, 1, 0,
              "min 1; -1e30..1e30; 3 in 16..; 1 in ..3"},
             {"noise at a row", "infeasible ray 1 -1e-13", infeasible, 1, 0,
              "min 0; 0..1; 1 in 3..; 1 in 0.."},
             {"more than noise there", "infeasible ray 1 0.3", nothing, all, 0,
              "min 0 0; 0..1 ..; 1 1 in 3..; 0 -3 in 0.."},
             {"a value below its rounding", "infeasible ray 1", nothing, all, 0,
              "min 1; 0..1e9; 1 in 1000000000.001.."},
             {"a small value above it", "infeasible ray 1", infeasible, 1, 0,
              "min 1; 0..1; 1 in 1.0000001.."},
             {"a true direction is scaled", "unbounded way 5 5", unbounded, 1, 0, strip},
             {"maximising", "unbounded way 5 5", unbounded, 1, 0, "max 3 0; 0.. 0..; 1 -1 in -1..1"},
             {"it gains nothing", "unbounded way 1 1", nothing, all, 0, "min 0 0; 0.. 0..; 1 -1 in -1..1"},
             {"it leaves a constraint", "unbounded way 1 0.5", nothing, all, 0, strip},
             {"it leaves a bound", "unbounded way -1 -1", nothing, all, 0, up},
             {"it leaves by noise only", "unbounded way 1 1.0000000001", unbounded, 1, 0, strip},
             {"noise at a variable", "unbounded way 1 -1e-13", unbounded, 1, 0,
              "min -1 0; 0.. 0..; 1 1 in 0.."},
             {"it leaves by a tiny entry", "unbounded way 1", nothing, all, 0, "max 1; ..; 5e-9 in ..1"},
             {"a bound of 1e25 is a bound, left out for two runs only", "unbounded way 1", nothing, all + 2,
              0, "min -1; 0..1e25; 1 in 0.."},
             {"infinite", "unbounded way inf inf", nothing, all, 0, strip},
             {"wrong size", "unbounded way 1", nothing, all, 0, strip},
         })
        expect_reported (answer);
}

TEST (Scripted, IntegerAnswersAreReportedAsWhatTheyAre)
{
    const std::string feasible = "int PRIMAL_FEASIBLE", poor = "NUMERICAL_TROUBLE " + feasible;
    const std::string best = "OK int INTEGER_OPTIMAL", none = "NUMERICAL_TROUBLE int UNKNOWN";
    const std::string by_search = "OK int INFEASIBLE_BY_SEARCH";
    for (Answer answer : {
             Answer{"the truth", "optimal x 2 0 bound 2", best},
             {"nearly whole", "optimal x 2.0000003 -1e-9 bound 2", best},
             {"not whole", "optimal x 1.5 0.5 bound 2.5", none, 2, 2},
             {"whole and infeasible", "optimal x 1 0 bound 1", none, 2, 2},
             {"in spite of its bound", "optimal x 3 0 bound 2", poor, 2, 2},
             {"without a bound", "optimal x 2 0", poor, 2, 2},
             {"a bound that is not a number", "optimal x 2 0 bound nan", poor, 2, 2},
             {"a node limit with a point", "node_limit x 3 0 bound 2", "NODE_LIMIT " + feasible},
             {"infeasible by search", "infeasible", by_search},
             {"infeasible with a false ray", "infeasible ray 1", by_search},
             {"unbounded without a direction", "unbounded", none, 2},
         }) {
        answer.problem = scripted::small_integers;
        expect_reported (answer);
    }
}

// Each tolerance decides one question: a point that is a little wrong, judged by the default and by a looser value.
TEST (Scripted, ToleranceDecidesItsOwnQuestion)
{
    struct Judgement {
        const char *parameter, *claims, *by_default, *loose, *problem = small;
    };
    for (const Judgement& judgement : {
             Judgement{"PRIMAL_TOLERANCE", "optimal x 1.9999 0 y 1 d 0 1", " DUAL_FEASIBLE", " FEASIBLE"},
             {"DUAL_TOLERANCE", "optimal x 2 0 y 1 d 0 1.0001", " PRIMAL_FEASIBLE", " OPTIMAL"},
             {"GAP_TOLERANCE", "optimal x 2.0001 0 y 1 d 0 1", " FEASIBLE", " OPTIMAL"},
             {"INTEGER_TOLERANCE", "optimal x 2.0001 bound 2.0001", " UNKNOWN", " INTEGER_OPTIMAL",
              "min 1; 0..10i; 1 in 2.0001..2.0001"},
         }) {
        SCOPED_TRACE (judgement.parameter);
        const scripted::InFront front ([&] (auto&, auto&, auto&) { return claims (judgement.claims); });
        model::Task task (judgement.problem, "OPTIMIZER 1");
        EXPECT_TRUE (optimized (task).ends_with (judgement.by_default));
        task.set ("WARM_START 0 " + std::string (judgement.parameter) + " 1e-3");
        EXPECT_TRUE (optimized (task, 1e-3).ends_with (judgement.loose));
    }
}

// The point of an optimum is good whatever was said of its basis, whose keys are unknown then.
TEST (Scripted, WrongBasesAreNotHandedOut)
{
    constexpr std::int32_t basic = KLV_SK_BASIC, lower = KLV_SK_LOWER, upper = KLV_SK_UPPER;
    struct Basis {
        const char* what;
        std::vector<std::int32_t> column, row;
    };
    for (const Basis& basis : {
             Basis{"none", {}, {}},
             {"too many basic", {basic, basic}, {lower}},
             {"none basic", {lower, lower}, {lower}},
             {"keys that do not exist", {77, -1}, {basic}},
             {"not where the point is", {lower, basic}, {lower}},
             {"at a bound that does not exist", {basic, lower}, {upper}},
             {"wrong sizes", {basic}, {lower, lower}},
         }) {
        SCOPED_TRACE (basis.what);
        const scripted::InFront front ([&] (auto&, auto&, auto&) {
            klv::Claims made = claims (right);
            made.column_key = basis.column;
            made.row_key = basis.row;
            return made;
        });
        const model::Task task (small, "OPTIMIZER 1");
        EXPECT_EQ (optimized (task), optimal);
        EXPECT_EQ (model::slot (task, KLV_SOL_BAS).skx, std::vector (2, std::int32_t{KLV_SK_UNKNOWN}));
        EXPECT_EQ (model::slot (task, KLV_SOL_BAS).skc, std::vector (1, std::int32_t{KLV_SK_UNKNOWN}));
    }
}

TEST (Scripted, FailuresBecomeCodesAndTheNextCallWorks)
{
    struct Failure {
        void (*fail) ();
        const char *code, *message;
    };
    for (const Failure& failure :
         {Failure{[] { throw std::runtime_error ("pivot of size zero"); }, "ENGINE_FAILED", "size zero"},
          {[] { throw 42; }, "ENGINE_FAILED", "unknown exception"},
          {[] { throw std::bad_alloc (); }, "OUT_OF_MEMORY", "memory"}}) {
        const model::Task task (small);
        const scripted::InFront front ([&, run = 0] (auto&, auto&, auto&) mutable {
            if (run++ < (failure.code == std::string ("ENGINE_FAILED") ? all : 1))
                failure.fail ();
            return claims (right);
        });
        EXPECT_EQ (optimized (task), failure.code);
        EXPECT_NE (task.last_error ().find (failure.message), std::string::npos) << task.last_error ();
        EXPECT_EQ (optimized (task), "OK itr OPTIMAL bas OPTIMAL");
    }
}

// Its methods know no end of their own on some problems: one that gains nothing makes way, however long the log gets.
TEST (Scripted, AnInteriorRunThatGetsNowhereIsGivenUp)
{
    const scripted::InFront front ([] (auto& job, auto& stop, auto& events) {
        klv::Progress now{.caller = KLV_CALLER_INTERIOR_POINT, .has_primal = true, .has_dual = true};
        while (klv::is_interior (job.method) && !stop) {
            ++now.iterations;
            events.step (now);
            std::this_thread::sleep_for (std::chrono::milliseconds (1));
        }
        return claims (stop ? "stopped" : right);
    });
    for (const char* settings : {"OPTIMIZER 3", "OPTIMIZER 3 MAX_THREADS 1", "OPTIMIZER 3 INTPNT_BASIS 0"}) {
        const model::Task task (small, settings);
        const auto began = klv::Clock::now ();
        EXPECT_TRUE (optimized (task).starts_with ("OK itr OPTIMAL")) << settings;
        EXPECT_LT (klv::seconds_between (began, klv::Clock::now ()), 5);
    }
}

TEST (Scripted, AnEngineThatCannotBeLoadedIsNamed)
{
    scripted::InFront front (nullptr);
    front.engine ().why_not = "the file /nowhere/engine.so can't be loaded";
    const auto behind = std::exchange (klv::engines (), {klv::engines ().front ()});
    const model::Task task (small);
    EXPECT_EQ (optimized (task), "ENGINE_MISSING");
    EXPECT_NE (task.last_error ().find ("/nowhere/engine.so"), std::string::npos) << task.last_error ();
    klv::engines () = behind;
}

// ---- The race of the automatic optimiser: who joins when, who wins, and that the loser is not waited for

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
                const char* answer = job.method == klv::Method::crossover ? race.interior : race.simplex;
                ++*running;    // both are at it before one may answer, the right one last
                while (*running < 2)
                    std::this_thread::sleep_for (std::chrono::milliseconds (1));
                if (answer == right && race.rejected > 0)
                    std::this_thread::sleep_for (std::chrono::milliseconds (100));
                if (answer == nullptr)
                    scripted::Gate::wait_for (stop);
                return claims (answer != nullptr ? answer : "stopped");
            });
        const model::Task task (small, at_once);
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
        const model::Task task (c.problem, c.settings);
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
            return claims (job.method == klv::Method::crossover ? "stopped x 5 5 y 1 d 0 1" : "stopped");
        });
        model::Task task (small, at_once + std::string (limited ? "TIME_LIMIT 0.1" : ""));
        task.on_progress ([limited, calls = 0] (std::uint32_t) mutable { return !limited && ++calls > 6; });
        EXPECT_EQ (KLV_optimize (task), limited ? KLV_RES_TIME_LIMIT : KLV_RES_USER_STOP);
        EXPECT_EQ (stopped, 2);
        // The point is what one of them knew.
        EXPECT_EQ (model::slot (task, KLV_SOL_ITR).xx, (model::Values{5, 5}));
        EXPECT_FALSE (model::slot (task, KLV_SOL_BAS).defined);
    }
}

}
