// The steps of problem output. Each fills fields that exist in the record.
#pragma once

#include <cstdint>

#include "host/host.h"
#include "kalvo.h"

struct ProblemCounts {
    std::int32_t constraints = 0, variables = 0, cones = 0, integers = 0, semidefinite = 0;
    std::int64_t matrix = 0;                   // entries of a
    std::int64_t quadratic_objective = 0;      // terms of the objective
    std::int64_t quadratic_constraints = 0;    // terms of all constraints together
    std::int64_t most_quadratic = 0;           // terms of the objective or of any one constraint
    std::int64_t cone_members = 0;             // of all cones together
    std::int32_t largest_cone = 0;
    std::int64_t affine = 0, affine_rows = 0;    // affine conic constraints, and the rows of all of them
    std::int64_t disjunctive = 0;
};

KLVrescode_t get_costs (KLVtask_t task, mxArray* record);
KLVrescode_t get_matrix (KLVtask_t task, const ProblemCounts& counts, mxArray* record);
KLVrescode_t get_quadratic_terms (KLVtask_t task, const ProblemCounts& counts, std::int32_t* rows,
                                  std::int32_t* columns, mxArray* record);
KLVrescode_t get_integers (KLVtask_t task, const ProblemCounts& counts, mxArray* record);
KLVrescode_t get_cones (KLVtask_t task, const ProblemCounts& counts, mxArray* record);
KLVrescode_t get_affine_constraints (KLVtask_t task, const ProblemCounts& counts, mxArray* record);
KLVrescode_t get_semidefinite_terms (KLVtask_t task, const ProblemCounts& counts, mxArray* record);
KLVrescode_t get_bounds (KLVtask_t task, const ProblemCounts& counts, mxArray* record);
KLVrescode_t get_names (KLVtask_t task, const ProblemCounts& counts, mxArray* record);
KLVrescode_t get_sense (KLVtask_t task, mxArray* record);
