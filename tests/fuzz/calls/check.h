// Answers of calls, held to what their status claims for the problem as the user stated it.
#pragma once

#include "tests/fuzz/random.h"
#include "tests/support/truth.h"
#include "tests/unit/notation.h"

#include <numeric>
#include <span>

namespace fuzz {

using proof::Values;
using standalone::Numbers, standalone::View;

inline bool is_given (View field)
{
    return field && field.count () > 0;
}

inline Numbers numbers_or (View field, std::size_t count, double absent)
{
    return is_given (field) ? field.numbers () : Numbers (count, absent);
}

inline klv::Bounds bounds_of (View lower, View upper, std::size_t count)
{
    klv::Bounds read{.key = {},
                     .lower = numbers_or (lower, count, -klv::infinity),
                     .upper = numbers_or (upper, count, klv::infinity)};
    for (double& bound : read.lower)
        bound = std::isnan (bound) ? -klv::infinity : bound;
    // A stored value beyond the threshold is a bound, one of a full vector is none.
    const bool stored = is_given (upper) && upper.is_sparse ();
    for (double& bound : read.upper)
        bound = std::isnan (bound) || (bound > 1e20 && !stored) ? klv::infinity : bound;
    return read;
}

inline klv::Problem problem_of (View prob, bool maximize)
{
    const std::size_t m = prob["a"].sizes ()[0], n = prob["a"].sizes ()[1];
    const Numbers a = prob["a"].numbers ();
    klv::Problem p;
    p.append_variables (static_cast<std::int32_t> (n));
    p.append_constraints (static_cast<std::int32_t> (m));
    p.sense = maximize;
    p.constraint = bounds_of (prob["blc"], prob["buc"], m);
    p.variable = bounds_of (prob["blx"], prob["bux"], n);
    p.cost = numbers_or (prob["c"], n, 0);
    p.constant = numbers_or (prob["cfix"], 1, 0)[0];
    std::vector<std::int32_t> rows (m);
    std::iota (rows.begin (), rows.end (), 0);
    for (std::size_t j = 0; j < n; ++j)
        p.matrix.put (static_cast<std::int32_t> (j), rows, std::span (a).subspan (j * m, m));
    const View ints = prob["ints"], sub = ints && ints.class_id () == mxSTRUCT_CLASS ? ints["sub"] : View ();
    if (is_given (sub) && sub.class_id () == mxDOUBLE_CLASS && !sub.is_sparse () &&
        sub.count () == std::max (sub.sizes ()[0], sub.sizes ()[1]))
        for (const double variable : sub.numbers ())
            p.integer.at (static_cast<std::size_t> (variable) - 1) = KLV_VAR_INTEGER;
    return p;
}

// Where the integers of a problem have few values, all of them are tried.
inline void check_integer (const klv::Problem& problem, const proof::Slot& found, const std::string& prosta)
{
    const bool optimal = found.solution == KLV_SOLSTA_INTEGER_OPTIMAL;
    if (!optimal && prosta.find ("INFEASIBLE") == std::string::npos)
        return;
    constexpr double most = 300;
    double points = 1;
    for (std::size_t j = 0; j < problem.integer.size (); ++j)
        if (problem.integer[j] == KLV_VAR_INTEGER) {
            const double lower = problem.variable.lower[j], upper = problem.variable.upper[j];
            points *= std::abs (lower) < 1e6 ? std::max (0.0, std::floor (upper) - std::ceil (lower) + 1)
                                             : klv::infinity;
        }
    if (!(points <= most))
        return;
    const auto best = truth::best_whole (truth::linear (problem), problem.integer);
    if (prosta == "DUAL_INFEASIBLE")
        return require (!best.feasible || !best.bounded, "false unbounded");
    if (!optimal)
        return require (!best.feasible, "false infeasible");
    require (best.feasible && best.bounded, "false integer optimum");
    const double value = problem.constant + (problem.sense ? -1 : 1) * best.value.get_d ();
    require (std::abs (found.primal - value) <= 1e-5 + 1.1e-4 * std::abs (value),
             "integer optimum " + std::to_string (value));
}

inline int status_of (View slot)
{
    static const auto names =
        pieces_of ("UNKNOWN|OPTIMAL|FEASIBLE|PRIMAL_FEASIBLE|DUAL_FEASIBLE|PRIMAL_INFEASIBLE_"
                   "CERTIFICATE|DUAL_INFEASIBLE_CERTIFICATE|INTEGER_OPTIMAL",
                   '|');
    const auto found = std::find (names.begin (), names.end (), slot["solsta"].text ());
    require (found != names.end (), "solsta " + slot["solsta"].text ());
    return static_cast<int> (found - names.begin ());
}

inline void check_slot (const klv::Problem& problem, View slot, bool integer, double tolerance)
{
    proof::Slot found{.defined = true, .solution = status_of (slot)};
    static const auto names = pieces_of ("xx|xc|y|slc|suc|slx|sux", '|');
    Values* const values[] = {&found.xx, &found.xc, &found.y, &found.slc, &found.suc, &found.slx, &found.sux};
    for (std::size_t k = 0; k < (integer ? 2 : names.size ()); ++k)
        *values[k] = slot[names[k].c_str ()].numbers ();
    found.primal = slot["pobjval"].number ();
    found.dual = integer ? 0 : slot["dobjval"].number ();
    proof::Judge (problem, found, tolerance).judge ();
    if (integer)
        check_integer (problem, found, slot["prosta"].text ());
    else if (tolerance < 1e-5)
        truth::check_claim (found, truth::truth (problem));
}

// Throws what is wrong. `tolerance`: the largest that the call's parameters allow.
inline void check_solutions (View prob, View solutions, bool maximize, double tolerance)
{
    const klv::Problem problem = problem_of (prob, maximize);
    for (const char* kind : {"itr", "bas", "int"})
        if (const View slot = solutions[kind])
            try {
                check_slot (problem, slot, kind == std::string ("int"), tolerance);
            } catch (const std::exception& fault) {
                throw std::runtime_error (kind + std::string (": ") + fault.what () + "\n  " + show (slot));
            }
}

}
