// Our own engine for semidefinite problems: every answer is proved on the form, or known in closed form.
#include "kalvo/engines/clarabel/clarabel.h"
#include "tests/library/semidefinite_forms.h"
#include "tests/support/failing_new.h"

#include <random>

namespace {

using namespace semidefinite;

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
