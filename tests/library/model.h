// Small problems for tests, and proofs of their answers that use nothing of the library but what it holds.
#pragma once

#include "kalvo/task/task.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace model {

using Values = std::vector<double>;

constexpr double inf = std::numeric_limits<double>::infinity ();

struct Range {
    double lower = -inf, upper = inf;
};

// Zeros of the rows are no entries.
struct Model {
    Values cost = {};
    std::vector<Values> rows = {};
    std::vector<Range> row_bounds = {};
    std::vector<Range> bounds = {};    // of the variables
    std::vector<bool> integer = {};
    bool maximize = false;
    double constant = 0;
};

// "max 3 2 +1; 0.. 0..9i; 1 1 in 1..4; 0 1 in ..3": costs and constant; bounds of the variables, i: integer; rows.
inline Model parse (const std::string& text)
{
    Model model;
    std::istringstream parts (text);
    std::string part, word;
    for (int place = 0; std::getline (parts, part, ';'); ++place) {
        std::istringstream words (part);
        if (place > 1)
            model.rows.emplace_back ();
        Values& numbers = place > 1 ? model.rows.back () : model.cost;
        while (words >> word) {
            if (const auto dots = word.find (".."); dots != word.npos) {
                const std::string upper = word.substr (dots + 2);
                const bool bounded = !upper.empty () && upper != "i";
                (place > 1 ? model.row_bounds : model.bounds)
                    .push_back ({dots > 0 ? std::stod (word) : -inf, bounded ? std::stod (upper) : inf});
                if (place == 1)
                    model.integer.push_back (word.back () == 'i');
            } else if (word == "min" || word == "max")
                model.maximize = word == "max";
            else if (word.front () == '+')
                model.constant = std::stod (word.substr (1));
            else if (word != "in")
                numbers.push_back (std::stod (word));
        }
    }
    return model;
}

// A dense problem of some hundred simplex iterations, maximised.
inline Model dense (std::size_t m, std::size_t n)
{
    std::mt19937 random (7);
    std::uniform_real_distribution<double> uniform (0.1, 1);
    const auto some = [&] {
        Values values (n);
        std::ranges::generate (values, [&] { return uniform (random); });
        return values;
    };
    Model made{.cost = some (), .bounds = {n, {0, inf}}, .maximize = true};
    for (std::size_t i = 0; i < m; ++i) {
        made.rows.push_back (some ());
        made.row_bounds.push_back ({-inf, 10 * uniform (random)});
    }
    return made;
}

// A knapsack with several rows: an integer search of many nodes.
inline Model knapsack (std::size_t m, std::size_t n)
{
    Model made = dense (m, n);
    made.integer.assign (n, true);
    made.bounds.assign (n, {0, 1});
    for (double& value : made.cost)
        value = std::round (100 * value);
    for (std::size_t i = 0; i < m; ++i) {
        double sum = 0;
        for (double& weight : made.rows[i])
            sum += weight = std::round (100 * weight);
        made.row_bounds[i].upper = std::floor (sum / 2);
    }
    return made;
}

class Task {
public:
    Task () { EXPECT_EQ (KLV_makeemptytask (nullptr, &task_), 0); }
    explicit Task (const Model& model, const std::string& settings = "") : Task ()
    {
        put (model);
        set (settings);
    }
    explicit Task (const char* model, const std::string& settings = "") : Task (parse (model), settings) {}
    Task (const Task&) = delete;
    Task& operator= (const Task&) = delete;
    ~Task () { KLV_deletetask (&task_); }
    operator KLVtask_t () const { return task_; }

    void put (const Model& model);
    void set (const std::string& settings);         // "OPTIMIZER 1 TIME_LIMIT 0.5": names without prefix
    double information (const char* item) const;    // "MIP_NODES": its name without prefix
    std::string last_error () const;

private:
    KLVtask_t task_ = nullptr;
};

inline void Task::put (const Model& model)
{
    const auto n = static_cast<std::int32_t> (model.cost.size ());
    const auto m = static_cast<std::int32_t> (model.row_bounds.size ());
    EXPECT_EQ (KLV_appendvars (task_, n), 0);
    EXPECT_EQ (KLV_appendcons (task_, m), 0);
    const auto put_bound = [&] (auto put_slice, std::int32_t item, Range range) {
        const std::int32_t key = range.lower == range.upper ? KLV_BK_FX : KLV_BK_RA;
        EXPECT_EQ (put_slice (task_, item, item + 1, &key, &range.lower, &range.upper), 0);
    };
    for (std::int32_t i = 0; i < m; ++i)
        put_bound (KLV_putconboundslice, i, model.row_bounds[static_cast<std::size_t> (i)]);
    for (std::int32_t j = 0; j < n; ++j) {
        const auto column = static_cast<std::size_t> (j);
        put_bound (KLV_putvarboundslice, j, model.bounds[column]);
        std::vector<std::int32_t> rows;
        Values values;
        for (std::int32_t i = 0; i < m; ++i)
            if (const double value = model.rows[static_cast<std::size_t> (i)][column]; value != 0) {
                rows.push_back (i);
                values.push_back (value);
            }
        const auto count = static_cast<std::int32_t> (rows.size ());
        EXPECT_EQ (KLV_putacol (task_, j, count, rows.data (), values.data ()), 0);
        const bool integer = !model.integer.empty () && model.integer[column];
        EXPECT_EQ (KLV_putvartype (task_, j, integer), 0);
    }
    EXPECT_EQ (KLV_putcslice (task_, 0, n, model.cost.data ()), 0);
    EXPECT_EQ (KLV_putobjsense (task_, model.maximize), 0);
    EXPECT_EQ (KLV_putcfix (task_, model.constant), 0);
}

inline void Task::set (const std::string& settings)
{
    std::istringstream words (settings);
    for (std::string name, value; words >> name >> value;) {
        std::int32_t kind = 0, number = 0;
        if (KLV_whichparam (task_, ("KLV_IPAR_" + name).c_str (), &kind, &number); kind == KLV_PAR_INTEGER)
            EXPECT_EQ (KLV_putintparam (task_, number, std::stoi (value)), 0) << name;
        else {
            KLV_whichparam (task_, ("KLV_DPAR_" + name).c_str (), &kind, &number);
            ASSERT_EQ (kind, KLV_PAR_DOUBLE) << name;
            EXPECT_EQ (KLV_putdouparam (task_, number, std::stod (value)), 0) << name;
        }
    }
}

inline double Task::information (const char* item) const
{
    char name[KLV_MAX_TEXT];
    std::int32_t integer = 0;
    double real = 0;
    for (int i = 0; KLV_getinfname (task_, KLV_INF_INTEGER, i, name) == 0; ++i)
        if (name == std::string ("KLV_IINF_") + item && KLV_getintinf (task_, i, &integer) == 0)
            return integer;
    for (int i = 0; KLV_getinfname (task_, KLV_INF_DOUBLE, i, name) == 0; ++i)
        if (name == std::string ("KLV_DINF_") + item && KLV_getdouinf (task_, i, &real) == 0)
            return real;
    ADD_FAILURE () << "no information item " << item;
    return 0;
}

inline std::string Task::last_error () const
{
    std::int32_t code = 0;
    char message[KLV_MAX_TEXT] = "";
    KLV_getlasterror (task_, &code, sizeof message, nullptr, message);
    return message;
}

// A solution slot, read out.
struct Slot {
    bool defined = false;
    std::int32_t problem = -1, solution = -1;
    std::vector<std::int32_t> skc, skx;
    Values xc, xx, y, slc, suc, slx, sux;
    double primal = 0, dual = 0;
};

inline Slot slot (KLVtask_t task, std::int32_t which)
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
        for (const double value : values)
            EXPECT_TRUE (std::isfinite (value));
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

// ---- Proofs -----------------------------------------------------------------------------------------------------------
// What a status says of a slot, recomputed from the problem that the task holds.

inline double largest (std::initializer_list<const Values*> arrays)
{
    double most = 0;
    for (const Values* values : arrays)
        for (const double value : *values)
            most = std::max (most, std::abs (value));
    return most;
}

struct Proof {
    const klv::Problem& problem;
    const Slot& found;
    double tolerance;
    double sign = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;

    // A value of each variable times its column, summed up by rows.
    Values activity () const
    {
        Values sums (found.xc.size ());
        for (std::size_t j = 0; j < found.xx.size (); ++j) {
            const klv::Column column = problem.matrix.column (static_cast<std::int32_t> (j));
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                sums[static_cast<std::size_t> (column.rows[k])] += column.values[k] * found.xx[j];
        }
        return sums;
    }
    double cost () const
    {
        return std::inner_product (found.xx.begin (), found.xx.end (), problem.cost.begin (), 0.0);
    }

    // Largest |c - A'y - (slx - sux)|, without c for a ray.
    double balance (bool ray) const
    {
        double worst = 0;
        for (std::size_t j = 0; j < found.slx.size (); ++j) {
            const klv::Column column = problem.matrix.column (static_cast<std::int32_t> (j));
            double sum = (ray ? 0 : problem.cost[j]) - (found.slx[j] - found.sux[j]);
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                sum -= column.values[k] * found.y[static_cast<std::size_t> (column.rows[k])];
            worst = std::max (worst, std::abs (sum) / (1 + std::abs (problem.cost[j])));
        }
        return worst;
    }

    // Bounds times multipliers; signs and absent bounds are checked on the way.
    double bound_value (double noise) const
    {
        double sum = 0;
        const auto add = [&] (const Values& bounds, const Values& multipliers, double side) {
            for (std::size_t i = 0; i < bounds.size (); ++i) {
                EXPECT_GE (sign * multipliers[i], 0) << "a multiplier of the wrong sign";
                if (std::isfinite (bounds[i]))
                    sum += side * bounds[i] * multipliers[i];
                else
                    EXPECT_NEAR (multipliers[i], 0, noise) << "the multiplier of a bound that does not exist";
            }
        };
        add (problem.constraint.lower, found.slc, 1);
        add (problem.constraint.upper, found.suc, -1);
        add (problem.variable.lower, found.slx, 1);
        add (problem.variable.upper, found.sux, -1);
        for (std::size_t i = 0; i < found.y.size (); ++i)
            EXPECT_NEAR (found.y[i], found.slc[i] - found.suc[i], 1e-12 * (1 + std::abs (found.y[i])));
        return sum;
    }

    // Whether values, or moves from anywhere inside, keep within the bounds.
    void expect_inside (const klv::Bounds& bounds, const Values& values) const
    {
        for (std::size_t i = 0; i < values.size (); ++i) {
            const auto [lower, upper] = bounds.interval (i);
            EXPECT_GE (values[i], lower - tolerance * (1 + std::abs (lower))) << i;
            EXPECT_LE (values[i], upper + tolerance * (1 + std::abs (upper))) << i;
        }
    }
    void expect_kept (const klv::Bounds& bounds, const Values& moves, double noise) const
    {
        for (std::size_t i = 0; i < moves.size (); ++i) {
            EXPECT_TRUE (bounds.lower[i] == -inf || moves[i] >= -noise) << i;
            EXPECT_TRUE (bounds.upper[i] == inf || moves[i] <= noise) << i;
        }
    }

    void expect_feasible () const
    {
        expect_inside (problem.variable, found.xx);
        expect_inside (problem.constraint, found.xc);
        const Values sums = activity ();
        for (std::size_t i = 0; i < sums.size (); ++i)
            EXPECT_NEAR (sums[i], found.xc[i], 1e-8 * (1 + std::abs (sums[i])));
        const double objective = problem.constant + cost ();
        EXPECT_NEAR (found.primal, objective, 1e-9 * (1 + std::abs (objective)));
    }
    void expect_optimal () const
    {
        EXPECT_EQ (found.problem, KLV_PRO_FEASIBLE);
        EXPECT_LE (balance (false), tolerance);
        const double value = problem.constant + bound_value (tolerance);
        const double scale = 1 + std::abs (found.primal) + std::abs (value);
        EXPECT_NEAR (found.dual, value, 1e-9 * scale);
        EXPECT_NEAR (found.primal, value, tolerance * scale);
    }
    // Whole numbers come as such, unless a loose tolerance allows for others.
    void expect_integer_optimal () const
    {
        EXPECT_EQ (found.problem, KLV_PRO_PRIMAL_FEASIBLE);
        for (std::size_t j = 0; j < found.xx.size (); ++j)
            if (problem.integer[j] == KLV_VAR_INTEGER) {
                EXPECT_NEAR (found.xx[j], std::nearbyint (found.xx[j]), tolerance > 1e-6 ? tolerance : 0);
            }
    }
    void expect_infeasible () const
    {
        EXPECT_TRUE (found.problem == KLV_PRO_PRIMAL_INFEASIBLE || found.problem == KLV_PRO_BOTH_INFEASIBLE);
        const double noise = 2e-8 * largest ({&found.slc, &found.suc, &found.slx, &found.sux});
        EXPECT_LE (balance (true), noise);
        EXPECT_NEAR (bound_value (noise), sign, 1e-6);
        EXPECT_EQ (found.dual, sign);
        EXPECT_EQ (found.primal, 0);
        EXPECT_EQ (largest ({&found.xx, &found.xc}), 0);
        for (const auto* keys : {&found.skc, &found.skx})
            EXPECT_EQ (std::ranges::count (*keys, KLV_SK_UNKNOWN), std::ssize (*keys));
    }
    void expect_unbounded () const
    {
        EXPECT_EQ (found.problem, KLV_PRO_DUAL_INFEASIBLE);
        const double noise = 2e-8 * largest ({&found.xx});
        expect_kept (problem.variable, found.xx, noise);
        expect_kept (problem.constraint, activity (), noise);
        EXPECT_NEAR (cost (), -sign, 1e-9);
        EXPECT_EQ (found.dual, 0);
    }
};

// Proves what each slot says of itself and tells it: "itr OPTIMAL bas OPTIMAL"; where a solution's status is unknown, it is
// the problem's.
inline std::string proved (KLVtask_t task, double tolerance = 1e-6)
{
    std::string told;
    for (const auto& [which, name] :
         {std::pair{KLV_SOL_ITR, "itr "}, {KLV_SOL_BAS, "bas "}, {KLV_SOL_INT, "int "}}) {
        const Slot found = slot (task, which);
        if (!found.defined)
            continue;
        char status[KLV_MAX_TEXT];
        if (found.solution != KLV_SOLSTA_UNKNOWN)
            KLV_solstatostr (task, found.solution, status);
        else
            KLV_prostatostr (task, found.problem, status);
        told += (told.empty () ? "" : " ") + std::string (name) + status;
        SCOPED_TRACE (told);
        const Proof proof{task->problem (), found, tolerance};
        const bool best = found.solution == KLV_SOLSTA_OPTIMAL,
                   whole = found.solution == KLV_SOLSTA_INTEGER_OPTIMAL;
        if (best || whole || found.solution == KLV_SOLSTA_PRIMAL_FEASIBLE)
            proof.expect_feasible ();
        if (best)
            proof.expect_optimal ();
        if (whole)
            proof.expect_integer_optimal ();
        if (found.solution == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE)
            proof.expect_infeasible ();
        if (found.solution == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE)
            proof.expect_unbounded ();
    }
    return told;
}

// The code of an optimisation and what its slots prove: "OK bas OPTIMAL".
inline std::string optimized (KLVtask_t task, double tolerance = 1e-6)
{
    char name[KLV_MAX_TEXT];
    KLV_getcodedesc (KLV_optimize (task), name, nullptr);
    const std::string told = proved (task, tolerance), code = name + std::string ("KLV_RES_").size ();
    return told.empty () ? code : code + ' ' + told;
}

}
