// Settings, which parameters drive. A row of a parameter table names its setting; the rest of the library asks for settings and
// never for parameter numbers.
#pragma once

namespace klv {

enum class RealSetting {
    bound_infinity,    // files: bounds beyond this are none; problem records: for upper bounds only, lower ones are refused
    fixing_tolerance,    // bounds that differ by at most this are one value; crossed by more, a contradiction
    primal_tolerance,
    dual_tolerance,
    gap_tolerance,
    integer_tolerance,
    integer_absolute_gap,
    integer_relative_gap,
    time_limit,            // seconds; negative: none
    objective_limit,       // infinite: none
    race_delay,            // seconds after which interior point joins simplex; infinite: never
    interior_tolerance,    // 0: follows gap_tolerance
    cost_perturbation,     // a factor
    bound_perturbation,    // a factor
    pivot_threshold,
    heuristic_effort,
    integer_log_interval,
    memory_limit,               // megabytes of a worker process; negative: none
    interior_regularization,    // 0: the engine's adapter chooses
    conflict_time_limit,        // seconds; 0: no search
    count
};

enum class IntSetting {
    optimizer,                   // KLVoptimizer
    interior_point_basis,        // KLVswitch: also a basic solution
    presolve,                    // KLVpresolve
    scaling,                     // KLVscaling
    simplex_pricing,             // KLVpricing
    simplex_iteration_limit,     // negative: none
    interior_iteration_limit,    // negative: the engine's adapter limits iterations that lead nowhere
    node_limit,                  // negative: none
    solution_limit,              // improving integer solutions; negative: none
    relax_integers,              // KLVswitch
    threads,                     // 0: the library chooses
    random_seed,
    log_level,             // 0 nothing, 1 summary lines, 2 and progress, 3 and the engine's own lines
    log_interior_point,    // KLVswitch: progress lines of one optimiser
    log_simplex,
    log_mixed_integer,
    file_format,    // KLVfileformat
    warm_start,     // KLVswitch: an optimisation starts from the solutions that the task holds
    presolve_fill_limit,
    scaling_limit,       // an exponent of two
    simplex_parallel,    // KLVswitch: several pivots at a time
    simplex_update_limit,
    interior_method,           // KLVinteriormethod
    newton_system,             // KLVnewtonsystem
    interior_ordering,         // KLVordering
    interior_dualization,      // KLVdualization
    interior_factorization,    // KLVfactorization
    leaf_limit,                // negative: none
    integer_parallel,          // KLVswitch
    symmetry,                  // KLVswitch
    restarts,                  // KLVswitch
    cuts_at_nodes,             // KLVswitch
    cut_age_limit,
    cut_pool_size,
    row_age_limit,
    branching_reliability,
    relaxation_method,             // KLVrelaxationmethod
    feasibility_jump,              // KLVswitch: heuristics
    relaxation_enforced_search,    // KLVswitch
    relaxation_induced_search,     // KLVswitch
    reduced_cost_search,           // KLVswitch
    zi_round,                      // KLVswitch
    shifting,                      // KLVswitch
    race_size,                     // entries, rows and columns from which simplex and interior point race
    worker,                        // KLVworker
    count
};

enum class TextSetting { data_file, replay_file, count };

}
