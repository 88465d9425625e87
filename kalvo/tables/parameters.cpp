#include "kalvo/tables/parameters.h"

#include "kalvo/tables/rows.h"

#include <limits>

namespace klv {

static constexpr double inf = std::numeric_limits<double>::infinity ();
static constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max ();
static constexpr std::string_view reserved_description = "Reserved: accepts its default only.";

static constexpr auto live_reals = std::to_array<RealParameter> ({
    {0, "KLV_DPAR_PRIMAL_TOLERANCE", 1e-6, 1e-10, 0.1, Group::none, RealSetting::primal_tolerance,
     "Largest relative violation of a bound in an optimal or feasible point."},
    {1, "KLV_DPAR_DUAL_TOLERANCE", 1e-6, 1e-10, 0.1, Group::none, RealSetting::dual_tolerance,
     "Largest relative violation of dual feasibility in an optimal or dual feasible solution."},
    {2, "KLV_DPAR_GAP_TOLERANCE", 1e-6, 1e-10, 0.1, Group::none, RealSetting::gap_tolerance,
     "Largest relative difference of primal and dual objective in an optimal solution."},
    {3, "KLV_DPAR_INTEGER_TOLERANCE", 1e-6, 1e-10, 0.1, Group::none, RealSetting::integer_tolerance,
     "Largest distance of an integer variable from a whole number."},
    {4, "KLV_DPAR_MIP_ABSOLUTE_GAP", 1e-6, 0, inf, Group::none, RealSetting::integer_absolute_gap,
     "The integer search ends when incumbent and bound differ by at most this."},
    {5, "KLV_DPAR_MIP_RELATIVE_GAP", 1e-4, 0, inf, Group::none, RealSetting::integer_relative_gap,
     "The integer search ends when incumbent and bound differ by at most this, relative to the incumbent."},
    {6, "KLV_DPAR_TIME_LIMIT", -1, -1, inf, Group::none, RealSetting::time_limit,
     "Seconds that an optimisation may take; -1: no limit."},
    {7, "KLV_DPAR_OBJECTIVE_LIMIT", inf, -inf, inf, Group::none, RealSetting::objective_limit,
     "A dual (simplex) or primal (integer) objective beyond it ends the run; infinite: no limit."},
    {8, "KLV_DPAR_RACE_DELAY", 0, 0, inf, Group::none, RealSetting::race_delay,
     "Seconds after which interior point joins a simplex run of the automatic optimiser; infinite: never."},
    {KLV_DPAR_BOUND_INFINITY_NUMBER, "KLV_DPAR_BOUND_INFINITY", 1e20, 1, inf, Group::none,
     RealSetting::bound_infinity, "Bounds at or beyond it are infinite."},
    {KLV_DPAR_FIXING_TOLERANCE_NUMBER, "KLV_DPAR_FIXING_TOLERANCE", 1e-10, 0, 1, Group::none,
     RealSetting::fixing_tolerance,
     "Bounds that differ by at most this are one value; bounds crossed by more are a contradiction."},
    {9, "KLV_DPAR_INTPNT_TOLERANCE", 0, 0, 1e-2, Group::none, RealSetting::interior_tolerance,
     "Relative gap at which the interior-point method ends; 0: a hundredth of KLV_DPAR_GAP_TOLERANCE."},
    {11, "KLV_DPAR_SIMPLEX_COST_PERTURBATION", 1, 0, 1e6, Group::none, RealSetting::cost_perturbation,
     "How strongly dual simplex perturbs costs against degeneracy, as a factor; 0: not at all."},
    {12, "KLV_DPAR_SIMPLEX_BOUND_PERTURBATION", 1, 0, 1e6, Group::none, RealSetting::bound_perturbation,
     "How strongly primal simplex perturbs bounds against degeneracy, as a factor; 0: not at all."},
    {13, "KLV_DPAR_SIMPLEX_PIVOT_THRESHOLD", 0.1, 8e-4, 0.5, Group::none, RealSetting::pivot_threshold,
     "Smallest pivot of a basis factorisation, relative to its column: larger is stabler, smaller is "
     "sparser."},
    {14, "KLV_DPAR_MIP_HEURISTIC_EFFORT", 0.05, 0, 1, Group::none, RealSetting::heuristic_effort,
     "Share of the integer search that goes into heuristics."},
    {16, "KLV_DPAR_MIP_LOG_INTERVAL", 5, 0, inf, Group::none, RealSetting::integer_log_interval,
     "Seconds between two lines of the integer search while nothing happens."},
    {17, "KLV_DPAR_MEMORY_LIMIT", -1, -1, inf, Group::none, RealSetting::memory_limit,
     "Megabytes that optimisers may use in a process of their own; -1: no limit."},
    {18, "KLV_DPAR_INTPNT_REGULARIZATION", 0, 0, 1e-4, Group::none, RealSetting::interior_regularization,
     "What is added to the diagonals of the scaled systems of conic problems, and at the least to those of "
     "quadratic ones; 0: the optimiser chooses."},
    {19, "KLV_DPAR_CONFLICT_TIME_LIMIT", 10, 0, inf, Group::none, RealSetting::conflict_time_limit,
     "Seconds that may go into finding out which bounds of an infeasible problem contradict each "
     "other; 0: not looked for."},
});

static constexpr auto live_ints = std::to_array<IntParameter> ({
    {0, "KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_AUTOMATIC, KLV_OPTIMIZER_PRIMAL_SIMPLEX,
     KLV_OPTIMIZER_MIXED_INTEGER, Group::optimizer, IntSetting::optimizer,
     "The optimiser of linear problems without integer variables; those with get the integer search, "
     "quadratic, "
     "conic and semidefinite ones the interior-point methods."},
    {1, "KLV_IPAR_INTPNT_BASIS", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::interior_point_basis,
     "Whether the interior-point method also leaves a basic solution."},
    {2, "KLV_IPAR_PRESOLVE", KLV_PRESOLVE_AUTOMATIC, KLV_PRESOLVE_OFF, KLV_PRESOLVE_AUTOMATIC,
     Group::presolve, IntSetting::presolve,
     "Whether a problem is made smaller before it is solved; AUTOMATIC leaves tiny problems as they are."},
    {3, "KLV_IPAR_SCALING", KLV_SCALING_AUTOMATIC, KLV_SCALING_OFF, KLV_SCALING_MAXIMUM_VALUE, Group::scaling,
     IntSetting::scaling,
     "How the simplex methods scale rows and columns; OFF also leaves quadratic and conic forms as they "
     "are."},
    {4, "KLV_IPAR_SIMPLEX_PRICING", KLV_PRICING_AUTOMATIC, KLV_PRICING_AUTOMATIC, KLV_PRICING_STEEPEST_EDGE,
     Group::pricing, IntSetting::simplex_pricing, "How the simplex methods choose the next pivot."},
    {5, "KLV_IPAR_SIMPLEX_ITERATION_LIMIT", -1, -1, most, Group::none, IntSetting::simplex_iteration_limit,
     "Iterations that a simplex method may take; -1: no limit."},
    {6, "KLV_IPAR_INTPNT_ITERATION_LIMIT", -1, -1, most, Group::none, IntSetting::interior_iteration_limit,
     "Iterations that the interior-point method may take; -1: 500 (200 on conic forms, 250 on quadratic "
     "ones), "
     "after which another attempt takes its place."},
    {7, "KLV_IPAR_MIP_NODE_LIMIT", -1, -1, most, Group::none, IntSetting::node_limit,
     "Nodes that the integer search may look at; -1: no limit."},
    {8, "KLV_IPAR_MIP_SOLUTION_LIMIT", -1, -1, most, Group::none, IntSetting::solution_limit,
     "Improving points after which the integer search ends; -1: no limit."},
    {9, "KLV_IPAR_RELAX_INTEGERS", KLV_OFF, KLV_OFF, KLV_ON, Group::on_off, IntSetting::relax_integers,
     "Whether integer variables are taken as continuous."},
    {10, "KLV_IPAR_MAX_THREADS", 0, 0, 256, Group::none, IntSetting::threads,
     "Threads that an optimisation may use; 0 lets the library choose."},
    {11, "KLV_IPAR_RANDOM_SEED", 0, 0, most, Group::none, IntSetting::random_seed,
     "Seed of what the optimisers do at random."},
    {12, "KLV_IPAR_LOG", 2, 0, 3, Group::none, IntSetting::log_level,
     "What an optimisation prints: 0 nothing, 1 summaries, 2 also progress, 3 also the engine's own lines."},
    {13, "KLV_IPAR_LOG_INTPNT", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::log_interior_point,
     "Whether the interior-point method prints its progress."},
    {14, "KLV_IPAR_LOG_SIMPLEX", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::log_simplex,
     "Whether the simplex methods print their progress."},
    {15, "KLV_IPAR_LOG_MIP", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::log_mixed_integer,
     "Whether the integer search prints its progress."},
    {16, "KLV_IPAR_FILE_FORMAT", KLV_FILE_BY_EXTENSION, KLV_FILE_BY_EXTENSION, KLV_FILE_SDPA,
     Group::file_format, IntSetting::file_format, "The format of problem files."},
    {17, "KLV_IPAR_WARM_START", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::warm_start,
     "Whether an optimisation starts from the solutions that the task holds."},
    {19, "KLV_IPAR_PRESOLVE_FILL_LIMIT", 10, 0, most, Group::none, IntSetting::presolve_fill_limit,
     "Entries that presolve may add to the matrix by eliminating one variable."},
    {20, "KLV_IPAR_SCALING_LIMIT", 20, 0, 30, Group::none, IntSetting::scaling_limit,
     "Largest exponent of a scale factor; the factors are powers of two."},
    {21, "KLV_IPAR_SIMPLEX_PARALLEL", KLV_OFF, KLV_OFF, KLV_ON, Group::on_off, IntSetting::simplex_parallel,
     "Whether dual simplex does several pivots at a time, on up to KLV_IPAR_MAX_THREADS threads."},
    {22, "KLV_IPAR_SIMPLEX_UPDATE_LIMIT", 5000, 0, most, Group::none, IntSetting::simplex_update_limit,
     "Pivots after which a basis is factorised anew, if not before."},
    {23, "KLV_IPAR_INTPNT_METHOD", KLV_INTPNT_METHOD_AUTOMATIC, KLV_INTPNT_METHOD_AUTOMATIC,
     KLV_INTPNT_METHOD_FACTORIZATION, Group::interior_method, IntSetting::interior_method,
     "How the interior-point method solves its linear systems."},
    {24, "KLV_IPAR_INTPNT_SYSTEM", KLV_NEWTON_AUTOMATIC, KLV_NEWTON_AUTOMATIC, KLV_NEWTON_NORMAL_EQUATIONS,
     Group::newton_system, IntSetting::newton_system,
     "Which linear systems are factorised (KLV_INTPNT_METHOD_FACTORIZATION)."},
    {25, "KLV_IPAR_INTPNT_ORDERING", KLV_ORDERING_AUTOMATIC, KLV_ORDERING_AUTOMATIC,
     KLV_ORDERING_CUTHILL_MCKEE, Group::ordering, IntSetting::interior_ordering,
     "How these systems are ordered before they are factorised (KLV_INTPNT_METHOD_FACTORIZATION)."},
    {26, "KLV_IPAR_INTPNT_DUALIZE", KLV_DUALIZE_AUTOMATIC, KLV_DUALIZE_OFF, KLV_DUALIZE_AUTOMATIC,
     Group::dualization, IntSetting::interior_dualization,
     "Whether the dual is solved instead (KLV_INTPNT_METHOD_ITERATIVE)."},
    {27, "KLV_IPAR_MIP_LEAF_LIMIT", -1, -1, most, Group::none, IntSetting::leaf_limit,
     "Leaves of the tree after which the integer search ends; -1: no limit."},
    {28, "KLV_IPAR_MIP_PARALLEL", KLV_OFF, KLV_OFF, KLV_ON, Group::on_off, IntSetting::integer_parallel,
     "Whether several threads search the tree at a time."},
    {29, "KLV_IPAR_MIP_SYMMETRY", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::symmetry,
     "Whether symmetry of the problem is looked for and used."},
    {30, "KLV_IPAR_MIP_RESTARTS", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::restarts,
     "Whether the integer search may start again after it has fixed many variables."},
    {31, "KLV_IPAR_MIP_CUTS_AT_NODES", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::cuts_at_nodes,
     "Whether cuts are looked for at every node, or at the root only."},
    {32, "KLV_IPAR_MIP_CUT_AGE_LIMIT", 30, 0, 1000, Group::none, IntSetting::cut_age_limit,
     "Rounds after which a cut that was of no use is forgotten."},
    {33, "KLV_IPAR_MIP_CUT_POOL_SIZE", 10000, 1, most, Group::none, IntSetting::cut_pool_size,
     "Number of cuts above which cuts are forgotten sooner."},
    {34, "KLV_IPAR_MIP_ROW_AGE_LIMIT", 10, 0, 32767, Group::none, IntSetting::row_age_limit,
     "Rounds after which a cut that does not bind leaves the relaxation."},
    {35, "KLV_IPAR_MIP_BRANCHING_RELIABILITY", 8, 0, most, Group::none, IntSetting::branching_reliability,
     "Trial branchings of a variable after which its estimates are relied on."},
    {36, "KLV_IPAR_MIP_RELAXATION_METHOD", KLV_RELAXATION_AUTOMATIC, KLV_RELAXATION_AUTOMATIC,
     KLV_RELAXATION_INTERIOR_POINT, Group::relaxation, IntSetting::relaxation_method,
     "How the first relaxation is solved."},
    {37, "KLV_IPAR_MIP_FEASIBILITY_JUMP", KLV_ON, KLV_OFF, KLV_ON, Group::on_off,
     IntSetting::feasibility_jump, "Heuristic: jumps to a feasible point before the first relaxation."},
    {38, "KLV_IPAR_MIP_RENS", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::relaxation_enforced_search,
     "Heuristic: searches the roundings of a relaxation."},
    {39, "KLV_IPAR_MIP_RINS", KLV_ON, KLV_OFF, KLV_ON, Group::on_off, IntSetting::relaxation_induced_search,
     "Heuristic: searches where incumbent and relaxation differ."},
    {40, "KLV_IPAR_MIP_ROOT_REDUCED_COST", KLV_ON, KLV_OFF, KLV_ON, Group::on_off,
     IntSetting::reduced_cost_search,
     "Heuristic: searches after fixing variables by their reduced costs at the root."},
    {41, "KLV_IPAR_MIP_ZI_ROUND", KLV_OFF, KLV_OFF, KLV_ON, Group::on_off, IntSetting::zi_round,
     "Heuristic: shifts values within their slack until they are whole."},
    {42, "KLV_IPAR_MIP_SHIFTING", KLV_OFF, KLV_OFF, KLV_ON, Group::on_off, IntSetting::shifting,
     "Heuristic: rounds variables one by one, mending violated constraints on the way."},
    {43, "KLV_IPAR_RACE_SIZE", 5000, 0, most, Group::none, IntSetting::race_size,
     "Entries, rows and columns from which the automatic optimiser lets interior point run beside simplex."},
    {44, "KLV_IPAR_WORKER", KLV_WORKER_AUTOMATIC, KLV_WORKER_OFF, KLV_WORKER_AUTOMATIC, Group::worker,
     IntSetting::worker, "Whether optimisers run in a process of their own."},
    {45, "KLV_IPAR_INTPNT_FACTORIZATION", KLV_FACTORIZATION_AUTOMATIC, KLV_FACTORIZATION_AUTOMATIC,
     KLV_FACTORIZATION_SUPERNODAL, Group::factorization, IntSetting::interior_factorization,
     "How the sparse systems of quadratic and conic problems are factorised."},
});

static constexpr auto live_texts = std::to_array<TextParameter> ({
    {KLV_SPAR_DATA_FILE_NUMBER, "KLV_SPAR_DATA_FILE", "", TextSetting::data_file,
     "The problem file that KLV_readdata reads when it is given no name; kalvoopt sets it from read(file)."},
    {2, "KLV_SPAR_REPLAY_FILE", "", TextSetting::replay_file,
     "A JSON file to which the problem, its parameters and its start are written when a "
     "process of "
     "optimisers ends unexpectedly; empty: none."},
});

static constexpr auto real_names = reserved_names<KLV_DOUBLE_PARAMETERS> ("KLV_DPAR_RESERVED_");
static constexpr auto int_names = reserved_names<KLV_INTEGER_PARAMETERS> ("KLV_IPAR_RESERVED_");
static constexpr auto text_names = reserved_names<KLV_STRING_PARAMETERS> ("KLV_SPAR_RESERVED_");

// The live rows at their numbers, reserved ones between them. A number that is used twice does not compile.
template <std::size_t count, class Row, std::size_t live>
static constexpr std::array<Row, count> fill (std::array<Row, count> rows,
                                              const std::array<Row, live>& live_rows)
{
    for (const Row& row : live_rows) {
        Row& place = rows[static_cast<std::size_t> (row.number)];
        if (!place.reserved ())
            throw "two parameters have one number";
        place = row;
    }
    return rows;
}

constexpr std::array<RealParameter, KLV_DOUBLE_PARAMETERS> real_parameters = [] {
    std::array<RealParameter, KLV_DOUBLE_PARAMETERS> rows{};
    for (std::size_t i = 0; i < rows.size (); ++i)
        rows[i] = {
            static_cast<std::int32_t> (i), real_names[i].data (), 0, 0, 0, Group::none, RealSetting::count,
            reserved_description};
    return fill (rows, live_reals);
}();

constexpr std::array<IntParameter, KLV_INTEGER_PARAMETERS> int_parameters = [] {
    std::array<IntParameter, KLV_INTEGER_PARAMETERS> rows{};
    for (std::size_t i = 0; i < rows.size (); ++i)
        rows[i] = {
            static_cast<std::int32_t> (i), int_names[i].data (), 0, 0, 0, Group::none, IntSetting::count,
            reserved_description};
    return fill (rows, live_ints);
}();

constexpr std::array<TextParameter, KLV_STRING_PARAMETERS> text_parameters = [] {
    std::array<TextParameter, KLV_STRING_PARAMETERS> rows{};
    for (std::size_t i = 0; i < rows.size (); ++i)
        rows[i] = {static_cast<std::int32_t> (i), text_names[i].data (), "", TextSetting::count,
                   reserved_description};
    return fill (rows, live_texts);
}();

static_assert (sizeof (real_parameters) / sizeof (RealParameter) == 62);
static_assert (sizeof (int_parameters) / sizeof (IntParameter) == 190);
static_assert (sizeof (text_parameters) / sizeof (TextParameter) == 25);
static_assert (real_parameters[10].drives == RealSetting::bound_infinity);
static_assert (real_parameters[15].drives == RealSetting::fixing_tolerance);
static_assert (text_parameters[1].drives == TextSetting::data_file);

template <class Rows>
static consteval bool ranges_hold_defaults (const Rows& rows)
{
    return std::ranges::all_of (rows, [] (const auto& row) {
        return row.smallest <= row.fallback && row.fallback <= row.largest && row.smallest <= row.largest;
    });
}
static_assert (ranges_hold_defaults (real_parameters) && ranges_hold_defaults (int_parameters));

// A setting that no row drives, or two rows, does not compile.
template <class Setting, class Rows>
static consteval auto numbers_by_setting (const Rows& rows)
{
    constexpr std::size_t count = static_cast<std::size_t> (Setting::count);
    std::array<std::uint8_t, count> numbers{};
    std::array<int, count> drivers{};
    for (std::size_t i = 0; i < rows.size (); ++i)
        if (!rows[i].reserved ()) {
            numbers[static_cast<std::size_t> (rows[i].drives)] = static_cast<std::uint8_t> (i);
            ++drivers[static_cast<std::size_t> (rows[i].drives)];
        }
    for (const int found : drivers)
        if (found != 1)
            throw "each setting needs exactly one parameter";
    return numbers;
}

static constexpr auto real_numbers = numbers_by_setting<RealSetting> (real_parameters);
static constexpr auto int_numbers = numbers_by_setting<IntSetting> (int_parameters);
static constexpr auto text_numbers = numbers_by_setting<TextSetting> (text_parameters);

std::size_t parameter_number (RealSetting setting)
{
    return real_numbers[static_cast<std::size_t> (setting)];
}

std::size_t parameter_number (IntSetting setting)
{
    return int_numbers[static_cast<std::size_t> (setting)];
}

std::size_t parameter_number (TextSetting setting)
{
    return text_numbers[static_cast<std::size_t> (setting)];
}

static constexpr auto reals_by_name = order_by_name<real_parameters.size ()> (real_parameters);
static constexpr auto ints_by_name = order_by_name<int_parameters.size ()> (int_parameters);
static constexpr auto texts_by_name = order_by_name<text_parameters.size ()> (text_parameters);

ParameterPlace find_parameter (std::string_view name)
{
    if (const auto number = find_by_name (reals_by_name, real_parameters, name))
        return {KLV_PAR_DOUBLE, *number};
    if (const auto number = find_by_name (ints_by_name, int_parameters, name))
        return {KLV_PAR_INTEGER, *number};
    if (const auto number = find_by_name (texts_by_name, text_parameters, name))
        return {KLV_PAR_STRING, *number};
    return {};
}

}
