// Our own engine for semidefinite problems: every answer is proved on the form, or known in closed form.
#include "kalvo/engines/clarabel/clarabel.h"
#include "kalvo/engines/semidefinite/dense.h"
#include "kalvo/engines/semidefinite/semidefinite.h"
#include "tests/support/failing_new.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <numeric>
#include <random>

namespace {

using klv::Claims;
using klv::ConeKind;
using klv::ConicForm;
using klv::ElementaryCone;
using klv::IntSetting;
using klv::Outcome;
using klv::SparseColumns;
using Values = std::vector<double>;

const double root = std::numbers::sqrt2;

// ---- Forms --------------------------------------------------------------------------------------------------------------------------

void append (SparseColumns& matrix, const Values& column)    // zeros are left out
{
    for (std::size_t i = 0; i < column.size (); ++i)
        if (column[i] != 0) {
            matrix.rows.push_back (static_cast<std::int32_t> (i));
            matrix.values.push_back (column[i]);
        }
    matrix.starts.push_back (static_cast<std::int32_t> (matrix.rows.size ()));
}

SparseColumns sparse (const std::vector<Values>& columns)
{
    SparseColumns matrix;
    for (const Values& column : columns)
        append (matrix, column);
    return matrix;
}

ConicForm form (const Values& cost, const std::vector<Values>& columns, const Values& right,
                const std::vector<ElementaryCone>& cones, const std::vector<Values>& quadratic = {})
{
    return {.constant = 7,
            .cost = cost,
            .quadratic = sparse (quadratic.empty () ? std::vector<Values> (cost.size ()) : quadratic),
            .matrix = sparse (columns),
            .right = right,
            .cones = cones};
}

ElementaryCone matrix_cone (int order)
{
    return {ConeKind::semidefinite, order * (order + 1) / 2, order};
}

// Place of an entry of a matrix in the rows of its cone.
std::size_t place (std::size_t i, std::size_t j)
{
    return std::max (i, j) * (std::max (i, j) + 1) / 2 + std::min (i, j);
}

// ---- Proof --------------------------------------------------------------------------------------------------------------------------

// Whether the matrix in the rows of a cone, plus a multiple of the identity, has a Cholesky factor.
bool is_positive (const double* packed, std::size_t n, double shift)
{
    std::vector<Values> l (n, Values (n));
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = j; i < n; ++i) {
            double sum = packed[place (i, j)] / (i == j ? 1 : root) + (i == j ? shift : 0);
            for (std::size_t k = 0; k < j; ++k)
                sum -= l[i][k] * l[j][k];
            if (i == j && !(sum > 0))
                return false;
            l[i][j] = i == j ? std::sqrt (sum) : sum / l[j][j];
        }
    return true;
}

bool is_in (const ElementaryCone& cone, const double* s, bool dual, double tolerance)
{
    const auto rows = static_cast<std::size_t> (cone.rows);
    switch (cone.kind) {
    case ConeKind::zero:
        return dual ||
               std::all_of (s, s + rows, [&] (double value) { return std::abs (value) <= tolerance; });
    case ConeKind::nonnegative:
        return std::all_of (s, s + rows, [&] (double value) { return value >= -tolerance; });
    case ConeKind::second_order:
        return rows == 0 || s[0] + tolerance >= std::sqrt (std::inner_product (s + 1, s + rows, s + 1, 0.0));
    default:
        return is_positive (s, static_cast<std::size_t> (cone.order), tolerance);
    }
}

void expect_in_cones (const ConicForm& given, const Values& rows, bool dual, double tolerance)
{
    std::size_t first = 0;
    for (const ElementaryCone& cone : given.cones) {
        EXPECT_TRUE (is_in (cone, rows.data () + first, dual, tolerance))
            << "row " << first << (dual ? " of z" : " of s");
        first += static_cast<std::size_t> (cone.rows);
    }
}

// factor Ax, and A'z.
Values product (const SparseColumns& matrix, const Values& x, std::size_t rows)
{
    Values result (rows);
    for (std::size_t j = 0; j < x.size (); ++j)
        for (std::size_t k = 0; k < matrix.rows_of (j).size (); ++k)
            result[static_cast<std::size_t> (matrix.rows_of (j)[k])] += matrix.values_of (j)[k] * x[j];
    return result;
}

Values transposed_product (const SparseColumns& matrix, const Values& z)
{
    Values result;
    for (std::size_t j = 0; j + 1 < matrix.starts.size (); ++j) {
        result.push_back (0);
        for (std::size_t k = 0; k < matrix.rows_of (j).size (); ++k)
            result.back () += matrix.values_of (j)[k] * z[static_cast<std::size_t> (matrix.rows_of (j)[k])];
    }
    return result;
}

Values minus (Values a, const Values& b)
{
    std::ranges::transform (a, b, a.begin (), std::minus{});
    return a;
}

double dot (const Values& a, const Values& b)
{
    return std::inner_product (a.begin (), a.end (), b.begin (), 0.0);
}

double largest (const Values& values)
{
    double most = 0;
    for (const double value : values)
        most = std::max (most, std::abs (value));
    return most;
}

Values quadratic_product (const ConicForm& given, const Values& x)
{
    Values image = product (given.quadratic, x, x.size ());
    const Values mirrored = transposed_product (given.quadratic, x);
    for (std::size_t j = 0; j < x.size (); ++j) {
        image[j] += mirrored[j];
        for (std::size_t k = 0; k < given.quadratic.rows_of (j).size (); ++k)
            if (static_cast<std::size_t> (given.quadratic.rows_of (j)[k]) == j)
                image[j] -= given.quadratic.values_of (j)[k] * x[j];
    }
    return image;
}

double objective (const ConicForm& given, const Values& x)
{
    return given.constant + dot (given.cost, x) + dot (quadratic_product (given, x), x) / 2;
}

void expect_optimal (const ConicForm& given, const Claims& claims, double tolerance = 1e-6)
{
    ASSERT_EQ (claims.outcome, Outcome::optimal) << claims.message;
    ASSERT_EQ (claims.x.size (), given.cost.size ());
    ASSERT_EQ (claims.y.size (), given.right.size ());
    const Values s = minus (given.right, product (given.matrix, claims.x, given.right.size ()));
    Values gradient = transposed_product (given.matrix, claims.y);
    const Values curved = quadratic_product (given, claims.x);
    for (std::size_t j = 0; j < gradient.size (); ++j)
        gradient[j] += given.cost[j] + curved[j];
    EXPECT_LE (largest (gradient), tolerance * (1 + largest (given.cost)));
    expect_in_cones (given, s, false, tolerance * (1 + largest (given.right)));
    expect_in_cones (given, claims.y, true, tolerance * (1 + largest (claims.y)));
    EXPECT_LE (std::abs (dot (s, claims.y)), tolerance * (1 + std::abs (objective (given, claims.x))));
}

void expect_proof (const ConicForm& given, const Claims& claims, bool infeasible)
{
    ASSERT_EQ (claims.outcome, infeasible ? Outcome::infeasible : Outcome::unbounded) << claims.message;
    constexpr double tolerance = 1e-6;
    if (infeasible) {
        EXPECT_NEAR (dot (given.right, claims.dual_ray), -1, 1e-9);
        EXPECT_LE (largest (transposed_product (given.matrix, claims.dual_ray)), tolerance);
        expect_in_cones (given, claims.dual_ray, true, tolerance);
        return;
    }
    EXPECT_NEAR (dot (given.cost, claims.primal_ray), -1, 1e-9);
    EXPECT_LE (largest (quadratic_product (given, claims.primal_ray)), tolerance);
    Values falls = product (given.matrix, claims.primal_ray, given.right.size ());
    for (double& value : falls)
        value = -value;
    expect_in_cones (given, falls, false, tolerance);
}

// ---- Runs ---------------------------------------------------------------------------------------------------------------------------

struct Heard : klv::Events {
    void text (std::string_view) noexcept override {}
    void progress (const klv::Progress&) noexcept override {}
    void step (const klv::Progress& now) noexcept override
    {
        last = now;
        stop = now.iterations == stop_at;
    }
    void incumbent (const double*, std::size_t) noexcept override {}

    klv::Progress last;
    std::int64_t stop_at = -1;
    klv::StopFlag stop = false;
};

Claims run (const ConicForm& given, Heard& heard, const std::vector<std::pair<IntSetting, int>>& set = {},
            const klv::Budget& budget = {}, klv::Engine& engine = *klv::semidefinite::make_engine ())
{
    auto settings = std::make_shared<klv::Parameters> ();
    for (const auto& [setting, value] : set)
        settings->integers[klv::parameter_number (setting)] = value;
    const auto shared = std::make_shared<const klv::Form> (given);
    return engine.begin (shared)->run (
        {.form = shared, .settings = settings, .method = klv::Method::semidefinite, .budget = budget},
        heard.stop, heard);
}

Claims run (const ConicForm& given)
{
    Heard heard;
    return run (given, heard);
}

// ---- Small forms --------------------------------------------------------------------------------------------------------------------

TEST (Semidefinite, FindsThePointAndTheDualOfEveryCone)
{
    const struct {
        const char* name;
        ConicForm form;
        Values x;
    } cases[] = {
        {"zero", form ({1}, {{1}}, {3}, {{ConeKind::zero, 1}}), {3}},
        {"nonnegative", form ({1}, {{-1}}, {-2}, {{ConeKind::nonnegative, 1}}), {2}},
        {"second order", form ({1}, {{-1, 0, 0}}, {0, 3, 4}, {{ConeKind::second_order, 3}}), {5}},
        {"semidefinite", form ({1}, {{0, 0, -1}}, {1, 2 * root, 0}, {matrix_cone (2)}), {4}},
        {"order 1", form ({1}, {{-1, 0}}, {-2, 1}, {matrix_cone (1), {ConeKind::second_order, 1}}), {2}},
        {"empty cones",
         form (
             {1}, {{-1}}, {-2},
             {matrix_cone (0), {ConeKind::second_order, 0}, {ConeKind::nonnegative, 1}, {ConeKind::zero, 0}}),
         {2}},
        {"quadratic", form ({-1, -1}, {{}, {}}, {}, {}, {{1}, {0.5, 1}}), {2.0 / 3, 2.0 / 3}},
        {"quadratic on a line",
         form ({0, 0}, {{1}, {1}}, {2}, {{ConeKind::zero, 1}}, {{1}, {0, 3}}),
         {1.5, 0.5}},
        {"several",
         form ({1, 1}, {{-1, 0, 1}, {0, -1, -1}}, {-2, -5, 3},
               {{ConeKind::nonnegative, 2}, {ConeKind::zero, 1}}),
         {8, 5}},
        {"equal rows",
         form ({1, 0}, {{1, 1, 2, -1}, {1, 1, 2, 0}}, {3, 3, 6, 0},
               {{ConeKind::zero, 3}, {ConeKind::nonnegative, 1}}),
         {0, 3}},
        {"a column of zeros", form ({1, 0}, {{-1}, {0}}, {-2}, {{ConeKind::nonnegative, 1}}), {2, 0}},
        {"a matrix of zeros",
         form ({1}, {{0, 0, 0, -1}}, {1, 0, 1, -2}, {matrix_cone (2), {ConeKind::nonnegative, 1}}),
         {2}},
        {"no columns", form ({}, {}, {1}, {{ConeKind::nonnegative, 1}}), {}},
        {"nothing", form ({}, {}, {}, {}), {}},
    };
    for (const auto& [name, given, x] : cases) {
        SCOPED_TRACE (name);
        Heard heard;
        const Claims claims = run (given, heard);
        expect_optimal (given, claims);
        ASSERT_EQ (claims.x.size (), x.size ());
        for (std::size_t j = 0; j < x.size (); ++j)
            EXPECT_NEAR (claims.x[j], x[j], 1e-6);
        EXPECT_EQ (heard.last.iterations, claims.interior_iterations);
        EXPECT_NEAR (heard.last.primal_objective, objective (given, x), 1e-6);
        EXPECT_NEAR (heard.last.dual_objective, objective (given, x), 1e-6);
    }
}

TEST (Semidefinite, ProvesThatThereIsNoAnswer)
{
    const struct {
        const char* name;
        ConicForm form;
        bool infeasible;
    } cases[] = {
        {"bounds", form ({1}, {{-1, 1}}, {-10, 0}, {{ConeKind::nonnegative, 2}}), true},
        {"a constant outside", form ({}, {}, {-4}, {{ConeKind::nonnegative, 1}}), true},
        {"a constant matrix outside", form ({}, {}, {1, 2 * root, 1}, {matrix_cone (2)}), true},
        {"equations", form ({0, 0}, {{1, 2}, {1, 2}}, {1, 3}, {{ConeKind::zero, 2}}), true},
        {"0 = 1", form ({1}, {{-1, 0}}, {0, 1}, {{ConeKind::nonnegative, 1}, {ConeKind::zero, 1}}), true},
        {"a matrix with trace -1",
         form ({0, 0, 0}, {{1, -1, 0, 0}, {0, 0, -1, 0}, {1, 0, 0, -1}}, {-1, 0, 0, 0},
               {{ConeKind::zero, 1}, matrix_cone (2)}),
         true},
        {"a falling line", form ({-4, 0}, {{-1}, {0}}, {0}, {{ConeKind::nonnegative, 1}}, {{0}, {0, 1}}),
         false},
        {"a free column", form ({1}, {{}}, {}, {}), false},
        {"a growing matrix",
         form ({0, 0, -1}, {{1, -1, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, -1}}, {1, 0, 0, 0},
               {{ConeKind::zero, 1}, matrix_cone (2)}),
         false},
    };
    for (const auto& [name, given, infeasible] : cases) {
        SCOPED_TRACE (name);
        expect_proof (given, run (given), infeasible);
    }
}

// ---- Random forms with optima -------------------------------------------------------------------------------------------------------

class Random {
public:
    explicit Random (unsigned seed) : engine_ (seed) {}

    double value () { return normal_ (engine_); }
    Values values (std::size_t count)
    {
        Values result (count);
        for (double& each : result)
            each = value ();
        return result;
    }
    // Inside the cone; of the zero cone 0 or, dual, anything.
    Values inside (const ElementaryCone& cone, bool dual)
    {
        const auto rows = static_cast<std::size_t> (cone.rows), n = static_cast<std::size_t> (cone.order);
        Values s = values (rows);
        switch (cone.kind) {
        case ConeKind::zero:
            return dual ? s : Values (rows);
        case ConeKind::nonnegative:
            for (double& each : s)
                each = 0.1 + std::abs (each);
            return s;
        case ConeKind::second_order:
            s[0] = 0.1 + std::sqrt (dot (s, s));
            return s;
        default: {
            const Values factor = values (n * n);
            for (std::size_t j = 0; j < n; ++j)
                for (std::size_t i = 0; i <= j; ++i) {
                    double sum = i == j ? 0.1 : 0;
                    for (std::size_t k = 0; k < n; ++k)
                        sum += factor[i * n + k] * factor[j * n + k];
                    s[place (i, j)] = i == j ? sum : root * sum;
                }
            return s;
        }
        }
    }

private:
    std::mt19937 engine_;
    std::normal_distribution<double> normal_;
};

std::size_t rows_of (const std::vector<ElementaryCone>& cones)
{
    std::size_t rows = 0;
    for (const ElementaryCone& cone : cones)
        rows += static_cast<std::size_t> (cone.rows);
    return rows;
}

// Right side and cost for which there are points inside the cones, primal and dual.
ConicForm with_optimum (ConicForm&& given, Random& random)
{
    const std::size_t rows = rows_of (given.cones);
    const auto join = [&] (bool dual) {
        Values all;
        for (const ElementaryCone& cone : given.cones) {
            const Values part = random.inside (cone, dual);
            all.insert (all.end (), part.begin (), part.end ());
        }
        return all;
    };
    const auto columns = static_cast<std::size_t> (given.matrix.columns ());
    const Values x = random.values (columns), s = join (false), z = join (true);
    given.quadratic.starts.resize (columns + 1, given.quadratic.starts.back ());
    given.right = product (given.matrix, x, rows);
    std::ranges::transform (given.right, s, given.right.begin (), std::plus{});
    given.cost = transposed_product (given.matrix, z);
    const Values curved = quadratic_product (given, x);
    for (std::size_t j = 0; j < columns; ++j)
        given.cost[j] = -given.cost[j] - curved[j];
    return std::move (given);
}

// Dense columns, of which each has a term in the objective where it is quadratic.
ConicForm random_columns (std::size_t columns, const std::vector<ElementaryCone>& cones, bool quadratic,
                          unsigned seed)
{
    Random random (seed);
    ConicForm given;
    given.cones = cones;
    for (std::size_t j = 0; j < columns; ++j) {
        append (given.matrix, random.values (rows_of (cones)));
        Values above (columns);
        above[j] = quadratic ? 1 : 0;
        append (given.quadratic, above);
    }
    return with_optimum (std::move (given), random);
}

// Equations for members of the cones, and for columns that are in none.
ConicForm random_equations (std::size_t equations, std::size_t free_columns,
                            std::vector<ElementaryCone> cones, unsigned seed)
{
    Random random (seed);
    const std::size_t members = rows_of (cones);
    cones.insert (cones.begin (), {ConeKind::zero, static_cast<std::int32_t> (equations)});
    ConicForm given;
    given.cones = cones;
    for (std::size_t j = 0; j < members + free_columns; ++j) {
        Values column = random.values (equations);
        column.resize (equations + members);
        if (j < members)
            column[equations + j] = j % 3 == 0 ? -2 : -1;
        append (given.matrix, column);
    }
    return with_optimum (std::move (given), random);
}

TEST (Semidefinite, AgreesWithAnotherMethod)
{
    const ElementaryCone lines{ConeKind::nonnegative, 4}, second{ConeKind::second_order, 6},
        equal{ConeKind::zero, 2};
    const struct {
        const char* name;
        ConicForm form;
    } cases[] = {
        {"columns", random_columns (5, {matrix_cone (6)}, false, 1)},
        {"columns, several cones",
         random_columns (6, {lines, second, matrix_cone (3), lines, matrix_cone (5)}, false, 2)},
        {"columns, equations",
         random_columns (6, {equal, matrix_cone (4), second, {ConeKind::zero, 1}}, false, 3)},
        {"quadratic", random_columns (6, {lines, second, matrix_cone (4)}, true, 13)},
        {"quadratic, equations", random_columns (6, {equal, second, matrix_cone (4)}, true, 5)},
        {"second-order cones alone",
         random_columns (4, {second, {ConeKind::second_order, 2}, second}, false, 6)},
        {"equations", random_equations (5, 0, {matrix_cone (6)}, 7)},
        {"equations, several cones",
         random_equations (9, 0, {second, lines, matrix_cone (2), matrix_cone (5)}, 8)},
        {"equations, free columns", random_equations (9, 4, {matrix_cone (5), lines}, 9)},
        {"equations, as many free columns", random_equations (6, 5, {matrix_cone (5), second}, 10)},
    };
    for (const auto& [name, given] : cases) {
        SCOPED_TRACE (name);
        const Claims ours = run (given);
        expect_optimal (given, ours);
        Heard heard;
        const Claims theirs = run (given, heard, {}, {}, *klv::clarabel::make_engine ());
        ASSERT_EQ (theirs.outcome, Outcome::optimal);
        const double expected = objective (given, theirs.x);
        EXPECT_NEAR (objective (given, ours.x), expected, 1e-6 * (1 + std::abs (expected)));
    }
}

// Blocks in another order, and a matrix in other coordinates, are the same problem.
TEST (Semidefinite, DoesNotDependOnOrderAndCoordinates)
{
    const int n = 5, count = 4;
    Random random (11);
    const Values angle = random.values (3);
    // Rotations in three planes.
    const auto turn = [&] (Values packed) {
        for (std::size_t plane = 0; plane < angle.size (); ++plane) {
            const double c = std::cos (angle[plane]), d = std::sin (angle[plane]);
            std::vector<Values> a (n, Values (n));
            for (std::size_t i = 0; i < n; ++i)
                for (std::size_t j = 0; j < n; ++j)
                    a[i][j] = packed[place (i, j)] / (i == j ? 1 : root);
            for (std::size_t k = 0; k < n; ++k) {
                const double one = a[plane][k], other = a[plane + 2][k];
                a[plane][k] = c * one - d * other;
                a[plane + 2][k] = d * one + c * other;
            }
            for (std::size_t k = 0; k < n; ++k) {
                const double one = a[k][plane], other = a[k][plane + 2];
                a[k][plane] = c * one - d * other;
                a[k][plane + 2] = d * one + c * other;
            }
            for (std::size_t i = 0; i < n; ++i)
                for (std::size_t j = 0; j <= i; ++j)
                    packed[place (i, j)] = a[i][j] * (i == j ? 1 : root);
        }
        return packed;
    };
    const ConicForm given = random_columns (count, {matrix_cone (n), {ConeKind::nonnegative, 3}}, false, 12);
    ConicForm other =
        form (given.cost, {}, {}, {{ConeKind::nonnegative, 3}, matrix_cone (n)}, {{}, {}, {}, {}});
    other.matrix = {};
    other.constant = given.constant;
    const std::size_t rows = static_cast<std::size_t> (matrix_cone (n).rows);
    const auto swap = [&] (const Values& column) {
        Values swapped (column.begin () + static_cast<std::ptrdiff_t> (rows), column.end ());
        const Values turned =
            turn (Values (column.begin (), column.begin () + static_cast<std::ptrdiff_t> (rows)));
        swapped.insert (swapped.end (), turned.begin (), turned.end ());
        return swapped;
    };
    for (std::size_t j = 0; j < count; ++j) {
        const auto values = given.matrix.values_of (j);
        append (other.matrix, swap (Values (values.begin (), values.end ())));
    }
    other.right = swap (given.right);
    const Claims one = run (given), two = run (other);
    expect_optimal (given, one);
    expect_optimal (other, two);
    EXPECT_NEAR (objective (given, one.x), objective (other, two.x), 1e-6);
}

// ---- Known optima -------------------------------------------------------------------------------------------------------------------

// max <J, X>, tr X = 1, X_ij = 0 for edges (Lovász, On the Shannon capacity of a graph); a row of the matrix for each vertex.
ConicForm lovasz (std::size_t n, const std::vector<std::pair<std::size_t, std::size_t>>& edges)
{
    ConicForm given;
    const std::size_t equations = 1 + edges.size ();
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i <= j; ++i) {
            Values column (equations + n * (n + 1) / 2);
            column[0] = i == j ? 1 : 0;
            for (std::size_t e = 0; e < edges.size (); ++e)
                column[1 + e] = edges[e] == std::pair (i, j) ? 1 : 0;
            column[equations + place (i, j)] = -1;
            append (given.matrix, column);
            given.cost.push_back (i == j ? -1 : -root);
        }
    given.right.assign (equations + n * (n + 1) / 2, 0.0);
    given.right[0] = 1;
    given.cones = {{ConeKind::zero, static_cast<std::int32_t> (equations)},
                   matrix_cone (static_cast<int> (n))};
    given.quadratic.starts.assign (given.cost.size () + 1, 0);
    return given;
}

std::vector<std::pair<std::size_t, std::size_t>> cycle (std::size_t n)
{
    std::vector<std::pair<std::size_t, std::size_t>> edges{{0, n - 1}};
    for (std::size_t i = 0; i + 1 < n; ++i)
        edges.emplace_back (i, i + 1);
    return edges;
}

// Pairs out of n, with an edge where they have nothing in common.
std::vector<std::pair<std::size_t, std::size_t>> kneser (std::size_t n)
{
    std::vector<std::pair<std::size_t, std::size_t>> sets, edges;
    for (std::size_t a = 0; a < n; ++a)
        for (std::size_t b = a + 1; b < n; ++b)
            sets.emplace_back (a, b);
    for (std::size_t j = 0; j < sets.size (); ++j)
        for (std::size_t i = 0; i < j; ++i)
            if (sets[i].first != sets[j].first && sets[i].first != sets[j].second &&
                sets[i].second != sets[j].first && sets[i].second != sets[j].second)
                edges.emplace_back (i, j);
    return edges;
}

// max t, Q psd, p (x) - t = (1, x, ...)' Q (1, x, ...): the smallest value of a polynomial, with coefficients from that of 1 on.
ConicForm sum_of_squares (const Values& polynomial)
{
    const std::size_t degree = polynomial.size () - 1, n = degree / 2 + 1;
    ConicForm given;
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i <= j; ++i) {
            Values column (degree + 1 + n * (n + 1) / 2);
            column[i + j] = i == j ? 1 : root;
            column[degree + 1 + place (i, j)] = -1;
            append (given.matrix, column);
        }
    Values t (degree + 1 + n * (n + 1) / 2);
    t[0] = 1;
    append (given.matrix, t);
    given.cost.assign (n * (n + 1) / 2, 0.0);
    given.cost.push_back (-1);
    given.right = polynomial;
    given.right.resize (t.size ());
    given.cones = {{ConeKind::zero, static_cast<std::int32_t> (degree + 1)},
                   matrix_cone (static_cast<int> (n))};
    given.quadratic.starts.assign (given.cost.size () + 1, 0);
    return given;
}

// min t, tI - M psd: the largest eigenvalue; M has 2 on the diagonal and -1 beside it.
ConicForm largest_eigenvalue (std::size_t n)
{
    Values column (n * (n + 1) / 2), right (column.size ());
    for (std::size_t i = 0; i < n; ++i) {
        column[place (i, i)] = -1;
        right[place (i, i)] = -2;
        if (i > 0)
            right[place (i, i - 1)] = root;
    }
    return form ({1}, {column}, right, {matrix_cone (static_cast<int> (n))});
}

// A chain of columns; each link is a matrix of order 4 of its own, of two neighbours: sum of (x_i - x_i+1)^2 / 2 with given ends, in
// which the matrices (1, d; d, t) bound the squares.
ConicForm chain (std::size_t links)
{
    ConicForm given;
    const std::size_t cone = 10, columns = 2 * links - 1;
    given.right.assign (cone * links, 0.0);
    for (std::size_t k = 0; k < links; ++k) {
        given.cones.push_back (matrix_cone (4));
        for (const std::size_t one : {place (0, 0), place (2, 2), place (3, 3)})
            given.right[cone * k + one] = 1;
    }
    given.right[cone * (links - 1) + place (0, 1)] = root * static_cast<double> (links);
    for (std::size_t j = 0; j < columns; ++j) {
        const bool bound = j < links;
        const std::size_t k = bound ? j : j - links;
        const auto put = [&] (std::size_t link, std::size_t entry, double value) {
            given.matrix.rows.push_back (static_cast<std::int32_t> (cone * link + entry));
            given.matrix.values.push_back (value);
        };
        if (bound)
            put (k, place (1, 1), -1);
        else {
            put (k, place (0, 1), -root);
            put (k + 1, place (0, 1), root);
        }
        given.matrix.starts.push_back (static_cast<std::int32_t> (given.matrix.rows.size ()));
        given.cost.push_back (bound ? 1 : 0);
    }
    given.quadratic.starts.assign (columns + 1, 0);
    return given;
}

TEST (Semidefinite, FindsKnownOptima)
{
    const double pi = std::numbers::pi;
    const auto of_cycle = [&] (double n) { return n * std::cos (pi / n) / (1 + std::cos (pi / n)); };
    const struct {
        const char* name;
        ConicForm form;
        double optimum;
    } cases[] = {
        {"a cycle of 5", lovasz (5, cycle (5)), -of_cycle (5)},
        {"a cycle of 9", lovasz (9, cycle (9)), -of_cycle (9)},
        {"the Petersen graph", lovasz (10, kneser (5)), -4},
        {"a Kneser graph", lovasz (21, kneser (7)), -6},
        {"a graph without edges", lovasz (6, {}), -6},
        {"x^4 - 2x^2", sum_of_squares ({0, 0, -2, 0, 1}), 1},
        {"x^6 - 3x^2 + x", sum_of_squares ({0, 1, -3, 0, 0, 0, 1}), 3.01954287},
        {"an eigenvalue", largest_eigenvalue (12), 9 + 2 * std::cos (pi / 13)},
        {"an eigenvalue of order 150", largest_eigenvalue (150), 9 + 2 * std::cos (pi / 151)},
        {"a chain of matrices", chain (250), 250},
    };
    for (const auto& [name, given, optimum] : cases) {
        SCOPED_TRACE (name);
        const Claims claims = run (given);
        expect_optimal (given, claims);
        EXPECT_NEAR (objective (given, claims.x), optimum, 1e-6 * (1 + std::abs (optimum)));
    }
}

// A matrix in panels: L has 2 on the diagonal and 1 below it.
TEST (Semidefinite, FactorsLargeMatrices)
{
    const int n = 1101, stride = n + 1;
    const auto at = [] (int i, int j) {
        return static_cast<std::size_t> (i) + static_cast<std::size_t> (j) * stride;
    };
    Values a (static_cast<std::size_t> (n) * stride);
    for (int i = 0; i < n; ++i) {
        a[at (i, i)] = i == 0 ? 4 : 5;
        if (i > 0)
            a[at (i, i - 1)] = 2;
    }
    const klv::StopFlag stop = false;
    klv::semidefinite::Watch watch (stop, {});
    ASSERT_TRUE (klv::semidefinite::cholesky (n, a.data (), stride, watch));
    double error = 0;
    for (int j = 0; j < n; ++j)
        for (int i = j; i < n; ++i)
            error = std::max (error, std::abs (a[at (i, j)] - (i == j ? 2 : i == j + 1 ? 1 : 0)));
    EXPECT_LE (error, 1e-12);
    Values inverse (static_cast<std::size_t> (n) * n);
    const auto place_of = [] (int i, int j) {
        return static_cast<std::size_t> (std::max (i, j)) + static_cast<std::size_t> (std::min (i, j)) * n;
    };
    for (int j = 0; j < n; ++j)
        for (int i = j; i < n; ++i)
            inverse[place_of (i, j)] = a[at (i, j)];
    klv::semidefinite::invert (n, inverse.data (), watch);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            double sum = (i == 0 ? 4 : 5) * inverse[place_of (i, j)] - (i == j ? 1 : 0);
            sum += i > 0 ? 2 * inverse[place_of (i - 1, j)] : 0;
            sum += i + 1 < n ? 2 * inverse[place_of (i + 1, j)] : 0;
            error = std::max (error, std::abs (sum));
        }
    EXPECT_LE (error, 1e-12);
    a[at (n - 1, n - 1)] = -1;
    EXPECT_FALSE (klv::semidefinite::cholesky (n, a.data (), stride, watch));
}

// ---- Ends ---------------------------------------------------------------------------------------------------------------------------

TEST (Semidefinite, EndsWhereItIsTold)
{
    const ConicForm given = random_equations (5, 2, {matrix_cone (6)}, 14);
    Heard heard;
    for (const int limit : {3, 0}) {
        const Claims limited = run (given, heard, {{IntSetting::interior_iteration_limit, limit}});
        EXPECT_EQ (limited.outcome, Outcome::iteration_limit);
        EXPECT_EQ (limited.x.size (), given.cost.size ());
        EXPECT_EQ (heard.last.iterations, limit);
    }
    heard.stop_at = 2;
    const Claims stopped = run (given, heard);
    EXPECT_EQ (stopped.outcome, Outcome::stopped);
    EXPECT_EQ (stopped.x.size (), given.cost.size ());
    // In the middle of an iteration.
    heard.stop_at = -1;
    heard.stop = false;
    const auto begin = klv::Clock::now ();
    const Claims late =
        run (largest_eigenvalue (700), heard, {}, {.deadline = begin + std::chrono::milliseconds (40)});
    EXPECT_EQ (late.outcome, Outcome::time_limit);
    EXPECT_LT (klv::seconds_between (begin, klv::Clock::now ()), 2);
}

TEST (Semidefinite, RefusesWhatItDoesNotTake)
{
    const auto engine = klv::semidefinite::make_engine ();
    const auto refuses = [&] (const ElementaryCone& cone) {
        return engine->refuses (form ({}, {}, Values (static_cast<std::size_t> (cone.rows)), {cone}),
                                klv::Method::semidefinite, {});
    };
    EXPECT_EQ (refuses (matrix_cone (300)), "");
    EXPECT_EQ (refuses ({ConeKind::exponential, 3}), "it takes no exponential and no power cones");
    EXPECT_EQ (refuses ({ConeKind::power, 3, 0, 0.5}), "it takes no exponential and no power cones");
    EXPECT_EQ (refuses ({ConeKind::semidefinite, 10, 60000}).find ("it needs about "), 0U);
    EXPECT_NE (engine->refuses (klv::LinearForm{}, klv::Method::semidefinite, {}), "");
}

TEST (Semidefinite, IsRightAboutWhatIsNotAttained)
{
    // min x, (x, 1; 1, y) psd: the infimum is 0.
    const ConicForm given = form ({1, 0}, {{-1, 0, 0}, {0, 0, -1}}, {0, root, 0}, {matrix_cone (2)});
    const Claims claims = run (given);
    EXPECT_EQ (claims.outcome, Outcome::optimal);
    EXPECT_NEAR (claims.x[0], 0, 1e-3);
    // No (x, 1; 1, 0) is psd, though the distance becomes as small as one likes.
    const ConicForm thin = form ({1}, {{-1, 0, 0}}, {0, root, 0}, {matrix_cone (2)});
    EXPECT_NE (run (thin).outcome, Outcome::optimal);
}

TEST (Semidefinite, SurvivesEveryFailedAllocation)
{
    const ConicForm given = random_equations (4, 1, {matrix_cone (3), {ConeKind::second_order, 3}}, 15);
    bool failed = true;
    for (std::size_t n = 0; failed; ++n) {
        const FailingNew failing (n);
        try {
            run (given);
        } catch (const std::bad_alloc&) {
        }
        failed = failing.has_failed ();
    }
}

}
