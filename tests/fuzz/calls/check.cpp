#include "tests/fuzz/calls/check.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <span>

#include "kalvo.h"
#include "tests/fuzz/random.h"
#include "tests/support/truth.h"
#include "tests/unit/notation.h"

namespace fuzz {

using standalone::Numbers, standalone::View;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity ();
bool is_given (View field)
{
    return field && field.count () > 0;
}

Numbers numbers_or (View field, std::size_t count, double absent)
{
    return is_given (field) ? field.numbers () : Numbers (count, absent);
}

klv::Bounds bounds_of (View lower, View upper, std::size_t count)
{
    klv::Bounds read{
        .key = {}, .lower = numbers_or (lower, count, -inf), .upper = numbers_or (upper, count, inf)};
    for (double& bound : read.lower)
        bound = std::isnan (bound) ? -inf : bound;
    // A stored value beyond the threshold is a bound, one of a full vector is none.
    const bool stored = is_given (upper) && upper.is_sparse ();
    for (double& bound : read.upper)
        bound = std::isnan (bound) || (bound > 1e20 && !stored) ? inf : bound;
    return read;
}

klv::Problem problem_of (View prob, bool maximize)
{
    const auto sizes = prob["a"].sizes ();
    const Numbers a = prob["a"].numbers ();
    klv::Problem p;
    p.append_variables (static_cast<std::int32_t> (sizes[1]));
    p.append_constraints (static_cast<std::int32_t> (sizes[0]));
    p.sense = maximize;
    p.constraint = bounds_of (prob["blc"], prob["buc"], sizes[0]);
    p.variable = bounds_of (prob["blx"], prob["bux"], sizes[1]);
    p.cost = numbers_or (prob["c"], sizes[1], 0);
    p.constant = numbers_or (prob["cfix"], 1, 0)[0];
    std::vector<std::int32_t> rows (sizes[0]);
    std::iota (rows.begin (), rows.end (), 0);
    for (std::size_t j = 0; j < sizes[1]; ++j)
        p.matrix.put (static_cast<std::int32_t> (j), rows, std::span (a).subspan (j * sizes[0], sizes[0]));
    if (const View ints = prob["ints"]; ints && ints.class_id () == mxSTRUCT_CLASS)
        if (const View sub = ints["sub"]; is_given (sub) && sub.class_id () == mxDOUBLE_CLASS &&
                                          !sub.is_sparse () &&
                                          sub.count () == std::max (sub.sizes ()[0], sub.sizes ()[1]))
            for (const double variable : sub.numbers ())
                p.integer.at (static_cast<std::size_t> (variable) - 1) = KLV_VAR_INTEGER;
    return p;
}

// The best value of a purely integer problem with few points; infinite, against its sense, when none is feasible.
std::optional<double> best_by_enumeration (const klv::Problem& p)
{
    constexpr double most_points = 3000;
    const double sign = p.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    double points = 1;
    for (std::size_t j = 0; j < p.integer.size (); ++j) {
        const double first = std::ceil (p.variable.lower[j]), last = std::floor (p.variable.upper[j]);
        points *= p.integer[j] ? std::max (0.0, last - first + 1) : inf;
        if (!(points <= most_points && std::abs (first) < 1e6))
            return std::nullopt;
    }
    double best = sign * inf;
    proof::Slot at{.solution = KLV_SOLSTA_PRIMAL_FEASIBLE};
    for (const double lower : p.variable.lower)
        at.xx.push_back (std::ceil (lower));
    for (long left = static_cast<long> (points); left > 0; --left) {
        at.xc.assign (p.constraint.lower.size (), 0);
        at.primal = p.constant;
        for (std::size_t j = 0; j < at.xx.size (); ++j) {
            const klv::Column column = p.matrix.column (static_cast<std::int32_t> (j));
            for (std::size_t i = 0; i < column.values.size (); ++i)
                at.xc[i] += column.values[i] * at.xx[j];
            at.primal += p.cost[j] * at.xx[j];
        }
        bool feasible = true;
        for (std::size_t i = 0; i < at.xc.size (); ++i)
            feasible = feasible && at.xc[i] >= p.constraint.lower[i] && at.xc[i] <= p.constraint.upper[i];
        if (feasible)
            best = sign * std::min (sign * best, sign * at.primal);
        for (std::size_t j = 0; j < at.xx.size () && ++at.xx[j] > p.variable.upper[j]; ++j)
            at.xx[j] = std::ceil (p.variable.lower[j]);
    }
    return best;
}

void check_integer (const klv::Problem& problem, const proof::Slot& found, const std::string& prosta)
{
    const bool optimal = found.solution == KLV_SOLSTA_INTEGER_OPTIMAL;
    const bool infeasible = prosta.find ("INFEASIBLE") != std::string::npos;
    const auto best = optimal || infeasible ? best_by_enumeration (problem) : std::nullopt;
    if (!best)
        return;
    require (optimal ? std::abs (found.primal - *best) <= 1e-5 + 1.1e-4 * std::abs (*best)
                     : std::isinf (*best),
             "integer optimum " + std::to_string (*best));
}

int status_of (View slot)
{
    static const auto names =
        pieces_of ("UNKNOWN|OPTIMAL|FEASIBLE|PRIMAL_FEASIBLE|DUAL_FEASIBLE|PRIMAL_INFEASIBLE_"
                   "CERTIFICATE|DUAL_INFEASIBLE_CERTIFICATE|INTEGER_OPTIMAL",
                   '|');
    const auto found = std::find (names.begin (), names.end (), slot["solsta"].text ());
    require (found != names.end (), "solsta " + slot["solsta"].text ());
    return static_cast<int> (found - names.begin ());
}

void check_slot (const klv::Problem& problem, View slot, bool integer, double tolerance)
{
    proof::Slot found{.defined = true, .solution = status_of (slot)};
    found.xx = slot["xx"].numbers ();
    found.xc = slot["xc"].numbers ();
    found.primal = slot["pobjval"].number ();
    if (!integer) {
        found.dual = slot["dobjval"].number ();
        for (const auto& [name, values] : {std::pair ("y", &found.y),
                                           {"slc", &found.slc},
                                           {"suc", &found.suc},
                                           {"slx", &found.slx},
                                           {"sux", &found.sux}})
            *values = slot[name].numbers ();
    }
    proof::Judge (problem, found, tolerance).judge ();
    if (integer)
        check_integer (problem, found, slot["prosta"].text ());
    else if (tolerance < 1e-5)
        truth::check_claim (found, truth::truth (problem));
}

}

void check_solutions (View prob, View solutions, bool maximize, double tolerance)
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
