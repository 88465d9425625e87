#include "kalvo/engines/lower.h"

#include "kalvo/engines/highs/highs.h"
#include "kalvo/task/text.h"

#include <cmath>
#include <utility>

namespace klv {

static void lower_bounds (const Bounds& bounds, std::vector<double>& lower, std::vector<double>& upper,
                          std::int64_t& taken_as_infinite)
{
    lower = bounds.lower;
    upper = bounds.upper;
    for (std::size_t i = 0; i < lower.size (); ++i) {
        if (lower[i] > -infinity && lower[i] <= -highs::infinite_bound) {
            lower[i] = -infinity;
            ++taken_as_infinite;
        }
        if (upper[i] < infinity && upper[i] >= highs::infinite_bound) {
            upper[i] = infinity;
            ++taken_as_infinite;
        }
        if (lower[i] > upper[i])
            lower[i] = upper[i] = lower[i] / 2 + upper[i] / 2;
    }
}

// What is wrong with the numbers, in words; counts entries that will be left out.
static std::string refused_numbers (const Problem& problem, std::int64_t& dropped)
{
    for (std::size_t j = 0; j < problem.cost.size (); ++j)
        if (std::abs (problem.cost[j]) >= highs::infinite_cost)
            return text ("the cost of variable ", j + 1, " is ", problem.cost[j], "; it must be below ",
                         highs::infinite_cost);
    for (const double value : problem.matrix.values ()) {
        const double magnitude = std::abs (value);
        if (magnitude >= highs::largest_entry)
            return text ("the constraint matrix has an entry ", value, "; it must be below ", highs::largest_entry);
        dropped += magnitude > 0 && magnitude <= highs::smallest_entry;
    }
    const auto beyond = [] (const Bounds& bounds, const char* item) -> std::string {
        for (std::size_t i = 0; i < bounds.key.size (); ++i)
            if (bounds.lower[i] >= highs::infinite_bound || bounds.upper[i] <= -highs::infinite_bound)
                return text (item, " ", i + 1, " must lie beyond ", highs::infinite_bound,
                             ", where no number can be told from infinity");
        return {};
    };
    std::string refused = beyond (problem.constraint, "constraint");
    return refused.empty () ? beyond (problem.variable, "variable") : refused;
}

Lowering lower (std::shared_ptr<const Problem> stated, bool integers)
{
    Lowering lowering;
    lowering.refused = refused_numbers (*stated, lowering.dropped_entries);
    if (!lowering.refused.empty ())
        return lowering;
    auto problem = std::make_shared<LinearProblem> ();
    lower_bounds (stated->variable, problem->column_lower, problem->column_upper, lowering.infinite_bounds);
    lower_bounds (stated->constraint, problem->row_lower, problem->row_upper, lowering.infinite_bounds);
    const auto starts = stated->matrix.starts ();
    problem->starts.assign (starts.begin (), starts.end ());
    problem->integers = integers;
    problem->stated = std::move (stated);
    lowering.problem = std::move (problem);
    return lowering;
}

}
