// Tiny problems of shapes that random ones do not have: each row names the fault that it would catch.
#include "tests/library/model.h"

namespace {

struct Shape {
    const char *what, *problem, *ends;
    double optimum = 0;
};

constexpr const char *optimal = "OPTIMAL", *infeasible = "PRIMAL_INFEASIBLE_CERTIFICATE",
                     *unbounded = "DUAL_INFEASIBLE_CERTIFICATE", *whole = "INTEGER_OPTIMAL";

const Shape shapes[] = {
    {"nothing but a constant", "min +-3.5", optimal, -3.5},
    {"constraints without variables that hold", "min;; in -1..1; in ..", optimal},
    {"one that can't hold, maximising", "max;; in ..-2", infeasible},
    {"unbounded without constraints, maximising", "max 0 3; .. 0..", unbounded, 1},
    {"equal rows that contradict each other", "min 2 3; 0.. 0..; 1 1 in =4; 1 1 in =5", infeasible},
    {"both infeasible and unbounded", "min -1 0; 0.. 0..1; 0 1 in 2..", infeasible},
    {"maximising with a constant", "max 3 2 +1; 0.. 0..; 1 1 in 1..4; 1 0 in ..3", optimal, 12},
    {"crossed bounds of a variable", "min 1; 2..1; 1 in 0..1", infeasible},
    {"crossed bounds of a constraint, maximising", "max 1; 0..1; 1 in 3..1", infeasible},
    {"crossed within the tolerance", "min 1; 0..3; 1 in 1..0.99999999995", optimal, 1},
    {"a bound of 1e25 that does not matter", "min 1; -1e25..1e25; 1 in 2..1e25", optimal, 2},
    {"costs of 1e12", "min 1e12 2e12; 0.. 0..; 1 1 in 1..", optimal, 1e12},
};

const Shape integer_shapes[] = {
    {"bounds that are not whole, without a row", "min 1 -1; 0.2..9i 0..3.7i", whole, -2},
    {"no whole number between the bounds", "min 1; 0.2..0.8i", "INFEASIBLE_BY_SEARCH"},
    {"no whole solution of an equation", "min 1 1; 0..9i 0..9i; 2 4 in =7", "INFEASIBLE_BY_SEARCH"},
    {"an infeasible relaxation", "min 1 1; 0..9i 0..9i; 1 1 in 3..; 1 1 in ..2", "PRIMAL_INFEASIBLE"},
    {"crossed bounds", "min 1; 2..1i; 1 in 0..9", "PRIMAL_INFEASIBLE"},
    {"whole numbers that run away", "min -1 1; 0..i 0..3i; 1 -1 in 0.5..", unbounded, -1},
    {"only one of two is whole", "max 1 1 +0.5; 0..1.5i 0..9; 2 2 in ..7", whole, 4},
};

// `slots` are those that the way fills with one answer.
void expect_end (const Shape& shape, const std::string& settings, const std::vector<std::int32_t>& slots)
{
    SCOPED_TRACE (shape.what + (", " + settings));
    const model::Task task (shape.problem, settings);
    std::string expected = "OK";
    for (const std::int32_t slot : slots)
        expected += std::vector{" itr ", " bas ", " int "}[static_cast<std::size_t> (slot)] +
                    std::string (shape.ends);
    EXPECT_EQ (model::optimized (task), expected) << task.last_error ();
    for (const std::int32_t slot : slots)
        EXPECT_NEAR (model::slot (task, slot).primal, shape.optimum, 1e-6 * (1 + std::abs (shape.optimum)));
}

TEST (Shapes, EndRightWithEveryOptimizer)
{
    for (const Shape& shape : shapes) {
        for (const char* simplex : {"OPTIMIZER 0", "OPTIMIZER 1"})
            expect_end (shape, simplex, {KLV_SOL_BAS});
        for (const char* other : {"OPTIMIZER 2", "OPTIMIZER 3", "OPTIMIZER 4", "OPTIMIZER 5"})
            expect_end (shape, other, {KLV_SOL_ITR, KLV_SOL_BAS});
    }
    for (const Shape& shape : integer_shapes)
        for (const char* settings : {"PRESOLVE 1", "PRESOLVE 0"})
            expect_end (shape, settings, {KLV_SOL_INT});
}

// What an engine would take for something else is refused by name.
TEST (Shapes, BeyondEveryOptimizerAreRefused)
{
    for (const auto& [problem, item] :
         {std::pair{"min 1 -1e20; 0..1 0..1; 1 1 in 1..", "the cost of variable 2"},
          {"min 1; 0..1; 1e15 in 1..", "entry of constraint 1"},
          {"min 1; 1e20..; 1 in 1..", "variable 1"},
          {"min 1; 0..; 1 in ..-1e20", "constraint 1"}}) {
        const model::Task task (problem);
        EXPECT_EQ (model::optimized (task), "TOO_LARGE");
        EXPECT_NE (task.last_error ().find (item), std::string::npos) << task.last_error ();
    }
}

}
