#include "common/solution_sizes.h"

SolutionSizes read_solution_sizes (KLVtask_t task)
{
    std::int32_t constraints = 0, variables = 0, cones = 0, semidefinite = 0;
    SolutionSizes sizes;
    KLV_getnumcon (task, &constraints);
    KLV_getnumvar (task, &variables);
    KLV_getnumcone (task, &cones);
    KLV_getnumbarvar (task, &semidefinite);
    KLV_getaccntot (task, &sizes.affine_entries);
    for (std::int32_t j = 0; j < semidefinite; ++j) {
        std::int64_t length = 0;
        KLV_getlenbarvarj (task, j, &length);
        sizes.packed_entries += length;
    }
    sizes.constraints = constraints;
    sizes.variables = variables;
    sizes.cones = cones;
    sizes.semidefinite = semidefinite;
    return sizes;
}
