// The engine for conic problems, on forms with answers known in closed form.
#include "kalvo/engines/clarabel/clarabel.h"
#include "tests/support/engine_run.h"

#include <cmath>
#include <numbers>

namespace {

using namespace engine_run;

Claims run (const ConicForm& given, Heard& heard, const Set& set = {}, bool reformulate = true,
            const klv::Budget& budget = {})
{
    return run_engine (*klv::clarabel::make_engine (), klv::Method::conic, given, heard, set, reformulate,
                       budget);
}

const double e = std::numbers::e, root = std::numbers::sqrt2;

TEST (Clarabel, FindsThePointAndTheDualOfEveryCone)
{
    const struct {
        const char* name;
        ConicForm form;
        Values x, z;
    } cases[] = {
        {"zero", form ({1}, {{1}}, {3}, {{ConeKind::zero, 1}}), {3}, {-1}},
        {"nonnegative", form ({1}, {{-1}}, {-2}, {{ConeKind::nonnegative, 1}}), {2}, {1}},
        {"second order",
         form ({1}, {{-1, 0, 0}}, {0, 3, 4}, {{ConeKind::second_order, 3}}),
         {5},
         {1, -0.6, -0.8}},
        {"exponential", form ({1}, {{0, 0, -1}}, {1, 1, 0}, {{ConeKind::exponential, 3}}), {e}, {-e, 0, 1}},
        {"power",
         form ({-1}, {{0, 0, -1}}, {8, 1, 0}, {{ConeKind::power, 3, 0, 1.0 / 3}}),
         {2},
         {1.0 / 12, 4.0 / 3, -1}},
        {"semidefinite",
         form ({1}, {{0, 0, -1}}, {1, 2 * root, 0}, {{ConeKind::semidefinite, 3, 2}}),
         {4},
         {4, -2 * root, 1}},
        {"quadratic", form ({-1, -1}, {{}, {}}, {}, {}, {{1}, {0.5, 1}}), {2.0 / 3, 2.0 / 3}, {}},
        {"several",
         form ({1, 1}, {{-1, 0, 1}, {0, -1, -1}}, {-2, -5, 3},
               {{ConeKind::nonnegative, 2}, {ConeKind::zero, 1}}),
         {8, 5},
         {0, 2, -1}},
        {"no columns", form ({}, {}, {1}, {{ConeKind::nonnegative, 1}}), {}, {0}},
        {"nothing", form ({}, {}, {}, {}), {}, {}},
    };
    for (const auto& [name, given, x, z] : cases)
        for (const bool reformulate : {true, false}) {
            SCOPED_TRACE (name);
            Heard heard;
            const Claims claims = run (given, heard, {}, reformulate);
            ASSERT_EQ (claims.outcome, Outcome::optimal) << claims.message;
            expect_near (claims.x, x);
            expect_near (claims.y, z, 1e-3);    // by the root of the gap where the dual function is curved
            EXPECT_EQ (heard.last.iterations, claims.interior_iterations);
            double objective = given.constant;
            for (std::size_t j = 0; j < x.size (); ++j)
                objective += given.cost[j] * x[j] / (z.empty () ? 2 : 1);
            EXPECT_NEAR (heard.last.primal_objective, objective, 1e-6);
            EXPECT_NEAR (heard.last.dual_objective, objective, 1e-6);
        }
}

TEST (Clarabel, ProvesThatThereIsNoAnswer)
{
    Heard heard;
    const auto two = form ({1}, {{-1, 1}}, {-10, 0}, {{ConeKind::nonnegative, 2}});
    const Claims infeasible = run (two, heard),
                 empty = run (form ({}, {}, {-4}, {{ConeKind::nonnegative, 1}}), heard);
    EXPECT_EQ (infeasible.outcome, Outcome::infeasible);
    expect_near (infeasible.dual_ray, {0.1, 0.1});
    EXPECT_EQ (empty.outcome, Outcome::infeasible);
    expect_near (empty.dual_ray, {0.25});
    const Claims unbounded =
        run (form ({-4, 0}, {{-1}, {0}}, {0}, {{ConeKind::nonnegative, 1}}, {{0}, {0, 1}}), heard);
    EXPECT_EQ (unbounded.outcome, Outcome::unbounded);
    expect_near (unbounded.primal_ray, {0.25, 0});
    EXPECT_EQ (run (form ({1}, {{}}, {}, {}), heard).outcome, Outcome::unbounded);
}

TEST (Clarabel, EndsWhereItIsTold)
{
    const auto given = form ({1}, {{0, 0, -1}}, {1, 1, 0}, {{ConeKind::exponential, 3}});
    Heard heard;
    EXPECT_EQ (run (given, heard, {{IntSetting::interior_iteration_limit, 3}}).outcome,
               Outcome::iteration_limit);
    EXPECT_EQ (heard.last.iterations, 3);
    EXPECT_EQ (run (given, heard, {{IntSetting::interior_iteration_limit, 0}}).outcome,
               Outcome::iteration_limit);
    EXPECT_EQ (run (given, heard, {}, true, {.deadline = klv::Clock::now ()}).outcome, Outcome::time_limit);
    EXPECT_EQ (heard.log, "");
    heard.stop_at = 2;
    const Claims stopped = run (given, heard, {{IntSetting::log_level, 3}});
    EXPECT_EQ (stopped.outcome, Outcome::stopped);
    EXPECT_EQ (stopped.x.size (), 1U);
    EXPECT_EQ (heard.last.iterations, 2);
    EXPECT_EQ (run (given, heard).outcome, Outcome::stopped);
    EXPECT_NE (heard.log.find ("Clarabel"), std::string::npos);
    EXPECT_EQ (heard.log.back (), '\n');
}

TEST (Clarabel, RefusesFormsThatAreNone)
{
    const ConicForm good =
        form ({1, 1}, {{-1, 0, 1}, {0, -1, -1}}, {-2, -5, 3}, {{ConeKind::nonnegative, 3}});
    const struct {
        const char* says;
        void (*spoil) (ConicForm& form);
    } cases[] = {
        {"constraints", [] (ConicForm& bad) { bad.matrix.starts.pop_back (); }},
        {"constraints", [] (ConicForm& bad) { bad.matrix.starts.clear (); }},
        {"constraints", [] (ConicForm& bad) { bad.matrix.starts[1] = -1; }},
        {"constraints", [] (ConicForm& bad) { bad.matrix.starts[2] = 5; }},
        {"constraints", [] (ConicForm& bad) { bad.matrix.rows[1] = 3; }},
        {"constraints", [] (ConicForm& bad) { bad.matrix.rows[1] = -1; }},
        {"constraints", [] (ConicForm& bad) { std::swap (bad.matrix.rows[0], bad.matrix.rows[1]); }},
        {"constraints", [] (ConicForm& bad) { bad.matrix.values.pop_back (); }},
        {"constraints", [] (ConicForm& bad) { bad.matrix.values[0] = NAN; }},
        {"quadratic part", [] (ConicForm& bad) { bad.quadratic.starts.push_back (0); }},
        {"objective", [] (ConicForm& bad) { bad.cost[0] = HUGE_VAL; }},
        {"right-hand side", [] (ConicForm& bad) { bad.right[0] = NAN; }},
        {"it said: ", [] (ConicForm& bad) { bad.cones[0].rows = 2; }},
        {"cone", [] (ConicForm& bad) { bad.cones[0].rows = -3; }},
        {"exponent", [] (ConicForm& bad) { bad.cones[0] = {ConeKind::power, 3, 0, 1}; }},
        {"number of rows", [] (ConicForm& bad) { bad.cones[0] = {ConeKind::semidefinite, 3, 3}; }},
        {"no known kind", [] (ConicForm& bad) { bad.cones[0].kind = static_cast<ConeKind> (9); }},
    };
    for (const auto& [says, spoil] : cases) {
        ConicForm bad = good;
        spoil (bad);
        Heard heard;
        const Claims claims = run (bad, heard);
        EXPECT_EQ (claims.outcome, Outcome::failed) << says;
        EXPECT_NE (claims.message.find (says), std::string::npos) << claims.message;
        EXPECT_TRUE (claims.x.empty ());
    }
}

TEST (Clarabel, RefusesWhatDoesNotFitIntoMemory)
{
    const auto engine = klv::clarabel::make_engine ();
    const auto refuses = [&] (std::int32_t order) {
        return engine->refuses (form ({}, {}, {}, {{ConeKind::semidefinite, order * (order + 1) / 2, order}}),
                                klv::Method::conic, {});
    };
    EXPECT_EQ (refuses (20), "");
    EXPECT_EQ (refuses (2000).find ("it needs about 208000000 MB of memory, more than half of the "), 0U);
    EXPECT_NE (engine->refuses (klv::LinearForm{}, klv::Method::conic, {}), "");
}

}
