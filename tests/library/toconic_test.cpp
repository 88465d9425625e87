// Conversion to conic form: what comes out, that both forms have one optimum, and that what can't be converted stays as it was.
#include "tests/library/every_class.h"
#include "tests/support/failing_new.h"

namespace {

using model::Ints;
using model::Slot;
using model::Task;
using model::Values;

struct Case {
    const char *what, *problem;
    std::vector<double> objective = {},
                        constraints = {};    // row, column, value; constraint, row, column, value
    Ints cone = {};                          // a quadratic one
    bool matrix = false;                     // X of order 2: trace in the objective, -2 X21 in constraint 1
    std::vector<std::size_t> kept = {};      // constraints whose multipliers stay
    std::int32_t variables = 0, expressions = 0;    // of the conic form
    double optimum = 0;
};

const double root = std::sqrt (2.0);

void state (KLVtask_t task, const Case& c)
{
    std::vector<Ints> at (5);
    std::vector<Values> value (2);
    for (std::size_t k = 0; k < c.objective.size (); k += 3) {
        for (std::size_t i = 0; i < 2; ++i)
            at[i].push_back (static_cast<std::int32_t> (c.objective[k + i]));
        value[0].push_back (c.objective[k + 2]);
    }
    for (std::size_t k = 0; k < c.constraints.size (); k += 4) {
        for (std::size_t i = 0; i < 3; ++i)
            at[2 + i].push_back (static_cast<std::int32_t> (c.constraints[k + i]));
        value[1].push_back (c.constraints[k + 3]);
    }
    EXPECT_EQ (model::put_objective (task, at[0], at[1], value[0]), 0);
    EXPECT_EQ (model::put_constraints (task, at[2], at[3], at[4], value[1]), 0);
    if (!c.cone.empty ()) {
        EXPECT_EQ (model::append_cone (task, KLV_CONE_QUADRATIC, 0, c.cone), 0);
    }
    if (c.matrix) {
        const std::int32_t order = 2, zeros[] = {0, 0}, both[] = {0, 1};
        const double ones[] = {1, 1};
        EXPECT_EQ (KLV_appendbarvars (task, 1, &order), 0);
        EXPECT_EQ (KLV_putbarcblocktriplet (task, 2, zeros, both, both, ones), 0);
        EXPECT_EQ (model::put_bara (task, {0}, {0}, {1}, {0}, {-1}), 0);
    }
}

TEST (ToConic, BothFormsHaveOneOptimum)
{
    const Case cases[] = {
        {"an objective",
         "min -1 -1; .. ..; 1 1 in ..0.25",
         {0, 0, 2, 1, 0, 1, 1, 1, 2},
         {},
         {},
         false,
         {0},
         3,
         4,
         -0.203125},
        {"a singular one, maximised",
         "max 1 3; .. 0..1; 1 1 in ..5",
         {0, 0, -1},
         {},
         {},
         false,
         {0},
         3,
         3,
         3.5},
        {"a constraint from above",
         "min 1 1; .. ..; in ..2; 1 -1 in =0",
         {},
         {0, 0, 0, 2, 0, 1, 1, 2},
         {},
         false,
         {1},
         2,
         4,
         -2},
        {"from below, its linear terms too, maximised",
         "max 1 1; .. ..; 2 in 0..; 1 -1 in =0",
         {},
         {0, 0, 0, -2, 0, 1, 1, -2},
         {},
         false,
         {1},
         2,
         4,
         2},
        {"both, a cone and a bounded row",
         "min 0 0 1 0; .. .. .. ..; 0 0 0 1 in ..3; 1 1 in =2; 0 0 0 1 in 1..",
         {3, 3, 2},
         {0, 3, 3, 2},
         {2, 0, 1},
         false,
         {1, 2},
         5,
         9,
         1 + root},
        {"semidefinite terms", "min 1; ..; 0 in ..-1; 1 in =1", {}, {0, 0, 0, 2}, {}, true, {1}, 1, 3, 3},
        {"zeros and a row without bounds",
         "min 1; 0..; 1 in 2..; 1 in ..",
         {0, 0, 0},
         {0, 0, 0, 0, 1, 0, 0, -1},
         {},
         false,
         {0, 1},
         1,
         0,
         2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE (c.what);
        const Task task (c.problem), conic (c.problem);
        for (KLVtask_t each : {static_cast<KLVtask_t> (task), static_cast<KLVtask_t> (conic)})
            state (each, c);
        EXPECT_EQ (KLV_optimize (task), 0) << task.last_error ();
        EXPECT_EQ (KLV_optimize (conic), 0);
        const klv::Problem stated = conic.problem ();
        // Memory that runs out changes nothing.
        EXPECT_GT (
            fail_each ([&] { return KLV_toconic (conic); }, 0,
                       [&] { EXPECT_EQ (model::difference (stated, conic.problem ()), std::nullopt); }),
            0);
        EXPECT_FALSE (model::slot (conic, KLV_SOL_ITR).defined);
        const klv::Problem& p = conic.problem ();
        EXPECT_EQ (p.quadratic_objective.count () + p.quadratic_constraint.count () + p.cone.count (), 0);
        EXPECT_EQ (p.variables (), c.variables);
        EXPECT_EQ (p.affine.count (), c.expressions);
        EXPECT_EQ (p.affine_constraint.rows (), c.expressions);
        EXPECT_EQ (p.constraints (), stated.constraints ());
        EXPECT_EQ (KLV_optimize (conic), 0) << conic.last_error ();
        const Slot before = model::slot (task, KLV_SOL_ITR), after = model::slot (conic, KLV_SOL_ITR);
        for (const Slot* found : {&before, &after}) {
            EXPECT_EQ (found->solution, KLV_SOLSTA_OPTIMAL);
            EXPECT_NEAR (found->primal, c.optimum, 1e-5);
        }
        for (std::size_t i : c.kept)
            EXPECT_NEAR (after.y[i], before.y[i], 1e-4) << i;
    }
}

TEST (ToConic, WhatIsNotConvexStays)
{
    for (const auto& [c, item] :
         {std::pair{Case{"", "min 1 1; .. ..; 1 1 in ..1", {0, 0, 1, 1, 0, 2}},
                    "the objective are not convex"},
          {Case{"", "max 1 1; .. ..; 1 1 in ..1", {0, 0, 1}, {0, 0, 0, 1}}, "the objective are not concave"},
          {Case{"", "min 1 1; .. ..; 1 1 in 1..", {0, 0, 1}, {0, 0, 0, 1}}, "constraint 1"},
          {Case{"", "min 1 1; .. ..; 1 1 in ..; 1 in 0..1", {0, 0, 1}, {1, 1, 1, 1}}, "constraint 2"}}) {
        const Task task (c.problem);
        state (task, c);
        // The copy is compared with what the refusal leaves.
        const klv::Problem before = task.problem ();    // NOLINT(performance-unnecessary-copy-initialization)
        EXPECT_EQ (KLV_toconic (task), KLV_RES_NOT_CONVEX);
        EXPECT_NE (task.last_error ().find (item), std::string::npos) << task.last_error ();
        EXPECT_EQ (model::difference (before, task.problem ()), std::nullopt);
    }
}

}
