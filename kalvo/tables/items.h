// Information items that are live; the tables give each its name and description. Items are numbered in this
// order, so a new one stands last.
#pragma once

namespace klv {

enum class RealItem {
    primal_objective,
    dual_objective,
    primal_violation,
    dual_violation,
    relative_gap,
    primal_violation_absolute,
    dual_violation_absolute,
    integer_violation,
    complementarity_violation,
    time_optimize,
    time_presolve,
    time_simplex,
    time_interior_point,
    time_mixed_integer,
    time_check,
    time_read,
    time_write,
    mip_objective,
    mip_bound,
    mip_relative_gap,
    mip_absolute_gap,
    smallest_matrix_value,
    largest_matrix_value,
    smallest_cost,
    largest_cost,
    smallest_bound,
    largest_bound,
    progress_time,
    count
};

enum class IntItem {
    variables,
    constraints,
    integers,
    matrix_entries,
    simplex_iterations,
    interior_iterations,
    finish_iterations,
    nodes,
    improving_solutions,
    engine_optimal_claims_rejected,
    interior_source,
    basic_source,
    threads_used,
    presolve_rerun,
    lowered_infinite_bounds,
    crossed_bounds,
    optimizer_used,
    abandoned_workers,
    start,
    race,
    count
};

}
