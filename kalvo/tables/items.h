// Information items that are live. The tables give each its name, number and description.
#pragma once

namespace klv {

enum class RealItem {
    primal_objective, dual_objective,                    // of the best answer so far, also during a run
    primal_violation, dual_violation, relative_gap,      // largest scaled violations of the final answer
    primal_violation_absolute, dual_violation_absolute, integer_violation, complementarity_violation,
    time_optimize, time_presolve, time_simplex, time_interior_point, time_mixed_integer, time_check, time_read, time_write,
    mip_objective, mip_bound, mip_relative_gap, mip_absolute_gap,
    smallest_matrix_value, largest_matrix_value, smallest_cost, largest_cost, smallest_bound, largest_bound,
    progress_time,                                       // seconds since the begin of the running operation
    count
};

enum class IntItem {
    variables, constraints, integers, matrix_entries,
    simplex_iterations, interior_iterations, finish_iterations,
    nodes, improving_solutions,
    engine_optimal_claims_rejected,                      // claims that failed our check
    interior_source, basic_source,                       // where each slot came from: 0 none, then KLVoptimizer + 1
    threads_used, presolve_rerun, lowered_infinite_bounds, crossed_bounds,
    optimizer_used, abandoned_workers,
    count
};

}
