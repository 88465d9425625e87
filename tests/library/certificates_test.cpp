// Rays become certificates by definition only.

#include "kalvo/report/certificate.h"
#include "tests/library/model.h"

#include <ostream>

namespace {

using model::inf;

klv::Problem problem_of (const model::Model& model)
{
    klv::Problem problem;
    problem.append_variables (static_cast<std::int32_t> (model.variables ()));
    problem.append_constraints (static_cast<std::int32_t> (model.constraints ()));
    problem.sense = model.maximize ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE;
    problem.cost = model.cost;
    for (std::size_t j = 0; j < model.variables (); ++j) {
        problem.variable.lower[j] = model.bounds[j].lower;
        problem.variable.upper[j] = model.bounds[j].upper;
        std::vector<std::int32_t> rows;
        std::vector<double> values;
        for (std::size_t i = 0; i < model.constraints (); ++i)
            if (model.rows[i][j] != 0) {
                rows.push_back (static_cast<std::int32_t> (i));
                values.push_back (model.rows[i][j]);
            }
        problem.matrix.put (static_cast<std::int32_t> (j), rows, values);
    }
    for (std::size_t i = 0; i < model.constraints (); ++i) {
        problem.constraint.lower[i] = model.row_bounds[i].lower;
        problem.constraint.upper[i] = model.row_bounds[i].upper;
    }
    problem.matrix.pack ();
    return problem;
}

struct Ray {
    const char* name;
    model::Model model;
    std::vector<double> ray;
    bool holds;
};

std::ostream& operator<< (std::ostream& out, const Ray& ray)
{
    return out << ray.name;
}

// x + y >= 3 with x, y in [0, 1].
model::Model boxed (bool maximize = false)
{
    return {.cost = {1, 1},
            .rows = {{1, 1}},
            .row_bounds = {{3, inf}},
            .bounds = {{0, 1}, {0, 1}},
            .maximize = maximize};
}

class Infeasible : public testing::TestWithParam<Ray> {};

TEST_P (Infeasible, certificate_by_definition)
{
    const klv::Problem problem = problem_of (GetParam ().model);
    const auto found = klv::certify_infeasible (problem, GetParam ().ray);
    ASSERT_EQ (found.has_value (), GetParam ().holds);
    if (!found)
        return;
    const double sign = GetParam ().model.maximize ? -1 : 1;
    double value = 0;
    for (std::size_t i = 0; i < found->y.size (); ++i)
        value += model::bound_value ({GetParam ().model.row_bounds[i]}, {found->slc[i]}, {found->suc[i]},
                                     sign, 1e-7);
    for (std::size_t j = 0; j < found->slx.size (); ++j)
        value +=
            model::bound_value ({GetParam ().model.bounds[j]}, {found->slx[j]}, {found->sux[j]}, sign, 1e-7);
    EXPECT_NEAR (value, sign, 1e-9);
    EXPECT_EQ (found->dual_objective, sign);
}

INSTANTIATE_TEST_SUITE_P (
    Each, Infeasible,
    testing::Values (
        Ray{"a true one is scaled to value 1", boxed (), {7}, true},
        Ray{"its sign is that of the sense", boxed (true), {-7}, true},
        Ray{"zero proves nothing", boxed (), {0}, false},
        Ray{"not a number", boxed (), {std::nan ("")}, false}, Ray{"wrong size", boxed (), {1, 1}, false},
        Ray{"the problem is feasible",
            {.cost = {1}, .rows = {{1}}, .row_bounds = {{1, inf}}, .bounds = {{0, 1}}},
            {1},
            false},
        Ray{"a multiplier of a bound that does not exist",
            {.cost = {1, 1}, .rows = {{1, 1}}, .row_bounds = {{3, inf}}, .bounds = {{0, 1}, {0, inf}}},
            {1},
            false},
        Ray{"a multiplier that is only noise",
            {.cost = {1, 1}, .rows = {{1, 1e-10}}, .row_bounds = {{3, inf}}, .bounds = {{0, 1}, {0, inf}}},
            {1},
            true},
        Ray{"a value below its rounding",
            {.cost = {1}, .rows = {{1}}, .row_bounds = {{1e9 * (1 + 1e-12), inf}}, .bounds = {{0, 1e9}}},
            {1},
            false},
        Ray{"a small value above its rounding",
            {.cost = {1}, .rows = {{1}}, .row_bounds = {{1 + 1e-7, inf}}, .bounds = {{0, 1}}},
            {1},
            true}));

class Unbounded : public testing::TestWithParam<Ray> {};

TEST_P (Unbounded, certificate_by_definition)
{
    const klv::Problem problem = problem_of (GetParam ().model);
    const auto found = klv::certify_unbounded (problem, GetParam ().ray);
    ASSERT_EQ (found.has_value (), GetParam ().holds);
    if (!found)
        return;
    double value = 0;
    for (std::size_t j = 0; j < found->xx.size (); ++j)
        value += problem.cost[j] * found->xx[j];
    EXPECT_NEAR (value, GetParam ().model.maximize ? 1 : -1, 1e-12);
}

// x - y stays in [-1, 1], both from 0 up.
model::Model strip (double cost, bool maximize = false)
{
    return {.cost = {cost, 0},
            .rows = {{1, -1}},
            .row_bounds = {{-1, 1}},
            .bounds = {{0, inf}, {0, inf}},
            .maximize = maximize};
}

INSTANTIATE_TEST_SUITE_P (
    Each, Unbounded,
    testing::Values (Ray{"a true one is scaled", strip (-3), {5, 5}, true},
                     Ray{"maximising", strip (3, true), {5, 5}, true},
                     Ray{"it gains nothing", strip (0), {1, 1}, false},
                     Ray{"it leaves a constraint", strip (-1), {1, 0.5}, false},
                     Ray{"it leaves a variable's bound", strip (1), {-1, -1}, false},
                     Ray{"it leaves by noise only", strip (-1), {1, 1 + 1e-10}, true},
                     Ray{"a bound of 1e25 is a bound", {.cost = {-1}, .bounds = {{0, 1e25}}}, {1}, false},
                     Ray{"zero", strip (-1), {0, 0}, false}, Ray{"infinite", strip (-1), {inf, inf}, false}));

}
