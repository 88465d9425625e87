#include "kalvo/forms/linear.h"

#include "kalvo/engines/highs/highs.h"
#include "kalvo/model/describe.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace klv {

void EngineBounds::change (std::size_t item, Interval interval)
{
    if (changed_lower_.empty ()) {
        changed_lower_ = stated_->lower;
        changed_upper_ = stated_->upper;
    }
    changed_lower_[item] = interval.lower;
    changed_upper_[item] = interval.upper;
}

static EngineBounds lower_bounds (const Bounds& stated, std::int64_t& taken_as_infinite)
{
    EngineBounds lowered (stated);
    for (std::size_t i = 0; i < stated.key.size (); ++i) {
        Interval here = stated.interval (i);
        if (here.lower > -infinity && here.lower <= -highs::infinite_bound) {
            here.lower = -infinity;
            ++taken_as_infinite;
        }
        if (here.upper < infinity && here.upper >= highs::infinite_bound) {
            here.upper = infinity;
            ++taken_as_infinite;
        }
        if (here.lower != stated.lower[i] || here.upper != stated.upper[i])
            lowered.change (i, here);
    }
    return lowered;
}

static std::string refused_cost (const Problem& problem)
{
    for (std::int32_t j = 0; j < problem.variables (); ++j)
        if (const double cost = problem.cost[static_cast<std::size_t> (j)];
            std::abs (cost) >= highs::infinite_cost)
            return text ("the cost of ", describe_variable (problem, j), " is ", cost, "; it must be below ",
                         highs::infinite_cost, " in magnitude");
    return {};
}

static std::string refused_entry (const Problem& problem)
{
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        const Column column = problem.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            if (std::abs (column.values[k]) >= highs::largest_entry)
                return text ("the matrix entry of ", describe_constraint (problem, column.rows[k]), " and ",
                             describe_variable (problem, j), " is ", column.values[k], "; it must be below ",
                             highs::largest_entry, " in magnitude");
    }
    return {};
}

static std::string refused_bound (const Problem& problem, const Bounds& bounds,
                                  std::string (*describe) (const Problem&, std::int32_t))
{
    for (std::size_t i = 0; i < bounds.key.size (); ++i)
        if (bounds.lower[i] >= highs::infinite_bound || bounds.upper[i] <= -highs::infinite_bound)
            return text (describe (problem, static_cast<std::int32_t> (i)), " must lie beyond ",
                         highs::infinite_bound, ", where no optimiser can tell a number from infinity");
    return {};
}

// Magnitudes of entries: the smallest, the largest, and how many the engine drops.
struct Entries {
    double smallest = infinity, largest = 0;
    std::int64_t dropped = 0;
};

static Entries look_at (std::span<const double> values)
{
    Entries entries;
    for (const double value : values) {
        const double magnitude = std::abs (value);
        entries.largest = std::max (entries.largest, magnitude);
        entries.dropped += magnitude <= highs::smallest_entry && magnitude > 0;
        if (magnitude > 0)
            entries.smallest = std::min (entries.smallest, magnitude);
    }
    return entries;
}

Lowering lower (std::shared_ptr<const Problem> stated)
{
    Lowering lowering;
    const Entries entries = look_at (stated->matrix.values ());
    lowering.dropped_entries = entries.dropped;
    lowering.refused = refused_cost (*stated);
    if (lowering.refused.empty () && entries.largest >= highs::largest_entry)
        lowering.refused = refused_entry (*stated);
    if (lowering.refused.empty ())
        lowering.refused = refused_bound (*stated, stated->constraint, describe_constraint);
    if (lowering.refused.empty ())
        lowering.refused = refused_bound (*stated, stated->variable, describe_variable);
    if (!lowering.refused.empty ())
        return lowering;

    auto problem = std::make_shared<LinearProblem> ();
    problem->columns = lower_bounds (stated->variable, lowering.infinite_bounds);
    problem->rows = lower_bounds (stated->constraint, lowering.infinite_bounds);
    problem->smallest_entry = entries.smallest;
    problem->stated = std::move (stated);
    lowering.problem = std::move (problem);
    return lowering;
}

}
