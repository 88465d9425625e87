// Forms for the semidefinite engine, and the proof of its answers on the form by code of the tests' own.
#pragma once

#include "kalvo/engines/semidefinite/semidefinite.h"
#include "tests/support/engine_run.h"

#include <cmath>
#include <numbers>
#include <numeric>

namespace semidefinite {

using namespace engine_run;

inline const double root = std::numbers::sqrt2;

// ---- Forms --------------------------------------------------------------------------------------------------------------------------

inline ElementaryCone matrix_cone (int order)
{
    return {ConeKind::semidefinite, order * (order + 1) / 2, order};
}

// Place of an entry of a matrix in the rows of its cone.
inline std::size_t place (std::size_t i, std::size_t j)
{
    return std::max (i, j) * (std::max (i, j) + 1) / 2 + std::min (i, j);
}

// min t, tI - M psd: the largest eigenvalue; M has 2 on the diagonal and -1 beside it.
inline ConicForm largest_eigenvalue (std::size_t n)
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

// ---- Proof --------------------------------------------------------------------------------------------------------------------------

// Whether the matrix in the rows of a cone, plus a multiple of the identity, has a Cholesky factor.
inline bool is_positive (const double* packed, std::size_t n, double shift)
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

inline bool is_in (const ElementaryCone& cone, const double* s, bool dual, double tolerance)
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

inline void expect_in_cones (const ConicForm& given, const Values& rows, bool dual, double tolerance)
{
    std::size_t first = 0;
    for (const ElementaryCone& cone : given.cones) {
        EXPECT_TRUE (is_in (cone, rows.data () + first, dual, tolerance))
            << "row " << first << (dual ? " of z" : " of s");
        first += static_cast<std::size_t> (cone.rows);
    }
}

// factor Ax, and A'z.
inline Values product (const SparseColumns& matrix, const Values& x, std::size_t rows)
{
    Values result (rows);
    for (std::size_t j = 0; j < x.size (); ++j)
        for (std::size_t k = 0; k < matrix.rows_of (j).size (); ++k)
            result[static_cast<std::size_t> (matrix.rows_of (j)[k])] += matrix.values_of (j)[k] * x[j];
    return result;
}

inline Values transposed_product (const SparseColumns& matrix, const Values& z)
{
    Values result;
    for (std::size_t j = 0; j + 1 < matrix.starts.size (); ++j) {
        result.push_back (0);
        for (std::size_t k = 0; k < matrix.rows_of (j).size (); ++k)
            result.back () += matrix.values_of (j)[k] * z[static_cast<std::size_t> (matrix.rows_of (j)[k])];
    }
    return result;
}

inline Values minus (Values a, const Values& b)
{
    std::ranges::transform (a, b, a.begin (), std::minus{});
    return a;
}

inline double dot (const Values& a, const Values& b)
{
    return std::inner_product (a.begin (), a.end (), b.begin (), 0.0);
}

inline double largest (const Values& values)
{
    double most = 0;
    for (const double value : values)
        most = std::max (most, std::abs (value));
    return most;
}

inline Values quadratic_product (const ConicForm& given, const Values& x)
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

inline double objective (const ConicForm& given, const Values& x)
{
    return given.constant + dot (given.cost, x) + dot (quadratic_product (given, x), x) / 2;
}

inline void expect_optimal (const ConicForm& given, const Claims& claims, double tolerance = 1e-6)
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

inline void expect_proof (const ConicForm& given, const Claims& claims, bool infeasible)
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

inline Claims run (const ConicForm& given, Heard& heard, const Set& set = {}, const klv::Budget& budget = {},
                   klv::Engine& engine = *klv::semidefinite::make_engine ())
{
    return run_engine (engine, klv::Method::semidefinite, given, heard, set, true, budget);
}

inline Claims run (const ConicForm& given)
{
    Heard heard;
    return run (given, heard);
}

}
