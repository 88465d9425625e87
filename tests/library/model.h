// Small problems for tests, and proofs of their answers that use nothing of the library but what it holds.
#pragma once

#include "tests/support/problem_file.h"
#include "tests/support/proof.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace model {

using proof::Slot;
using proof::Values;

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

class Task : public files::Task {
public:
    Task () = default;
    explicit Task (const Model& model, const std::string& settings = "")
    {
        put (model);
        set (settings);
    }
    explicit Task (const char* model, const std::string& settings = "") : Task (parse (model), settings) {}

    void put (const Model& model);
    void set (const std::string& settings);         // "OPTIMIZER 1 TIME_LIMIT 0.5": names without prefix
    double information (const char* item) const;    // "MIP_NODES": its name without prefix
};

inline void Task::put (const Model& model)
{
    const auto n = static_cast<std::int32_t> (model.cost.size ());
    const auto m = static_cast<std::int32_t> (model.row_bounds.size ());
    KLV_appendvars (*this, n);
    KLV_appendcons (*this, m);
    const auto put_bounds = [&] (auto put_slice, const std::vector<Range>& ranges) {
        for (std::int32_t i = 0; const Range& range : ranges) {
            const std::int32_t key = range.lower == range.upper ? KLV_BK_FX : KLV_BK_RA;
            EXPECT_EQ (put_slice (*this, i, i + 1, &key, &range.lower, &range.upper), 0);
            ++i;
        }
    };
    put_bounds (KLV_putconboundslice, model.row_bounds);
    put_bounds (KLV_putvarboundslice, model.bounds);
    for (std::int32_t j = 0; j < n; ++j) {
        const auto column = static_cast<std::size_t> (j);
        std::vector<std::int32_t> rows;
        Values values;
        for (std::int32_t i = 0; i < m; ++i)
            if (const double value = model.rows[static_cast<std::size_t> (i)][column]; value != 0) {
                rows.push_back (i);
                values.push_back (value);
            }
        const auto count = static_cast<std::int32_t> (rows.size ());
        EXPECT_EQ (KLV_putacol (*this, j, count, rows.data (), values.data ()), 0);
        const bool integer = !model.integer.empty () && model.integer[column];
        EXPECT_EQ (KLV_putvartype (*this, j, integer), 0);
    }
    EXPECT_EQ (KLV_putcslice (*this, 0, n, model.cost.data ()), 0);
    EXPECT_EQ (KLV_putobjsense (*this, model.maximize), 0);
    EXPECT_EQ (KLV_putcfix (*this, model.constant), 0);
}

inline void Task::set (const std::string& settings)
{
    std::istringstream words (settings);
    for (std::string name, value; words >> name >> value;) {
        std::int32_t kind = 0, number = 0;
        KLV_whichparam (*this, ("KLV_DPAR_" + name).c_str (), &kind, &number);
        EXPECT_EQ (kind == KLV_PAR_DOUBLE
                       ? KLV_putdouparam (*this, number, std::stod (value))
                       : KLV_putnaintparam (*this, ("KLV_IPAR_" + name).c_str (), std::stoi (value)),
                   0)
            << name;
    }
}

inline double Task::information (const char* item) const
{
    char name[KLV_MAX_TEXT];
    std::int32_t whole = 0;
    double value = 0;
    for (std::int32_t i = 0; KLV_getinfname (*this, KLV_INF_INTEGER, i, name) == 0; ++i)
        if (name == std::string ("KLV_IINF_") + item && KLV_getintinf (*this, i, &whole) == 0)
            return whole;
    for (std::int32_t i = 0; KLV_getinfname (*this, KLV_INF_DOUBLE, i, name) == 0; ++i)
        if (name == std::string ("KLV_DINF_") + item && KLV_getdouinf (*this, i, &value) == 0)
            return value;
    ADD_FAILURE () << "no information item " << item;
    return 0;
}

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

// Keys and values of a start as far as they are given.
inline KLVrescode_t put_start (KLVtask_t task, std::int32_t which, const std::vector<std::int32_t>& skc,
                               const std::vector<std::int32_t>& skx, const Values& xx, const Values& y = {})
{
    const auto data = [] (const auto& values) { return values.empty () ? nullptr : values.data (); };
    return KLV_putsolutionnew (task, which, data (skc), data (skx), nullptr, nullptr, data (xx), data (y),
                               nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}

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
        try {
            proof::Judge (task->problem (), found, tolerance).judge ();
        } catch (const std::exception& fault) {
            ADD_FAILURE () << told << ": " << fault.what ();
        }
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
