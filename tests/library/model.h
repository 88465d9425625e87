// Small problems and their answers for tests, built and read through the C interface alone.
#pragma once

#include "kalvo/include/kalvo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace model {

constexpr double inf = std::numeric_limits<double>::infinity ();

struct Range {
    double lower = -inf, upper = inf;
};

// A dense description: rows of a matrix, zeros left out.
struct Model {
    std::vector<double> cost = {};
    std::vector<std::vector<double>> rows = {};
    std::vector<Range> row_bounds = {};
    std::vector<Range> bounds = {};    // of the variables
    std::vector<bool> integer = {};
    bool maximize = false;
    double constant = 0;

    std::size_t variables () const { return cost.size (); }
    std::size_t constraints () const { return row_bounds.size (); }
};

inline int key_of (Range range)
{
    if (range.lower == range.upper)
        return KLV_BK_FX;
    if (range.lower > -inf)
        return range.upper < inf ? KLV_BK_RA : KLV_BK_LO;
    return range.upper < inf ? KLV_BK_UP : KLV_BK_FR;
}

class Task {
public:
    Task () { EXPECT_EQ (KLV_makeemptytask (nullptr, &task_), 0); }
    explicit Task (const Model& model) : Task () { put (model); }
    Task (const Task&) = delete;
    Task& operator= (const Task&) = delete;
    ~Task () { KLV_deletetask (&task_); }
    operator KLVtask_t () const { return task_; }

    void put (const Model& model);
    void set (const char* name, double value);    // a parameter of either kind
    int information (const char* name) const;
    double real_information (const char* name) const;
    std::string last_error () const;

private:
    KLVtask_t task_ = nullptr;
};

inline void Task::put (const Model& model)
{
    const auto n = static_cast<std::int32_t> (model.variables ());
    const auto m = static_cast<std::int32_t> (model.constraints ());
    EXPECT_EQ (KLV_appendvars (task_, n), 0);
    EXPECT_EQ (KLV_appendcons (task_, m), 0);
    const auto put_bounds = [&] (const std::vector<Range>& ranges, auto put_slice) {
        std::vector<std::int32_t> keys;
        std::vector<double> lower, upper;
        for (const Range& range : ranges) {
            keys.push_back (key_of (range));
            lower.push_back (range.lower);
            upper.push_back (range.upper);
        }
        EXPECT_EQ (put_slice (task_, 0, static_cast<std::int32_t> (ranges.size ()), keys.data (),
                              lower.data (), upper.data ()),
                   0);
    };
    put_bounds (model.bounds, KLV_putvarboundslice);
    put_bounds (model.row_bounds, KLV_putconboundslice);
    EXPECT_EQ (KLV_putcslice (task_, 0, n, model.cost.data ()), 0);
    for (std::int32_t j = 0; j < n; ++j) {
        std::vector<std::int32_t> rows;
        std::vector<double> values;
        for (std::int32_t i = 0; i < m; ++i)
            if (const double value = model.rows[static_cast<std::size_t> (i)][static_cast<std::size_t> (j)];
                value != 0) {
                rows.push_back (i);
                values.push_back (value);
            }
        EXPECT_EQ (
            KLV_putacol (task_, j, static_cast<std::int32_t> (rows.size ()), rows.data (), values.data ()),
            0);
        if (!model.integer.empty () && model.integer[static_cast<std::size_t> (j)]) {
            EXPECT_EQ (KLV_putvartype (task_, j, KLV_VAR_INTEGER), 0);
        }
    }
    EXPECT_EQ (KLV_putobjsense (task_, model.maximize ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE), 0);
    EXPECT_EQ (KLV_putcfix (task_, model.constant), 0);
}

inline void Task::set (const char* name, double value)
{
    std::int32_t kind = 0, index = 0;
    EXPECT_EQ (KLV_whichparam (task_, name, &kind, &index), 0);
    ASSERT_NE (kind, KLV_PAR_NONE) << name;
    if (kind == KLV_PAR_DOUBLE)
        EXPECT_EQ (KLV_putdouparam (task_, index, value), 0) << name;
    else
        EXPECT_EQ (KLV_putintparam (task_, index, static_cast<std::int32_t> (value)), 0) << name;
}

inline int find_information (KLVtask_t task, int kind, const std::string& name)
{
    char found[KLV_MAX_TEXT];
    const int count = kind == KLV_INF_DOUBLE ? KLV_DOUBLE_INFORMATION : KLV_INTEGER_INFORMATION;
    for (int i = 0; i < count; ++i)
        if (KLV_getinfname (task, kind, i, found) == 0 && name == found)
            return i;
    ADD_FAILURE () << "no information item " << name;
    return 0;
}

inline int Task::information (const char* name) const
{
    std::int32_t value = 0;
    EXPECT_EQ (KLV_getintinf (task_, find_information (task_, KLV_INF_INTEGER, name), &value), 0);
    return value;
}

inline double Task::real_information (const char* name) const
{
    double value = 0;
    EXPECT_EQ (KLV_getdouinf (task_, find_information (task_, KLV_INF_DOUBLE, name), &value), 0);
    return value;
}

inline std::string Task::last_error () const
{
    std::int32_t code = 0;
    char message[KLV_MAX_TEXT] = "";
    KLV_getlasterror (task_, &code, sizeof message, nullptr, message);
    return message;
}

// The problem as a task holds it, for checks that know nothing of the library's own.
struct Stated {
    std::int32_t n = 0, m = 0;
    double sign = 1;    // -1 when maximising
    double constant = 0;
    std::vector<double> cost;
    std::vector<std::vector<std::int32_t>> rows;    // of each column
    std::vector<std::vector<double>> values;
    std::vector<Range> bounds, row_bounds;
    std::vector<bool> integer;
};

inline Stated stated (KLVtask_t task)
{
    Stated s;
    KLV_getnumvar (task, &s.n);
    KLV_getnumcon (task, &s.m);
    KLV_getcfix (task, &s.constant);
    std::int32_t sense = 0;
    KLV_getobjsense (task, &sense);
    s.sign = sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    s.cost.resize (static_cast<std::size_t> (s.n));
    KLV_getc (task, s.cost.data ());
    const auto range = [&] (auto get, std::int32_t item) {
        std::int32_t key = 0;
        double lower = 0, upper = 0;
        get (task, item, &key, &lower, &upper);
        const bool has_lower = key == KLV_BK_LO || key == KLV_BK_FX || key == KLV_BK_RA;
        const bool has_upper = key == KLV_BK_UP || key == KLV_BK_FX || key == KLV_BK_RA;
        return Range{has_lower ? lower : -inf, has_upper ? upper : inf};
    };
    for (std::int32_t i = 0; i < s.m; ++i)
        s.row_bounds.push_back (range (KLV_getconbound, i));
    for (std::int32_t j = 0; j < s.n; ++j) {
        s.bounds.push_back (range (KLV_getvarbound, j));
        std::int32_t type = 0, count = 0;
        KLV_getvartype (task, j, &type);
        s.integer.push_back (type == KLV_VAR_INTEGER);
        std::vector<std::int32_t> rows (static_cast<std::size_t> (s.m));
        std::vector<double> values (static_cast<std::size_t> (s.m));
        KLV_getacol (task, j, &count, rows.data (), values.data ());
        rows.resize (static_cast<std::size_t> (count));
        values.resize (static_cast<std::size_t> (count));
        s.rows.push_back (rows);
        s.values.push_back (values);
    }
    return s;
}

// A solution slot, read out.
struct Slot {
    bool defined = false;
    int problem = -1, solution = -1;
    std::vector<std::int32_t> skc, skx;
    std::vector<double> xc, xx, y, slc, suc, slx, sux;
    double primal = 0, dual = 0;
};

inline Slot slot (KLVtask_t task, int which)
{
    Slot s;
    std::int32_t defined = 0, n = 0, m = 0;
    EXPECT_EQ (KLV_solutiondef (task, which, &defined), 0);
    s.defined = defined != 0;
    if (!s.defined)
        return s;
    KLV_getnumvar (task, &n);
    KLV_getnumcon (task, &m);
    EXPECT_EQ (KLV_getprosta (task, which, &s.problem), 0);
    EXPECT_EQ (KLV_getsolsta (task, which, &s.solution), 0);
    EXPECT_EQ (KLV_getprimalobj (task, which, &s.primal), 0);
    const auto get = [&] (auto& values, std::int32_t count, auto get_slice) {
        values.resize (static_cast<std::size_t> (count));
        EXPECT_EQ (get_slice (task, which, 0, count, values.data ()), 0);
    };
    get (s.skc, m, KLV_getskcslice);
    get (s.skx, n, KLV_getskxslice);
    get (s.xc, m, KLV_getxcslice);
    get (s.xx, n, KLV_getxxslice);
    if (which == KLV_SOL_INT)
        return s;
    EXPECT_EQ (KLV_getdualobj (task, which, &s.dual), 0);
    get (s.y, m, KLV_getyslice);
    get (s.slc, m, KLV_getslcslice);
    get (s.suc, m, KLV_getsucslice);
    get (s.slx, n, KLV_getslxslice);
    get (s.sux, n, KLV_getsuxslice);
    return s;
}

// Largest |c - A'y - (slx - sux)|, or |A'y + (slx - sux)| for a ray.
inline double balance (const Stated& s, const Slot& found, bool ray)
{
    double worst = 0;
    for (std::size_t j = 0; j < s.cost.size (); ++j) {
        double sum = ray ? 0 : s.cost[j];
        for (std::size_t k = 0; k < s.rows[j].size (); ++k)
            sum -= s.values[j][k] * found.y[static_cast<std::size_t> (s.rows[j][k])];
        worst = std::max (worst, std::abs (sum - (found.slx[j] - found.sux[j])) / (1 + std::abs (s.cost[j])));
    }
    return worst;
}

inline std::vector<double> activity (const Stated& s, const std::vector<double>& x)
{
    std::vector<double> sums (static_cast<std::size_t> (s.m), 0.0);
    for (std::size_t j = 0; j < x.size (); ++j)
        for (std::size_t k = 0; k < s.rows[j].size (); ++k)
            sums[static_cast<std::size_t> (s.rows[j][k])] += s.values[j][k] * x[j];
    return sums;
}

// Lower bounds times lower multipliers less upper bounds times upper ones; signs and absent bounds are checked on the way.
inline double bound_value (const std::vector<Range>& ranges, const std::vector<double>& lower,
                           const std::vector<double>& upper, double sign, double tolerance)
{
    double sum = 0;
    for (std::size_t i = 0; i < ranges.size (); ++i) {
        EXPECT_GE (sign * lower[i], 0) << "multiplier " << i << " has the wrong sign";
        EXPECT_GE (sign * upper[i], 0) << "multiplier " << i << " has the wrong sign";
        if (ranges[i].lower == -inf)
            EXPECT_NEAR (lower[i], 0, tolerance) << "multiplier " << i << " of a bound that does not exist";
        else
            sum += ranges[i].lower * lower[i];
        if (ranges[i].upper == inf)
            EXPECT_NEAR (upper[i], 0, tolerance) << "multiplier " << i << " of a bound that does not exist";
        else
            sum -= ranges[i].upper * upper[i];
    }
    return sum;
}

inline void expect_feasible (const Stated& s, const Slot& found, double tolerance)
{
    const auto inside = [&] (const std::vector<Range>& ranges, const std::vector<double>& values,
                             const char* what) {
        for (std::size_t i = 0; i < ranges.size (); ++i) {
            EXPECT_GE (values[i], ranges[i].lower - tolerance * (1 + std::abs (ranges[i].lower)))
                << what << " " << i;
            EXPECT_LE (values[i], ranges[i].upper + tolerance * (1 + std::abs (ranges[i].upper)))
                << what << " " << i;
        }
    };
    inside (s.bounds, found.xx, "variable");
    inside (s.row_bounds, found.xc, "constraint");
    const std::vector<double> activities = activity (s, found.xx);
    double objective = s.constant;
    for (std::size_t i = 0; i < activities.size (); ++i)
        EXPECT_NEAR (activities[i], found.xc[i], 1e-8 * (1 + std::abs (found.xc[i])))
            << "xc is not A x in row " << i;
    for (std::size_t j = 0; j < found.xx.size (); ++j)
        objective += s.cost[j] * found.xx[j];
    EXPECT_NEAR (found.primal, objective, 1e-9 * (1 + std::abs (objective)));
}

// Everything that makes a continuous solution optimal, recomputed from the problem that the task holds.
inline void expect_optimal (KLVtask_t task, int which, double tolerance = 1e-6)
{
    const Slot found = slot (task, which);
    ASSERT_TRUE (found.defined);
    EXPECT_EQ (found.problem, KLV_PRO_FEASIBLE);
    EXPECT_EQ (found.solution, KLV_SOLSTA_OPTIMAL);
    const Stated s = stated (task);
    expect_feasible (s, found, tolerance);
    EXPECT_LE (balance (s, found, false), tolerance);
    for (std::size_t i = 0; i < found.y.size (); ++i)
        EXPECT_NEAR (found.y[i], found.slc[i] - found.suc[i], 1e-12 * (1 + std::abs (found.y[i])));
    const double value = s.constant + bound_value (s.row_bounds, found.slc, found.suc, s.sign, tolerance) +
                         bound_value (s.bounds, found.slx, found.sux, s.sign, tolerance);
    const double scale = 1 + std::abs (found.primal) + std::abs (value);
    EXPECT_NEAR (found.dual, value, 1e-9 * scale);
    EXPECT_NEAR (found.primal, value, tolerance * scale);
}

// A proof of infeasibility, by its definition.
inline void expect_infeasible (KLVtask_t task, int which)
{
    const Slot found = slot (task, which);
    ASSERT_TRUE (found.defined);
    EXPECT_EQ (found.solution, KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE);
    EXPECT_TRUE (found.problem == KLV_PRO_PRIMAL_INFEASIBLE || found.problem == KLV_PRO_BOTH_INFEASIBLE);
    const Stated s = stated (task);
    double largest = 0;
    for (const auto* values : {&found.slc, &found.suc, &found.slx, &found.sux})
        for (const double value : *values)
            largest = std::max (largest, std::abs (value));
    EXPECT_LE (balance (s, found, true), 2e-8 * largest);
    const double value = bound_value (s.row_bounds, found.slc, found.suc, s.sign, 2e-8 * largest) +
                         bound_value (s.bounds, found.slx, found.sux, s.sign, 2e-8 * largest);
    EXPECT_NEAR (value, s.sign, 1e-6);
    EXPECT_EQ (found.dual, s.sign);
    EXPECT_EQ (found.primal, 0);
    for (const double x : found.xx)
        EXPECT_EQ (x, 0);
    for (const auto* keys : {&found.skc, &found.skx})
        for (const std::int32_t key : *keys)
            EXPECT_EQ (key, KLV_SK_UNKNOWN);
}

// A direction of unbounded improvement, by its definition.
inline void expect_unbounded (KLVtask_t task, int which)
{
    const Slot found = slot (task, which);
    ASSERT_TRUE (found.defined);
    EXPECT_EQ (found.solution, KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE);
    EXPECT_EQ (found.problem, KLV_PRO_DUAL_INFEASIBLE);
    const Stated s = stated (task);
    double largest = 0, value = 0;
    for (std::size_t j = 0; j < found.xx.size (); ++j) {
        largest = std::max (largest, std::abs (found.xx[j]));
        value += s.cost[j] * found.xx[j];
    }
    EXPECT_NEAR (value, -s.sign, 1e-9);
    const auto stays = [&] (const std::vector<Range>& ranges, const std::vector<double>& moves) {
        for (std::size_t i = 0; i < ranges.size (); ++i) {
            EXPECT_GE (moves[i], ranges[i].lower > -inf ? -2e-8 * largest : -inf) << i;
            EXPECT_LE (moves[i], ranges[i].upper < inf ? 2e-8 * largest : inf) << i;
        }
    };
    stays (s.bounds, found.xx);
    stays (s.row_bounds, activity (s, found.xx));
    EXPECT_EQ (found.dual, 0);
}

}
