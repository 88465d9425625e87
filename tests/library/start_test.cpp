// Starts: what a task holds shortens the next optimisation, and never changes what it comes to.
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

namespace {

using model::Task;
using model::Values;

constexpr const char* both = "OK itr OPTIMAL bas OPTIMAL";
constexpr double nan = std::numeric_limits<double>::quiet_NaN ();

// Keys and values as far as they are given.
KLVrescode_t put (Task& task, std::int32_t which, const std::vector<std::int32_t>& skc,
                  const std::vector<std::int32_t>& skx, const Values& xx, const Values& y = {})
{
    const auto data = [] (const auto& values) { return values.empty () ? nullptr : values.data (); };
    return KLV_putsolutionnew (task, which, data (skc), data (skx), nullptr, nullptr, data (xx), data (y),
                               nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}

TEST (Start, FromTheLastSolutionTakesNoIteration)
{
    for (const char* file : {"afiro", "adlittle", "sc50a"}) {
        SCOPED_TRACE (file);
        Task task;
        ASSERT_EQ (KLV_readdata (task, (std::string (KALVO_TEST_DATA "/lp/") + file + ".mps").c_str ()), 0);
        ASSERT_EQ (KLV_optimize (task), 0);
        const model::Slot first = model::slot (task, KLV_SOL_BAS);
        EXPECT_EQ (task.information ("START"), 0);
        EXPECT_EQ (model::optimized (task), both);
        EXPECT_EQ (task.information ("START"), 1);
        EXPECT_EQ (task.information ("SIMPLEX_ITERATIONS"), 0);

        // Without the basis the point leads there in fewer steps than nothing.
        task.set ("WARM_START 0");
        ASSERT_EQ (KLV_optimize (task), 0);
        EXPECT_EQ (task.information ("START"), 0);
        const double cold = task.information ("SIMPLEX_ITERATIONS");
        task.set ("WARM_START 1");
        ASSERT_EQ (put (task, KLV_SOL_BAS, {}, {}, first.xx, first.y), 0);
        EXPECT_EQ (model::optimized (task), both);
        EXPECT_EQ (task.information ("START"), 2);
        EXPECT_LT (task.information ("SIMPLEX_ITERATIONS"), cold);

        // Interior point can't start, but sees an answer.
        task.set ("OPTIMIZER 3 INTPNT_BASIS 0");
        EXPECT_EQ (model::optimized (task), "OK itr OPTIMAL");
        EXPECT_EQ (task.information ("START"), 2);
        EXPECT_EQ (task.information ("INTPNT_ITERATIONS"), 0);
    }
}

TEST (Start, AfterAChangeLeadsToTheNewAnswer)
{
    const struct {
        const char* what;
        double upper, cost;
    } changes[] = {{"a row", 3, 1}, {"a cost", 4, 5}, {"both", 3, 5}, {"no point is left", -1, 1}};
    for (const auto& change : changes)
        for (const char* optimizer : {"OPTIMIZER 2", "OPTIMIZER 0", "OPTIMIZER 1", "OPTIMIZER 3"}) {
            SCOPED_TRACE (std::string (change.what) + ", " + optimizer);
            Task task ("max 3 1 2; 0.. 0..3 0..; 1 1 1 in ..4; 1 3 0 in 1..6", optimizer);
            ASSERT_EQ (KLV_optimize (task), 0);
            const std::int32_t key = KLV_BK_UP;
            ASSERT_EQ (KLV_putconboundslice (task, 0, 1, &key, &change.upper, &change.upper), 0);
            ASSERT_EQ (KLV_putcslice (task, 1, 2, &change.cost), 0);
            const std::string told = model::optimized (task);
            EXPECT_TRUE (
                told.ends_with (change.upper < 0 ? "bas PRIMAL_INFEASIBLE_CERTIFICATE" : "bas OPTIMAL"));
        }
}

TEST (Start, ThatIsBadCostsTimeOnly)
{
    const model::Model problem = model::dense (20, 30);
    Task cold (problem);
    ASSERT_EQ (KLV_optimize (cold), 0);
    const double optimum = model::slot (cold, KLV_SOL_BAS).primal;
    const auto keys = [] (std::size_t count, std::int32_t key) {
        return std::vector<std::int32_t> (count, key);
    };
    const struct {
        const char* what;
        std::vector<std::int32_t> skc, skx;
        Values xx, y = {};
        int start;
    } cases[] = {
        {"all are basic", keys (20, 1), keys (30, 1), {}, {}, 1},
        {"one is basic",
         {},
         [&] {
             auto k = keys (30, 3);
             k[7] = 1;
             return k;
         }(),
         {},
         {},
         1},
        {"none is basic", keys (20, 4), keys (30, 5), {}, {}, 0},
        {"far away", {}, {}, Values (30, 1e12), Values (20, -1e12), 2},
        {"infeasible", {}, {}, Values (30, -1), {}, 2},
        {"in part",
         {},
         {},
         [&] {
             Values x (30, 0.5);
             x[3] = nan;
             return x;
         }(),
         {},
         0},
        {"duals alone", {}, {}, {}, Values (20, 1), 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.what);
        Task task (problem);
        ASSERT_EQ (put (task, KLV_SOL_BAS, c.skc, c.skx, c.xx, c.y), 0);
        EXPECT_EQ (model::optimized (task), both);
        EXPECT_EQ (task.information ("START"), c.start);
        EXPECT_NEAR (model::slot (task, KLV_SOL_BAS).primal, optimum, 1e-6 * optimum);
    }
}

TEST (Start, OfAnIntegerSearchMayBeInPart)
{
    const model::Model problem = model::knapsack (4, 20);
    Task cold (problem);
    ASSERT_EQ (KLV_optimize (cold), 0);
    const model::Slot best = model::slot (cold, KLV_SOL_INT);
    Values part = best.xx, halves (20, 0.5);
    for (std::size_t j = 0; j < 10; ++j)
        part[j] = nan;
    const struct {
        const char* what;
        Values xx;
        int start;
    } cases[] = {{"the answer", best.xx, 3},
                 {"a half of it", part, 3},
                 {"not whole", halves, 3},
                 {"infeasible", Values (20, 1), 3},
                 {"nothing is known", Values (20, nan), 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE (c.what);
        Task task (problem);
        ASSERT_EQ (put (task, KLV_SOL_INT, {}, {}, c.xx), 0);
        EXPECT_EQ (model::optimized (task), "OK int INTEGER_OPTIMAL");
        EXPECT_EQ (task.information ("START"), c.start);
        EXPECT_EQ (model::slot (task, KLV_SOL_INT).primal, best.primal);
    }
}

TEST (Start, IsRefusedWhereItIsNoSolution)
{
    Task task ("min 1 1; 0.. 0..; 1 1 in 1..");
    const KLVrescode_t key = KLV_RES_STATUS_KEY_UNKNOWN, infinite = KLV_RES_VALUE_NOT_FINITE;
    EXPECT_EQ (put (task, KLV_SOL_BAS, {7}, {}, {}), key);
    EXPECT_EQ (put (task, KLV_SOL_BAS, {}, {1, -1}, {}), key);
    EXPECT_EQ (task.last_error (), "Entry 2 of skx is -1, which is no status key.");
    EXPECT_EQ (put (task, KLV_SOL_ITR, {}, {}, {1, model::inf}), infinite);
    EXPECT_EQ (put (task, KLV_SOL_ITR, {}, {}, {}, {-model::inf}), infinite);
    EXPECT_EQ (put (task, 3, {}, {}, {}), KLV_RES_INDEX_RANGE);
    EXPECT_FALSE (model::slot (task, KLV_SOL_BAS).defined || model::slot (task, KLV_SOL_ITR).defined);
}

// An engine that a start leads astray gets the problem again without it.
TEST (Start, ThatLeadsNowhereIsForgotten)
{
    scripted::InFront front ([] (auto& job, auto&, auto&) {
        return scripted::claims (job.start ? "optimal x 0 0 y 1 d 0 1" : scripted::right);
    });
    Task task (scripted::small, "OPTIMIZER 1");
    ASSERT_EQ (put (task, KLV_SOL_BAS, {}, {}, {1, 1}), 0);
    EXPECT_EQ (model::optimized (task), "OK bas OPTIMAL");
    EXPECT_EQ (front.engine ().runs, 2);
    EXPECT_EQ (task.information ("START"), 0);
}

}
