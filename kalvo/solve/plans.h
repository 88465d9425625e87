// Plans: the attempts for each kind of problem, made in order until one settles the problem.
#pragma once

#include "kalvo/model/solution.h"
#include "kalvo/solve/attempt.h"

#include <optional>
#include <variant>

namespace klv {

// The best attempt for each kind of solution.
struct Found {
    std::optional<Tried> interior = {}, basic = {}, integer = {};
};

// `earlier`: solutions to start from. The engine must be prepared.
Found solve_linear (Attempts& attempts, const Solutions& earlier);
Found solve_integer (Attempts& attempts, const Solutions& earlier);

// Continuous problems beyond linear ones, for which no start is of use.
std::variant<Found, Failure> solve_convex (Attempts& attempts);

// The method that the settings ask for, or the automatic optimiser's first one.
Method first_method (const Problem& problem, const Parameters& settings, bool integers);

// Whether nothing but the objective may have quadratic terms.
bool has_linear_constraints (const Problem& problem);

// Makes another attempt after one that settled nothing, with a warning.
Tried try_again (Attempts& attempts, const Answer& failed, const Attempt& next);

// The largest of violations and gap.
double error_of (const Solution& solution);

// Replaces `kept` by `other` if that knows more about the problem, or as much, with duals and a smaller error.
void keep_better (std::optional<Tried>& kept, Tried&& other);

}
