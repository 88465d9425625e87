// Claims about the problem as it was stated, not checked yet.
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

// Duals have the signs of kalvo.h; an array is empty where nothing is claimed.
struct Point {
    Outcome outcome = Outcome::unknown;
    std::vector<double> x = {};    // variables
    std::vector<double> y = {},
                        reduced_cost = {};    // constraints, variables; an empty reduced_cost means c - A'y
    std::vector<std::int32_t> column_key = {}, row_key = {};    // status keys of a basis: KLVstakey
    std::vector<double> dual_ray = {};      // constraints: multipliers that prove infeasibility
    std::vector<double> primal_ray = {};    // variables: a direction of unbounded improvement
    // Conic parts: of the point, of the direction or of the multipliers, as the outcome says. Where multipliers of quadratic
    // constraints prove infeasibility, x is the point at which their gradients are taken.
    std::vector<double> barx =
        {};    // packed lower triangles of the semidefinite variables, one after another
    std::vector<double> doty = {};       // rows of the affine conic constraints
    std::vector<double> snx = {};        // variables: duals of their cones; empty: all that bounds leave
    std::optional<double> bound = {};    // on the objective of an integer problem
    std::string message = {};            // plain words for a run without an answer
};

// Where an optimisation starts: a basis, or a point. Unknown arrays are empty.
struct Start {
    std::vector<std::int32_t> row_key = {},
                              column_key = {};    // a basis, of which nothing else is known: KLVstakey
    std::vector<double> x = {};                   // NaN, for an integer search only: an unknown value
    std::vector<double> activity = {}, y = {}, reduced_cost = {};    // row activities of x, and duals
};

}
