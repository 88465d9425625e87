// The truth about small linear problems, by exact arithmetic and without the library: an exact simplex method on the problem as
// stated, and on the same problem with every bound and every cost moved by what an answer's tolerances allow.
#pragma once

#include "tests/support/proof.h"

#include <gmpxx.h>

#include <cmath>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace truth {

using Number = mpq_class;
using Numbers = std::vector<Number>;

struct Range {
    std::optional<Number> lower = {}, upper = {};

    bool is_fixed () const { return lower && upper && *lower == *upper; }
    bool is_crossed () const { return lower && upper && *lower > *upper; }
};

// A price for being on one side of 0, on top of the cost.
struct Price {
    Number below = 0, above = 0;
};

// To be minimised.
struct Linear {
    Numbers cost = {};
    std::vector<Price> price = {};
    std::vector<Range> column = {};
    std::vector<Numbers> entries = {};    // by row
    std::vector<Range> row = {};
};

struct Found {
    bool feasible = false;    // a point exists
    bool bounded = false;     // a dual point exists
    Number value = 0;
};

// Rows a x = b with x, b >= 0. Slacks, and one artificial variable a row, stand behind the columns.
class Tableau {
public:
    explicit Tableau (const Linear& lp) : lp_ (lp)
    {
        for (std::size_t j = 0; j < lp.cost.size (); ++j) {
            if (!lp.column[j].upper || *lp.column[j].upper > 0)
                columns_.push_back ({j, 1, lp.cost[j] + lp.price[j].above});
            if (!lp.column[j].lower || *lp.column[j].lower < 0)
                columns_.push_back ({j, -1, lp.price[j].below - lp.cost[j]});
        }
        for (std::size_t i = 0; i < lp.row.size (); ++i)
            add_range (lp.entries[i], lp.row[i]);
        for (std::size_t j = 0; j < lp.cost.size (); ++j) {
            Numbers unit (lp.cost.size ());
            unit[j] = 1;
            // A bound at 0 is the sign of a column.
            Range range = lp.column[j];
            if (range.lower && *range.lower == 0)
                range.lower.reset ();
            if (range.upper && *range.upper == 0)
                range.upper.reset ();
            add_range (unit, range);
        }
        add_slacks_and_artificials ();
    }

    bool make_feasible ()
    {
        Numbers artificials (width_);
        for (std::size_t k = first_artificial_; k < width_; ++k)
            artificials[k] = 1;
        minimize (artificials, width_);
        if (value (artificials) > 0)
            return false;
        // Artificial variables leave the basis; a row where none can take the place says nothing.
        for (std::size_t i = rows_.size (); i-- > 0;) {
            if (basis_[i] < first_artificial_)
                continue;
            std::size_t k = 0;
            while (k < first_artificial_ && rows_[i][k] == 0)
                ++k;
            if (k < first_artificial_)
                pivot (i, k);
            else {
                rows_.erase (rows_.begin () + static_cast<std::ptrdiff_t> (i));
                basis_.erase (basis_.begin () + static_cast<std::ptrdiff_t> (i));
            }
        }
        return true;
    }

    // Whether there is a minimum.
    bool minimize_cost () { return minimize (costs (), first_artificial_); }
    Number cost () const { return value (costs ()); }

private:
    struct Split {
        std::size_t variable;
        int sign;
        Number cost;
    };

    void add (const Numbers& coefficients, int sign, const Number& bound, bool equal)
    {
        Numbers row;
        for (const Split& column : columns_)
            row.push_back (sign * column.sign * coefficients[column.variable]);
        row.push_back (sign * bound);
        rows_.push_back (std::move (row));
        slack_.push_back (!equal);
    }
    void add_range (const Numbers& coefficients, const Range& range)
    {
        if (range.upper)
            add (coefficients, 1, *range.upper, range.is_fixed ());
        if (range.lower && !range.is_fixed ())
            add (coefficients, -1, *range.lower, false);
    }

    void add_slacks_and_artificials ()
    {
        const std::size_t count = rows_.size (), n = columns_.size ();
        first_artificial_ = n + count;
        width_ = first_artificial_ + count;
        basis_.resize (count);
        for (std::size_t i = 0; i < count; ++i) {
            const Number right = rows_[i].back ();
            const int sign = right < 0 ? -1 : 1;
            rows_[i].pop_back ();
            for (Number& value : rows_[i])
                value *= sign;
            rows_[i].resize (width_ + 1);
            rows_[i].back () = sign * right;
            if (slack_[i])
                rows_[i][n + i] = sign;
            basis_[i] = slack_[i] && sign > 0 ? n + i : first_artificial_ + i;
            rows_[i][basis_[i]] = 1;
        }
    }

    Numbers costs () const
    {
        Numbers costs (width_);
        for (std::size_t k = 0; k < columns_.size (); ++k)
            costs[k] = columns_[k].cost;
        return costs;
    }
    Number value (const Numbers& costs) const
    {
        Number sum = 0;
        for (std::size_t i = 0; i < rows_.size (); ++i)
            sum += costs[basis_[i]] * rows_[i].back ();
        return sum;
    }

    static void subtract (Numbers& from, const Number& times, const Numbers& row)
    {
        if (times == 0)
            return;
        const Number factor = -times;    // `times` may be an entry of `from`
        for (std::size_t k = 0; k < row.size (); ++k)
            if (row[k] != 0)
                from[k] += factor * row[k];
    }
    void pivot (std::size_t row, std::size_t column)
    {
        const Number divisor = rows_[row][column];
        for (Number& value : rows_[row])
            if (value != 0)
                value /= divisor;
        for (std::size_t i = 0; i < rows_.size (); ++i)
            if (i != row)
                subtract (rows_[i], rows_[i][column], rows_[row]);
        basis_[row] = column;
    }

    // Bland's rule, which never cycles, on the columns before `end`.
    bool minimize (const Numbers& costs, std::size_t end)
    {
        Numbers reduced = costs;
        reduced.emplace_back ();
        for (std::size_t i = 0; i < rows_.size (); ++i)
            subtract (reduced, costs[basis_[i]], rows_[i]);
        for (;;) {
            std::size_t enters = 0;
            while (enters < end && reduced[enters] >= 0)
                ++enters;
            if (enters == end)
                return true;
            std::optional<std::size_t> leaves;
            Number least;
            for (std::size_t i = 0; i < rows_.size (); ++i) {
                if (rows_[i][enters] <= 0)
                    continue;
                const Number ratio = rows_[i].back () / rows_[i][enters];
                if (!leaves || ratio < least || (ratio == least && basis_[i] < basis_[*leaves])) {
                    leaves = i;
                    least = ratio;
                }
            }
            if (!leaves)
                return false;
            pivot (*leaves, enters);
            subtract (reduced, reduced[enters], rows_[*leaves]);
        }
    }

    const Linear& lp_;
    std::vector<Split> columns_;
    std::vector<Numbers> rows_;    // the right-hand side last
    std::vector<bool> slack_;
    std::vector<std::size_t> basis_;
    std::size_t first_artificial_ = 0, width_ = 0;
};

// Directions in which points of the problem may move for ever.
inline Linear directions (Linear lp)
{
    for (auto* ranges : {&lp.row, &lp.column})
        for (Range& range : *ranges)
            for (auto* bound : {&range.lower, &range.upper})
                if (*bound)
                    **bound = 0;
    return lp;
}

inline Found solve (const Linear& lp)
{
    bool crossed = false;
    for (const auto* ranges : {&lp.row, &lp.column})
        for (const Range& range : *ranges)
            crossed = crossed || range.is_crossed ();
    Found found;
    if (Tableau tableau (lp); !crossed && tableau.make_feasible ()) {
        found.feasible = true;
        found.bounded = tableau.minimize_cost ();
        found.value = tableau.cost ();
    } else {
        const Linear ways = directions (lp);
        Tableau rays (ways);
        rays.make_feasible ();
        found.bounded = rays.minimize_cost ();
    }
    return found;
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
    const auto ranges = [] (const klv::Bounds& bounds, std::vector<Range>& to) {
        constexpr double fixing = 1e-10;
        for (std::size_t i = 0; i < bounds.lower.size (); ++i) {
            const bool contradict = bounds.lower[i] - bounds.upper[i] > fixing;
            const klv::Interval pair =
                contradict ? klv::Interval{bounds.lower[i], bounds.upper[i]} : bounds.interval (i);
            to.push_back ({finite (pair.lower), finite (pair.upper)});
        }
    };
    ranges (problem.variable, lp.column);
    ranges (problem.constraint, lp.row);
    lp.price.resize (problem.cost.size ());
    lp.entries.assign (lp.row.size (), Numbers (problem.cost.size ()));
    for (std::size_t j = 0; j < problem.cost.size (); ++j) {
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
        lp.price[j] = {allowance (lp.cost[j]), allowance (lp.cost[j])};
    for (std::size_t i = 0; i < lp.row.size (); ++i) {
        const Range range = lp.row[i];
        if (range.lower && range.upper)
            continue;
        // The row's activity becomes a variable with a price.
        lp.cost.emplace_back (0);
        lp.price.push_back ({range.lower ? Number (0) : tolerance, range.upper ? Number (0) : tolerance});
        lp.column.emplace_back ();
        for (Numbers& row : lp.entries)
            row.emplace_back (0);
        Numbers activity = lp.entries[i];
        activity.back () = -1;
        lp.entries.push_back (std::move (activity));
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
    bool robust =
        false;    // tolerances change nothing of the first two, and no bound that engines take as infinite decides

    bool optimal () const { return feasible && bounded; }
};

inline Truth truth (const klv::Problem& problem)
{
    const Linear lp = linear (problem);
    const Found stated = solve (lp), relaxed = solve (moved (lp, 1)), tightened = solve (moved (lp, -1)),
                dual_relaxed = solve (priced (lp)), dual_tightened = solve (discounted (lp));
    const double sign = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    const auto objective = [&] (const Found& found) {
        return problem.constant + sign * (!found.feasible  ? klv::infinity
                                          : !found.bounded ? -klv::infinity
                                                           : found.value.get_d ());
    };
    Truth told{.feasible = stated.feasible,
               .bounded = stated.bounded,
               .value = objective (stated),
               .least = objective (relaxed),
               .most = objective (dual_relaxed),
               .robust = stated.feasible == relaxed.feasible && stated.feasible == tightened.feasible &&
                         stated.bounded == dual_relaxed.bounded && stated.bounded == dual_tightened.bounded &&
                         abs (stated.value) < 1'000'000'000'000};
    if (sign < 0)
        std::swap (told.least, told.most);
    return told;
}

inline bool is_answer (const proof::Slot& slot)
{
    return slot.solution == KLV_SOLSTA_OPTIMAL || slot.solution == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE ||
           slot.solution == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE;
}

// Throws what a slot with the default tolerances claims against the truth.
inline void check_claim (const proof::Slot& slot, const Truth& truth)
{
    const auto require = [] (bool condition, const std::string& what) {
        if (!condition)
            throw std::runtime_error (what);
    };
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
}

}
