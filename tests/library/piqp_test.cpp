// The engine for quadratic problems, on forms with answers known in closed form.
#include "kalvo/engines/piqp/newton.h"
#include "kalvo/engines/piqp/piqp.h"
#include "tests/support/engine_run.h"

#include <cmath>

namespace {

using namespace engine_run;
using klv::QuadraticForm;
using Matrix = std::vector<Values>;    // by columns

constexpr double inf = klv::infinity;

struct Rows {
    Matrix columns;
    Values lower, upper;
};

QuadraticForm form (const Values& cost, const Matrix& quadratic, const Values& lower, const Values& upper,
                    const Rows& equality = {}, const Rows& range = {})
{
    const Matrix none (cost.size ());
    return {.constant = 7,
            .cost = cost,
            .lower = lower,
            .upper = upper,
            .quadratic = sparse (quadratic.empty () ? none : quadratic),
            .equality = sparse (equality.columns.empty () ? none : equality.columns),
            .right = equality.lower,
            .range = sparse (range.columns.empty () ? none : range.columns),
            .range_lower = range.lower,
            .range_upper = range.upper};
}

Claims run (const QuadraticForm& given, Heard& heard, const Set& set = {}, bool reformulate = true,
            const klv::Budget& budget = {})
{
    const auto engine = klv::piqp::make_engine ();
    EXPECT_EQ (engine->refuses (given, klv::Method::quadratic, budget), "");
    return run_engine (*engine, klv::Method::quadratic, given, heard, set, reformulate, budget);
}

// The nearest point to 0 with sums of at least `size` in many dense rows, which is solved by the dense method.
QuadraticForm averages (std::size_t size, std::size_t rows)
{
    Matrix quadratic (size), range (size, Values (rows, 1));
    for (std::size_t j = 0; j < size; ++j) {
        quadratic[j].assign (j + 1, 0);
        quadratic[j][j] = 1;
    }
    for (std::size_t j = 0; j < size; ++j)
        for (std::size_t i = 1; i < rows; ++i)
            range[j][i] = i % size == j ? 2 : 1;
    return form (Values (size), quadratic, Values (size, -inf), Values (size, inf), {},
                 {range, Values (rows, static_cast<double> (size)), Values (rows, inf)});
}

TEST (Piqp, FindsThePointAndTheMultipliersOfEveryBound)
{
    const Matrix one{{1}};
    const struct {
        const char* name;
        QuadraticForm form;
        Values x, y, reduced_cost;
        double objective;
    } cases[] = {
        {"free", form ({-3}, one, {-inf}, {inf}), {3}, {}, {0}, -4.5},
        {"lower", form ({1}, one, {2}, {inf}), {2}, {}, {3}, 4},
        {"upper", form ({-5}, one, {-inf}, {2}), {2}, {}, {-3}, -8},
        {"both, lower active", form ({1}, one, {2}, {4}), {2}, {}, {3}, 4},
        {"fixed", form ({1}, one, {2}, {2}), {2}, {}, {3}, 4},
        {"equation",
         form ({0, 0}, {{1}, {0, 1}}, {-inf, -inf}, {inf, inf}, {{{1}, {1}}, {2}, {}}),
         {1, 1},
         {1},
         {0, 0},
         1},
        {"row below", form ({0}, one, {-inf}, {inf}, {}, {{{2}}, {4}, {inf}}), {2}, {1}, {0}, 2},
        {"row above", form ({-3}, one, {-inf}, {inf}, {}, {{{2}}, {-inf}, {2}}), {1}, {-1}, {0}, -2.5},
        {"row between", form ({0}, one, {-inf}, {inf}, {}, {{{2}}, {4}, {9}}), {2}, {1}, {0}, 2},
        {"equation before rows",
         form ({0, 0}, {{1}, {1, 2}}, {-inf, -inf}, {inf, inf}, {{{1}, {1}}, {2}, {}},
               {{{0, 1}, {1, 0}}, {-9, 3}, {9, inf}}),
         {3, -1},
         {1, 0, 1},
         {0, 0},
         2.5},
        {"linear",
         form ({1, 2}, {}, {0, 0}, {inf, inf}, {}, {{{1}, {1}}, {1}, {inf}}),
         {1, 0},
         {1},
         {0, 1},
         1},
        {"no columns", form ({}, {}, {}, {}, {}, {{}, {-1}, {1}}), {}, {0}, {}, 0},
        {"nothing", form ({}, {}, {}, {}), {}, {}, {}, 0},
        {"many dense rows", averages (12, 60), Values (12, 1), {}, Values (12), 6},
    };
    for (const auto& [name, given, x, y, reduced_cost, objective] : cases)
        for (const bool reformulate : {true, false}) {
            SCOPED_TRACE (name);
            Heard heard;
            const Claims claims = run (given, heard, {}, reformulate);
            ASSERT_EQ (claims.outcome, Outcome::optimal) << claims.message;
            expect_near (claims.x, x);
            if (given.row_count () == static_cast<std::int32_t> (y.size ()))
                expect_near (claims.y, y);
            expect_near (claims.reduced_cost, reduced_cost);
            EXPECT_EQ (heard.last.iterations, claims.interior_iterations);
            EXPECT_NEAR (heard.last.primal_objective, 7 + objective, 1e-6);
            EXPECT_NEAR (heard.last.dual_objective, 7 + objective, 1e-6);
        }
}

TEST (Piqp, FactorisesAsAsked)
{
    const QuadraticForm asked = averages (12, 60);
    EXPECT_TRUE (klv::piqp::NewtonSystem (asked).dense ());
    for (const auto& [factorization, in_blocks] :
         {std::pair{KLV_FACTORIZATION_SIMPLICIAL, false}, {KLV_FACTORIZATION_SUPERNODAL, true}}) {
        klv::piqp::NewtonSystem system (asked, factorization);
        EXPECT_FALSE (system.dense ());
        EXPECT_EQ (system.sparse ().in_blocks (), in_blocks);
    }
}

TEST (Piqp, ProvesThatThereIsNoAnswer)
{
    Heard heard;
    const Claims rows = run (form ({0}, {{1}}, {-inf}, {inf}, {{{1}}, {1}, {}}, {{{2}}, {6}, {inf}}), heard);
    ASSERT_EQ (rows.outcome, Outcome::infeasible);
    ASSERT_EQ (rows.dual_ray.size (), 2U);
    EXPECT_GT (rows.dual_ray[1], 0);    // at a lower bound
    EXPECT_NEAR (rows.dual_ray[0] / rows.dual_ray[1], -2, 1e-6);
    const Claims bounds = run (form ({1}, {}, {0}, {1}, {}, {{{1}}, {-inf}, {-1}}), heard);
    ASSERT_EQ (bounds.outcome, Outcome::infeasible);
    EXPECT_LT (bounds.dual_ray.at (0), 0);
    const Claims unbounded = run (form ({-1, 0, 1}, {{0}, {0, 1}, {0, 0, 0}}, {0, -inf, 0}, {inf, inf, inf},
                                        {}, {{{1}, {0}, {-2}}, {-inf}, {4}}),
                                  heard);
    ASSERT_EQ (unbounded.outcome, Outcome::unbounded);
    const Values& ray = unbounded.primal_ray;
    ASSERT_EQ (ray.size (), 3U);
    EXPECT_GT (ray[0], 0.1);
    EXPECT_NEAR (ray[1], 0, 1e-7);
    EXPECT_GE (ray[2], -1e-7);
    EXPECT_LE (ray[0] - 2 * ray[2], 1e-7);
    EXPECT_LT (ray[2] - ray[0], -0.1);
}

TEST (Piqp, EndsWhereItIsTold)
{
    for (const QuadraticForm& given :
         {form ({1, 1}, {{1}, {0, 1}}, {0, 0}, {5, 5}, {{{1}, {1}}, {2}, {}}), averages (12, 60)}) {
        Heard heard;
        EXPECT_EQ (run (given, heard, {{IntSetting::interior_iteration_limit, 2}}).outcome,
                   Outcome::iteration_limit);
        EXPECT_EQ (heard.last.iterations, 2);
        EXPECT_EQ (run (given, heard, {{IntSetting::interior_iteration_limit, 0}}).outcome,
                   Outcome::iteration_limit);
        EXPECT_EQ (run (given, heard, {}, true, {.deadline = klv::Clock::now ()}).outcome,
                   Outcome::time_limit);
        heard.stop_at = 2;
        const Claims stopped = run (given, heard);
        EXPECT_EQ (stopped.outcome, Outcome::stopped);
        EXPECT_EQ (stopped.x.size (), given.cost.size ());
        EXPECT_EQ (heard.last.iterations, 2);
        EXPECT_EQ (run (given, heard).outcome, Outcome::stopped);
    }
}

TEST (Piqp, RefusesFormsThatAreNone)
{
    const QuadraticForm good = form ({1, 1}, {{1}, {0.5, 1}}, {0, 0}, {5, 5}, {{{1}, {1}}, {2}, {}},
                                     {{{1, 2}, {1, 3}}, {0, 0}, {9, 9}});
    const struct {
        const char* says;
        void (*spoil) (QuadraticForm& form);
    } cases[] = {
        {"quadratic part", [] (QuadraticForm& bad) { bad.quadratic.rows[0] = 1; }},
        {"quadratic part",
         [] (QuadraticForm& bad) { std::swap (bad.quadratic.rows[1], bad.quadratic.rows[2]); }},
        {"quadratic part", [] (QuadraticForm& bad) { bad.quadratic.rows[1] = 1; }},
        {"quadratic part", [] (QuadraticForm& bad) { bad.quadratic.values[1] = NAN; }},
        {"quadratic part", [] (QuadraticForm& bad) { bad.quadratic.starts.push_back (3); }},
        {"equalities", [] (QuadraticForm& bad) { bad.equality.rows[0] = -1; }},
        {"equalities", [] (QuadraticForm& bad) { bad.right.clear (); }},
        {"ranges", [] (QuadraticForm& bad) { bad.range.rows[1] = 2; }},
        {"ranges", [] (QuadraticForm& bad) { bad.range.starts[1] = 9; }},
        {"ranges", [] (QuadraticForm& bad) { bad.range.values.pop_back (); }},
        {"cost", [] (QuadraticForm& bad) { bad.cost[0] = HUGE_VAL; }},
        {"right-hand side", [] (QuadraticForm& bad) { bad.right[0] = NAN; }},
        {"bounds of the ranges", [] (QuadraticForm& bad) { bad.range_upper.pop_back (); }},
        {"bounds of the ranges", [] (QuadraticForm& bad) { bad.range_lower[0] = NAN; }},
        {"bounds of the variables", [] (QuadraticForm& bad) { bad.lower[0] = bad.upper[0] = inf; }},
        {"bounds of the variables", [] (QuadraticForm& bad) { bad.lower[1] = 6; }},
    };
    for (const auto& [says, spoil] : cases) {
        QuadraticForm bad = good;
        spoil (bad);
        Heard heard;
        const Claims claims = run (bad, heard);
        EXPECT_EQ (claims.outcome, Outcome::failed) << says;
        EXPECT_NE (claims.message.find (says), std::string::npos) << claims.message << ", not " << says;
    }
    EXPECT_NE (klv::piqp::make_engine ()->refuses (klv::LinearForm{}, klv::Method::quadratic, {}), "");
}

}
