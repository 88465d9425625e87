#include "kalvo/engines/highs/options.h"

#include "kalvo/engines/highs/api.h"
#include "kalvo/engines/highs/highs.h"
#include "kalvo/engines/highs/listener.h"

#include <algorithm>
#include <cmath>

namespace klv::highs {

// ---- Options that equal a setting, default included -------------------------

template <class Setting>
struct Option {
    Setting setting;
    const char* name;
};

constexpr Option<IntSetting> switches[] = {
    {IntSetting::symmetry, "mip_detect_symmetry"},
    {IntSetting::restarts, "mip_allow_restart"},
    {IntSetting::cuts_at_nodes, "mip_allow_cut_separation_at_nodes"},
    {IntSetting::feasibility_jump, "mip_heuristic_run_feasibility_jump"},
    {IntSetting::relaxation_enforced_search, "mip_heuristic_run_rens"},
    {IntSetting::relaxation_induced_search, "mip_heuristic_run_rins"},
    {IntSetting::reduced_cost_search, "mip_heuristic_run_root_reduced_cost"},
    {IntSetting::zi_round, "mip_heuristic_run_zi_round"},
    {IntSetting::shifting, "mip_heuristic_run_shifting"},
};

constexpr Option<IntSetting> numbers[] = {
    {IntSetting::presolve_fill_limit, "presolve_substitution_maxfillin"},
    {IntSetting::scaling_limit, "allowed_matrix_scale_factor"},
    {IntSetting::simplex_update_limit, "simplex_update_limit"},
    {IntSetting::interior_dualization, "ipx_dualize_strategy"},
    {IntSetting::leaf_limit, "mip_max_leaves"},
    {IntSetting::cut_age_limit, "mip_pool_age_limit"},
    {IntSetting::cut_pool_size, "mip_pool_soft_limit"},
    {IntSetting::row_age_limit, "mip_lp_age_limit"},
    {IntSetting::branching_reliability, "mip_pscost_minreliable"},
};

constexpr Option<RealSetting> factors[] = {
    {RealSetting::cost_perturbation, "dual_simplex_cost_perturbation_multiplier"},
    {RealSetting::bound_perturbation, "primal_simplex_bound_perturbation_multiplier"},
    {RealSetting::pivot_threshold, "factor_pivot_threshold"},
    {RealSetting::heuristic_effort, "mip_heuristic_effort"},
    {RealSetting::integer_log_interval, "mip_min_logging_interval"},
};

// The engine's words for the values of a setting, by value; the first word is the engine's default.
struct Choice {
    IntSetting setting;
    const char* name;
    const char* words[4];
};

constexpr Choice choices[] = {
    {IntSetting::newton_system, "hipo_system", {"choose", "augmented", "normaleq"}},
    {IntSetting::interior_ordering, "hipo_ordering", {"choose", "amd", "metis", "rcm"}},
    {IntSetting::relaxation_method, "mip_lp_solver", {"choose", "simplex", "ipx"}},
};

// ---- Setting options -----------------------------------------------------------------------------------------------------------

class Options {
public:
    Options (void* handle, const Job& job) : handle_ (handle), job_ (job) {}

    void set_all ();
    const OptionsSet& result () const { return result_; }

private:
    bool integers () const { return job_.method == Method::mixed_integer; }
    const LinearForm& form () const { return std::get<LinearForm> (*job_.form); }

    void set (const char* option, bool value) { note (api ().setBoolOptionValue (handle_, option, value)); }
    void set (const char* option, HighsInt value)
    {
        note (api ().setIntOptionValue (handle_, option, value));
    }
    void set (const char* option, double value)
    {
        note (api ().setDoubleOptionValue (handle_, option, value));
    }
    void set (const char* option, const char* value)
    {
        note (api ().setStringOptionValue (handle_, option, value));
    }
    void note (HighsInt status) { result_.refused = result_.refused || status == kHighsStatusError; }

    void set_method ();
    void set_plain_options ();
    void set_limits ();

    void* handle_;
    const Job& job_;
    OptionsSet result_;
};

// An interior-point run that has not ended after this many iterations does not end by itself.
constexpr HighsInt most_interior_iterations = 500;

// Entries, rows and columns. Simplex solves a smaller problem in the time that presolve would take.
constexpr std::size_t worth_presolving = 3000;

bool is_presolved (const Job& job)
{
    const std::int32_t presolve = job.settings->get (IntSetting::presolve);
    if (!job.reformulate || presolve == KLV_PRESOLVE_OFF || job.goal == Goal::prove)
        return false;
    if (job.method == Method::mixed_integer)
        return true;
    return !job.start && (presolve == KLV_PRESOLVE_ON || is_interior (job.method) ||
                          std::get<LinearForm> (*job.form).size () >= worth_presolving);
}

void Options::set_method ()
{
    const Parameters& settings = *job_.settings;
    switch (job_.method) {
    case Method::primal_simplex:
        set ("solver", "simplex");
        set ("simplex_strategy", HighsInt{4});
        break;
    case Method::dual_simplex:
        set ("solver", "simplex");
        if (job_.goal == Goal::optimise && is_parallel_simplex (settings, job_.method)) {
            set ("simplex_strategy", HighsInt{3});
            set ("parallel", "on");
        }
        break;
    case Method::interior_point:
    case Method::crossover:
        set ("run_crossover", job_.method == Method::crossover ? "on" : "off");
        result_.interior_method = KLV_INTPNT_METHOD_ITERATIVE;
        set ("solver", "ipx");
        if (settings.get (IntSetting::interior_method) != KLV_INTPNT_METHOD_FACTORIZATION)
            break;
        // The engine refuses this value when the file of its extras is missing.
        if (api ().setStringOptionValue (handle_, "solver", "hipo") == kHighsStatusOk)
            result_.interior_method = KLV_INTPNT_METHOD_FACTORIZATION;
        else
            result_.warning = "The interior-point method by factorisation needs a file that is missing; the "
                              "iterative one takes its place.";
        break;
    case Method::mixed_integer:
        if (settings.get (IntSetting::integer_parallel) != KLV_OFF)
            set ("parallel", "on");
        break;
    case Method::quadratic:
    case Method::conic:
    case Method::semidefinite:
        break;    // the engine has none of them
    }
}

// Passes only what differs from the default: the engine finds an option by comparing names one after another.
void Options::set_plain_options ()
{
    const Parameters& settings = *job_.settings;
    const auto changed = [&] (const auto& rows, auto setting) {
        return settings.get (setting) != rows[parameter_number (setting)].fallback;
    };
    for (const auto& [setting, name] : switches)
        if (changed (int_parameters, setting))
            set (name, settings.get (setting) != KLV_OFF);
    for (const auto& [setting, name] : numbers)
        if (changed (int_parameters, setting))
            set (name, HighsInt{settings.get (setting)});
    for (const auto& [setting, name] : factors)
        if (changed (real_parameters, setting))
            set (name, settings.get (setting));
    for (const auto& [setting, name, words] : choices)
        if (changed (int_parameters, setting))
            set (name, words[settings.get (setting)]);
}

void Options::set_all ()
{
    const Parameters& settings = *job_.settings;
    set ("log_to_console", false);
    set_method ();
    if (job_.goal == Goal::prove && form ().integers > 0)
        set ("solve_relaxation", true);
    set_plain_options ();

    const std::int32_t presolve = settings.get (IntSetting::presolve);
    set ("presolve", !is_presolved (job_) ? "off" : presolve == KLV_PRESOLVE_ON ? "on" : "choose");
    const std::int32_t scaling = settings.get (IntSetting::scaling);
    if (!job_.reformulate || scaling != KLV_SCALING_AUTOMATIC)
        set ("simplex_scale_strategy", HighsInt{job_.reformulate ? scaling : KLV_SCALING_OFF});
    const HighsInt pricing =
        settings.get (IntSetting::simplex_pricing) - 1;    // the engine's "choose" is -1, ours is 0
    set ("simplex_dual_edge_weight_strategy", pricing);
    // With exact steepest-edge weights the engine's primal method prints on the process's standard output.
    set ("simplex_primal_edge_weight_strategy", std::min (pricing, HighsInt{KLV_PRICING_DEVEX - 1}));

    set ("threads", HighsInt{job_.budget.threads});
    set ("random_seed", HighsInt{settings.get (IntSetting::random_seed)});
    if (form ().smallest_entry <= default_smallest_entry)
        set ("small_matrix_value", smallest_entry);

    // The engine's tolerances are absolute and hold for the scaled problem: asking for finer ones than the check's makes up
    // for that.
    const auto finer = [] (double tolerance, double factor) {
        return std::clamp (factor * tolerance, 1e-10, 1e-2);
    };
    set ("primal_feasibility_tolerance", finer (settings.get (RealSetting::primal_tolerance), 0.1));
    set ("dual_feasibility_tolerance", finer (settings.get (RealSetting::dual_tolerance), 0.1));
    const double interior_tolerance = settings.get (RealSetting::interior_tolerance);
    set ("ipm_optimality_tolerance",
         std::clamp (interior_tolerance > 0 ? interior_tolerance
                                            : 0.01 * settings.get (RealSetting::gap_tolerance),
                     1e-12, 1e-2));
    if (integers ()) {
        set ("mip_feasibility_tolerance", settings.get (RealSetting::integer_tolerance));
        set ("mip_rel_gap", settings.get (RealSetting::integer_relative_gap));
        set ("mip_abs_gap", settings.get (RealSetting::integer_absolute_gap));
    }
    set_limits ();
}

void Options::set_limits ()
{
    const Parameters& settings = *job_.settings;
    const auto limit = [&] (const char* option, IntSetting setting, std::int32_t smallest) {
        if (const std::int32_t value = settings.get (setting); value >= 0)
            set (option, HighsInt{std::max (value, smallest)});
    };
    if (job_.budget.deadline)
        set ("time_limit", std::max (seconds_between (Clock::now (), *job_.budget.deadline), 0.0));
    if (integers ()) {
        limit ("mip_max_nodes", IntSetting::node_limit, 0);
        limit ("mip_max_improving_sols", IntSetting::solution_limit, 1);
    } else if (job_.goal == Goal::optimise) {
        limit ("simplex_iteration_limit", IntSetting::simplex_iteration_limit, 0);
        const std::int32_t interior = settings.get (IntSetting::interior_iteration_limit);
        set ("ipm_iteration_limit", HighsInt{interior >= 0 ? interior : most_interior_iterations});
    }
    // Simplex ends when the dual objective passes the bound, the integer search when a point reaches the target.
    if (const double objective = settings.get (RealSetting::objective_limit); std::isfinite (objective))
        set (integers () ? "objective_target" : "objective_bound", form ().sign * objective);
}

OptionsSet set_options (void* handle, const Job& job)
{
    Options options (handle, job);
    options.set_all ();
    return options.result ();
}

}
