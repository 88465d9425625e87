// Forms without an engine: what becomes of a problem, and the way back of what is claimed and forth of a start.
#include "kalvo/forms/linear.h"
#include "tests/library/model.h"

namespace {

using klv::LinearForm;
using model::inf;
using model::Values;

std::shared_ptr<klv::Problem> packed (const std::string& text)
{
    const auto problem = std::make_shared<klv::Problem> (model::parse (text));
    problem->matrix.pack ();
    return problem;
}

klv::Lowered lower (const std::string& problem, const klv::Limits& limits = {.infinite_bound = 1e20})
{
    return klv::lower_linear (packed (problem), limits, true);
}

Values vector (const klv::Values& values)
{
    return {values.get ().begin (), values.get ().end ()};
}

TEST (LinearForm, IsAMinimumWithoutFreeRowsAndHugeBounds)
{
    const klv::Lowered lowered = lower (
        "max 1 -2 +3; -1e25..4 1..0.5; 5 6 in ..; 1 2 in 1..; 7 8 in -1e21..1e20; 3 4 in ..9; 0 1 in ..");
    const auto& form = std::get<LinearForm> (*lowered.form);
    EXPECT_EQ (vector (form.cost), (Values{-1, 2}));
    EXPECT_EQ (form.constant, -3);
    EXPECT_EQ (vector (form.column_lower), (Values{-inf, 0.5}));
    EXPECT_EQ (vector (form.column_upper), (Values{4, 1}));
    EXPECT_EQ (vector (form.row_lower), (Values{1, -inf}));
    EXPECT_EQ (vector (form.row_upper), (Values{inf, 9}));
    EXPECT_EQ ((Values{form.entries.begin (), form.entries.end ()}), (Values{1, 3, 2, 4}));
    EXPECT_EQ (std::vector (form.rows.begin (), form.rows.end ()), (std::vector{0, 1, 0, 1}));
    EXPECT_EQ (std::vector (form.starts.begin (), form.starts.end ()), (std::vector{0, 2, 4}));
    EXPECT_EQ (lowered.infinite_bounds, 3);
}

TEST (LinearForm, IsTheStatedDataWhereNothingChanges)
{
    const auto stated =
        std::make_shared<klv::Problem> (model::parse ("min 1 2; 0.. ..4; 1 2 in 1..; 3 4 =9"));
    const klv::Lowered lowered = klv::lower_linear (stated, {}, false);
    const auto& form = std::get<LinearForm> (*lowered.form);
    EXPECT_EQ (form.cost.get ().data (), stated->cost.data ());
    EXPECT_EQ (form.row_lower.get ().data (), stated->constraint.lower.data ());
    EXPECT_EQ (form.entries.data (), stated->matrix.values ().data ());
    const auto start = std::make_shared<klv::Start> ();
    EXPECT_EQ (lowered.recovery->forth (start), start);
}

TEST (LinearForm, RecoversWhatWasStated)
{
    constexpr std::int32_t basic = KLV_SK_BASIC, lower_key = KLV_SK_LOWER, upper = KLV_SK_UPPER;
    for (const bool maximised : {false, true}) {
        SCOPED_TRACE (maximised);
        const double sign = maximised ? -1 : 1;
        const klv::Lowered lowered = lower ((maximised ? "max" : "min") +
                                            std::string (" 1 2; 0.. 0..; 5 6 in ..; 1 2 in 1..; 3 4 in ..9"));
        klv::Start stated{.row_key = {basic, lower_key, upper},
                          .column_key = {basic, basic},
                          .x = {1, 2},
                          .activity = {17, 5, 11},
                          .y = {0, 0.5, -1},
                          .reduced_cost = {2, 3}};
        const auto start = lowered.recovery->forth (std::make_shared<klv::Start> (stated));
        EXPECT_EQ (start->row_key, (std::vector{lower_key, upper}));
        EXPECT_EQ (start->activity, (Values{5, 11}));
        EXPECT_EQ (start->y, (Values{sign * 0.5, -sign}));
        klv::Point claimed{.x = start->x,
                           .y = start->y,
                           .reduced_cost = start->reduced_cost,
                           .column_key = start->column_key,
                           .row_key = start->row_key,
                           .dual_ray = {sign, sign * 2},
                           .bound = sign * 7};
        const klv::Point back = lowered.recovery->back (std::move (claimed));
        EXPECT_EQ (back.x, stated.x);
        EXPECT_EQ (back.y, stated.y);
        EXPECT_EQ (back.reduced_cost, stated.reduced_cost);
        EXPECT_EQ (back.row_key, stated.row_key);
        EXPECT_EQ (back.dual_ray, (Values{0, 1, 2}));
        EXPECT_EQ (back.bound, 7);
    }
    // Of a problem whose rows all bind nothing.
    const klv::Lowered lowered = lower ("min 1; 0..; 5 in ..");
    EXPECT_EQ (lowered.recovery->back ({.x = {0}, .reduced_cost = {1}, .column_key = {lower_key}}).y,
               (Values{0}));
}

TEST (LinearForm, IsRefusedByTheNameOfWhatTheEngineCannotTake)
{
    const klv::Limits limits{.infinite_bound = 1e20, .infinite_cost = 1e20, .largest_entry = 1e15};
    for (const auto& [problem, refused] : {std::pair{"min 1e20; 0..; 1 in ..", "the cost of variable 1"},
                                           {"min 1; 0..; 1e15 in 1..", "entry of constraint 1"},
                                           {"min 1; 1e20..; 1 in ..", "variable 1"}}) {
        EXPECT_NE (lower (problem, limits).refused.find (refused), std::string::npos) << problem;
    }
}

}
