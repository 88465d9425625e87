// Each tolerance decides one question of the check: an engine's point that is a little wrong, judged by the default and by
// a looser value of one parameter.
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"

#include <ostream>

namespace {

struct Judgement {
    const char* parameter;
    model::Model problem;
    klv::Claims claims;
    std::int32_t slot;
    std::int32_t by_default, loose;
};

std::ostream& operator<< (std::ostream& out, const Judgement& c)
{
    return out << c.parameter;
}

// min x + 2y, x + y >= 2, both in [0, 10]: the optimum is 2 at (2, 0), with multiplier 1.
Judgement of_linear (const char* parameter, double x, double reduced_cost, std::int32_t by_default,
                     std::int32_t loose)
{
    klv::Claims claims = scripted::claims (klv::Outcome::optimal);
    claims.x = {x, 0};
    claims.y = {1};
    claims.reduced_cost = {0, reduced_cost};
    return {parameter,
            {.cost = {1, 2}, .rows = {{1, 1}}, .row_bounds = {{2, model::inf}}, .bounds = {{0, 10}, {0, 10}}},
            claims,
            KLV_SOL_BAS,
            by_default,
            loose};
}

// An integer variable that its row keeps away from whole numbers, so that rounding is no way out.
Judgement of_integer ()
{
    klv::Claims claims = scripted::claims (klv::Outcome::optimal);
    claims.x = {2.0001};
    claims.best_bound = 2.0001;
    claims.has_best_bound = true;
    return {"KLV_DPAR_INTEGER_TOLERANCE",
            {.cost = {1},
             .rows = {{1}},
             .row_bounds = {{2.0001, 2.0001}},
             .bounds = {{0, 10}},
             .integer = {true}},
            claims,
            KLV_SOL_INT,
            KLV_SOLSTA_UNKNOWN,
            KLV_SOLSTA_INTEGER_OPTIMAL};
}

class Tolerance : public testing::TestWithParam<Judgement> {};

TEST_P (Tolerance, decides_its_own_question)
{
    const Judgement& c = GetParam ();
    const scripted::InFront front (
        [&] (const klv::Job&, const klv::StopFlag&, klv::EventChannel&) { return c.claims; });
    for (const bool loose : {false, true}) {
        model::Task task (c.problem);
        task.set ("KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_DUAL_SIMPLEX);
        if (loose)
            task.set (c.parameter, 1e-3);
        KLV_optimize (task);
        EXPECT_EQ (model::slot (task, c.slot).solution, loose ? c.loose : c.by_default) << loose;
    }
}

INSTANTIATE_TEST_SUITE_P (Each, Tolerance,
                          testing::Values (of_linear ("KLV_DPAR_PRIMAL_TOLERANCE", 2 - 1e-4, 1,
                                                      KLV_SOLSTA_DUAL_FEASIBLE, KLV_SOLSTA_FEASIBLE),
                                           of_linear ("KLV_DPAR_DUAL_TOLERANCE", 2, 1 + 1e-4,
                                                      KLV_SOLSTA_PRIMAL_FEASIBLE, KLV_SOLSTA_OPTIMAL),
                                           of_linear ("KLV_DPAR_GAP_TOLERANCE", 2 + 1e-4, 1,
                                                      KLV_SOLSTA_FEASIBLE, KLV_SOLSTA_OPTIMAL),
                                           of_integer ()));

}
