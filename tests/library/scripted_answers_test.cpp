// Engines that are wrong: what is reported follows from the check alone.

#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

#include <new>
#include <ostream>
#include <stdexcept>

namespace {

using klv::Claims;
using klv::Outcome;
using model::inf;
using scripted::claims;

// min x + 2y, x + y >= 2, both in [0, 10]: the optimum is 2 at (2, 0), with multiplier 1.
const model::Model small{
    .cost = {1, 2}, .rows = {{1, 1}}, .row_bounds = {{2, inf}}, .bounds = {{0, 10}, {0, 10}}};

Claims right ()
{
    Claims made = claims (Outcome::optimal);
    made.x = {2, 0};
    made.y = {1};
    made.reduced_cost = {0, 1};
    made.column_key = {KLV_SK_BASIC, KLV_SK_LOWER};
    made.row_key = {KLV_SK_LOWER};
    return made;
}

Claims right_but (void (*change) (Claims&))
{
    Claims made = right ();
    change (made);
    return made;
}

struct Lie {
    const char* name;
    Claims first, second;
    int code = 0;
    bool defined = true;
    int solution = KLV_SOLSTA_OPTIMAL;
    int rejected = 0, tries = 0;
};

std::ostream& operator<< (std::ostream& out, const Lie& lie)
{
    return out << lie.name;
}

Lie twice (const char* name, const Claims& made, int solution, int rejected)
{
    return {name, made, made, KLV_RES_NUMERICAL_TROUBLE, true, solution, rejected, 1};
}

Claims with_ray (Outcome outcome, std::vector<double> dual, std::vector<double> primal)
{
    Claims made = claims (outcome);
    made.dual_ray = std::move (dual);
    made.primal_ray = std::move (primal);
    return made;
}

Claims stopped_by (Outcome outcome, bool with_point)
{
    Claims made = with_point ? right () : Claims ();
    made.outcome = outcome;
    made.x = with_point ? std::vector<double>{5, 5} : std::vector<double> ();
    return made;
}

std::vector<Lie> lies ()
{
    const double nan = std::nan ("");
    const auto unknown = KLV_SOLSTA_UNKNOWN;
    return {
        {"the truth", right (), right ()},
        {"wrong once, then right", right_but ([] (Claims& c) { c.x = {0, 0}; }), right (), 0, true,
         KLV_SOLSTA_OPTIMAL, 1, 1},
        twice ("an infeasible point called optimal", right_but ([] (Claims& c) { c.x = {0, 0}; }),
               KLV_SOLSTA_DUAL_FEASIBLE, 2),
        twice ("a poor point called optimal", right_but ([] (Claims& c) { c.x = {5, 5}; }),
               KLV_SOLSTA_FEASIBLE, 2),
        twice ("multipliers of the wrong sign", right_but ([] (Claims& c) {
                   c.y = {-1};
                   c.reduced_cost = {2, 3};
               }),
               KLV_SOLSTA_PRIMAL_FEASIBLE, 2),
        twice ("reduced costs that do not belong to the multipliers",
               right_but ([] (Claims& c) { c.reduced_cost = {0, 2}; }), KLV_SOLSTA_PRIMAL_FEASIBLE, 2),
        twice ("no point at all", claims (Outcome::optimal), unknown, 2),
        twice ("a point that is not a number", right_but ([] (Claims& c) {
                   c.x[0] = std::nan ("");
                   c.y[0] = std::nan ("");
               }),
               unknown, 2),
        twice ("an infinite point", right_but ([] (Claims& c) {
                   c.x[1] = inf;
                   c.y = {};
               }),
               unknown, 2),
        twice ("arrays of wrong sizes", right_but ([] (Claims& c) {
                   c.x = {2, 0, 0};
                   c.y = {};
                   c.reduced_cost = {1};
               }),
               unknown, 2),
        twice ("a false ray of infeasibility", with_ray (Outcome::infeasible, {1}, {}), unknown, 0),
        twice ("a ray of infeasibility that is not a number", with_ray (Outcome::infeasible, {nan}, {}),
               unknown, 0),
        twice ("infeasible without a ray", claims (Outcome::infeasible), unknown, 0),
        twice ("a false direction", with_ray (Outcome::unbounded, {}, {-1, 0}), unknown, 0),
        twice ("a direction that gains nothing", with_ray (Outcome::unbounded, {}, {0, 0}), unknown, 0),
        twice ("a direction of the wrong size", with_ray (Outcome::unbounded, {}, {-1}), unknown, 0),
        twice ("undecided", claims (Outcome::infeasible_or_unbounded), unknown, 0),
        twice ("stopped though nobody asked", claims (Outcome::stopped), unknown, 0),
        {"a time limit without a point",
         stopped_by (Outcome::time_limit, false),
         {},
         KLV_RES_TIME_LIMIT,
         false},
        {"a time limit with a point",
         stopped_by (Outcome::time_limit, true),
         {},
         KLV_RES_TIME_LIMIT,
         true,
         KLV_SOLSTA_FEASIBLE},
        {"an iteration limit",
         stopped_by (Outcome::iteration_limit, true),
         {},
         KLV_RES_ITERATION_LIMIT,
         true,
         KLV_SOLSTA_FEASIBLE},
        {"a node limit", stopped_by (Outcome::node_limit, false), {}, KLV_RES_NODE_LIMIT, false},
        {"a solution limit", stopped_by (Outcome::solution_limit, false), {}, KLV_RES_SOLUTION_LIMIT, false},
        {"an objective limit",
         stopped_by (Outcome::objective_limit, false),
         {},
         KLV_RES_OBJECTIVE_LIMIT,
         false},
        {"a limit just when it was done",
         right_but ([] (Claims& c) { c.outcome = Outcome::time_limit; }),
         {}},
        {"unsure of an optimum", right_but ([] (Claims& c) { c.outcome = Outcome::unknown; }), {}},
    };
}

class ScriptedAnswers : public testing::TestWithParam<Lie> {};

TEST_P (ScriptedAnswers, are_reported_as_what_they_are)
{
    const Lie& lie = GetParam ();
    scripted::InFront front (
        [&, run = 0] (const klv::Job& job, const klv::StopFlag&, klv::EventChannel&) mutable {
            EXPECT_EQ (job.reformulate, run == 0) << "the second try is without presolve and scaling";
            return run++ == 0 ? lie.first : lie.second;
        });
    model::Task task (small);
    task.set ("KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_DUAL_SIMPLEX);
    EXPECT_EQ (KLV_optimize (task), lie.code) << task.last_error ();
    EXPECT_EQ (front.engine ().runs, 1 + lie.tries);
    EXPECT_EQ (task.information ("KLV_IINF_CLAIMS_REJECTED"), lie.rejected);
    EXPECT_EQ (task.information ("KLV_IINF_SECOND_TRIES"), lie.tries);
    const model::Slot found = model::slot (task, KLV_SOL_BAS);
    ASSERT_EQ (found.defined, lie.defined);
    if (!lie.defined)
        return;
    EXPECT_EQ (found.solution, lie.solution);
    if (lie.solution == KLV_SOLSTA_OPTIMAL)
        model::expect_optimal (task, KLV_SOL_BAS);
    for (const auto* values :
         {&found.xx, &found.xc, &found.y, &found.slc, &found.suc, &found.slx, &found.sux})
        for (const double value : *values)
            EXPECT_TRUE (std::isfinite (value));
    EXPECT_TRUE (std::isfinite (found.primal) && std::isfinite (found.dual));
}

INSTANTIATE_TEST_SUITE_P (Each, ScriptedAnswers, testing::ValuesIn (lies ()));

// ---- Keys ---------------------------------------------------------------------------------------------------------------

struct Basis {
    const char* name;
    std::vector<std::int32_t> column, row;
};

std::ostream& operator<< (std::ostream& out, const Basis& basis)
{
    return out << basis.name;
}

class ScriptedBasis : public testing::TestWithParam<Basis> {};

// The point of an optimum is good whatever was said of its basis, so keys come from the point then.
TEST_P (ScriptedBasis, that_is_wrong_is_not_handed_out)
{
    scripted::InFront front ([&] (const klv::Job&, const klv::StopFlag&, klv::EventChannel&) {
        Claims made = right ();
        made.column_key = GetParam ().column;
        made.row_key = GetParam ().row;
        return made;
    });
    model::Task task (small);
    task.set ("KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_DUAL_SIMPLEX);
    EXPECT_EQ (KLV_optimize (task), 0);
    const model::Slot found = model::slot (task, KLV_SOL_BAS);
    EXPECT_EQ (found.skx, (std::vector<std::int32_t>{KLV_SK_BASIC, KLV_SK_LOWER}));
    EXPECT_EQ (found.skc, (std::vector<std::int32_t>{KLV_SK_LOWER}));
}

INSTANTIATE_TEST_SUITE_P (
    Each, ScriptedBasis,
    testing::Values (Basis{"none", {}, {}},
                     Basis{"too many basic", {KLV_SK_BASIC, KLV_SK_BASIC}, {KLV_SK_LOWER}},
                     Basis{"none basic", {KLV_SK_LOWER, KLV_SK_LOWER}, {KLV_SK_LOWER}},
                     Basis{"keys that do not exist", {77, -1}, {KLV_SK_BASIC}},
                     Basis{"not where the point is", {KLV_SK_LOWER, KLV_SK_BASIC}, {KLV_SK_LOWER}},
                     Basis{"at a bound that does not exist", {KLV_SK_BASIC, KLV_SK_LOWER}, {KLV_SK_UPPER}},
                     Basis{"wrong sizes", {KLV_SK_BASIC}, {KLV_SK_LOWER, KLV_SK_LOWER}}));

// ---- Integer problems -----------------------------------------------------------------------------------------------------

struct IntegerLie {
    const char* name;
    Outcome outcome;
    std::vector<double> x;
    double bound;
    bool has_bound;
    std::vector<double> dual_ray;
    int code, problem, solution;
};

std::ostream& operator<< (std::ostream& out, const IntegerLie& lie)
{
    return out << lie.name;
}

class ScriptedIntegers : public testing::TestWithParam<IntegerLie> {};

TEST_P (ScriptedIntegers, are_reported_as_what_they_are)
{
    const IntegerLie& lie = GetParam ();
    scripted::InFront front ([&] (const klv::Job& job, const klv::StopFlag&, klv::EventChannel&) {
        EXPECT_EQ (job.method, klv::Method::mixed_integer);
        Claims made = claims (lie.outcome);
        made.x = lie.x;
        made.best_bound = lie.bound;
        made.has_best_bound = lie.has_bound;
        made.dual_ray = lie.dual_ray;
        return made;
    });
    model::Model integers = small;
    integers.integer = {true, true};
    model::Task task (integers);
    EXPECT_EQ (KLV_optimize (task), lie.code) << task.last_error ();
    const model::Slot found = model::slot (task, KLV_SOL_INT);
    ASSERT_TRUE (found.defined);
    EXPECT_EQ (found.problem, lie.problem);
    EXPECT_EQ (found.solution, lie.solution);
    if (found.solution == KLV_SOLSTA_INTEGER_OPTIMAL) {
        EXPECT_EQ (found.xx, (std::vector<double>{2, 0})) << "whole numbers are handed out as such";
    }
}

INSTANTIATE_TEST_SUITE_P (Each, ScriptedIntegers,
                          testing::Values (IntegerLie{"the truth",
                                                      Outcome::optimal,
                                                      {2, 0},
                                                      2,
                                                      true,
                                                      {},
                                                      0,
                                                      KLV_PRO_PRIMAL_FEASIBLE,
                                                      KLV_SOLSTA_INTEGER_OPTIMAL},
                                           IntegerLie{"nearly whole",
                                                      Outcome::optimal,
                                                      {2.0000003, -1e-9},
                                                      2,
                                                      true,
                                                      {},
                                                      0,
                                                      KLV_PRO_PRIMAL_FEASIBLE,
                                                      KLV_SOLSTA_INTEGER_OPTIMAL},
                                           IntegerLie{"not whole",
                                                      Outcome::optimal,
                                                      {1.5, 0.5},
                                                      2.5,
                                                      true,
                                                      {},
                                                      KLV_RES_NUMERICAL_TROUBLE,
                                                      KLV_PRO_UNKNOWN,
                                                      KLV_SOLSTA_UNKNOWN},
                                           IntegerLie{"whole and infeasible",
                                                      Outcome::optimal,
                                                      {1, 0},
                                                      1,
                                                      true,
                                                      {},
                                                      KLV_RES_NUMERICAL_TROUBLE,
                                                      KLV_PRO_UNKNOWN,
                                                      KLV_SOLSTA_UNKNOWN},
                                           IntegerLie{"optimal in spite of its bound",
                                                      Outcome::optimal,
                                                      {3, 0},
                                                      2,
                                                      true,
                                                      {},
                                                      KLV_RES_NUMERICAL_TROUBLE,
                                                      KLV_PRO_PRIMAL_FEASIBLE,
                                                      KLV_SOLSTA_PRIMAL_FEASIBLE},
                                           IntegerLie{"optimal without a bound",
                                                      Outcome::optimal,
                                                      {2, 0},
                                                      0,
                                                      false,
                                                      {},
                                                      KLV_RES_NUMERICAL_TROUBLE,
                                                      KLV_PRO_PRIMAL_FEASIBLE,
                                                      KLV_SOLSTA_PRIMAL_FEASIBLE},
                                           IntegerLie{"a bound that is not a number",
                                                      Outcome::optimal,
                                                      {2, 0},
                                                      std::nan (""),
                                                      true,
                                                      {},
                                                      KLV_RES_NUMERICAL_TROUBLE,
                                                      KLV_PRO_PRIMAL_FEASIBLE,
                                                      KLV_SOLSTA_PRIMAL_FEASIBLE},
                                           IntegerLie{"a node limit with a point",
                                                      Outcome::node_limit,
                                                      {3, 0},
                                                      2,
                                                      true,
                                                      {},
                                                      KLV_RES_NODE_LIMIT,
                                                      KLV_PRO_PRIMAL_FEASIBLE,
                                                      KLV_SOLSTA_PRIMAL_FEASIBLE},
                                           IntegerLie{"infeasible by search",
                                                      Outcome::infeasible,
                                                      {},
                                                      0,
                                                      false,
                                                      {},
                                                      0,
                                                      KLV_PRO_INFEASIBLE_BY_SEARCH,
                                                      KLV_SOLSTA_UNKNOWN},
                                           IntegerLie{"infeasible with a false ray",
                                                      Outcome::infeasible,
                                                      {},
                                                      0,
                                                      false,
                                                      {1},
                                                      0,
                                                      KLV_PRO_INFEASIBLE_BY_SEARCH,
                                                      KLV_SOLSTA_UNKNOWN},
                                           IntegerLie{"unbounded without a direction",
                                                      Outcome::unbounded,
                                                      {},
                                                      0,
                                                      false,
                                                      {},
                                                      KLV_RES_NUMERICAL_TROUBLE,
                                                      KLV_PRO_UNKNOWN,
                                                      KLV_SOLSTA_UNKNOWN}));

// ---- Failures -------------------------------------------------------------------------------------------------------------

struct Failure {
    const char* name;
    void (*fail) ();
    int code;
    const char* message;
};

std::ostream& operator<< (std::ostream& out, const Failure& failure)
{
    return out << failure.name;
}

class ScriptedFailures : public testing::TestWithParam<Failure> {};

TEST_P (ScriptedFailures, become_codes_and_the_next_call_works)
{
    model::Task task (small);
    {
        scripted::InFront front ([] (const klv::Job&, const klv::StopFlag&, klv::EventChannel&) -> Claims {
            GetParam ().fail ();
            return {};
        });
        EXPECT_EQ (KLV_optimize (task), GetParam ().code);
        EXPECT_NE (task.last_error ().find (GetParam ().message), std::string::npos) << task.last_error ();
        EXPECT_FALSE (model::slot (task, KLV_SOL_BAS).defined);
    }
    EXPECT_EQ (KLV_optimize (task), 0);
    model::expect_optimal (task, KLV_SOL_BAS);
}

INSTANTIATE_TEST_SUITE_P (
    Each, ScriptedFailures,
    testing::Values (Failure{"an exception", [] { throw std::runtime_error ("pivot of size zero"); },
                             KLV_RES_ENGINE_FAILED, "pivot of size zero"},
                     Failure{"anything thrown", [] { throw 42; }, KLV_RES_ENGINE_FAILED, "unknown exception"},
                     Failure{"no memory", [] { throw std::bad_alloc (); }, KLV_RES_OUT_OF_MEMORY, "memory"}));

TEST (ScriptedFailures, an_engine_that_can_not_be_loaded_is_named)
{
    scripted::InFront front (
        [] (const klv::Job&, const klv::StopFlag&, klv::EventChannel&) { return right (); });
    front.engine ().why_not = "the file /nowhere/engine.so can't be loaded";
    auto behind = std::exchange (klv::engines (), {klv::engines ().front ()});
    model::Task task (small);
    EXPECT_EQ (KLV_optimize (task), KLV_RES_ENGINE_MISSING);
    EXPECT_NE (task.last_error ().find ("/nowhere/engine.so"), std::string::npos) << task.last_error ();
    klv::engines () = behind;
}

}
