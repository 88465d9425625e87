#include "kalvo/sparse/ldl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

using klv::Ldl, klv::SparseColumns;

using Dense = std::vector<std::vector<double>>;

static Dense zeros (std::size_t size)
{
    return Dense (size, std::vector<double> (size));
}

static SparseColumns upper_of (const Dense& matrix)
{
    SparseColumns upper;
    for (std::size_t j = 0; j < matrix.size (); ++j) {
        for (std::size_t i = 0; i <= j; ++i)
            if (matrix[i][j] != 0) {
                upper.rows.push_back (static_cast<std::int32_t> (i));
                upper.values.push_back (matrix[i][j]);
            }
        upper.starts.push_back (static_cast<std::int32_t> (upper.rows.size ()));
    }
    return upper;
}

static void set (Dense& matrix, std::size_t i, std::size_t j, double value)
{
    matrix[i][j] = matrix[j][i] = value;
}

static std::mt19937_64 source (7);

static double draw ()
{
    return std::uniform_real_distribution<double> (-1, 1) (source);
}

static std::size_t below (std::size_t end)
{
    return std::uniform_int_distribution<std::size_t> (0, end - 1) (source);
}

// [H B'; B -G] with H and G diagonally dominant.
static Dense quasidefinite (std::size_t size, std::size_t entries)
{
    Dense made = zeros (size);
    for (std::size_t e = 0; e < entries; ++e)
        if (const std::size_t i = below (size), j = below (size); i != j)
            set (made, i, j, draw ());
    for (std::size_t i = 0; i < size; ++i) {
        const bool positive = i < 2 * size / 3;
        made[i][i] = positive ? 0.1 : -0.1;
        for (std::size_t j = 0; j < size; ++j)
            if (j != i && (j < 2 * size / 3) == positive)
                made[i][i] += positive ? std::abs (made[i][j]) : -std::abs (made[i][j]);
    }
    return made;
}

// V V' of sparse columns of whole numbers, fewer than rows.
static Dense semidefinite (std::size_t size, std::size_t rank, std::size_t entries)
{
    Dense made = zeros (size);
    for (std::size_t c = 0; c < rank; ++c) {
        std::vector<double> column (size);
        for (std::size_t e = 0; e < entries; ++e)
            column[below (size)] = std::round (3 * draw ());
        for (std::size_t i = 0; i < size; ++i)
            for (std::size_t j = 0; j < size; ++j)
                made[i][j] += column[i] * column[j];
    }
    return made;
}

static Dense arrow (std::size_t size)
{
    Dense made = zeros (size);
    for (std::size_t i = 0; i < size; ++i) {
        set (made, 0, i, 1);
        made[i][i] = static_cast<double> (size + i);
    }
    return made;
}

static Dense chain (std::size_t size)
{
    Dense made = zeros (size);
    for (std::size_t i = 0; i < size; ++i) {
        made[i][i] = 2;
        if (i > 0)
            set (made, i - 1, i, -1);
    }
    return made;
}

struct Case {
    const char* name;
    Dense matrix;
    std::int64_t entries = -1;    // of the factor, where it is known
};

static std::vector<Case> cases ()
{
    std::vector<Case> made{
        {"empty", {}, 0},
        {"one", {{-3}}, 0},
        {"diagonal with zeros and no entries", {{1, 0, 0}, {0, 0, 0}, {0, 0, -2}}, 0},
        {"arrow", arrow (60), 59},
        {"chain", chain (200), 199},
        {"dense", quasidefinite (150, 100000), 150 * 149 / 2},
        {"all zero", zeros (5), 0},
        {"one vector", semidefinite (40, 1, 200), -1},
    };
    for (std::size_t size : {2, 5, 17, 60, 200})
        for (std::size_t often : {1, 3, 10}) {
            made.push_back ({"quasidefinite", quasidefinite (size, often * size)});
            made.push_back ({"semidefinite", semidefinite (size, (size + 1) / 2, often + 1)});
        }
    return made;
}

static double largest (const Dense& matrix)
{
    double most = 0;
    for (const auto& row : matrix)
        for (double value : row)
            most = std::max (most, std::abs (value));
    return most;
}

// P A P' - L D L', whose largest magnitude is returned.
static double residual (const Ldl& ldl, const Dense& matrix)
{
    const std::size_t size = matrix.size ();
    Dense left = zeros (size), rest = left;
    for (std::size_t k = 0; k < size; ++k) {
        left[k][k] = 1;
        const auto rows = ldl.rows_of (k);
        for (std::size_t p = 0; p < rows.size (); ++p)
            left[static_cast<std::size_t> (rows[p])][k] = ldl.values_of (k)[p];
    }
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j < size; ++j) {
            const auto order = ldl.order ();
            rest[i][j] = matrix[static_cast<std::size_t> (order[i])][static_cast<std::size_t> (order[j])];
            for (std::size_t k = 0; k <= std::min (i, j); ++k)
                rest[i][j] -= left[i][k] * ldl.pivots ()[k] * left[j][k];
        }
    return largest (rest);
}

static std::vector<double> product (const Dense& matrix, const std::vector<double>& x)
{
    std::vector<double> made (x.size ());
    for (std::size_t i = 0; i < x.size (); ++i)
        for (std::size_t j = 0; j < x.size (); ++j)
            made[i] += matrix[i][j] * x[j];
    return made;
}

constexpr double always = -1, never = std::numeric_limits<double>::infinity ();

TEST (Sparse, FactorsReproduceTheMatrixAndSolve)
{
    for (const Case& now : cases ()) {
        const SparseColumns upper = upper_of (now.matrix);
        const std::size_t size = now.matrix.size ();
        const double scale = std::max (largest (now.matrix), 1.0);
        std::vector<double> plain_pivots;
        for (double blocks_from : {never, always}) {
            SCOPED_TRACE (std::string (now.name) + " " + std::to_string (size) +
                          (blocks_from == always ? " in blocks" : " by rows"));
            Ldl ldl (upper, blocks_from);
            if (now.entries >= 0) {
                EXPECT_EQ (ldl.factor_entries (), now.entries);
            }
            for (int again = 0; again < 2; ++again) {
                ASSERT_TRUE (ldl.factor (upper.values, 1e-9 * scale));
                EXPECT_LE (residual (ldl, now.matrix), 1e-12 * scale * static_cast<double> (size + 1));
                EXPECT_LE (ldl.dropped (), 1e-9 * scale);
            }
            std::int64_t entries = 0;
            for (std::size_t k = 0; k < size; ++k)
                entries +=
                    std::ranges::count_if (ldl.values_of (k), [] (double value) { return value != 0; });
            EXPECT_LE (entries, ldl.factor_entries ());

            std::vector<double> x (size);
            std::ranges::generate (x, draw);
            const std::vector<double> right = product (now.matrix, x);
            x = right;
            ldl.solve (x);
            const std::vector<double> reached = product (now.matrix, x);
            for (std::size_t i = 0; i < size; ++i)
                EXPECT_NEAR (reached[i], right[i], 1e-8 * scale);
            if (blocks_from == never)
                plain_pivots.assign (ldl.pivots ().begin (), ldl.pivots ().end ());
            for (std::size_t k = 0; k < size; ++k)
                EXPECT_NEAR (ldl.pivots ()[k], plain_pivots[k], 1e-8 * scale);
        }
    }
}

TEST (Sparse, WhatIsDroppedTellsOfIndefiniteness)
{
    const SparseColumns upper = upper_of ({{0, 1}, {1, 0}});
    for (double blocks_from : {never, always}) {
        Ldl ldl (upper, blocks_from);
        ASSERT_TRUE (ldl.factor (upper.values));
        EXPECT_EQ (ldl.dropped (), 1);
        std::vector<double> right{1, 1};
        ldl.solve (right);
        EXPECT_EQ (right, (std::vector<double>{0, 0}));
    }
}

TEST (Sparse, StopsAndNanEndAFactorisationWhichCanBeRepeated)
{
    const Dense matrix = quasidefinite (400, 1000000);
    const SparseColumns upper = upper_of (matrix);
    std::vector<double> broken = upper.values;
    for (double blocks_from : {never, always}) {
        Ldl ldl (upper, blocks_from);
        std::atomic<bool> stop = true;
        EXPECT_FALSE (ldl.factor (upper.values, 0, &stop));
        for (std::size_t p : {std::size_t{0}, upper.values.size () / 2, upper.values.size () - 1}) {
            broken[p] = std::nan ("");
            EXPECT_FALSE (ldl.factor (broken));
            broken[p] = upper.values[p];
        }
        stop = false;
        ASSERT_TRUE (ldl.factor (upper.values, 0, &stop));
        EXPECT_LE (residual (ldl, matrix), 1e-9);
    }
}

TEST (Sparse, ALongChainIsOrderedWithoutFill)
{
    SparseColumns upper;    // a chain
    constexpr std::int32_t size = 300000;
    for (std::int32_t j = 0; j < size; ++j) {
        for (std::int32_t i : {std::max (j - 1, 0), j})
            if (upper.rows.size () == static_cast<std::size_t> (upper.starts.back ()) ||
                upper.rows.back () != i)
                upper.rows.push_back (i);
        upper.starts.push_back (static_cast<std::int32_t> (upper.rows.size ()));
    }
    upper.values.assign (upper.rows.size (), 1);
    EXPECT_EQ (Ldl (upper).factor_entries (), size - 1);
    EXPECT_EQ (Ldl (upper).flops (), size - 1);
}
