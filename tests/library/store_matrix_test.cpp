// The constraint matrix against a plain model of it, under any order of changes, and the problem while runs hold it.
#include "kalvo/model/matrix.h"
#include "kalvo/model/refusal.h"
#include "kalvo/task/task.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <thread>

namespace {

struct PlainColumn {
    std::vector<std::int32_t> rows;
    std::vector<double> values;
};

void expect_same (klv::ColumnMatrix& matrix, const std::vector<PlainColumn>& plain, bool pack)
{
    if (pack)
        matrix.pack ();
    ASSERT_EQ (matrix.columns (), std::ssize (plain));
    std::int64_t entries = 0;
    for (std::size_t j = 0; j < plain.size (); ++j) {
        const klv::Column column = matrix.column (static_cast<std::int32_t> (j));
        ASSERT_TRUE (std::ranges::equal (column.rows, plain[j].rows)) << j;
        ASSERT_TRUE (std::ranges::equal (column.values, plain[j].values)) << j;
        ASSERT_TRUE (!pack || matrix.starts ()[j] == entries) << j;
        entries += std::ssize (column.rows);
    }
    ASSERT_EQ (matrix.entries (), entries);
    ASSERT_LE (matrix.rows ().size (), std::size_t{120} * (plain.size () + 1)) << "holes are closed";
    ASSERT_TRUE (!pack || (std::ssize (matrix.rows ()) == entries &&
                           std::ssize (matrix.values ()) == entries && matrix.starts ().back () == entries));
}

TEST (ColumnMatrix, AgreesWithAPlainOneAfterRandomChanges)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::mt19937 random (seed);
        const std::int64_t most = seed % 2 == 0 ? 1'000'000 : 200;
        klv::ColumnMatrix matrix (most);
        std::vector<PlainColumn> plain;
        std::vector<std::int32_t> all (40);
        std::iota (all.begin (), all.end (), 0);
        for (int step = 0; step < 600; ++step) {
            if (plain.empty () || random () % 20 == 0) {
                const std::size_t more = random () % 5;
                matrix.append_columns (static_cast<std::int32_t> (more));
                plain.resize (plain.size () + more);
                continue;
            }
            const std::size_t j = random () % plain.size (), count = random () % 40;
            std::ranges::shuffle (all, random);
            PlainColumn column{{all.begin (), all.end () - static_cast<std::ptrdiff_t> (40 - count)},
                               std::vector<double> (count)};
            std::ranges::generate (column.values, random);
            try {
                matrix.put (static_cast<std::int32_t> (j), column.rows, column.values);
                plain[j] = column;
            } catch (const klv::Refusal&) {
                EXPECT_GT (matrix.entries () + std::ssize (column.rows), most) << "it can be counted";
            }
            EXPECT_LE (std::ssize (matrix.rows ()), most) << "also a column that moves is counted";
            if (step % 10 == 0)
                expect_same (matrix, plain, step % 30 == 0);
        }
        expect_same (matrix, plain, true);
    }
}

// A run that may outlive its task keeps the problem that it was given; a thread sanitizer sees that it may let go at any time.
TEST (ProblemRace, MayBeLetGoByARunWhileItChanges)
{
    klv::Task task;
    task.edit_problem ().append_variables (1);
    for (int round = 0; round < 200; ++round) {
        std::thread run ([held = task.share_problem (), round] () mutable {
            EXPECT_EQ (held->cost[0], round);
            held.reset ();
        });
        task.edit_problem ().cost[0] = round + 1;    // a copy, or what the run has let go of
        run.join ();
    }
}

}
