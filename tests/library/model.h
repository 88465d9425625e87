// Small problems for tests, and proofs of their answers that use nothing of the library but what it holds.
#pragma once

#include "kalvo/tables/information.h"
#include "tests/support/problem_file.h"
#include "tests/support/proof.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

namespace model {

using proof::Slot;
using proof::Values;

// A problem of n variables and m dense constraints, maximised: of some hundred simplex iterations, or, of whole numbers,
// knapsacks that make a search of many nodes.
inline std::string dense (int m, int n, bool integer = false)
{
    std::mt19937 random (7);
    std::uniform_real_distribution<double> uniform (0.1, 1);
    std::ostringstream text;
    const auto add_numbers = [&] {
        double sum = 0;
        for (int j = 0; j < n; ++j) {
            const double number = integer ? std::round (100 * uniform (random)) : uniform (random);
            text << ' ' << number;
            sum += number;
        }
        return sum;
    };
    text << "max";
    add_numbers ();
    text << ';';
    for (int j = 0; j < n; ++j)
        text << (integer ? " 0..1i" : " 0..");
    for (int i = 0; i < m; ++i) {
        text << ';';
        const double sum = add_numbers ();
        text << " in .." << (integer ? std::floor (sum / 2) : 10 * uniform (random));
    }
    return text.str ();
}

inline std::string knapsack (int m, int n)
{
    return dense (m, n, true);
}

class Task : public files::Task {
public:
    Task () = default;
    explicit Task (klv::Problem problem, const std::string& settings = "")
    {
        (*this)->replace_problem (std::move (problem));
        set (settings);
    }
    // A text, or a published problem: "lp/afiro.mps".
    explicit Task (const std::string& problem, const std::string& settings = "")
        : Task (problem.ends_with (".mps") ? klv::Problem () : parse (problem), settings)
    {
        if (problem.ends_with (".mps") && KLV_readdata (*this, (KALVO_TEST_DATA "/" + problem).c_str ()) != 0)
            ADD_FAILURE () << last_error ();
    }

    void set (const std::string& settings);    // "OPTIMIZER 1 TIME_LIMIT 0.5": names without prefix
    double information (const std::string& item) const;    // "MIP_NODES": its name without prefix
};

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

inline double Task::information (const std::string& item) const
{
    const auto number = [] (const auto& rows, const std::string& name) {
        const auto row = std::ranges::find (rows, name, &klv::InformationRow::name);
        return row == rows.end () ? -1 : static_cast<std::int32_t> (row - rows.begin ());
    };
    double value = 0;
    std::int32_t whole = 0;
    if (KLV_getintinf (*this, number (klv::int_information, "KLV_IINF_" + item), &whole) == 0)
        return whole;
    EXPECT_EQ (KLV_getdouinf (*this, number (klv::real_information, "KLV_DINF_" + item), &value), 0) << item;
    return value;
}

inline Slot slot (KLVtask_t task, std::int32_t which)
{
    Slot s;
    std::int32_t defined = 0;
    EXPECT_EQ (KLV_solutiondef (task, which, &defined), 0);
    if (s.defined = defined != 0; !s.defined)
        return s;
    const std::int32_t n = task->problem ().variables (), m = task->problem ().constraints ();
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
