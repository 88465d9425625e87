// Small problems with whole numbers: each row names the fault that it would catch.
#include "tests/library/model.h"

#include <ostream>

using model::inf;
using model::Model;

namespace {

struct Shape {
    const char* fault;
    Model problem;
    std::int32_t prosta, solsta;
    double optimum = 0;
};

std::ostream& operator<< (std::ostream& stream, const Shape& shape)
{
    return stream << shape.fault;
}

std::vector<Shape> shapes ()
{
    return {
        {"bounds that are not whole, without a row",
         {.cost = {1, -1}, .bounds = {{0.2, 9}, {0, 3.7}}, .integer = {true, true}},
         KLV_PRO_PRIMAL_FEASIBLE,
         KLV_SOLSTA_INTEGER_OPTIMAL,
         -2},
        {"no whole number between the bounds",
         {.cost = {1}, .bounds = {{0.2, 0.8}}, .integer = {true}},
         KLV_PRO_INFEASIBLE_BY_SEARCH,
         KLV_SOLSTA_UNKNOWN},
        {"no whole solution of an equation",
         {.cost = {1, 1},
          .rows = {{2, 4}},
          .row_bounds = {{7, 7}},
          .bounds = {{0, 9}, {0, 9}},
          .integer = {true, true}},
         KLV_PRO_INFEASIBLE_BY_SEARCH,
         KLV_SOLSTA_UNKNOWN},
        {"a relaxation that is infeasible is a proof",
         {.cost = {1, 1},
          .rows = {{1, 1}, {1, 1}},
          .row_bounds = {{3, inf}, {-inf, 2}},
          .bounds = {{0, 9}, {0, 9}},
          .integer = {true, true}},
         KLV_PRO_PRIMAL_INFEASIBLE,
         KLV_SOLSTA_UNKNOWN},
        {"crossed bounds",
         {.cost = {1}, .rows = {{1}}, .row_bounds = {{0, 9}}, .bounds = {{2, 1}}, .integer = {true}},
         KLV_PRO_PRIMAL_INFEASIBLE,
         KLV_SOLSTA_UNKNOWN},
        {"whole numbers that run away",
         {.cost = {-1, 1},
          .rows = {{1, -1}},
          .row_bounds = {{0.5, inf}},
          .bounds = {{0, inf}, {0, 3}},
          .integer = {true, true}},
         KLV_PRO_DUAL_INFEASIBLE,
         KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE,
         -1},
        {"only one of two is whole, maximising",
         {.cost = {1, 1},
          .rows = {{2, 2}},
          .row_bounds = {{-inf, 7}},
          .bounds = {{0, 1.5}, {0, 9}},
          .integer = {true, false},
          .maximize = true,
          .constant = 0.5},
         KLV_PRO_PRIMAL_FEASIBLE,
         KLV_SOLSTA_INTEGER_OPTIMAL,
         4},
    };
}

class IntegerShapes : public testing::TestWithParam<Shape> {};

TEST_P (IntegerShapes, EndRight)
{
    const Shape& shape = GetParam ();
    for (const int presolve : {KLV_PRESOLVE_ON, KLV_PRESOLVE_OFF}) {
        model::Task task (shape.problem);
        task.set ("KLV_IPAR_PRESOLVE", presolve);
        EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
        const model::Slot found = model::slot (task, KLV_SOL_INT);
        ASSERT_TRUE (found.defined);
        EXPECT_EQ (found.problem, shape.prosta);
        EXPECT_EQ (found.solution, shape.solsta);
        EXPECT_NEAR (found.primal, shape.optimum, 1e-6);
        EXPECT_FALSE (model::slot (task, KLV_SOL_BAS).defined);
        if (found.solution == KLV_SOLSTA_INTEGER_OPTIMAL)
            model::expect_feasible (model::stated (task), found, 1e-6);
        if (found.solution == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE)
            model::expect_unbounded (task, KLV_SOL_INT);
    }
}

INSTANTIATE_TEST_SUITE_P (All, IntegerShapes, testing::ValuesIn (shapes ()));

}
