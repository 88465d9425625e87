// Conflicts of infeasible problems: the members alone are infeasible, and feasible without any one of them.

#include "tests/library/model.h"

#include <numeric>

namespace {

struct Members {
    std::vector<std::int32_t> kinds, items;
};

Members conflict_of (KLVtask_t task)
{
    std::int32_t count = -1;
    EXPECT_EQ (KLV_getnumconflict (task, &count), 0);
    Members found{std::vector<std::int32_t> (static_cast<std::size_t> (count)),
                  std::vector<std::int32_t> (static_cast<std::size_t> (count))};
    if (count > 0) {
        EXPECT_EQ (KLV_getconflict (task, count - 1, found.kinds.data (), found.items.data ()),
                   KLV_RES_BUFFER_TOO_SMALL);
    }
    EXPECT_EQ (KLV_getconflict (task, count, found.kinds.data (), found.items.data ()), 0);
    return found;
}

// The problem with those bounds only that are members, but for one.
klv::Problem members_alone (klv::Problem problem, const Members& members, std::size_t without)
{
    const klv::Bounds constraint = problem.constraint, variable = problem.variable;
    for (klv::Bounds* bounds : {&problem.constraint, &problem.variable}) {
        std::ranges::fill (bounds->lower, -klv::infinity);
        std::ranges::fill (bounds->upper, klv::infinity);
    }
    for (std::size_t k = 0; k < members.kinds.size (); ++k) {
        if (k == without)
            continue;
        const auto item = static_cast<std::size_t> (members.items[k]);
        switch (members.kinds[k]) {
        case KLV_CONFLICT_CONSTRAINT_LOWER:
            problem.constraint.lower[item] = constraint.lower[item];
            break;
        case KLV_CONFLICT_CONSTRAINT_UPPER:
            problem.constraint.upper[item] = constraint.upper[item];
            break;
        case KLV_CONFLICT_VARIABLE_LOWER:
            problem.variable.lower[item] = variable.lower[item];
            break;
        default:
            problem.variable.upper[item] = variable.upper[item];
        }
    }
    for (klv::Bounds* bounds : {&problem.constraint, &problem.variable})
        for (std::size_t i = 0; i < bounds->key.size (); ++i)
            bounds->key[i] = klv::key_of (bounds->lower[i], bounds->upper[i]);
    std::ranges::fill (problem.cost, 0.0);
    problem.quadratic_objective = {};
    return problem;
}

bool is_infeasible (const klv::Problem& problem)
{
    model::Task task (problem, "CONFLICT_TIME_LIMIT 0");
    EXPECT_EQ (KLV_optimize (task), 0);
    for (const std::int32_t which : {KLV_SOL_ITR, KLV_SOL_BAS, KLV_SOL_INT})
        if (const model::Slot found = model::slot (task, which); found.defined)
            return found.problem == KLV_PRO_PRIMAL_INFEASIBLE || found.problem == KLV_PRO_BOTH_INFEASIBLE ||
                   found.problem == KLV_PRO_INFEASIBLE_BY_SEARCH;
    ADD_FAILURE () << "no answer";
    return false;
}

// Finds the conflict by an optimisation and returns its size.
std::size_t prove_conflict (model::Task& task)
{
    const klv::Problem problem = task->problem ();
    std::string log;
    files::collect (task, KLV_STREAM_MESSAGES, log);
    EXPECT_EQ (KLV_optimize (task), 0);
    const Members members = conflict_of (task);
    EXPECT_EQ (task.information ("CONFLICT_MEMBERS"), members.items.size ());
    EXPECT_EQ (task.information ("CONFLICT_IRREDUCIBLE"), 1);
    EXPECT_TRUE (is_infeasible (members_alone (problem, members, members.items.size ())));
    for (std::size_t k = 0; k < members.items.size (); ++k)
        EXPECT_FALSE (is_infeasible (members_alone (problem, members, k))) << "without member " << k;
    return members.items.size ();
}

struct Case {
    const char* problem;
    std::size_t least, most;    // members
};

class ConflictTest : public testing::TestWithParam<Case> {};

TEST_P (ConflictTest, NeedsEachMember)
{
    model::Task task (GetParam ().problem);
    const std::size_t members = prove_conflict (task);
    EXPECT_GE (members, GetParam ().least);
    EXPECT_LE (members, GetParam ().most);
}

INSTANTIATE_TEST_SUITE_P (
    All, ConflictTest,
    testing::Values (Case{"min 1 1; 0.. 0..; 1 1 in ..10; 1 0 in 5..; 0 1 in 7..; 1 -1 in ..99", 3, 3},
                     Case{"min 1 1; 0.. 3..1; 1 1 in ..10", 2, 2},    // crossed
                     Case{"min 1 1; 0.. 0..; 0 0 in 2..3", 1,
                          1},    // a row that is a contradiction by itself
                     Case{"min 1 1; .. ..; 1 1 in 2..2; 1 1 in 3..3", 2, 2},    // one side of each equality
                     Case{"min 1; 0..9i; 2 in 3..3", 2, 2},                     // by search
                     Case{"min 1 1; 0..1i 0..1i; 1 1 in 3..", 3, 3},            // the relaxation's
                     Case{"lp_infeasible/box1.mps", 1, 30}, Case{"lp_infeasible/galenet.mps", 1, 8},
                     Case{"lp_infeasible/woodinfe.mps", 1, 4}));

TEST (Conflict, OfRandomProblemsIsIrreducible)
{
    std::mt19937 random (3);
    int found = 0;
    for (int round = 0; round < 60; ++round) {
        const int m = 4 + round % 9, n = 3 + round % 7;
        std::ostringstream text;
        text << "min";
        for (int j = 0; j < n; ++j)
            text << " 1";
        text << ";";
        for (int j = 0; j < n; ++j)
            text << (round % 3 == 0 ? " 0..3i" : j % 2 ? " 0..5" : " ..");
        for (int i = 0; i < m; ++i) {
            text << ";";
            for (int j = 0; j < n; ++j)
                text << ' ' << static_cast<int> (random () % 7) - 3;
            text << " in " << static_cast<int> (random () % 9) - 1 << "..";
        }
        model::Task task (text.str ());
        if (!is_infeasible (task->problem ()))
            continue;
        ++found;
        prove_conflict (task);
    }
    EXPECT_GT (found, 20);
}

TEST (Conflict, IsOnlyLookedForWhereThereIsTimeAndSomebodyListens)
{
    model::Task feasible ("min 1; 0..; 1 in 2..");
    EXPECT_EQ (KLV_optimize (feasible), 0);
    EXPECT_TRUE (conflict_of (feasible).items.empty ());
    model::Task task ("min 1; 0..; 1 in ..-1", "CONFLICT_TIME_LIMIT 0");
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_TRUE (conflict_of (task).items.empty ());
    task.set ("CONFLICT_TIME_LIMIT 5");
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_TRUE (conflict_of (task).items.empty ()) << "nobody listens";
    EXPECT_EQ (KLV_analyzeproblem (task, KLV_STREAM_MESSAGES), 0);
    EXPECT_EQ (conflict_of (task).items.size (), 2u);
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_EQ (conflict_of (task).items.size (), 2u) << "the problem is the same";
    EXPECT_EQ (KLV_putcfix (task, 3), 0);
    EXPECT_TRUE (conflict_of (task).items.empty ()) << "of another problem";
}

}
