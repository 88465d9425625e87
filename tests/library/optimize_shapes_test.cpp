// Tiny problems of every odd shape: each row names the fault that it would catch.

#include "tests/library/model.h"

#include <ostream>

namespace {

using model::inf;
using model::Model;
using model::Range;

enum class Ends { optimal, infeasible, unbounded };

struct Shape {
    const char* name;
    Model problem;
    Ends ends;
    double optimum = 0;
};

std::ostream& operator<< (std::ostream& out, const Shape& shape)
{
    return out << shape.name;
}

std::vector<Shape> shapes ()
{
    const Range free{}, positive{0, inf};
    return {
        {"nothing at all", {}, Ends::optimal, 0},
        {"nothing but a constant", {.constant = -3.5}, Ends::optimal, -3.5},
        {"constraints without variables that hold",
         {.rows = {{}, {}}, .row_bounds = {{-1, 1}, free}},
         Ends::optimal,
         0},
        {"a constraint without variables that can't hold below",
         {.rows = {{}}, .row_bounds = {{1, inf}}},
         Ends::infeasible},
        {"a constraint without variables that can't hold above, maximising",
         {.rows = {{}}, .row_bounds = {{-inf, -2}}, .maximize = true},
         Ends::infeasible},
        {"variables without constraints",
         {.cost = {1, -1, 0}, .bounds = {{-2, 5}, {-2, 5}, free}},
         Ends::optimal,
         -7},
        {"variables without constraints, unbounded", {.cost = {1}, .bounds = {{-inf, 4}}}, Ends::unbounded},
        {"variables without constraints, unbounded, maximising",
         {.cost = {0, 3}, .bounds = {free, positive}, .maximize = true},
         Ends::unbounded},
        {"a free variable without cost", {.cost = {0}, .bounds = {free}}, Ends::optimal, 0},
        {"an optimum of 0 at no bound",
         {.cost = {0, 0}, .rows = {{1, 1}}, .row_bounds = {{2, 2}}, .bounds = {free, free}},
         Ends::optimal,
         0},
        {"a constraint without entries that holds",
         {.cost = {1}, .rows = {{1}, {0}}, .row_bounds = {{2, inf}, {-1, 1}}, .bounds = {positive}},
         Ends::optimal,
         2},
        {"a constraint without entries that can't hold",
         {.cost = {1}, .rows = {{1}, {0}}, .row_bounds = {{2, inf}, {1, 3}}, .bounds = {positive}},
         Ends::infeasible},
        {"a column without entries that wants to leave",
         {.cost = {1, -1}, .rows = {{1, 0}}, .row_bounds = {{2, inf}}, .bounds = {positive, positive}},
         Ends::unbounded},
        {"a column without entries at its bound",
         {.cost = {1, -1}, .rows = {{1, 0}}, .row_bounds = {{2, inf}}, .bounds = {positive, {0, 9}}},
         Ends::optimal,
         -7},
        {"a free row",
         {.cost = {1, 1},
          .rows = {{1, -1}, {1, 2}},
          .row_bounds = {free, {3, inf}},
          .bounds = {positive, positive}},
         Ends::optimal,
         1.5},
        {"equal rows",
         {.cost = {2, 3},
          .rows = {{1, 1}, {1, 1}, {2, 2}},
          .row_bounds = {{4, inf}, {4, inf}, {8, 20}},
          .bounds = {positive, positive}},
         Ends::optimal,
         8},
        {"equal rows that contradict each other",
         {.cost = {2, 3},
          .rows = {{1, 1}, {1, 1}},
          .row_bounds = {{4, 4}, {5, 5}},
          .bounds = {positive, positive}},
         Ends::infeasible},
        {"fixed variables only",
         {.cost = {2, 3}, .rows = {{1, 1}}, .row_bounds = {{0, 10}}, .bounds = {{1, 1}, {2, 2}}},
         Ends::optimal,
         8},
        {"fixed variables that break a constraint",
         {.cost = {2, 3}, .rows = {{1, 1}}, .row_bounds = {{0, 2}}, .bounds = {{1, 1}, {2, 2}}},
         Ends::infeasible},
        {"an equation with free variables",
         {.cost = {1, 2}, .rows = {{1, 2}}, .row_bounds = {{3, 3}}, .bounds = {free, free}},
         Ends::optimal,
         3},
        {"unbounded along an equation",
         {.cost = {1, 1}, .rows = {{1, 2}}, .row_bounds = {{3, 3}}, .bounds = {free, free}},
         Ends::unbounded},
        {"both infeasible and unbounded",
         {.cost = {-1, 0}, .rows = {{0, 1}}, .row_bounds = {{2, inf}}, .bounds = {positive, {0, 1}}},
         Ends::infeasible},
        {"maximising a range",
         {.cost = {3, 2},
          .rows = {{1, 1}, {1, 0}},
          .row_bounds = {{1, 4}, {-inf, 3}},
          .bounds = {positive, positive},
          .maximize = true,
          .constant = 1},
         Ends::optimal,
         12},
        {"infeasible, maximising",
         {.cost = {3, 2},
          .rows = {{1, 1}, {1, 1}},
          .row_bounds = {{-inf, 1}, {2, inf}},
          .bounds = {positive, positive},
          .maximize = true},
         Ends::infeasible},
        {"unbounded, maximising",
         {.cost = {1, 1},
          .rows = {{1, -1}},
          .row_bounds = {{-2, 2}},
          .bounds = {positive, positive},
          .maximize = true},
         Ends::unbounded},
        {"negative upper bounds",
         {.cost = {-1, -1}, .rows = {{1, 1}}, .row_bounds = {{-10, inf}}, .bounds = {{-inf, -2}, {-inf, -3}}},
         Ends::optimal,
         5},
        {"a degenerate vertex",
         {.cost = {-1, -1},
          .rows = {{1, 0}, {0, 1}, {1, 1}},
          .row_bounds = {{-inf, 1}, {-inf, 1}, {-inf, 2}},
          .bounds = {positive, positive}},
         Ends::optimal,
         -2},
        {"crossed bounds of a variable",
         {.cost = {1}, .rows = {{1}}, .row_bounds = {{0, 1}}, .bounds = {{2, 1}}},
         Ends::infeasible},
        {"crossed bounds of a constraint, maximising",
         {.cost = {1}, .rows = {{1}}, .row_bounds = {{3, 1}}, .bounds = {{0, 1}}, .maximize = true},
         Ends::infeasible},
        {"bounds crossed by no more than the fixing tolerance",
         {.cost = {1}, .rows = {{1}}, .row_bounds = {{1, 1 - 5e-11}}, .bounds = {{0, 3}}},
         Ends::optimal,
         1},
        {"a bound of 1e25 that does not matter",
         {.cost = {1}, .rows = {{1}}, .row_bounds = {{2, 1e25}}, .bounds = {{-1e25, 1e25}}},
         Ends::optimal,
         2},
        {"an entry of 1e-10 that matters",
         {.cost = {1}, .rows = {{1e-10}}, .row_bounds = {{1, inf}}, .bounds = {positive}},
         Ends::optimal,
         1e10},
        {"costs of 1e12",
         {.cost = {1e12, 2e12}, .rows = {{1, 1}}, .row_bounds = {{1, inf}}, .bounds = {positive, positive}},
         Ends::optimal,
         1e12},
    };
}

class OptimizeShapes : public testing::TestWithParam<std::tuple<Shape, int>> {};

TEST_P (OptimizeShapes, ends_right)
{
    const auto& [shape, optimizer] = GetParam ();
    model::Task task (shape.problem);
    task.set ("KLV_IPAR_OPTIMIZER", optimizer);
    EXPECT_EQ (KLV_optimize (task), 0) << task.last_error ();
    const bool simplex = optimizer == KLV_OPTIMIZER_PRIMAL_SIMPLEX || optimizer == KLV_OPTIMIZER_DUAL_SIMPLEX;
    for (const int which : {KLV_SOL_ITR, KLV_SOL_BAS}) {
        SCOPED_TRACE (which == KLV_SOL_ITR ? "interior" : "basic");
        if (which == KLV_SOL_ITR && simplex) {
            EXPECT_FALSE (model::slot (task, which).defined);
            continue;
        }
        switch (shape.ends) {
        case Ends::optimal:
            model::expect_optimal (task, which);
            EXPECT_NEAR (model::slot (task, which).primal, shape.optimum,
                         1e-6 * (1 + std::abs (shape.optimum)));
            break;
        case Ends::infeasible:
            model::expect_infeasible (task, which);
            break;
        case Ends::unbounded:
            model::expect_unbounded (task, which);
            break;
        }
    }
    EXPECT_FALSE (model::slot (task, KLV_SOL_INT).defined);
}

INSTANTIATE_TEST_SUITE_P (
    Each, OptimizeShapes,
    testing::Combine (testing::ValuesIn (shapes ()),
                      testing::Values (KLV_OPTIMIZER_PRIMAL_SIMPLEX, KLV_OPTIMIZER_DUAL_SIMPLEX,
                                       KLV_OPTIMIZER_AUTOMATIC, KLV_OPTIMIZER_INTERIOR_POINT,
                                       KLV_OPTIMIZER_CONIC, KLV_OPTIMIZER_MIXED_INTEGER)));

}
