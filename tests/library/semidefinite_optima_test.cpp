// The semidefinite engine on families whose optima are known in closed form.
#include "kalvo/engines/semidefinite/dense.h"
#include "tests/library/semidefinite_forms.h"

namespace {

using namespace semidefinite;

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

}
