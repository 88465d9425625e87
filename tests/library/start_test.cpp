// Starts: what a task holds shortens the next optimisation, and never changes what it comes to.
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

namespace {

using model::put_start;
using model::Task;
using model::Values;

constexpr const char* both = "OK itr OPTIMAL bas OPTIMAL";
constexpr double nan = std::numeric_limits<double>::quiet_NaN ();

Values in_part (Values values, std::ptrdiff_t unknown)
{
    std::fill_n (values.begin (), unknown, nan);
    return values;
}

TEST (Start, FromTheLastSolutionTakesNoIteration)
{
    for (const char* file : {"lp/afiro.mps", "lp/adlittle.mps", "lp/sc50a.mps"}) {
        SCOPED_TRACE (file);
        Task task (file);
        const auto expect_run = [&] (const std::string& result, int start) {
            EXPECT_EQ (model::optimized (task), result);
            EXPECT_EQ (task.information ("START"), start);
            return task.information ("SIMPLEX_ITERATIONS");
        };
        expect_run (both, 0);
        const model::Slot first = model::slot (task, KLV_SOL_BAS);
        EXPECT_EQ (expect_run (both, 1), 0);
        // Without the basis the point leads there in fewer steps than nothing.
        task.set ("WARM_START 0");
        const double cold = expect_run (both, 0);
        task.set ("WARM_START 1");
        ASSERT_EQ (put_start (task, KLV_SOL_BAS, {}, {}, first.xx, first.y), 0);
        EXPECT_LT (expect_run (both, 2), cold);
        // Interior point can't start, but sees an answer.
        task.set ("OPTIMIZER 3 INTPNT_BASIS 0");
        expect_run ("OK itr OPTIMAL", 2);
        EXPECT_EQ (task.information ("INTPNT_ITERATIONS"), 0);
    }
}

TEST (Start, AfterAChangeLeadsToTheNewAnswer)
{
    for (const auto& [upper, cost] : {std::pair{3.0, 1.0}, {4.0, 5.0}, {-1.0, 1.0}})
        for (const char* optimizer : {"OPTIMIZER 2", "OPTIMIZER 0", "OPTIMIZER 1", "OPTIMIZER 3"}) {
            SCOPED_TRACE (testing::Message () << upper << ' ' << cost << ' ' << optimizer);
            Task task ("max 3 1 2; 0.. 0..3 0..; 1 1 1 in ..4; 1 3 0 in 1..6", optimizer);
            ASSERT_EQ (KLV_optimize (task), 0);
            const std::int32_t key = KLV_BK_UP;
            ASSERT_EQ (KLV_putconboundslice (task, 0, 1, &key, &upper, &upper), 0);
            ASSERT_EQ (KLV_putcslice (task, 1, 2, &cost), 0);
            const std::string told = model::optimized (task);
            EXPECT_TRUE (told.ends_with (upper < 0 ? "PRIMAL_INFEASIBLE_CERTIFICATE" : "bas OPTIMAL"));
        }
}

TEST (Start, ThatIsBadCostsTimeOnly)
{
    std::vector<std::int32_t> one (30, 3);
    one[7] = 1;
    const struct {
        const char* what;
        std::vector<std::int32_t> skc, skx;
        Values xx, y;
        int start;
    } cases[] = {
        {"all are basic", std::vector (20, 1), std::vector (30, 1), {}, {}, 1},
        {"one is basic", {}, one, {}, {}, 1},
        {"none is basic", std::vector (20, 4), std::vector (30, 5), {}, {}, 0},
        {"far away", {}, {}, Values (30, 1e12), Values (20, -1e12), 2},
        {"infeasible", {}, {}, Values (30, -1), {}, 2},
        {"in part", {}, {}, in_part (Values (30, 0.5), 1), {}, 0},
        {"duals alone", {}, {}, {}, Values (20, 1), 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.what);
        Task task (model::dense (20, 30));
        ASSERT_EQ (put_start (task, KLV_SOL_BAS, c.skc, c.skx, c.xx, c.y), 0);
        EXPECT_EQ (model::optimized (task), both);
        EXPECT_EQ (task.information ("START"), c.start);
    }
}

TEST (Start, OfAnIntegerSearchMayBeInPart)
{
    const std::string problem = model::knapsack (4, 20);
    Task cold (problem);
    ASSERT_EQ (KLV_optimize (cold), 0);
    const model::Slot best = model::slot (cold, KLV_SOL_INT);
    for (const auto& [xx, start] : {std::pair{best.xx, 3},
                                    {in_part (best.xx, 10), 3},
                                    {Values (20, 0.5), 3},
                                    {Values (20, 1), 3},    // infeasible
                                    {Values (20, nan), 0}}) {
        SCOPED_TRACE (testing::PrintToString (xx));
        Task task (problem);
        ASSERT_EQ (put_start (task, KLV_SOL_INT, {}, {}, xx), 0);
        EXPECT_EQ (model::optimized (task), "OK int INTEGER_OPTIMAL");
        EXPECT_EQ (task.information ("START"), start);
        EXPECT_EQ (model::slot (task, KLV_SOL_INT).primal, best.primal);
    }
}

// An engine that a start leads astray gets the problem again without it.
TEST (Start, ThatLeadsNowhereIsForgotten)
{
    scripted::InFront front ([] (auto& job, auto&, auto&) {
        return scripted::claims (job.start ? "optimal x 0 0 y 1 d 0 1" : scripted::right);
    });
    Task task (scripted::small, "OPTIMIZER 1");
    ASSERT_EQ (put_start (task, KLV_SOL_BAS, {}, {}, {1, 1}), 0);
    EXPECT_EQ (model::optimized (task), "OK bas OPTIMAL");
    EXPECT_EQ (front.engine ().runs, 2);
    EXPECT_EQ (task.information ("START"), 0);
}

}
