// Tiny problems of every odd shape: each row names the fault that it would catch.
#include "tests/library/model.h"

namespace {

enum class Ends { optimal, infeasible, unbounded };

struct Shape {
    const char *what, *problem;
    Ends ends;
    double optimum = 0;
};

const Shape shapes[] = {
    {"nothing but a constant", "min +-3.5", Ends::optimal, -3.5},
    {"constraints without variables that hold", "min;; in -1..1; in ..", Ends::optimal},
    {"one that can't hold below", "min;; in 1..", Ends::infeasible},
    {"one that can't hold above, maximising", "max;; in ..-2", Ends::infeasible},
    {"variables without constraints", "min 1 -1 0; -2..5 -2..5 ..", Ends::optimal, -7},
    {"the same, unbounded", "min 1; ..4", Ends::unbounded},
    {"the same, unbounded, maximising", "max 0 3; .. 0..", Ends::unbounded},
    {"an optimum of 0 at no bound", "min 0 0; .. ..; 1 1 in 2..2", Ends::optimal},
    {"a constraint without entries that holds", "min 1; 0..; 1 in 2..; 0 in -1..1", Ends::optimal, 2},
    {"one that can't hold", "min 1; 0..; 1 in 2..; 0 in 1..3", Ends::infeasible},
    {"a column without entries that leaves", "min 1 -1; 0.. 0..; 1 0 in 2..", Ends::unbounded},
    {"one at its bound", "min 1 -1; 0.. 0..9; 1 0 in 2..", Ends::optimal, -7},
    {"a free row", "min 1 1; 0.. 0..; 1 -1 in ..; 1 2 in 3..", Ends::optimal, 1.5},
    {"equal rows", "min 2 3; 0.. 0..; 1 1 in 4..; 1 1 in 4..; 2 2 in 8..20", Ends::optimal, 8},
    {"equal rows that contradict each other", "min 2 3; 0.. 0..; 1 1 in 4..4; 1 1 in 5..5", Ends::infeasible},
    {"fixed variables only", "min 2 3; 1..1 2..2; 1 1 in 0..10", Ends::optimal, 8},
    {"fixed variables that break a constraint", "min 2 3; 1..1 2..2; 1 1 in 0..2", Ends::infeasible},
    {"an equation with free variables", "min 1 2; .. ..; 1 2 in 3..3", Ends::optimal, 3},
    {"unbounded along an equation", "min 1 1; .. ..; 1 2 in 3..3", Ends::unbounded},
    {"both infeasible and unbounded", "min -1 0; 0.. 0..1; 0 1 in 2..", Ends::infeasible},
    {"maximising a range", "max 3 2 +1; 0.. 0..; 1 1 in 1..4; 1 0 in ..3", Ends::optimal, 12},
    {"infeasible, maximising", "max 3 2; 0.. 0..; 1 1 in ..1; 1 1 in 2..", Ends::infeasible},
    {"unbounded, maximising", "max 1 1; 0.. 0..; 1 -1 in -2..2", Ends::unbounded},
    {"negative upper bounds", "min -1 -1; ..-2 ..-3; 1 1 in -10..", Ends::optimal, 5},
    {"a degenerate vertex", "min -1 -1; 0.. 0..; 1 0 in ..1; 0 1 in ..1; 1 1 in ..2", Ends::optimal, -2},
    {"crossed bounds of a variable", "min 1; 2..1; 1 in 0..1", Ends::infeasible},
    {"crossed bounds of a constraint, maximising", "max 1; 0..1; 1 in 3..1", Ends::infeasible},
    {"crossed within the tolerance", "min 1; 0..3; 1 in 1..0.99999999995", Ends::optimal, 1},
    {"a bound of 1e25 that does not matter", "min 1; -1e25..1e25; 1 in 2..1e25", Ends::optimal, 2},
    {"an entry of 1e-10 that matters", "min 1; 0..; 1e-10 in 1..", Ends::optimal, 1e10},
    {"costs of 1e12", "min 1e12 2e12; 0.. 0..; 1 1 in 1..", Ends::optimal, 1e12},
};

TEST (Shapes, EndRightWithEveryOptimizer)
{
    for (const Shape& shape : shapes)
        for (int optimizer = KLV_OPTIMIZER_PRIMAL_SIMPLEX; optimizer <= KLV_OPTIMIZER_MIXED_INTEGER;
             ++optimizer) {
            SCOPED_TRACE (std::string (shape.what) + ", optimizer " + std::to_string (optimizer));
            const model::Task task (shape.problem, "OPTIMIZER " + std::to_string (optimizer));
            EXPECT_EQ (KLV_optimize (task), 0) << task.last_error ();
            const bool simplex = optimizer <= KLV_OPTIMIZER_DUAL_SIMPLEX;
            EXPECT_EQ (model::slot (task, KLV_SOL_ITR).defined, !simplex);
            EXPECT_FALSE (model::slot (task, KLV_SOL_INT).defined);
            for (int which = simplex ? KLV_SOL_BAS : KLV_SOL_ITR; which <= KLV_SOL_BAS; ++which) {
                if (shape.ends == Ends::infeasible)
                    model::expect_infeasible (task, which);
                else if (shape.ends == Ends::unbounded)
                    model::expect_unbounded (task, which);
                else {
                    model::expect_optimal (task, which);
                    EXPECT_NEAR (model::slot (task, which).primal, shape.optimum,
                                 1e-6 * (1 + std::abs (shape.optimum)));
                }
            }
        }
}

struct IntegerShape {
    const char *what, *problem;
    int problem_status, solution_status;
    double optimum = 0;
};

const IntegerShape integer_shapes[] = {
    {"bounds that are not whole, without a row", "min 1 -1; 0.2..9i 0..3.7i", KLV_PRO_PRIMAL_FEASIBLE,
     KLV_SOLSTA_INTEGER_OPTIMAL, -2},
    {"no whole number between the bounds", "min 1; 0.2..0.8i", KLV_PRO_INFEASIBLE_BY_SEARCH,
     KLV_SOLSTA_UNKNOWN},
    {"no whole solution of an equation", "min 1 1; 0..9i 0..9i; 2 4 in 7..7", KLV_PRO_INFEASIBLE_BY_SEARCH,
     KLV_SOLSTA_UNKNOWN},
    {"a relaxation that is infeasible is a proof", "min 1 1; 0..9i 0..9i; 1 1 in 3..; 1 1 in ..2",
     KLV_PRO_PRIMAL_INFEASIBLE, KLV_SOLSTA_UNKNOWN},
    {"crossed bounds", "min 1; 2..1i; 1 in 0..9", KLV_PRO_PRIMAL_INFEASIBLE, KLV_SOLSTA_UNKNOWN},
    {"whole numbers that run away", "min -1 1; 0..i 0..3i; 1 -1 in 0.5..", KLV_PRO_DUAL_INFEASIBLE,
     KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE, -1},
    {"only one of two is whole, maximising", "max 1 1 +0.5; 0..1.5i 0..9; 2 2 in ..7",
     KLV_PRO_PRIMAL_FEASIBLE, KLV_SOLSTA_INTEGER_OPTIMAL, 4},
};

TEST (Shapes, OfIntegerProblemsEndRight)
{
    for (const IntegerShape& shape : integer_shapes)
        for (const char* settings : {"PRESOLVE 1", "PRESOLVE 0"}) {
            SCOPED_TRACE (std::string (shape.what) + settings);
            const model::Task task (shape.problem, settings);
            EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
            const model::Slot found = model::slot (task, KLV_SOL_INT);
            ASSERT_TRUE (found.defined);
            EXPECT_FALSE (model::slot (task, KLV_SOL_BAS).defined);
            EXPECT_EQ (found.problem, shape.problem_status);
            EXPECT_EQ (found.solution, shape.solution_status);
            EXPECT_NEAR (found.primal, shape.optimum, 1e-6);
            if (found.solution == KLV_SOLSTA_INTEGER_OPTIMAL)
                model::expect_feasible (model::stated (task), found);
            if (found.solution == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE)
                model::expect_unbounded (task, KLV_SOL_INT);
        }
}

// What an engine would take for something else is refused by name.
TEST (Shapes, BeyondEveryOptimizerAreRefused)
{
    for (const auto& [problem, message] :
         {std::pair{"min 1 -1e20; 0..1 0..1; 1 1 in 1..", "cost of variable 2"},
          {"min 1; 0..1; 1e15 in 1..", "constraint 1"},
          {"min 1; 1e20..; 1 in 1..", "variable 1"},
          {"min 1; 0..; 1 in ..-1e20", "constraint 1"}}) {
        const model::Task task (problem);
        EXPECT_EQ (KLV_optimize (task), KLV_RES_TOO_LARGE) << problem;
        EXPECT_NE (task.last_error ().find (message), std::string::npos) << task.last_error ();
        EXPECT_FALSE (model::slot (task, KLV_SOL_BAS).defined);
    }
}

}
