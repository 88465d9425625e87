// Answers of calls, held to what their status claims for the problem as the user stated it.
#pragma once

#include "tests/fuzz/random.h"
#include "tests/support/truth.h"
#include "tests/unit/notation.h"

namespace fuzz {

using standalone::View;

// The problem with all bounds moved outwards (or, where they stay in order, inwards) by what the tolerances allow.
inline klv::Problem moved (klv::Problem problem, double direction)
{
    for (klv::Bounds* bounds : {&problem.variable, &problem.constraint})
        for (std::size_t i = 0; i < bounds->key.size (); ++i) {
            double &lower = bounds->lower[i], &upper = bounds->upper[i];
            const double down = 1e-6 * direction * (1 + std::abs (lower)),
                         up = 1e-6 * direction * (1 + std::abs (upper));
            if (lower - down > upper + up)
                continue;
            lower = std::isfinite (lower) ? lower - down : lower;
            upper = std::isfinite (upper) ? upper + up : upper;
        }
    return problem;
}

// Where the integers of a problem have few values, all of them are tried. What tolerances allow may change the answer.
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
            points *= std::abs (lower) < 1e6 ? std::max (1.0, std::floor (upper) - std::ceil (lower) + 1)
                                             : klv::infinity;
        }
    if (!(points <= most))
        return;
    const auto solved = [&] (double direction) {
        return truth::best_whole (truth::linear (moved (problem, direction)), problem.integer);
    };
    const auto least = solved (1), most_of_all = solved (-1);
    if (prosta == "DUAL_INFEASIBLE")
        return require (!most_of_all.feasible || !least.bounded, "false unbounded");
    if (!optimal)
        return require (!most_of_all.feasible, "false infeasible");
    require (least.feasible && (!most_of_all.feasible || most_of_all.bounded), "false integer optimum");
    const double sign = problem.sense ? -1 : 1, value = sign * (found.primal - problem.constant);
    const double room = 1e-5 + 1.1e-4 * std::abs (found.primal);
    require (!least.bounded || value >= least.value.get_d () - room, "better than an integer optimum can be");
    require (!most_of_all.feasible || value <= most_of_all.value.get_d () + room, "not an integer optimum");
}

inline void check_slot (const klv::Problem& problem, View slot, bool integer, double tolerance)
{
    char status[KLV_MAX_TEXT] = "";
    require (KLV_symnamtovalue (("KLV_SOLSTA_" + slot["solsta"].text ()).c_str (), status) == 1, "solsta");
    proof::Slot found{.defined = true, .solution = std::stoi (status)};
    static const auto names = pieces_of ("xx|xc|y|slc|suc|slx|sux", '|');
    proof::Values* const values[] = {&found.xx,  &found.xc,  &found.y,  &found.slc,
                                     &found.suc, &found.slx, &found.sux};
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
inline void check_solutions (const klv::Problem& problem, View solutions, double tolerance)
{
    for (const char* kind : {"itr", "bas", "int"})
        if (const View slot = solutions[kind])
            try {
                check_slot (problem, slot, kind == std::string ("int"), tolerance);
            } catch (const std::exception& fault) {
                throw std::runtime_error (kind + std::string (": ") + fault.what () + "\n  " + show (slot));
            }
}

}
