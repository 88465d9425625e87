// Memory that runs out on the calling thread in the middle of an optimisation: a code, and a task that can go on.

#include "tests/library/model.h"
#include "tests/support/failing_new.h"

#include <ostream>

using model::inf;
using model::Model;

namespace {

struct Way {
    const char* name;
    Model problem;
    int optimizer;
    int slot;
};

std::ostream& operator<< (std::ostream& stream, const Way& way)
{
    return stream << way.name;
}

class OptimizeMemory : public testing::TestWithParam<Way> {};

TEST_P (OptimizeMemory, MayRunOutAtEachAllocation)
{
    const Way& way = GetParam ();
    model::Task task (way.problem);
    task.set ("KLV_IPAR_OPTIMIZER", way.optimizer);
    ASSERT_EQ (KLV_optimize (task), KLV_RES_OK);
    const model::Slot expected = model::slot (task, way.slot);
    int failures = 0;
    for (std::size_t n = 0;; ++n) {
        SCOPED_TRACE (n);
        KLVrescode_t code = -1;
        bool failed = false;
        {
            const FailingNew failing (n);
            code = KLV_optimize (task);
            failed = failing.has_failed ();
        }
        if (!failed) {
            EXPECT_EQ (code, KLV_RES_OK);
            break;
        }
        ++failures;
        EXPECT_EQ (code, KLV_RES_OUT_OF_MEMORY);
        ASSERT_EQ (KLV_optimize (task), KLV_RES_OK);
        EXPECT_EQ (model::slot (task, way.slot).solution, expected.solution);
        EXPECT_EQ (model::slot (task, way.slot).xx, expected.xx);
    }
    EXPECT_GT (failures, 10);
}

const Model linear = {.cost = {1, 1},
                      .rows = {{1, 2}, {3, 1}},
                      .row_bounds = {{4, inf}, {3, inf}},
                      .bounds = {{0, inf}, {0, inf}}};
const Model contradiction = {.cost = {1, 1},
                             .rows = {{1, 1}, {1, 1}},
                             .row_bounds = {{3, inf}, {-inf, 2}},
                             .bounds = {{0, 9}, {0, 9}}};
const Model whole = {.cost = {1, 1},
                     .rows = {{2, 3}},
                     .row_bounds = {{7, inf}},
                     .bounds = {{0, 9}, {0, 9}},
                     .integer = {true, true}};

INSTANTIATE_TEST_SUITE_P (
    Each, OptimizeMemory,
    testing::Values (Way{"simplex", linear, KLV_OPTIMIZER_DUAL_SIMPLEX, KLV_SOL_BAS},
                     Way{"interior point and its finish", linear, KLV_OPTIMIZER_INTERIOR_POINT, KLV_SOL_BAS},
                     Way{"a certificate", contradiction, KLV_OPTIMIZER_AUTOMATIC, KLV_SOL_BAS},
                     Way{"whole numbers", whole, KLV_OPTIMIZER_AUTOMATIC, KLV_SOL_INT}));

}
