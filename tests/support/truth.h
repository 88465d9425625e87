// The truth about small linear problems, by exact arithmetic and without the library: of the problem as stated, and of the same
// problem with every bound and every cost moved by what an answer's tolerances allow.
#pragma once

#include "tests/support/proof.h"

#include <gmpxx.h>

#include <optional>

namespace truth {

using Number = mpq_class;
using Numbers = std::vector<Number>;

struct Range {
    std::optional<Number> lower = {}, upper = {};

    bool is_fixed () const { return lower && upper && *lower == *upper; }
    bool is_crossed () const { return lower && upper && *lower > *upper; }
};

// To be minimised: cost x + price |x|.
struct Linear {
    Numbers cost = {}, price = {};
    std::vector<Numbers> entries = {};    // by row
    std::vector<Range> column = {}, row = {};
};

struct Found {
    bool feasible, bounded;    // a point exists, a dual point exists
    Number value;              // where both do
};

// Variables that are not negative: basic ones as a sum of multiples of those outside, which are 0, and of a constant, the last.
// A column is the difference of two of them; each bound adds a basic one, the distance from it.
class Dictionary {
public:
    explicit Dictionary (const Linear& lp) : objective_ (2 * lp.cost.size () + 1)
    {
        for (std::size_t j = 0; j < lp.cost.size (); ++j) {
            objective_[2 * j] = lp.price[j] + lp.cost[j];
            objective_[2 * j + 1] = lp.price[j] - lp.cost[j];
            Numbers unit (lp.cost.size ());
            unit[j] = 1;
            add (unit, lp.column[j]);
        }
        for (std::size_t i = 0; i < lp.row.size (); ++i)
            add (lp.entries[i], lp.row[i]);
        for (std::size_t k = 0; k + 1 < objective_.size (); ++k)
            outside_.push_back (k);
        for (std::size_t i = 0; i < rows_.size (); ++i)
            basic_.push_back (outside_.size () + i);
    }

    Found solve ()
    {
        const End end = run ();
        Found found{end != infeasible, end != unbounded, objective_.back ()};
        if (end == infeasible) {    // whether the dual has a point does not depend on the bounds' values
            for (Numbers& row : rows_)
                row.back () = 0;
            found.bounded = run () == optimal;
        }
        if (end == unbounded) {    // nor does the problem depend on costs
            objective_.assign (objective_.size (), 0);
            found.feasible = run () == optimal;
        }
        return found;
    }

private:
    enum End : std::uint8_t { optimal, infeasible, unbounded };

    void add (const Numbers& coefficients, const Range& range)
    {
        for (const auto& [bound, sign] : {std::pair (range.lower, 1), {range.upper, -1}})
            if (bound) {
                Numbers& row = rows_.emplace_back ();
                for (const Number& coefficient : coefficients) {
                    row.push_back (sign * coefficient);
                    row.push_back (-sign * coefficient);
                }
                row.push_back (-sign * *bound);
            }
    }

    // The place, among those where it holds, of the variable with the smallest number.
    template <class Condition>
    static std::optional<std::size_t> first (const std::vector<std::size_t>& variables, Condition holds)
    {
        std::optional<std::size_t> found;
        for (std::size_t k = 0; k < variables.size (); ++k)
            if (holds (k) && (!found || variables[k] < variables[*found]))
                found = k;
        return found;
    }

    // The criss-cross method: it needs no point to begin with, and by the smallest number it never cycles.
    End run ()
    {
        for (;;) {
            auto row = first (basic_, [&] (std::size_t i) { return rows_[i].back () < 0; });
            auto column = first (outside_, [&] (std::size_t k) { return objective_[k] < 0; });
            if (!row && !column)
                return optimal;
            if (row && (!column || basic_[*row] < outside_[*column]))
                column = first (outside_, [&] (std::size_t k) { return rows_[*row][k] > 0; });
            else
                row = first (basic_, [&] (std::size_t i) { return rows_[i][*column] < 0; });
            if (!row || !column)
                return row ? infeasible : unbounded;
            exchange (*row, *column);
        }
    }

    void exchange (std::size_t basic, std::size_t outside)
    {
        Numbers& row = rows_[basic];
        const Number factor = -1 / row[outside];
        row[outside] = -1;
        for (Number& value : row)
            value *= factor;
        const auto substitute = [&] (Numbers& in) {
            const Number times = std::exchange (in[outside], 0);
            for (std::size_t k = 0; times != 0 && k < row.size (); ++k)
                if (row[k] != 0)
                    in[k] += times * row[k];
        };
        substitute (objective_);
        for (Numbers& other : rows_)
            if (&other != &row)
                substitute (other);
        std::swap (basic_[basic], outside_[outside]);
    }

    Numbers objective_;
    std::vector<Numbers> rows_;
    std::vector<std::size_t> basic_, outside_;    // the numbers of the variables
};

inline Found solve (const Linear& lp)
{
    return Dictionary (lp).solve ();
}

// The best of all whole values of the integer columns, each of which has two bounds.
inline Found best_whole (Linear lp, const std::vector<std::uint8_t>& integer, std::size_t from = 0)
{
    const auto found =
        std::find (integer.begin () + static_cast<std::ptrdiff_t> (from), integer.end (), KLV_VAR_INTEGER);
    if (found == integer.end ())
        return solve (lp);
    const auto j = static_cast<std::size_t> (found - integer.begin ());
    const Range range = lp.column[j];
    Found best{};
    for (Number value = std::ceil (range.lower->get_d ()); value <= *range.upper; ++value) {
        lp.column[j] = {value, value};
        const Found one = best_whole (lp, integer, j + 1);
        if (one.feasible && (!best.feasible || !one.bounded || (best.bounded && one.value < best.value)))
            best = one;
    }
    return best;
}

const Number tolerance (1, 1'000'000);

inline Number allowance (const Number& value)
{
    return tolerance * (1 + abs (value));
}

inline std::optional<Number> finite (double bound)
{
    return bound > -klv::infinity && bound < klv::infinity ? std::optional<Number> (bound) : std::nullopt;
}

// A maximisation becomes a minimisation.
inline Linear linear (const klv::Problem& problem)
{
    Linear lp;
    const std::size_t columns = problem.cost.size (), rows = problem.constraint.lower.size ();
    const auto ranges = [] (const klv::Bounds& bounds, std::size_t count, std::vector<Range>& to) {
        constexpr double fixing = 1e-10;
        for (std::size_t i = 0; i < count; ++i) {
            const klv::Interval stated{bounds.lower[i], bounds.upper[i]};
            const auto [lower, upper] = stated.lower - stated.upper > fixing ? stated : bounds.interval (i);
            to.push_back ({finite (lower), finite (upper)});
        }
    };
    ranges (problem.variable, columns, lp.column);
    ranges (problem.constraint, rows, lp.row);
    lp.price.resize (columns);
    lp.entries.assign (rows, Numbers (columns));
    for (std::size_t j = 0; j < columns; ++j) {
        lp.cost.emplace_back (problem.sense == KLV_SENSE_MAXIMIZE ? -problem.cost[j] : problem.cost[j]);
        const klv::Column column = problem.matrix.column (static_cast<std::int32_t> (j));
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            lp.entries[static_cast<std::size_t> (column.rows[k])][j] = column.values[k];
    }
    return lp;
}

// Bounds moved by the tolerance: 1 outwards, -1 inwards, but not those of fixed items and not past each other.
inline Linear moved (Linear lp, int outwards)
{
    for (auto* ranges : {&lp.row, &lp.column})
        for (Range& range : *ranges) {
            if (outwards < 0 && (range.is_fixed () || range.is_crossed ()))
                continue;
            const Range stated = range;
            if (range.lower)
                *range.lower -= outwards * allowance (*stated.lower);
            if (range.upper)
                *range.upper += outwards * allowance (*stated.upper);
            if (range.is_crossed () && !stated.is_crossed ())
                range.lower = range.upper = Number ((*stated.lower + *stated.upper) / 2);
        }
    return lp;
}

// The problem whose dual points may be wrong by the tolerance: at reduced costs and at absent bounds of rows.
inline Linear priced (Linear lp)
{
    for (std::size_t j = 0; j < lp.cost.size (); ++j)
        lp.price[j] = allowance (lp.cost[j]);
    for (std::size_t i = 0; i < lp.row.size (); ++i) {
        const Range range = lp.row[i];
        if (range.lower && range.upper)
            continue;
        // The row's activity becomes a variable with a price on the sides without a bound.
        const Number above = range.upper ? Number (0) : tolerance,
                     below = range.lower ? Number (0) : tolerance;
        lp.cost.emplace_back ((above - below) / 2);
        lp.price.emplace_back ((above + below) / 2);
        lp.column.emplace_back ();
        for (Numbers& row : lp.entries)
            row.emplace_back (0);
        lp.entries.push_back (lp.entries[i]);
        lp.entries.back ().back () = -1;
        lp.row.push_back ({Number (0), Number (0)});
    }
    return lp;
}

// The opposite: dual points have room, but for equations, those of free variables.
inline Linear discounted (Linear lp)
{
    for (std::size_t j = 0; j < lp.cost.size (); ++j)
        if (lp.column[j].lower && !lp.column[j].upper)
            lp.cost[j] -= allowance (lp.cost[j]);
        else if (lp.column[j].upper && !lp.column[j].lower)
            lp.cost[j] += allowance (lp.cost[j]);
    return lp;
}

struct Truth {
    bool feasible = false, bounded = false;    // the problem and its dual have points
    double value = 0;                          // the optimum
    double least = 0, most = 0;                // of the objectives of answers within their tolerances
    // Tolerances change nothing of the first two, and no bound that engines take as infinite decides.
    bool robust = false;

    bool optimal () const { return feasible && bounded; }
};

inline Truth truth (const klv::Problem& problem)
{
    const Linear lp = linear (problem);
    const Found stated = solve (lp), relaxed = solve (moved (lp, 1)), tightened = solve (moved (lp, -1)),
                dual_relaxed = solve (priced (lp)), dual_tightened = solve (discounted (lp));
    const double sign = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    const auto objective = [&] (const Found& found) {
        const double value = found.bounded ? found.value.get_d () : -klv::infinity;
        return problem.constant + sign * (found.feasible ? value : klv::infinity);
    };
    const bool robust = stated.feasible == relaxed.feasible && stated.feasible == tightened.feasible &&
                        stated.bounded == dual_relaxed.bounded && stated.bounded == dual_tightened.bounded &&
                        abs (stated.value) < 1'000'000'000'000;
    const auto [least, most] = std::minmax ({objective (relaxed), objective (dual_relaxed)});
    return {stated.feasible, stated.bounded, objective (stated), least, most, robust};
}

// Throws what a slot with the default tolerances claims against the truth. True for an answer, not a mere point.
inline bool check_claim (const proof::Slot& slot, const Truth& truth)
{
    using proof::require;
    const double room = 2e-6 * (1 + std::abs (slot.primal) + std::abs (slot.dual));
    if (slot.solution == KLV_SOLSTA_OPTIMAL)
        require (slot.primal >= truth.least - room && slot.primal <= truth.most + room,
                 "false optimum " + std::to_string (slot.primal));
    if (slot.solution == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE)
        require (!truth.feasible, "false infeasible");
    if (slot.solution == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE) {
        require (!truth.bounded, "false unbounded");
        require (!truth.robust || truth.feasible, "unbounded that is infeasible");
    }
    return slot.solution == KLV_SOLSTA_OPTIMAL || slot.solution == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE ||
           slot.solution == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE;
}

}
