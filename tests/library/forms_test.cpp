// Forms without an engine: what random problems with exact answers do not show, starts on their way forth and copies.
#include "kalvo/forms/conic.h"
#include "kalvo/forms/linear.h"
#include "kalvo/verify/distance.h"
#include "kalvo/verify/products.h"
#include "tests/library/model.h"

#include <cmath>
#include <numeric>
#include <random>
#include <tuple>

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

// ---- Conic forms -----------------------------------------------------------------------------------------------------------------

// The affine rows lie in the domain; all variables are free.
struct Block {
    KLVdomaintype type;
    std::int32_t size;
    Values exponents = {};
};

const Block blocks[] = {{KLV_DOMAIN_FREE, 3},
                        {KLV_DOMAIN_ZERO, 3},
                        {KLV_DOMAIN_NONNEGATIVE, 3},
                        {KLV_DOMAIN_NONPOSITIVE, 3},
                        {KLV_DOMAIN_QUADRATIC_CONE, 1},
                        {KLV_DOMAIN_QUADRATIC_CONE, 3},
                        {KLV_DOMAIN_ROTATED_QUADRATIC_CONE, 2},
                        {KLV_DOMAIN_ROTATED_QUADRATIC_CONE, 4},
                        {KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE, 3},
                        {KLV_DOMAIN_DUAL_EXPONENTIAL_CONE, 3},
                        {KLV_DOMAIN_PRIMAL_POWER_CONE, 3, {1, 2}},
                        {KLV_DOMAIN_DUAL_POWER_CONE, 3, {1, 2}},
                        {KLV_DOMAIN_PRIMAL_POWER_CONE, 5, {1, 2, 4}},
                        {KLV_DOMAIN_DUAL_POWER_CONE, 5, {1, 2, 4}},
                        {KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE, 4},
                        {KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE, 4},
                        {KLV_DOMAIN_SEMIDEFINITE_CONE, 6}};

std::shared_ptr<klv::Problem> within (const Block& block, const char* sense, const std::string& rows)
{
    std::string costs, bounds;
    for (std::int32_t j = 0; j < block.size; ++j) {
        costs += " " + std::to_string (1 - j);
        bounds += " ..";
    }
    auto problem = std::make_shared<klv::Problem> (
        model::parse (sense + costs + ";" + bounds + (rows.empty () ? "" : "; ") + rows));
    problem->affine.append (block.size, block.size);
    for (std::int32_t j = 0; j < block.size; ++j) {
        problem->affine.f.put (j, std::array{j}, std::array{j % 2 == 0 ? 2.0 : 0.5});
        problem->affine.g[static_cast<std::size_t> (j)] = 0.125 * j;
    }
    problem->domain.append (block.type, block.size, block.exponents);
    problem->affine_constraint.append (0, 0, block.size, {});
    problem->matrix.pack ();
    problem->affine.f.pack ();
    return problem;
}

Values random_values (std::size_t count, std::mt19937& random)
{
    std::normal_distribution<double> normal;
    Values values (count);
    for (double& value : values)
        value = normal (random);
    return values;
}

// A x, or with `transposed` A'x.
Values product (const klv::SparseColumns& matrix, std::size_t rows, const Values& x, bool transposed)
{
    Values result (transposed ? static_cast<std::size_t> (matrix.columns ()) : rows);
    for (std::size_t j = 0; j < static_cast<std::size_t> (matrix.columns ()); ++j)
        for (std::size_t k = 0; k < matrix.rows_of (j).size (); ++k) {
            const auto i = static_cast<std::size_t> (matrix.rows_of (j)[k]);
            result[transposed ? j : i] += matrix.values_of (j)[k] * x[transposed ? i : j];
        }
    return result;
}

bool is_in (const klv::ElementaryCone& cone, std::span<const double> s)
{
    switch (cone.kind) {
    case klv::ConeKind::zero:
        return std::ranges::all_of (s, [] (double value) { return value == 0; });
    case klv::ConeKind::nonnegative:
        return std::ranges::all_of (s, [] (double value) { return value >= 0; });
    case klv::ConeKind::second_order:
        return s[0] >= std::sqrt (std::inner_product (s.begin () + 1, s.end (), s.begin () + 1, 0.0));
    case klv::ConeKind::exponential:
        return s[1] > 0 && s[1] * std::exp (s[0] / s[1]) <= s[2];
    case klv::ConeKind::power:
        return s[0] >= 0 && s[1] >= 0 &&
               std::pow (s[0], cone.exponent) * std::pow (s[1], 1 - cone.exponent) >= std::abs (s[2]);
    default:
        break;
    }
    Values lower;
    for (std::int32_t column = 0; column < cone.order; ++column)
        for (std::int32_t row = column; row < cone.order; ++row)
            lower.push_back (s[static_cast<std::size_t> (row * (row + 1) / 2 + column)] /
                             (row == column ? 1 : std::sqrt (2.0)));
    return klv::matrix_distance (cone.order, 1, lower) <= 0;
}

const klv::Centre centre{{3, 0.01, 40, 0.5, 2, 1}, {}, {3, 0.01, 40, 0.5, 2, 1}};

// The form's gradient of its Lagrangian at any point, with any multipliers, is the stated one's with those that are recovered.
TEST (ConicForm, ObjectivesAndGradientsGoBack)
{
    std::mt19937 random (7);
    for (const Block& block : blocks)
        for (const auto& [sense, scaled, about] : {std::tuple{"min", true, false},
                                                   {"max", true, false},
                                                   {"min", false, true},
                                                   {"max", true, true}}) {
            const auto problem = within (
                block, sense, block.size < 3 ? "2 in ..3; 1 =2" : "1 -2 1 in 1..4; 0 3 5 in ..3; 7 0 1 =2");
            problem->quadratic_objective = {.item = {0},
                                            .variable = {0},
                                            .row = {0},
                                            .column = {0},
                                            .value = {*sense == 'm' && sense[1] == 'a' ? -3.0 : 3.0}};
            const klv::Lowered lowered = klv::lower_conic (problem, 1e20, scaled, about ? &centre : nullptr);
            const auto& form = std::get<klv::ConicForm> (*lowered.form);
            const std::size_t columns = form.cost.size (), rows = form.right.size ();
            const Values x = random_values (columns, random), z = random_values (rows, random);
            Values step = random_values (columns, random), ahead = x,
                   gradient = product (form.matrix, rows, z, true);
            const double curvature = form.quadratic.values.front () * x[0];
            double value = form.constant + 0.5 * curvature * x[0], slope = 0;
            gradient[0] += curvature;
            for (std::size_t j = 0; j < columns; ++j) {
                if (j >= static_cast<std::size_t> (block.size))
                    step[j] = 0;    // a variable that only the form has
                ahead[j] += step[j];
                value += form.cost[j] * x[j];
                slope += (gradient[j] + form.cost[j]) * step[j];
            }
            const klv::Point back =
                lowered.recovery->back ({.outcome = klv::Outcome::optimal, .x = x, .y = z});
            const klv::Point beyond = lowered.recovery->back ({.outcome = klv::Outcome::optimal, .x = ahead});
            const Values reduced = klv::reduced_costs (*problem, {back.y, back.doty}, back.x, true);
            double stated_slope = 0;
            for (std::size_t j = 0; j < reduced.size (); ++j)
                stated_slope += reduced[j] * (beyond.x[j] - back.x[j]);
            const std::string what =
                std::string (klv::domain_rows[block.type].name) + ", " + sense + (about ? ", centred" : "");
            EXPECT_NEAR (klv::objective (*problem, {back.x, {}}), form.sign * value,
                         1e-9 * (1 + std::abs (form.sign * value)))
                << what;
            EXPECT_NEAR (stated_slope, form.sign * slope, 1e-9 * (1 + std::abs (form.sign * slope))) << what;
        }
}

// Points of the form's cones are those of the domain; variables that only the form has can make it so, and nothing else.
TEST (ConicForm, HasThePointsOfTheDomain)
{
    std::mt19937 random (11);
    for (const Block& block : blocks) {
        int inside = 0;
        for (const bool about : {false, true}) {
            const auto problem = within (block, "min", "");
            const klv::Lowered lowered = klv::lower_conic (problem, 1e20, true, about ? &centre : nullptr);
            const auto& form = std::get<klv::ConicForm> (*lowered.form);
            const bool has_own = form.columns () > block.size;
            for (int round = 0; round < 10000; ++round) {
                Values x = random_values (form.cost.size (), random);
                for (std::size_t j = 0; j < x.size (); ++j)
                    if (j >= static_cast<std::size_t> (block.size))
                        x[j] = std::exp (3 * x[j]);
                    else if (round % 2 == 0)    // some are inside of cones whose first members are large
                        x[j] = 8 * std::abs (x[j]) * std::pow (0.3, static_cast<double> (j));
                Values s = product (form.matrix, form.right.size (), x, false);
                bool in_form = true;
                std::size_t row = 0;
                for (std::size_t i = 0; i < s.size (); ++i)
                    s[i] = form.right[i] - s[i];
                for (const klv::ElementaryCone& cone : form.cones) {
                    in_form = in_form &&
                              is_in (cone, std::span (s).subspan (row, static_cast<std::size_t> (cone.rows)));
                    row += static_cast<std::size_t> (cone.rows);
                }
                const klv::Point back = lowered.recovery->back ({.outcome = klv::Outcome::optimal, .x = x});
                const Values members = klv::affine_rows (*problem, {back.x, {}}, true);
                const bool in_domain = klv::distance ({block.type, block.exponents}, 1, members) <= 0;
                if (in_form || !has_own) {
                    EXPECT_EQ (in_form, in_domain)
                        << klv::domain_rows[block.type].name << ", round " << round;
                }
                inside += in_form;
            }
        }
        EXPECT_EQ (inside > 0, block.type != KLV_DOMAIN_ZERO) << klv::domain_rows[block.type].name;
    }
}

}
