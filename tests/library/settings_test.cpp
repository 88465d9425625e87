// Each setting does something: the row tells what would be the same if it did not.

#include "tests/library/model.h"

#include <algorithm>
#include <functional>
#include <ostream>
#include <random>

namespace {

using model::inf;

// A dense problem of some hundred simplex iterations.
model::Model dense (int m, int n)
{
    std::mt19937 random (7);
    std::uniform_real_distribution<double> uniform (0.1, 1);
    model::Model made;
    made.maximize = true;
    for (int j = 0; j < n; ++j) {
        made.cost.push_back (uniform (random));
        made.bounds.push_back ({0, inf});
    }
    for (int i = 0; i < m; ++i) {
        made.row_bounds.push_back ({-inf, 10 * uniform (random)});
        std::vector<double> row;
        for (int j = 0; j < n; ++j)
            row.push_back (uniform (random));
        made.rows.push_back (row);
    }
    return made;
}

// A knapsack with several rows: an integer search of many nodes.
model::Model knapsack (int m, int n)
{
    model::Model made = dense (m, n);
    made.integer.assign (static_cast<std::size_t> (n), true);
    made.bounds.assign (static_cast<std::size_t> (n), {0, 1});
    for (std::size_t i = 0; i < made.rows.size (); ++i) {
        double sum = 0;
        for (double& weight : made.rows[i]) {
            weight = std::round (100 * weight);
            sum += weight;
        }
        made.row_bounds[i].upper = std::floor (sum / 2);
    }
    for (double& value : made.cost)
        value = std::round (100 * value);
    return made;
}

struct Log {
    std::string text;
    void link (KLVtask_t task)
    {
        KLV_linkfunctotaskstream (task, KLV_STREAM_MESSAGES, this, [] (void* handle, const char* line) {
            static_cast<Log*> (handle)->text += line;
        });
    }
    bool has (const char* words) const { return text.find (words) != std::string::npos; }
    std::ptrdiff_t lines () const { return std::ranges::count (text, '\n'); }
};

int simplex_iterations (const model::Model& problem, const char* name, double value)
{
    model::Task task (problem);
    task.set ("KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_DUAL_SIMPLEX);
    task.set (name, value);
    EXPECT_EQ (KLV_optimize (task), 0);
    model::expect_optimal (task, KLV_SOL_BAS);
    return task.information ("KLV_IINF_SIMPLEX_ITERATIONS");
}

// ---- Limits -----------------------------------------------------------------------------------------------------------

struct Limit {
    const char* name;
    std::vector<std::pair<const char*, double>> settings;
    bool integer;
    int code;
};

std::ostream& operator<< (std::ostream& out, const Limit& limit)
{
    return out << limit.name;
}

class Limits : public testing::TestWithParam<Limit> {};

TEST_P (Limits, end_the_run_with_their_code)
{
    const Limit& limit = GetParam ();
    model::Task task (limit.integer ? knapsack (10, 60) : dense (60, 90));
    for (const auto& [name, value] : limit.settings)
        task.set (name, value);
    EXPECT_EQ (KLV_optimize (task), limit.code) << task.last_error ();
    const model::Stated s = model::stated (task);
    for (const int which : {KLV_SOL_ITR, KLV_SOL_BAS, KLV_SOL_INT})
        if (const model::Slot found = model::slot (task, which); found.defined) {
            EXPECT_NE (found.solution, KLV_SOLSTA_OPTIMAL);
            EXPECT_NE (found.solution, KLV_SOLSTA_INTEGER_OPTIMAL);
            if (found.solution == KLV_SOLSTA_PRIMAL_FEASIBLE)
                model::expect_feasible (s, found, 1e-6);
        }
}

INSTANTIATE_TEST_SUITE_P (
    Each, Limits,
    testing::Values (Limit{"no simplex iteration",
                           {{"KLV_IPAR_OPTIMIZER", 1}, {"KLV_IPAR_SIMPLEX_ITERATION_LIMIT", 0}},
                           false,
                           KLV_RES_ITERATION_LIMIT},
                     Limit{"five dual simplex iterations",
                           {{"KLV_IPAR_OPTIMIZER", 1}, {"KLV_IPAR_SIMPLEX_ITERATION_LIMIT", 5}},
                           false,
                           KLV_RES_ITERATION_LIMIT},
                     Limit{"five primal simplex iterations",
                           {{"KLV_IPAR_OPTIMIZER", 0}, {"KLV_IPAR_SIMPLEX_ITERATION_LIMIT", 5}},
                           false,
                           KLV_RES_ITERATION_LIMIT},
                     Limit{"two interior-point iterations",
                           {{"KLV_IPAR_OPTIMIZER", 3}, {"KLV_IPAR_INTPNT_ITERATION_LIMIT", 2}},
                           false,
                           KLV_RES_ITERATION_LIMIT},
                     Limit{"no time, simplex",
                           {{"KLV_IPAR_OPTIMIZER", 1}, {"KLV_DPAR_TIME_LIMIT", 0}},
                           false,
                           KLV_RES_TIME_LIMIT},
                     Limit{"no time, interior point",
                           {{"KLV_IPAR_OPTIMIZER", 3}, {"KLV_DPAR_TIME_LIMIT", 0}},
                           false,
                           KLV_RES_TIME_LIMIT},
                     Limit{"no time, integers", {{"KLV_DPAR_TIME_LIMIT", 0}}, true, KLV_RES_TIME_LIMIT},
                     Limit{"a tenth of a second, integers",
                           {{"KLV_DPAR_TIME_LIMIT", 0.1}, {"KLV_DPAR_MIP_RELATIVE_GAP", 0}},
                           true,
                           KLV_RES_TIME_LIMIT},
                     Limit{"one node", {{"KLV_IPAR_MIP_NODE_LIMIT", 1}}, true, KLV_RES_NODE_LIMIT},
                     Limit{
                         "one solution", {{"KLV_IPAR_MIP_SOLUTION_LIMIT", 1}}, true, KLV_RES_SOLUTION_LIMIT},
                     Limit{"no solution is the first solution",
                           {{"KLV_IPAR_MIP_SOLUTION_LIMIT", 0}},
                           true,
                           KLV_RES_SOLUTION_LIMIT},
                     Limit{"an integer objective reached",
                           {{"KLV_DPAR_OBJECTIVE_LIMIT", 10}},
                           true,
                           KLV_RES_OBJECTIVE_LIMIT}));

TEST (Limits, leave_a_usable_incumbent)
{
    model::Task task (knapsack (10, 60));
    task.set ("KLV_IPAR_MIP_SOLUTION_LIMIT", 2);
    EXPECT_EQ (KLV_optimize (task), KLV_RES_SOLUTION_LIMIT);
    const model::Slot found = model::slot (task, KLV_SOL_INT);
    EXPECT_EQ (found.solution, KLV_SOLSTA_PRIMAL_FEASIBLE);
    model::expect_feasible (model::stated (task), found, 1e-6);
    EXPECT_GE (task.information ("KLV_IINF_MIP_SOLUTIONS"), 2);
    EXPECT_GE (task.real_information ("KLV_DINF_MIP_BOUND"), found.primal);
    EXPECT_GT (task.real_information ("KLV_DINF_MIP_RELATIVE_GAP"), 1e-4);
}

// ---- What changes the way -----------------------------------------------------------------------------------------------

TEST (Settings, presolve_makes_a_chain_vanish)
{
    // x0 = 1, x[j] = 2 x[j-1]: presolve leaves nothing to iterate on.
    model::Model chain;
    for (int j = 0; j < 8; ++j) {
        chain.cost.push_back (1);
        chain.bounds.push_back ({-inf, inf});
        chain.row_bounds.push_back (j == 0 ? model::Range{1, 1} : model::Range{0, 0});
        std::vector<double> row (8, 0.0);
        row[static_cast<std::size_t> (j)] = 1;
        if (j > 0)
            row[static_cast<std::size_t> (j - 1)] = -2;
        chain.rows.push_back (row);
    }
    EXPECT_EQ (simplex_iterations (chain, "KLV_IPAR_PRESOLVE", KLV_PRESOLVE_ON), 0);
    EXPECT_EQ (simplex_iterations (chain, "KLV_IPAR_PRESOLVE", KLV_PRESOLVE_AUTOMATIC), 0);
    EXPECT_GT (simplex_iterations (chain, "KLV_IPAR_PRESOLVE", KLV_PRESOLVE_OFF), 0);
}

TEST (Settings, pricing_scaling_and_seed_change_the_way_and_not_the_answer)
{
    model::Model badly_scaled = dense (60, 90);
    for (std::size_t i = 0; i < badly_scaled.rows.size (); ++i) {
        const double factor = std::pow (10.0, static_cast<double> (i % 7) - 3);
        for (double& value : badly_scaled.rows[i])
            value *= factor;
        badly_scaled.row_bounds[i].upper *= factor;
    }
    const auto differ = [&] (const char* name, const std::vector<int>& values) {
        std::vector<int> counts;
        for (const int value : values)
            counts.push_back (simplex_iterations (badly_scaled, name, value));
        EXPECT_NE (std::ranges::min (counts), std::ranges::max (counts)) << name;
    };
    differ ("KLV_IPAR_SIMPLEX_PRICING", {KLV_PRICING_DANTZIG, KLV_PRICING_DEVEX, KLV_PRICING_STEEPEST_EDGE});
    differ ("KLV_IPAR_SCALING",
            {KLV_SCALING_OFF, KLV_SCALING_FORCED_EQUILIBRATION, KLV_SCALING_MAXIMUM_VALUE});
}

TEST (Settings, a_seed_changes_a_search_and_repeats_it)
{
    const auto iterations = [] (int seed) {
        model::Task task (knapsack (10, 40));
        task.set ("KLV_IPAR_RANDOM_SEED", seed);
        task.set ("KLV_IPAR_MAX_THREADS", 1);
        EXPECT_EQ (KLV_optimize (task), 0);
        return task.information ("KLV_IINF_MIP_NODES") * 1'000'000 +
               task.information ("KLV_IINF_SIMPLEX_ITERATIONS");
    };
    const int first = iterations (1);
    EXPECT_EQ (iterations (1), first);
    EXPECT_TRUE (iterations (2) != first || iterations (3) != first || iterations (4) != first);
}

// A limit is passed by a dual objective that is worse, and by an integer point that is better.
TEST (Settings, the_objective_limit_knows_the_sense)
{
    const auto code = [] (model::Model problem, bool maximize, double limit) {
        if (!maximize) {
            problem.maximize = false;
            for (double& cost : problem.cost)
                cost = -cost;
        }
        model::Task task (problem);
        task.set ("KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_DUAL_SIMPLEX);
        task.set ("KLV_IPAR_PRESOLVE", KLV_PRESOLVE_OFF);
        task.set ("KLV_DPAR_OBJECTIVE_LIMIT", limit);
        return KLV_optimize (task);
    };
    const model::Model linear = dense (60, 90), integer = knapsack (10, 40);
    for (const bool maximize : {false, true}) {
        SCOPED_TRACE (maximize);
        const double sign = maximize ? 1 : -1;
        EXPECT_EQ (code (linear, maximize, sign * 1e-3), 0) << "the optimum is better than the limit";
        EXPECT_EQ (code (linear, maximize, sign * 1e4), KLV_RES_OBJECTIVE_LIMIT)
            << "no point reaches the limit";
        EXPECT_EQ (code (integer, maximize, sign * 1e6), 0) << "no point reaches the target";
        EXPECT_EQ (code (integer, maximize, sign * 1), KLV_RES_OBJECTIVE_LIMIT)
            << "a point reaches the target";
        EXPECT_EQ (code (integer, maximize, -sign * 100), KLV_RES_OBJECTIVE_LIMIT)
            << "a point reaches the target";
    }
}

TEST (Settings, tolerances_decide_what_is_optimal)
{
    // The point that is best within the loose tolerance is not within the default one.
    model::Model problem{.cost = {1}, .rows = {{1}}, .row_bounds = {{1, inf}}, .bounds = {{0, 1 - 1e-4}}};
    const auto status = [&] (double tolerance) {
        model::Task task (problem);
        task.set ("KLV_DPAR_PRIMAL_TOLERANCE", tolerance);
        KLV_optimize (task);
        return model::slot (task, KLV_SOL_BAS).problem;
    };
    EXPECT_EQ (status (1e-6), KLV_PRO_PRIMAL_INFEASIBLE);
    EXPECT_EQ (status (1e-2), KLV_PRO_FEASIBLE);
}

TEST (Settings, gaps_of_the_integer_search)
{
    const auto nodes = [] (const char* name, double gap) {
        model::Task task (knapsack (10, 40));
        task.set ("KLV_DPAR_MIP_RELATIVE_GAP", 0);
        task.set ("KLV_DPAR_MIP_ABSOLUTE_GAP", 0);
        task.set (name, gap);
        EXPECT_EQ (KLV_optimize (task), 0);
        EXPECT_EQ (model::slot (task, KLV_SOL_INT).solution, KLV_SOLSTA_INTEGER_OPTIMAL);
        return task.information ("KLV_IINF_MIP_NODES");
    };
    const int all = nodes ("KLV_DPAR_MIP_RELATIVE_GAP", 0);
    EXPECT_GT (all, 1);
    EXPECT_LT (nodes ("KLV_DPAR_MIP_RELATIVE_GAP", 0.5), all);
    EXPECT_LT (nodes ("KLV_DPAR_MIP_ABSOLUTE_GAP", 1e4), all);
}

TEST (Settings, threads_two_one_two_in_one_session)
{
    for (const int threads : {2, 1, 2}) {
        model::Task task (knapsack (5, 30));
        task.set ("KLV_IPAR_MAX_THREADS", threads);
        EXPECT_EQ (KLV_optimize (task), 0);
        EXPECT_EQ (model::slot (task, KLV_SOL_INT).solution, KLV_SOLSTA_INTEGER_OPTIMAL);
        EXPECT_EQ (task.information ("KLV_IINF_THREADS"), threads);
    }
}

TEST (Settings, basis_after_interior_point)
{
    for (const int wanted : {KLV_ON, KLV_OFF}) {
        model::Task task (dense (20, 30));
        task.set ("KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_INTERIOR_POINT);
        task.set ("KLV_IPAR_INTPNT_BASIS", wanted);
        EXPECT_EQ (KLV_optimize (task), 0);
        model::expect_optimal (task, KLV_SOL_ITR);
        EXPECT_EQ (task.information ("KLV_IINF_INTERIOR_SOURCE"), 1 + KLV_OPTIMIZER_INTERIOR_POINT);
        EXPECT_EQ (model::slot (task, KLV_SOL_BAS).defined, wanted == KLV_ON);
        if (wanted == KLV_ON)
            model::expect_optimal (task, KLV_SOL_BAS);
    }
    for (const int wanted : {KLV_ON, KLV_OFF}) {
        model::Task task (dense (20, 30));
        task.set ("KLV_IPAR_INTPNT_BASIS", wanted);
        EXPECT_EQ (KLV_optimize (task), 0);
        model::expect_optimal (task, KLV_SOL_BAS);
        EXPECT_EQ (model::slot (task, KLV_SOL_ITR).defined, wanted == KLV_ON);
        EXPECT_EQ (task.information ("KLV_IINF_INTERIOR_SOURCE"),
                   wanted == KLV_ON ? 1 + KLV_OPTIMIZER_DUAL_SIMPLEX : 0);
    }
}

TEST (Settings, bounds_beyond_the_fixing_tolerance_are_a_contradiction)
{
    const model::Model crossed{.cost = {1}, .rows = {{1}}, .row_bounds = {{2, 1.999}}, .bounds = {{0, 9}}};
    for (const double tolerance : {1e-10, 1e-2}) {
        model::Task task (crossed);
        task.set ("KLV_DPAR_FIXING_TOLERANCE", tolerance);
        EXPECT_EQ (KLV_optimize (task), 0);
        if (tolerance < 1e-3)
            model::expect_infeasible (task, KLV_SOL_BAS);
        else
            EXPECT_NEAR (model::slot (task, KLV_SOL_BAS).primal, 1.999, 1e-9);
        EXPECT_EQ (task.information ("KLV_IINF_CROSSED_BOUNDS"), tolerance < 1e-3 ? 1 : 0);
    }
}

// ---- The log ------------------------------------------------------------------------------------------------------------

struct Level {
    int level;
    bool speaks, tells_steps, lets_the_engine_speak;
};

class LogLevels : public testing::TestWithParam<std::tuple<Level, int>> {};

TEST_P (LogLevels, print_what_they_say)
{
    const auto& [level, optimizer] = GetParam ();
    const bool integer = optimizer == KLV_OPTIMIZER_MIXED_INTEGER;
    model::Task task (integer ? knapsack (5, 30) : dense (20, 30));
    Log log;
    log.link (task);
    task.set ("KLV_IPAR_LOG", level.level);
    task.set ("KLV_IPAR_OPTIMIZER", optimizer);
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_EQ (log.lines () > 0, level.speaks) << log.text;
    EXPECT_EQ (log.has (integer ? "incumbent" : "primal objective"), level.tells_steps) << log.text;
    EXPECT_EQ (log.has ("  | "), level.lets_the_engine_speak) << log.text;
}

INSTANTIATE_TEST_SUITE_P (
    Each, LogLevels,
    testing::Combine (testing::Values (Level{0, false, false, false}, Level{1, true, false, false},
                                       Level{2, true, true, false}, Level{3, true, true, true}),
                      testing::Values (KLV_OPTIMIZER_PRIMAL_SIMPLEX, KLV_OPTIMIZER_DUAL_SIMPLEX,
                                       KLV_OPTIMIZER_INTERIOR_POINT, KLV_OPTIMIZER_MIXED_INTEGER)));

struct Switch {
    const char* name;
    int optimizer;
};

class LogSwitches : public testing::TestWithParam<Switch> {};

TEST_P (LogSwitches, silence_the_steps_of_one_method)
{
    const bool integer = GetParam ().optimizer == KLV_OPTIMIZER_MIXED_INTEGER;
    model::Task task (integer ? knapsack (5, 30) : dense (20, 30));
    Log log;
    log.link (task);
    task.set ("KLV_IPAR_OPTIMIZER", GetParam ().optimizer);
    task.set ("KLV_IPAR_INTPNT_BASIS", KLV_OFF);
    task.set (GetParam ().name, KLV_OFF);
    EXPECT_EQ (KLV_optimize (task), 0);
    EXPECT_FALSE (log.has ("primal objective") || log.has ("incumbent")) << log.text;
}

INSTANTIATE_TEST_SUITE_P (Each, LogSwitches,
                          testing::Values (Switch{"KLV_IPAR_LOG_SIMPLEX", KLV_OPTIMIZER_DUAL_SIMPLEX},
                                           Switch{"KLV_IPAR_LOG_INTPNT", KLV_OPTIMIZER_INTERIOR_POINT},
                                           Switch{"KLV_IPAR_LOG_MIP", KLV_OPTIMIZER_MIXED_INTEGER}));

}
