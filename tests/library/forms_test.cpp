// Forms without an engine: what random problems with exact answers do not show, starts on their way forth and copies.
#include "kalvo/forms/linear.h"
#include "tests/library/model.h"

namespace {

using klv::LinearForm;
using model::inf;
using model::Values;

klv::Lowered lower (const std::string& text)
{
    const auto problem = std::make_shared<klv::Problem> (model::parse (text));
    problem->matrix.pack ();
    return klv::lower_linear (problem, {.infinite_bound = 1e20}, true);
}

TEST (LinearForm, IsAMinimumWithoutFreeRowsAndHugeBounds)
{
    const klv::Lowered lowered =
        lower ("max 1 -2 +3; -1e25..4 1..0.5; 5 6 in ..; 1 2 in 1..; 7 8 in -1e21..1e20; 3 4 in ..9");
    const auto& form = std::get<LinearForm> (*lowered.form);
    const auto values = [] (const auto& span) { return Values (span.begin (), span.end ()); };
    EXPECT_EQ (values (form.cost.get ()), (Values{-1, 2}));
    EXPECT_EQ (form.constant, -3);
    EXPECT_EQ (values (form.column_lower.get ()), (Values{-inf, 0.5}));
    EXPECT_EQ (values (form.column_upper.get ()), (Values{4, 1}));
    EXPECT_EQ (values (form.row_lower.get ()), (Values{1, -inf}));
    EXPECT_EQ (values (form.row_upper.get ()), (Values{inf, 9}));
    EXPECT_EQ (values (form.entries), (Values{1, 3, 2, 4}));
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

TEST (LinearForm, TakesAStartForthAndBack)
{
    for (const auto& [sense, sign] : {std::pair{"min", 1.0}, {"max", -1.0}}) {
        const klv::Lowered lowered =
            lower (sense + std::string (" 1 2; 0.. 0..; 5 6 in ..; 1 2 in 1..; 3 4 in ..9"));
        const klv::Start stated{.row_key = {KLV_SK_BASIC, KLV_SK_LOWER, KLV_SK_UPPER},
                                .column_key = {KLV_SK_BASIC, KLV_SK_BASIC},
                                .x = {1, 2},
                                .activity = {17, 5, 11},
                                .y = {0, 0.5, -1},
                                .reduced_cost = {2, 3}};
        const auto start = lowered.recovery->forth (std::make_shared<klv::Start> (stated));
        EXPECT_EQ (start->row_key, (std::vector<std::int32_t>{KLV_SK_LOWER, KLV_SK_UPPER}));
        EXPECT_EQ (start->activity, (Values{5, 11}));
        EXPECT_EQ (start->y, (Values{sign * 0.5, -sign}));
        const klv::Point back = lowered.recovery->back (
            {.x = start->x, .y = start->y, .reduced_cost = start->reduced_cost, .row_key = start->row_key});
        EXPECT_EQ (back.x, stated.x);
        EXPECT_EQ (back.y, stated.y);
        EXPECT_EQ (back.reduced_cost, stated.reduced_cost);
        EXPECT_EQ (back.row_key, stated.row_key);
    }
}

}
