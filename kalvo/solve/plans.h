// Plans: the attempts for each kind of problem, made in order until one settles the problem.
#pragma once

#include "kalvo/model/solution.h"
#include "kalvo/solve/attempt.h"

#include <optional>

namespace klv {

// The best attempt for each kind of solution.
struct Found {
    std::optional<Tried> interior = {}, basic = {}, integer = {};
};

// `earlier`: solutions to start from. The engine must be prepared.
Found solve_linear (Attempts& attempts, const Solutions& earlier);
Found solve_integer (Attempts& attempts, const Solutions& earlier);

// The method that the settings ask for, or the automatic optimiser's first one.
Method first_method (const Parameters& settings, bool integers);

// Makes another attempt after one that settled nothing, with a warning.
Tried try_again (Attempts& attempts, const Answer& failed, const Attempt& next);

// Replaces `kept` by `other` if that knows more about the problem.
void keep_better (std::optional<Tried>& kept, Tried&& other);

}
