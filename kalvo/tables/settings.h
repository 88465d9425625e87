// What parameters drive. A row of a parameter table names the setting that it drives; engines, readers and
// reports ask for settings and never for parameter numbers.
#pragma once

namespace klv {

enum class RealSetting {
    bound_infinity,        // finite upper bounds beyond it are no bounds, lower ones an error
    fixing_tolerance,      // bounds that differ by at most this are one value; crossed by more, a contradiction
    primal_tolerance,
    dual_tolerance,
    gap_tolerance,
    integer_tolerance,
    integer_absolute_gap,
    integer_relative_gap,
    time_limit,            // seconds; negative: none
    objective_limit,       // a dual (simplex) or primal (integer) objective beyond it ends the run
    count
};

enum class IntSetting {
    optimizer,             // KLVoptimizer
    interior_point_basis,  // simplex finish after interior point: 0 no, 1 yes
    presolve,              // 0 off, 1 on, 2 the engine chooses
    scaling,               // 0 off, 1 the engine chooses, 2 equilibration, 3 forced equilibration, 4 maximum value
    simplex_pricing,       // 0 the engine chooses, 1 Dantzig, 2 Devex, 3 steepest edge
    simplex_iteration_limit,
    interior_iteration_limit,
    node_limit,            // negative: none
    solution_limit,        // improving integer solutions; negative: none
    relax_integers,
    threads,               // 0: the library chooses
    random_seed,
    log_level,             // 0 nothing, 1 summary lines, 2 and progress, 3 and the engine's own lines
    log_interior_point,
    log_simplex,
    log_mixed_integer,
    file_format,           // 0 by extension, 1 free MPS, 2 fixed MPS
    count
};

enum class TextSetting { data_file, count };

}
