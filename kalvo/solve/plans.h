// Plans: which attempts are made for a kind of problem, in which order, until one settles it.
#pragma once

#include "kalvo/model/solution.h"
#include "kalvo/solve/attempt.h"

#include <optional>

namespace klv {

// The best that was found, by kind of solution.
struct Found {
    std::optional<Tried> interior = {}, basic = {}, integer = {};
};

// `earlier`: the solutions that the task held, to start from. The engine is prepared.
Found solve_linear (Attempts& attempts, const Solutions& earlier);
Found solve_integer (Attempts& attempts, const Solutions& earlier);

// The method that is asked for, or by which the library begins.
Method first_method (const Parameters& settings, bool integers);

// Another attempt after one that settled nothing, told as a warning.
Tried try_again (Attempts& attempts, const Answer& failed, const Attempt& next);

// Of two answers that settle nothing the one that knows more.
void keep_better (std::optional<Tried>& kept, Tried&& other);

}
