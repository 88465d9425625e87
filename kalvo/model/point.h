// What is claimed of the problem as it was stated, before anyone has checked it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace klv {

enum class Outcome {
    unknown,
    optimal,
    infeasible,
    unbounded,
    infeasible_or_unbounded,
    time_limit,
    iteration_limit,
    node_limit,
    solution_limit,
    objective_limit,
    stopped,
    out_of_memory,
    failed
};

inline bool ended_early (Outcome outcome)
{
    return outcome >= Outcome::time_limit && outcome <= Outcome::stopped;
}

// Signs of duals are those of kalvo.h; arrays are empty where nothing is claimed.
struct Point {
    Outcome outcome = Outcome::unknown;
    std::vector<double> x = {};    // variables
    std::vector<double> y = {},
                        reduced_cost = {};    // constraints, variables; c - A'y where it is not claimed
    std::vector<std::int32_t> column_key = {}, row_key = {};    // status keys of a basis: KLVstakey
    std::vector<double> dual_ray = {};      // constraints: proves that no point is feasible
    std::vector<double> primal_ray = {};    // variables: a direction of unbounded improvement
    std::optional<double> bound = {};       // on the objective of an integer problem
    std::string message = {};               // why there is no answer, in plain words
};

// Where an optimisation starts. Arrays are empty where nothing is known.
struct Start {
    std::vector<std::int32_t> row_key = {},
                              column_key = {};    // a basis, of which nothing else is known: KLVstakey
    std::vector<double> x = {};                   // for an integer search some entries may be NaN: unknown
    std::vector<double> activity = {}, y = {}, reduced_cost = {};    // of x, and its duals
};

}
