// The constraint matrix against a plain model of it, under any order of changes.
#include "kalvo/task/matrix.h"
#include "kalvo/task/task.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <thread>

namespace {

struct Model {
    std::vector<std::vector<std::int32_t>> rows;
    std::vector<std::vector<double>> values;

    std::int64_t entries () const
    {
        return std::accumulate (rows.begin (), rows.end (), std::int64_t{0},
                                [] (std::int64_t sum, const auto& column) {
                                    return sum + static_cast<std::int64_t> (column.size ());
                                });
    }
};

void expect_same (const klv::ColumnMatrix& matrix, const Model& model)
{
    ASSERT_EQ (matrix.columns (), static_cast<std::int32_t> (model.rows.size ()));
    ASSERT_EQ (matrix.entries (), model.entries ());
    for (std::int32_t j = 0; j < matrix.columns (); ++j) {
        const klv::Column column = matrix.column (j);
        ASSERT_TRUE (std::ranges::equal (column.rows, model.rows[static_cast<std::size_t> (j)])) << j;
        ASSERT_TRUE (std::ranges::equal (column.values, model.values[static_cast<std::size_t> (j)])) << j;
    }
}

void expect_compressed (const klv::ColumnMatrix& matrix)
{
    ASSERT_TRUE (matrix.packed ());
    ASSERT_EQ (matrix.starts ().size (), static_cast<std::size_t> (matrix.columns ()) + 1);
    ASSERT_EQ (matrix.rows ().size (), static_cast<std::size_t> (matrix.entries ()));
    ASSERT_EQ (matrix.values ().size (), matrix.rows ().size ());
    std::int64_t start = 0;
    for (std::int32_t j = 0; j < matrix.columns (); ++j) {
        ASSERT_EQ (matrix.starts ()[static_cast<std::size_t> (j)], start);
        start += static_cast<std::int64_t> (matrix.column (j).rows.size ());
    }
    ASSERT_EQ (matrix.starts ().back (), start);
}

class RandomChanges : public testing::TestWithParam<unsigned> {};

TEST_P (RandomChanges, AgreeWithTheModel)
{
    std::mt19937 random (GetParam ());
    const auto below = [&] (std::size_t limit) {
        return std::uniform_int_distribution<std::size_t> (0, limit - 1) (random);
    };
    klv::ColumnMatrix matrix;
    Model model;
    constexpr std::size_t constraints = 40;
    std::vector<std::int32_t> all (constraints);
    std::iota (all.begin (), all.end (), 0);
    for (int step = 0; step < 600; ++step) {
        if (model.rows.empty () || below (20) == 0) {
            const std::size_t more = below (5);
            matrix.append_columns (static_cast<std::int32_t> (more));
            model.rows.resize (model.rows.size () + more);
            model.values.resize (model.rows.size ());
        } else if (below (10) == 0) {
            matrix.pack ();
            expect_compressed (matrix);
        } else {
            const std::size_t j = below (model.rows.size ());
            std::ranges::shuffle (all, random);
            model.rows[j].assign (all.begin (),
                                  all.begin () + static_cast<std::ptrdiff_t> (below (constraints)));
            model.values[j].resize (model.rows[j].size ());
            for (double& value : model.values[j])
                value = static_cast<double> (random ());
            matrix.put (static_cast<std::int32_t> (j), model.rows[j], model.values[j]);
        }
        if (step % 10 == 0)
            expect_same (matrix, model);
    }
    matrix.pack ();
    expect_compressed (matrix);
    expect_same (matrix, model);
}

INSTANTIATE_TEST_SUITE_P (Store, RandomChanges, testing::Range (0u, 20u));

TEST (ColumnMatrix, ReplacedColumnsLeaveBoundedHoles)
{
    klv::ColumnMatrix matrix;
    matrix.append_columns (100);
    std::vector<std::int32_t> rows (64);
    std::iota (rows.begin (), rows.end (), 0);
    const std::vector<double> values (64, 1.0);
    for (int round = 0; round < 50; ++round)
        for (std::int32_t j = 0; j < 100; ++j)
            for (const std::size_t size :
                 {std::size_t{1}, std::size_t{64}, std::size_t{0}, std::size_t{32}}) {
                const auto before = static_cast<std::size_t> (2 * matrix.entries () + matrix.columns ());
                matrix.put (j, std::span (rows).first (size), std::span (values).first (size));
                ASSERT_LE (matrix.rows ().size (), std::max (before + size, std::size_t{2 * 64 * 100 + 100}));
            }
    EXPECT_EQ (matrix.entries (), 3200);
}

TEST (ColumnMatrix, PutInOrderAfterAHintTheArraysNeverMove)
{
    klv::ColumnMatrix matrix;
    matrix.append_columns (1000);
    matrix.reserve (3000);
    const std::int32_t rows[] = {0, 1, 2};
    const double values[] = {1, 2, 3};
    matrix.put (0, rows, values);
    const std::int32_t* place = matrix.rows ().data ();
    for (std::int32_t j = 1; j < 1000; ++j)
        matrix.put (j, rows, values);
    matrix.pack ();
    EXPECT_EQ (matrix.rows ().data (), place);
    expect_compressed (matrix);
}

TEST (RepeatedRows, FindsTheSecondOccurrence)
{
    struct Case {
        const char* fault;
        std::vector<std::int32_t> rows;
        std::int64_t expected;
    };
    klv::RepeatedRows repeated;
    for (int again = 0; again < 2; ++again)    // marks of an earlier search must not count
        for (const Case& c :
             {Case{"nothing to compare", {}, -1}, Case{"one row", {3}, -1}, Case{"increasing", {0, 2, 9}, -1},
              Case{"decreasing", {9, 2, 0}, -1}, Case{"neighbours", {1, 1}, 1},
              Case{"apart", {4, 7, 1, 4, 7}, 3}, Case{"last row", {9, 0, 9}, 2}})
            EXPECT_EQ (repeated.find (c.rows, 10), c.expected) << c.fault;
}

// A run that may outlive its task keeps the problem that it was given.
TEST (Problem, IsCopiedWhileSomeoneElseHoldsIt)
{
    klv::Task task;
    task.edit_problem ().append_variables (2);
    const klv::Problem* before = &task.problem ();
    {
        const auto held = task.share_problem ();
        task.edit_problem ().append_variables (1);
        EXPECT_EQ (held->variables (), 2);
        EXPECT_EQ (held.get (), before);
        EXPECT_EQ (task.problem ().variables (), 3);
    }
    const klv::Problem* now = &task.problem ();
    task.share_problem ().reset ();
    task.edit_problem ().append_variables (1);
    EXPECT_EQ (&task.problem (), now) << "copied although nobody held it";
}

// For the thread sanitizer: a run lets go of the problem while the task changes it.
TEST (Problem, MayBeLetGoByARunWhileItChanges)
{
    klv::Task task;
    task.edit_problem ().append_variables (1);
    for (int round = 0; round < 200; ++round) {
        std::thread run ([held = task.share_problem (), round] () mutable {
            EXPECT_EQ (held->cost[0], round);
            held.reset ();
        });
        task.edit_problem ().cost[0] = round + 1;
        run.join ();
    }
}

}
