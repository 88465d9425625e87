// The check of every convex class: closed-form optima and their duals, certificates; what is wrong is refused.
#include "kalvo/verify/check.h"
#include "kalvo/verify/distance.h"
#include "kalvo/verify/refinement.h"
#include "tests/library/every_class.h"

#include <cmath>

namespace {

using klv::Answer, klv::Outcome, klv::Point, klv::Problem, klv::Shape;
using model::inf, model::Values;
constexpr double nan = std::numeric_limits<double>::quiet_NaN (), e = 2.718281828459045,
                 root2 = 1.4142135623730951;

Answer check (const Problem& problem, const Point& point, bool integers = false)
{
    return klv::Check (std::make_shared<const Problem> (problem), klv::Parameters (),
                       integers) (Point (point));
}

// One affine conic constraint: x + g in the domain, for all variables.
Problem within (const std::string& text, const Shape& shape, const Values& b = {})
{
    Problem problem = model::parse (text);
    const std::int32_t n = problem.variables ();
    problem.affine.append (n, n);
    for (std::int32_t j = 0; j < n; ++j)
        problem.affine.f.put (j, std::array{j}, std::array{1.0});
    problem.domain.append (shape.type, n, shape.exponents);
    problem.affine_constraint.append (0, 0, n, b);
    return problem;
}

void put_cone (Problem& problem, std::int32_t type, double parameter, const model::Ints& members)
{
    EXPECT_EQ (problem.cone.prepare (members, problem.variables ()), -1);
    problem.cone.append (type, parameter, members);
}

// The same problem as a maximum.
Problem mirrored (Problem problem)
{
    problem.sense = KLV_SENSE_MAXIMIZE;
    problem.constant = -problem.constant;
    for (auto* values :
         {&problem.cost, &problem.quadratic_objective.value, &problem.semidefinite.objective.value})
        for (double& value : *values)
            value = -value;
    return problem;
}

Point mirrored (Point point)
{
    for (auto* values : {&point.y, &point.reduced_cost, &point.doty, &point.snx})
        for (double& value : *values)
            value = -value;
    return point;
}

// ---- Optima --------------------------------------------------------------------------------------------------------------------

constexpr double halves[] = {0.5, 0.5}, power_of_3[] = {1, 2};

struct Optimum {
    const char* what;
    Problem problem;
    Point point;
    double value;
    Values snx = {}, bars = {};
};

std::vector<Optimum> optima ()
{
    std::vector<Optimum> all;
    const auto add = [&] (const char* what, KLVdomaintype type, const char* text, Values x, Values y,
                          Values doty, double value, std::span<const double> exponents = {}) {
        all.push_back ({what,
                        within (text, {type, exponents}),
                        {.x = std::move (x), .y = std::move (y), .doty = std::move (doty)},
                        value});
    };
    // The multiplier of a row is y, the rest c - A'y is the dual of the domain.
    add ("free", KLV_DOMAIN_FREE, "min 2; ..; 1 in 3..", {3}, {2}, {0}, 6);
    add ("zero", KLV_DOMAIN_ZERO, "min 2 1; .. 1..; 1 1 in ..", {0, 0}, {0}, {2, 1}, 0);
    all.back ().problem.variable.lower[1] = -inf;
    add ("nonnegative", KLV_DOMAIN_NONNEGATIVE, "min 2 1; .. ..; 1 1 in 3..", {0, 3}, {1}, {1, 0}, 3);
    add ("nonpositive", KLV_DOMAIN_NONPOSITIVE, "min -2 -1; .. ..; 1 1 in ..-3", {0, -3}, {-1}, {-1, 0}, 3);
    all.back ().problem.constraint.lower[0] = -inf;
    add ("quadratic", KLV_DOMAIN_QUADRATIC_CONE, "min 1 0 0; .. .. ..; 0 1 in =3; 0 0 1 in =4", {5, 3, 4},
         {0.6, 0.8}, {1, -0.6, -0.8}, 5);
    add ("rotated", KLV_DOMAIN_ROTATED_QUADRATIC_CONE, "min 1 1 0; .. .. ..; 0 0 1 in =2", {root2, root2, 2},
         {root2}, {1, 1, -root2}, 2 * root2);
    add ("exponential", KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE, "min 1 0 0; .. .. ..; 0 1 in =1; 0 0 1 in =1",
         {e, 1, 1}, {0, e}, {1, 0, -e}, e);
    add ("dual exponential", KLV_DOMAIN_DUAL_EXPONENTIAL_CONE, "min 1 0 0; .. .. ..; 0 1 in =0; 0 0 1 in =-1",
         {1 / e, 0, -1}, {-1 / e, -1 / e}, {1, 1 / e, 1 / e}, 1 / e);
    add ("power", KLV_DOMAIN_PRIMAL_POWER_CONE, "min 0 0 -1; .. .. ..; 1 in =8; 0 1 in =1", {8, 1, 2},
         {-1.0 / 12, -4.0 / 3}, {1.0 / 12, 4.0 / 3, -1}, -2, power_of_3);
    add ("dual power", KLV_DOMAIN_DUAL_POWER_CONE, "min 1 1 0; .. .. ..; 0 0 1 in =1", {0.5, 0.5, 1}, {1},
         {1, 1, -1}, 1, halves);
    add ("geometric mean", KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE, "min 0 0 -1; .. .. ..; 1 in =4; 0 1 in =1",
         {4, 1, 2}, {-0.25, -1}, {0.25, 1, -1}, -2);
    add ("dual geometric mean", KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE, "min 1 1 0; .. .. ..; 0 0 1 in =1",
         {0.5, 0.5, 1}, {1}, {1, 1, -1}, 1);
    add ("svec", KLV_DOMAIN_SEMIDEFINITE_CONE, "min 1 0 1; .. .. ..; 0 1 in =1.4142135623730951",
         {1, root2, 1}, {root2}, {1, -root2, 1}, 2);

    // 1/2 x'Qx, Q = [2 1; 1 2], in the objective; the same up to 3 in a constraint.
    const auto curved = [] (bool constraint) {
        klv::SymmetricTerms terms{
            .item = {}, .variable = {}, .row = {0, 1, 1}, .column = {0, 0, 1}, .value = {2, 1, 2}};
        if (constraint)
            terms.item.assign (3, 0);
        return terms;
    };
    all.push_back (
        {"quadratic objective", model::parse ("min 1 1; .. 1..; 1 in =1"), {.x = {1, 1}, .y = {4}}, 5});
    all.back ().problem.quadratic_objective = curved (false);
    all.push_back ({"quadratic constraint",
                    model::parse ("min -1 -1; .. ..; 0 in ..3"),
                    {.x = {1, 1}, .y = {-1.0 / 3}},
                    -2});
    all.back ().problem.quadratic_constraint = curved (true);

    // Cones of variables, without and with bounds that bind beside the cone.
    all.push_back ({"cone of variables",
                    model::parse ("min 0 1 0; .. .. ..; 1 in =3; 0 0 1 in =4"),
                    {.x = {3, 5, 4}, .y = {0.6, 0.8}},
                    5,
                    {-0.6, 1, -0.8}});
    put_cone (all.back ().problem, KLV_CONE_QUADRATIC, 0, {1, 0, 2});
    all.push_back ({"cone and bounds",
                    model::parse ("min 1 0 0; .. 3.. =4"),
                    {.x = {5, 3, 4}, .y = {}, .snx = {1, -0.6, -0.8}},
                    5,
                    {1, -0.6, -0.8}});
    put_cone (all.back ().problem, KLV_CONE_QUADRATIC, 0, {0, 1, 2});
    all.push_back ({"power cone of variables",
                    model::parse ("min 0 0 -1; .. .. ..; 1 in =4; 0 1 in =1"),
                    {.x = {4, 1, 2}, .y = {-0.25, -1}},
                    -2,
                    {0.25, 1, -1}});
    put_cone (all.back ().problem, KLV_CONE_PRIMAL_POWER, 0.5, {0, 1, 2});

    // min X11 + X22, X21 = 1, as a constraint's term; and as expression 2 X21 - 2 in {0}.
    const auto with_matrix = [] (Problem& problem) {
        problem.semidefinite.append (std::array{2});
        problem.semidefinite.objective = {
            .item = {}, .variable = {0, 0}, .row = {0, 1}, .column = {0, 1}, .value = {1, 1}};
    };
    const klv::SymmetricTerms corner{.item = {0}, .variable = {0}, .row = {1}, .column = {0}, .value = {1}};
    all.push_back (
        {"matrix", model::parse ("min; ; in =2"), {.x = {}, .y = {1}, .barx = {1, 1, 1}}, 2, {}, {1, -1, 1}});
    with_matrix (all.back ().problem);
    all.back ().problem.semidefinite.constraint = corner;
    all.push_back ({"matrix in an expression",
                    within ("min 0; =0", {KLV_DOMAIN_ZERO}, {2}),
                    {.x = {0}, .y = {}, .barx = {1, 1, 1}, .doty = {1}},
                    2,
                    {},
                    {1, -1, 1}});
    with_matrix (all.back ().problem);
    all.back ().problem.affine.f = klv::ColumnMatrix ();
    all.back ().problem.affine.f.append_columns (1);
    all.back ().problem.semidefinite.expression = corner;
    return all;
}

TEST (VerifyConic, ClosedFormOptimaAreProvedAndTheirPerturbationsNot)
{
    for (Optimum& row : optima ())
        for (const double sign : {1.0, -1.0}) {
            SCOPED_TRACE (row.what + std::string (sign < 0 ? ", maximised" : ""));
            const Problem problem = sign > 0 ? row.problem : mirrored (row.problem);
            Point point = sign > 0 ? row.point : mirrored (row.point);
            const Answer answer = check (problem, point);
            ASSERT_TRUE (answer.solution);
            const klv::Solution& found = *answer.solution;
            EXPECT_TRUE (answer.conclusive)
                << found.violations.primal << ' ' << found.violations.dual << ' ' << found.violations.gap;
            EXPECT_NEAR (found.primal_objective, sign * row.value, 1e-14);
            EXPECT_NEAR (found.dual_objective, sign * row.value, 2e-14);
            EXPECT_EQ (found.doty, point.doty);
            for (std::size_t j = 0; j < row.snx.size (); ++j)
                EXPECT_NEAR (found.snx[j], sign * row.snx[j], 1e-15);
            for (std::size_t k = 0; k < row.bars.size (); ++k)
                EXPECT_NEAR (found.bars[k], sign * row.bars[k], 1e-15);

            for (std::vector<double>* values : {&point.x, &point.y, &point.barx, &point.doty}) {
                for (double& value : *values)
                    for (const double wrong : {value + 1e-4, value - 1e-4, nan, inf}) {
                        const double right = std::exchange (value, wrong);
                        EXPECT_FALSE (check (problem, point).conclusive) << value - right;
                        value = right;
                    }
                if (!values->empty ()) {
                    const Values right = *values;
                    values->pop_back ();
                    EXPECT_FALSE (check (problem, point).conclusive) << "one entry is missing";
                    *values = right;
                }
            }
        }
}

TEST (VerifyConic, AFailureIsNamed)
{
    struct Failing {
        const char* text;
        Point point;
        const char* failure;
    };
    const Failing rows[] = {
        {"min 1 1; 0.. 0..; 1 1 in 1..",
         {.x = {-0.5, 1.5}, .y = {1}},
         "primal violation 5.0e-01 of variable 1 (index 0)"},
        {"min 1 1; 0.. 0..; 1 1 in 1..",
         {.x = {0.5, 0.25}, .y = {1}},
         "primal violation 1.2e-01 of constraint 1 (index 0)"},
        {"min 1 1; 0.. 0..; 1 1 in 1..",
         {.x = {0.5, 0.5}, .y = {4}},
         "dual violation 1.5e+00 of variable 1 (index 0)"},
        {"min 1 1; 0.. 0..; 1 1 in 1..", {.x = {0.5, 0.5}, .y = {0.5}}, "gap 2.0e-01, tolerance 1e-06"},
        {"min 1 1; 0.. 0..; 1 1 in 1..", {.x = {0.5, 0.5}}, "it has no multipliers"},
    };
    for (const Failing& row : rows)
        EXPECT_EQ (check (model::parse (row.text), row.point).failure.find (row.failure), 0) << row.failure;
    EXPECT_NE (check (within ("min 1 0 0; .. .. ..; 0 1 in =3; 0 0 1 in =4", {KLV_DOMAIN_QUADRATIC_CONE}),
                      {.x = {4, 3, 4}, .y = {0.6, 0.8}, .doty = {1, -0.6, -0.8}})
                   .failure.find ("of a cone"),
               std::string::npos);
}

// ---- Certificates --------------------------------------------------------------------------------------------------------------

struct Ray {
    const char* what;
    Problem problem;
    Point point;
    Values snx = {}, bars = {};    // of the certificate
};

Point multipliers (Values y, Values doty = {}, Values x = {}, Values snx = {})
{
    return {.outcome = Outcome::infeasible,
            .x = std::move (x),
            .dual_ray = std::move (y),
            .doty = std::move (doty),
            .snx = std::move (snx)};
}

Point way (Values x, Values barx = {})
{
    return {.outcome = Outcome::unbounded, .primal_ray = std::move (x), .barx = std::move (barx)};
}

// Each proof is true; with its first bound (for directions its domain, cone or matrix coefficient) changed it would be false.
std::vector<Ray> rays ()
{
    std::vector<Ray> all;
    const auto infeasible = [&] (const char* what, KLVdomaintype type, const char* text, Values y,
                                 Values doty, std::span<const double> exponents = {}) {
        all.push_back (
            {what, within (text, {type, exponents}), multipliers (std::move (y), std::move (doty))});
    };
    const auto unbounded = [&] (const char* what, KLVdomaintype type, const char* text, Values x,
                                std::span<const double> exponents = {}) {
        all.push_back ({what, within (text, {type, exponents}), way (std::move (x))});
    };
    infeasible ("zero", KLV_DOMAIN_ZERO, "min 0; ..; 1 in =1", {1}, {-1});
    infeasible ("nonnegative", KLV_DOMAIN_NONNEGATIVE, "min 0; ..; 1 in =-1", {-1}, {1});
    infeasible ("nonpositive", KLV_DOMAIN_NONPOSITIVE, "min 0; ..; 1 in =1", {1}, {-1});
    infeasible ("quadratic", KLV_DOMAIN_QUADRATIC_CONE,
                "min 0 0 0; .. .. ..; 1 in =4; 0 1 in =3; 0 0 1 in =4", {-1, 0.6, 0.8}, {1, -0.6, -0.8});
    infeasible ("rotated", KLV_DOMAIN_ROTATED_QUADRATIC_CONE,
                "min 0 0 0; .. .. ..; 1 in =1; 0 1 in =1; 0 0 1 in =2", {-1, -1, root2}, {1, 1, -root2});
    infeasible ("exponential", KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE,
                "min 0 0 0; .. .. ..; 1 in =2; 0 1 in =1; 0 0 1 in =1", {-1, 0, e}, {1, 0, -e});
    infeasible ("dual exponential", KLV_DOMAIN_DUAL_EXPONENTIAL_CONE,
                "min 0 0 0; .. .. ..; 1 in =0.3; 0 1 in =0; 0 0 1 in =-1", {-1, -1 / e, -1 / e},
                {1, 1 / e, 1 / e});
    infeasible ("power", KLV_DOMAIN_PRIMAL_POWER_CONE, "min 0 0 0; .. .. ..; 1 in =8; 0 1 in =1; 0 0 1 in =3",
                {-1.0 / 12, -4.0 / 3, 1}, {1.0 / 12, 4.0 / 3, -1}, power_of_3);
    infeasible ("geometric mean", KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE,
                "min 0 0 0; .. .. ..; 1 in =4; 0 1 in =1; 0 0 1 in =3", {-0.25, -1, 1}, {0.25, 1, -1});
    infeasible ("dual geometric mean", KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE,
                "min 0 0 0; .. .. ..; 1 in =0.4; 0 1 in =0.4; 0 0 1 in =1", {-1, -1, 1}, {1, 1, -1});
    infeasible ("svec", KLV_DOMAIN_SEMIDEFINITE_CONE, "min 0 0 0; .. .. ..; 1 in =1; 0 1 in =2; 0 0 1 in =1",
                {-1, root2, -1}, {1, -root2, 1});
    infeasible ("noise of an interior ray, refined", KLV_DOMAIN_QUADRATIC_CONE,
                "min 0 0; .. ..; 1 in =1; 0 1 in =3", {-1.1, 1 + 2e-10}, {1.1 + 1e-9, -1});
    all.push_back ({"cone of variables",
                    model::parse ("min 0 0; .. ..; 1 in =3; 0 1 in =4"),
                    multipliers ({-1, 1}),
                    {1, -1}});
    put_cone (all.back ().problem, KLV_CONE_QUADRATIC, 0, {0, 1});
    all.back ().problem.constraint.lower[0] = all.back ().problem.constraint.upper[0] = 3;
    all.push_back (
        {"cone and bounds", model::parse ("min 0 0; ..3 4.."), multipliers ({}, {}, {}, {1, -1}), {1, -1}});
    put_cone (all.back ().problem, KLV_CONE_QUADRATIC, 0, {0, 1});
    all.push_back ({"matrix", model::parse ("min; ; in =-1; in =2"), multipliers ({-1, 0}), {}, {1, 0, 0}});
    all.back ().problem.semidefinite.append (std::array{2});
    all.back ().problem.semidefinite.constraint = {
        .item = {0, 1}, .variable = {0, 0}, .row = {0, 1}, .column = {0, 0}, .value = {1, 1}};
    // x^2 <= -1, the gradient taken where it is 0; and x^2 - 2 x <= -2, where it is not 0 at x = 0.
    all.push_back (
        {"quadratic constraint", model::parse ("min 0; ..; -2 in ..-2"), multipliers ({-1}, {}, {1})});
    const klv::SymmetricTerms square{.item = {0}, .variable = {}, .row = {0}, .column = {0}, .value = {2}};
    all.back ().problem.quadratic_constraint = square;
    all.push_back ({"quadratic constraint without its point", all.back ().problem, multipliers ({-1})});
    all.push_back ({"noise where the gradient is taken", model::parse ("min 1; ..; 0 in ..-1"),
                    multipliers ({-1}, {}, {1e-9})});
    all.back ().problem.quadratic_constraint = square;
    all.push_back ({"concave along a fixed variable", model::parse ("min 1 0; .. =1; 0 in ..-3"),
                    multipliers ({-1}, {}, {0, 0})});
    all.back ().problem.quadratic_constraint = {
        .item = {0, 0}, .variable = {}, .row = {0, 1}, .column = {0, 1}, .value = {2, -2}};
    all.push_back ({"matrix that must have a zero row, but for noise",
                    model::parse ("min; ; in =-1; in =0.5"),
                    multipliers ({-1, 1e-6}),
                    {},
                    {1, 0, 0}});
    all.back ().problem.semidefinite.append (std::array{2});
    all.back ().problem.semidefinite.constraint = {
        .item = {0, 1}, .variable = {0, 0}, .row = {0, 1}, .column = {0, 0}, .value = {1, 0.5}};

    unbounded ("quadratic", KLV_DOMAIN_QUADRATIC_CONE, "min 0 -3 -4; .. .. ..", {5, 3, 4});
    unbounded ("rotated", KLV_DOMAIN_ROTATED_QUADRATIC_CONE, "min 0 0 -1; .. .. ..; 1 -1 in =0",
               {root2, root2, 2});
    unbounded ("exponential", KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE, "min 0 0 -1; .. .. ..; 0 1 -1 in =0",
               {e, 1, 1});
    unbounded ("dual exponential", KLV_DOMAIN_DUAL_EXPONENTIAL_CONE, "min 0 0 1; .. .. ..; 0 1 in =0",
               {1 / e, 0, -1});
    unbounded ("power", KLV_DOMAIN_PRIMAL_POWER_CONE, "min 0 0 -1; .. .. ..; 1 -8 in =0", {8, 1, 2},
               power_of_3);
    unbounded ("dual power", KLV_DOMAIN_DUAL_POWER_CONE, "min 0 0 -1; .. .. ..", {0.5, 0.5, 1}, halves);
    unbounded ("geometric mean", KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE, "min 0 0 -1; .. .. ..", {4, 1, 2});
    unbounded ("svec", KLV_DOMAIN_SEMIDEFINITE_CONE, "min 0 -1 0; .. .. ..", {1, root2, 1});
    all.push_back ({"quadratic objective", model::parse ("min -1 -1; .. .."), way ({1, 1})});
    all.back ().problem.quadratic_objective = {
        .item = {}, .variable = {}, .row = {0, 1, 1}, .column = {0, 0, 1}, .value = {1, -1, 1}};
    all.push_back ({"cone of variables", model::parse ("min 0 -1; .. .."), way ({1, 1})});
    put_cone (all.back ().problem, KLV_CONE_QUADRATIC, 0, {0, 1});
    all.push_back ({"matrix", model::parse ("min;"), way ({}, {1, 1, 1})});
    all.back ().problem.semidefinite.append (std::array{2});
    all.back ().problem.semidefinite.objective = {
        .item = {}, .variable = {0}, .row = {1}, .column = {0}, .value = {-1}};
    return all;
}

TEST (VerifyConic, RaysAreProvedByTheirDefinition)
{
    for (const Ray& row : rays ())
        for (const bool maximise : {false, true}) {
            SCOPED_TRACE (row.what + std::string (maximise ? ", maximised" : "") +
                          (row.point.outcome == Outcome::infeasible ? ", infeasible" : ", unbounded"));
            const Problem problem = maximise ? mirrored (row.problem) : row.problem;
            const double sign = maximise ? -1 : 1;
            Point point = row.point;
            const Answer answer = check (problem, point);
            ASSERT_TRUE (answer.conclusive);
            const klv::Solution& found = *answer.solution;
            if (point.outcome == Outcome::infeasible) {
                EXPECT_EQ (found.dual_objective, sign);
                double share = 0;    // certificates are rays of value 1
                for (std::size_t j = 0; j < row.snx.size (); ++j)
                    share = std::max (share,
                                      std::abs (found.snx[j] - sign * std::abs (found.snx[0]) * row.snx[j]));
                for (std::size_t k = 0; k < row.bars.size (); ++k)
                    share = std::max (share, std::abs (found.bars[k] - sign * row.bars[k]));
                EXPECT_LE (share, 1e-15);
            } else
                EXPECT_EQ (found.primal_objective, -sign);
            for (std::vector<double>* values : {&point.dual_ray, &point.primal_ray, &point.doty, &point.barx})
                for (double& value : *values)
                    for (const double wrong : {nan, inf}) {
                        const double right = std::exchange (value, wrong);
                        EXPECT_FALSE (check (problem, point).conclusive);
                        value = right;
                    }
        }
}

// Feasible, or bounded, by little: what nearly is a ray proves nothing.
TEST (VerifyConic, NearlyRaysAreRefused)
{
    const auto refused = [] (const char* what, const Problem& problem, const Point& point) {
        EXPECT_FALSE (check (problem, point).conclusive) << what;
    };
    refused ("the bound is on the cone",
             within ("min 0 0; .. ..; 1 in =3; 0 1 in =3", {KLV_DOMAIN_QUADRATIC_CONE}),
             multipliers ({-1, 1 + 1e-9}, {1, -1 - 1e-9}));
    refused (
        "a member that should be small beside another one",
        within ("min 0 0 0; ..1e-10 .. ..; 0 1 in 0..; 0 0 1 in =2", {KLV_DOMAIN_ROTATED_QUADRATIC_CONE}),
        multipliers ({0, 0.5}, {1e8, 0, -0.5}));
    refused ("a small member of a matrix",
             within ("min 0 0 0; ..1e-10 .. ..; 0 0 1 in 0..; 0 1 in =2", {KLV_DOMAIN_SEMIDEFINITE_CONE}),
             multipliers ({0, 0.5}, {1e8, -0.5, 0}));
    refused ("a multiplier outside the dual cone pays",
             within ("min 0 0; .. ..; 1 in =3; 0 1 in =2", {KLV_DOMAIN_QUADRATIC_CONE}),
             multipliers ({-1, 2}, {1, -2}));
    refused ("a small true entry at an absent bound",
             within ("min 0 0; .. ..; 1 in =1", {KLV_DOMAIN_QUADRATIC_CONE}), multipliers ({-1}, {1, -1e-9}));
    refused ("a direction that leaves the cone by little",
             within ("min 1 0; .. ..", {KLV_DOMAIN_DUAL_POWER_CONE, halves}), way ({-1e-9, 1}));
    const double far = 1e8, beyond = std::nextafter (far, inf);
    refused ("bounded: both members are equal, and the third is 0",
             within ("min 0 0 1; .. .. ..; 1 -1 in =0", {KLV_DOMAIN_QUADRATIC_CONE}),
             way ({beyond, far, -1}));
    Problem weak = model::parse ("min 0 0 1; .. .. ..; 1 -1 in =0");
    put_cone (weak, KLV_CONE_QUADRATIC, 0, {0, 1, 2});
    refused ("the same as a cone of variables", weak, way ({beyond, far, -1}));
    refused ("feasible at 5e8",
             within ("min 0 0 0; .. .. ..; 1 -1 in =1e-9; 0 0 1 in =1", {KLV_DOMAIN_QUADRATIC_CONE}),
             multipliers ({-far, 1}, {beyond, -far, -1}));
    weak = model::parse ("min 0 0 0; .. .. ..; 1 -1 in =1e-9; 0 0 1 in =1");
    put_cone (weak, KLV_CONE_QUADRATIC, 0, {0, 1, 2});
    refused ("feasible at 5e8, as a cone of variables", weak, multipliers ({-far, 1}));
    refused ("without its doty", within ("min 0; ..; 1 in =-1", {KLV_DOMAIN_NONNEGATIVE}),
             multipliers ({-1}));
    Problem curved = model::parse ("min -1; ..");
    curved.quadratic_objective = {.item = {}, .variable = {}, .row = {0}, .column = {0}, .value = {1e-9}};
    refused ("a quadratic term stops it far away", curved, way ({1}));
    curved = model::parse ("min 0 1; .. ..");
    curved.quadratic_objective = {
        .item = {}, .variable = {}, .row = {0, 1, 1}, .column = {0, 0, 1}, .value = {1, 1, 1 + 1e-12}};
    refused ("a small curvature stops it very far away", curved, way ({1, -1}));
    refused ("lines that meet very far away",
             model::parse ("min 0 0; .. ..; 1 1 in =0; 1 1.000000000001 in =1"), multipliers ({-1, 1}));
    curved = model::parse ("min 0 0; .. =1; 0 in ..-0.5");
    curved.quadratic_constraint = {
        .item = {0, 0}, .variable = {}, .row = {0, 1}, .column = {0, 1}, .value = {2, -2}};
    refused ("not where the variable is fixed", curved, multipliers ({-1}, {}, {0, 0}));
    curved = model::parse ("min -1; ..");
    curved = model::parse ("min 0; ..; -2 in ..-1");
    curved.quadratic_constraint = {.item = {0}, .variable = {}, .row = {0}, .column = {0}, .value = {2}};
    refused ("feasible in one point", curved, multipliers ({-1}, {}, {1}));
    refused ("where the gradient is not 0", curved, multipliers ({-1}, {}, {0}));
    Problem matrix = model::parse ("min; ; in =-1e-3");
    matrix.semidefinite.append (std::array{2});
    matrix.semidefinite.constraint = {
        .item = {0, 0}, .variable = {0, 0}, .row = {0, 1}, .column = {0, 0}, .value = {1, 1e-9}};
    refused ("an entry without diagonal terms", matrix, multipliers ({-1}));
    matrix = model::parse ("min;");
    matrix.semidefinite.append (std::array{2});
    matrix.semidefinite.objective = {
        .item = {}, .variable = {0, 0, 0}, .row = {0, 1, 1}, .column = {0, 0, 1}, .value = {1, -1, 1}};
    refused ("not semidefinite", matrix, way ({}, {1, 1 + 1e-9, 1}));
}

TEST (VerifyConic, RaysAreRefinedHoweverNearlyDependentTheirEquationsAre)
{
    constexpr std::size_t size = 2000;
    std::mt19937 random (3);
    std::normal_distribution<double> normal (1, 1e-6);
    Values ray (size);
    for (double& entry : ray)
        entry = normal (random);
    klv::LeastChange system (size, size - 1);    // a chain: each entry equals the next one
    for (std::size_t k = 0; k + 1 < size; ++k) {
        system.add (k, k, ray[k] / 2);
        system.add (k, k + 1, -ray[k + 1] / 2);
    }
    const std::vector<long double> change = system.solve ();
    ASSERT_EQ (change.size (), size);
    for (std::size_t k = 0; k < size; ++k) {
        EXPECT_NEAR (static_cast<double> (ray[k] * (1 + change[k]) - ray[0] * (1 + change[0])), 0, 1e-17);
        EXPECT_LT (std::abs (change[k]), 1e-5);
    }
}

}
