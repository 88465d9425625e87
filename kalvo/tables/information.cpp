#include "kalvo/tables/information.h"

#include "kalvo/tables/rows.h"

namespace klv {

template <class Item>
struct LiveItem {
    Item item;
    std::string_view name;
    std::string_view description;
};

static constexpr auto live_reals = std::to_array<LiveItem<RealItem>> ({
    {RealItem::primal_objective, "KLV_DINF_PRIMAL_OBJECTIVE", "Primal objective of the best point so far."},
    {RealItem::dual_objective, "KLV_DINF_DUAL_OBJECTIVE", "Dual objective, or best bound, so far."},
    {RealItem::primal_violation, "KLV_DINF_PRIMAL_VIOLATION", "Largest scaled violation of a bound."},
    {RealItem::dual_violation, "KLV_DINF_DUAL_VIOLATION", "Largest scaled violation of dual feasibility."},
    {RealItem::relative_gap, "KLV_DINF_RELATIVE_GAP", "Relative difference of primal and dual objective."},
    {RealItem::primal_violation_absolute, "KLV_DINF_PRIMAL_VIOLATION_ABSOLUTE",
     "Largest violation of a bound."},
    {RealItem::dual_violation_absolute, "KLV_DINF_DUAL_VIOLATION_ABSOLUTE",
     "Largest violation of dual feasibility."},
    {RealItem::integer_violation, "KLV_DINF_INTEGER_VIOLATION",
     "Largest distance of an integer variable from a whole number."},
    {RealItem::complementarity_violation, "KLV_DINF_COMPLEMENTARITY_VIOLATION",
     "Largest product of a multiplier and the distance from its bound, scaled."},
    {RealItem::time_optimize, "KLV_DINF_TIME_OPTIMIZE", "Seconds that the last optimisation took."},
    {RealItem::time_presolve, "KLV_DINF_TIME_PRESOLVE", "Seconds of the last optimisation in presolve."},
    {RealItem::time_simplex, "KLV_DINF_TIME_SIMPLEX", "Seconds of the last optimisation in simplex methods."},
    {RealItem::time_interior_point, "KLV_DINF_TIME_INTPNT",
     "Seconds of the last optimisation in the interior-point method."},
    {RealItem::time_mixed_integer, "KLV_DINF_TIME_MIP",
     "Seconds of the last optimisation in the integer search."},
    {RealItem::time_check, "KLV_DINF_TIME_CHECK", "Seconds of the last optimisation in checking answers."},
    {RealItem::time_read, "KLV_DINF_TIME_READ", "Seconds that the last reading of a file took."},
    {RealItem::time_write, "KLV_DINF_TIME_WRITE", "Seconds that the last writing of a file took."},
    {RealItem::mip_objective, "KLV_DINF_MIP_OBJECTIVE", "Objective of the best integer point."},
    {RealItem::mip_bound, "KLV_DINF_MIP_BOUND", "Best bound of the integer search."},
    {RealItem::mip_relative_gap, "KLV_DINF_MIP_RELATIVE_GAP", "Relative gap of the integer search."},
    {RealItem::mip_absolute_gap, "KLV_DINF_MIP_ABSOLUTE_GAP", "Absolute gap of the integer search."},
    {RealItem::smallest_matrix_value, "KLV_DINF_SMALLEST_MATRIX_VALUE",
     "Smallest magnitude but zero in the constraint matrix."},
    {RealItem::largest_matrix_value, "KLV_DINF_LARGEST_MATRIX_VALUE",
     "Largest magnitude in the constraint matrix."},
    {RealItem::smallest_cost, "KLV_DINF_SMALLEST_COST", "Smallest magnitude but zero of a cost."},
    {RealItem::largest_cost, "KLV_DINF_LARGEST_COST", "Largest magnitude of a cost."},
    {RealItem::smallest_bound, "KLV_DINF_SMALLEST_BOUND", "Smallest magnitude but zero of a bound."},
    {RealItem::largest_bound, "KLV_DINF_LARGEST_BOUND", "Largest magnitude of a bound."},
    {RealItem::progress_time, "KLV_DINF_PROGRESS_TIME", "Seconds since the running operation began."},
    {RealItem::mip_root_bound, "KLV_DINF_MIP_ROOT_BOUND",
     "Bound of the integer search's first relaxation, before cuts; 0 if the engine did not tell it."},
    {RealItem::mip_integral, "KLV_DINF_MIP_INTEGRAL",
     "Integral over the search's seconds of the gap between its incumbent and its bound."},
    {RealItem::time_first_solution, "KLV_DINF_TIME_MIP_FIRST_SOLUTION",
     "Seconds until the search found its first point."},
    {RealItem::time_best_solution, "KLV_DINF_TIME_MIP_BEST_SOLUTION",
     "Seconds until the search found its best point."},
    {RealItem::time_crossover, "KLV_DINF_TIME_CROSSOVER",
     "Seconds of the last optimisation in turning an interior solution into a basic one."},
    {RealItem::interior_primal_objective, "KLV_DINF_ITR_PRIMAL_OBJECTIVE",
     "Primal objective of the interior solution."},
    {RealItem::interior_dual_objective, "KLV_DINF_ITR_DUAL_OBJECTIVE",
     "Dual objective of the interior solution."},
    {RealItem::interior_primal_violation, "KLV_DINF_ITR_PRIMAL_VIOLATION",
     "KLV_DINF_PRIMAL_VIOLATION of the interior solution."},
    {RealItem::interior_dual_violation, "KLV_DINF_ITR_DUAL_VIOLATION",
     "KLV_DINF_DUAL_VIOLATION of the interior solution."},
    {RealItem::interior_complementarity_violation, "KLV_DINF_ITR_COMPLEMENTARITY_VIOLATION",
     "KLV_DINF_COMPLEMENTARITY_VIOLATION of the interior solution."},
    {RealItem::basic_primal_objective, "KLV_DINF_BAS_PRIMAL_OBJECTIVE",
     "Primal objective of the basic solution."},
    {RealItem::basic_dual_objective, "KLV_DINF_BAS_DUAL_OBJECTIVE", "Dual objective of the basic solution."},
    {RealItem::basic_primal_violation, "KLV_DINF_BAS_PRIMAL_VIOLATION",
     "KLV_DINF_PRIMAL_VIOLATION of the basic solution."},
    {RealItem::basic_dual_violation, "KLV_DINF_BAS_DUAL_VIOLATION",
     "KLV_DINF_DUAL_VIOLATION of the basic solution."},
    {RealItem::basic_complementarity_violation, "KLV_DINF_BAS_COMPLEMENTARITY_VIOLATION",
     "KLV_DINF_COMPLEMENTARITY_VIOLATION of the basic solution."},
    {RealItem::worker_memory, "KLV_DINF_WORKER_MEMORY",
     "Megabytes: the most that a process of optimisers has had in use; 0 if they ran in the calling "
     "process."},
    {RealItem::cone_violation, "KLV_DINF_CONE_VIOLATION",
     "Largest scaled distance of an affine conic constraint or of a cone's variables from where they have to "
     "be."},
    {RealItem::matrix_violation, "KLV_DINF_MATRIX_VIOLATION",
     "Largest scaled negative eigenvalue of a semidefinite variable."},
    {RealItem::dual_cone_violation, "KLV_DINF_DUAL_CONE_VIOLATION",
     "Largest scaled distance of conic duals from their dual cones."},
    {RealItem::dual_matrix_violation, "KLV_DINF_DUAL_MATRIX_VIOLATION",
     "Largest scaled negative eigenvalue of a semidefinite variable's dual (positive for maximisation)."},
    {RealItem::repair_sum, "KLV_DINF_REPAIR_SUM",
     "Weighted sum of the amounts by which the last repair moved bounds."},
    {RealItem::repair_bound, "KLV_DINF_REPAIR_BOUND",
     "The smallest such sum that was not ruled out by proof."},
    {RealItem::time_conflict, "KLV_DINF_TIME_CONFLICT",
     "Seconds that the last search for contradictory bounds took."},
});

static constexpr auto live_ints = std::to_array<LiveItem<IntItem>> ({
    {IntItem::variables, "KLV_IINF_VARIABLES", "Variables."},
    {IntItem::constraints, "KLV_IINF_CONSTRAINTS", "Constraints."},
    {IntItem::integers, "KLV_IINF_INTEGER_VARIABLES", "Integer variables."},
    {IntItem::matrix_entries, "KLV_IINF_MATRIX_ENTRIES", "Entries of the constraint matrix."},
    {IntItem::simplex_iterations, "KLV_IINF_SIMPLEX_ITERATIONS",
     "Iterations of the simplex methods, those inside an integer search too."},
    {IntItem::interior_iterations, "KLV_IINF_INTPNT_ITERATIONS", "Iterations of the interior-point method."},
    {IntItem::crossover_iterations, "KLV_IINF_CROSSOVER_ITERATIONS",
     "Iterations that turned an interior solution into a basic one."},
    {IntItem::nodes, "KLV_IINF_MIP_NODES", "Nodes of the integer search."},
    {IntItem::improving_solutions, "KLV_IINF_MIP_SOLUTIONS", "Improving points of the integer search."},
    {IntItem::engine_optimal_claims_rejected, "KLV_IINF_CLAIMS_REJECTED",
     "Answers that an optimiser called optimal but the check did not."},
    {IntItem::interior_source, "KLV_IINF_INTERIOR_SOURCE",
     "Where the interior solution came from: 0 nowhere, else 1 + the optimiser's number."},
    {IntItem::basic_source, "KLV_IINF_BASIC_SOURCE",
     "Where the basic solution came from: 0 nowhere, else 1 + the optimiser's number."},
    {IntItem::threads_used, "KLV_IINF_THREADS", "Threads that the last optimisation used."},
    {IntItem::presolve_rerun, "KLV_IINF_SECOND_TRIES", "Further attempts after answers that did not hold."},
    {IntItem::lowered_infinite_bounds, "KLV_IINF_BOUNDS_TAKEN_AS_INFINITE",
     "Finite bounds that an optimiser took as infinite."},
    {IntItem::crossed_bounds, "KLV_IINF_CROSSED_BOUNDS", "Pairs of bounds that contradict each other."},
    {IntItem::optimizer_used, "KLV_IINF_OPTIMIZER", "Number of the optimiser that gave the answer."},
    {IntItem::worker_deaths, "KLV_IINF_WORKER_DEATHS",
     "Processes of optimisers that ended unexpectedly in the last optimisation."},
    {IntItem::start, "KLV_IINF_START",
     "What the answer was found from: 0 nothing, 1 a basis, 2 a point, 3 values of integer variables."},
    {IntItem::race, "KLV_IINF_RACE",
     "Whether interior point ran beside simplex (1) or not (0); KLV_IINF_OPTIMIZER says who won."},
    {IntItem::presolved_variables, "KLV_IINF_PRESOLVED_VARIABLES",
     "Variables of the presolved problem, without presolve of the whole one; 0 if presolve found the "
     "answer."},
    {IntItem::presolved_constraints, "KLV_IINF_PRESOLVED_CONSTRAINTS",
     "Constraints of the presolved problem, without presolve of the whole one."},
    {IntItem::presolved_integers, "KLV_IINF_PRESOLVED_INTEGER_VARIABLES",
     "Integer variables of the presolved problem that are neither fixed nor whole by themselves."},
    {IntItem::presolved_entries, "KLV_IINF_PRESOLVED_MATRIX_ENTRIES",
     "Entries of the presolved problem's constraint matrix."},
    {IntItem::open_nodes, "KLV_IINF_MIP_OPEN_NODES",
     "Nodes of the integer search that were not explored yet."},
    {IntItem::restarts, "KLV_IINF_MIP_RESTARTS", "Restarts of the integer search from its root."},
    {IntItem::cuts, "KLV_IINF_MIP_CUTS", "Cuts that the integer search keeps."},
    {IntItem::cuts_in_use, "KLV_IINF_MIP_CUTS_IN_USE", "Cuts in the relaxation of the integer search."},
    {IntItem::conflicts, "KLV_IINF_MIP_CONFLICTS", "Conflicts that the integer search keeps."},
    {IntItem::strong_branching_iterations, "KLV_IINF_MIP_STRONG_BRANCHING_ITERATIONS",
     "Simplex iterations of the integer search in strong branching."},
    {IntItem::separation_iterations, "KLV_IINF_MIP_SEPARATION_ITERATIONS",
     "Simplex iterations of the integer search between rounds of cuts."},
    {IntItem::heuristic_iterations, "KLV_IINF_MIP_HEURISTIC_ITERATIONS",
     "Simplex iterations of the integer search in heuristics."},
    {IntItem::interior_method, "KLV_IINF_INTPNT_METHOD",
     "Interior-point method that ran, as a value of KLV_IPAR_INTPNT_METHOD; 0: none."},
    {IntItem::lowered_dropped_entries, "KLV_IINF_ENTRIES_TAKEN_AS_ZERO",
     "Entries of the constraint matrix that an optimiser left out as too small."},
    {IntItem::form_columns, "KLV_IINF_FORM_COLUMNS",
     "Columns of the quadratic or conic form that was solved; 0 for linear problems, as the next seven."},
    {IntItem::form_rows, "KLV_IINF_FORM_ROWS", "Rows of that form."},
    {IntItem::form_entries, "KLV_IINF_FORM_ENTRIES", "Entries of its matrix."},
    {IntItem::second_order_cones, "KLV_IINF_SECOND_ORDER_CONES", "Its second-order cones."},
    {IntItem::exponential_cones, "KLV_IINF_EXPONENTIAL_CONES", "Its exponential cones."},
    {IntItem::power_cones, "KLV_IINF_POWER_CONES", "Its power cones, all of dimension three."},
    {IntItem::matrices, "KLV_IINF_MATRICES", "Its positive semidefinite matrices of order two or more."},
    {IntItem::largest_matrix, "KLV_IINF_LARGEST_MATRIX", "The largest order of such a matrix."},
    {IntItem::repaired_bounds, "KLV_IINF_REPAIRED_BOUNDS", "Bounds that the last repair moved."},
    {IntItem::conflict_members, "KLV_IINF_CONFLICT_MEMBERS",
     "Bounds of an infeasible problem that were found to contradict each other."},
    {IntItem::conflict_irreducible, "KLV_IINF_CONFLICT_IRREDUCIBLE",
     "Whether these can hold without any one of them."},
});

static constexpr auto real_names = reserved_names<KLV_DOUBLE_INFORMATION> ("KLV_DINF_RESERVED_");
static constexpr auto int_names = reserved_names<KLV_INTEGER_INFORMATION> ("KLV_IINF_RESERVED_");

// A live row that is not at its item's place, an item without a row, and a name that occurs twice do not compile.
template <std::size_t count, class Item, std::size_t live>
static consteval auto fill (const std::array<LiveItem<Item>, live>& live_rows,
                            const ReservedNames<count>& names)
{
    static_assert (live == static_cast<std::size_t> (Item::count) && live <= count);
    std::array<InformationRow, count> rows{};
    for (std::size_t i = 0; i < count; ++i)
        rows[i] = {names[i].data (), "Reserved: always 0."};
    for (std::size_t i = 0; i < live; ++i) {
        if (information_number (live_rows[i].item) != i)
            throw "rows and items differ in order";
        rows[i] = {live_rows[i].name, live_rows[i].description};
    }
    order_by_name<count> (rows);
    return rows;
}

constexpr std::array<InformationRow, KLV_DOUBLE_INFORMATION> real_information = fill (live_reals, real_names);
constexpr std::array<InformationRow, KLV_INTEGER_INFORMATION> int_information = fill (live_ints, int_names);
static_assert (real_information.size () == 111 && int_information.size () == 117);

}
