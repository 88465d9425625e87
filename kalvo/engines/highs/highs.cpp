#include "kalvo/engines/highs/highs.h"

#include "kalvo/engines/highs/api.h"
#include "kalvo/engines/highs/listener.h"
#include "kalvo/task/text.h"

#include <algorithm>
#include <cmath>

namespace klv::highs {

static_assert (sizeof (HighsInt) == sizeof (std::int32_t));

// ---- Options that take a setting's value as it is, with the same default; a negative limit is none -------------------------

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
    {IntSetting::presolve_reduction_limit, "presolve_reduction_limit"},
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

// What the engine calls the values of a setting, in their order; the first is the default.
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

// ---- One problem in the engine ---------------------------------------------------------------------------------------------

class Session {
public:
    Session (const Job& job, const StopFlag& stop, EventChannel& channel)
        : job_ (job), listener_ (job, stop, channel), handle_ (api ().create ())
    {
        if (handle_ == nullptr)
            throw std::bad_alloc ();
    }
    Session (const Session&) = delete;
    Session& operator= (const Session&) = delete;
    ~Session () { api ().destroy (handle_); }

    Claims solve ();

private:
    const Problem& problem () const { return *job_.problem->stated; }
    bool integers () const { return job_.method == Method::mixed_integer; }
    bool parallel_simplex () const
    {
        return job_.method == Method::dual_simplex &&
               job_.settings->get (IntSetting::simplex_parallel) != KLV_OFF;
    }

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
    void note (HighsInt status) { refused_option_ = refused_option_ || status == kHighsStatusError; }

    void set_options ();
    void set_method ();
    void set_plain_options ();
    void set_limits ();
    bool pass_problem ();
    void pass_start ();
    void pass_known_values (const std::vector<double>& x);
    Outcome run ();
    Outcome outcome (HighsInt model_status) const;
    void take_point (Claims& claims) const;
    void take_basis (Claims& claims) const;
    void take_figures (Claims& claims) const;
    void look_for_ray (Claims& claims);
    std::int64_t info (const char* name) const;

    const Job& job_;
    Listener listener_;
    void* handle_;
    bool refused_option_ = false;
    bool presolved_ = true;
    std::string warning_;
};

void Session::set_method ()
{
    const Parameters& settings = *job_.settings;
    switch (job_.method) {
    case Method::primal_simplex:
        set ("solver", "simplex");
        set ("simplex_strategy", HighsInt{4});
        break;
    case Method::dual_simplex:
        set ("solver", "simplex");
        if (parallel_simplex ()) {
            set ("simplex_strategy", HighsInt{3});
            set ("parallel", "on");
        }
        break;
    case Method::interior_point:
        set ("run_crossover", "off");
        // Refused where the library's extras are missing.
        if (settings.get (IntSetting::interior_method) != KLV_INTPNT_METHOD_FACTORIZATION)
            set ("solver", "ipx");
        else if (api ().setStringOptionValue (handle_, "solver", "hipo") != kHighsStatusOk) {
            set ("solver", "ipx");
            warning_ = "The interior-point method by factorisation needs a file that is missing; the "
                       "iterative one takes its place.";
        }
        break;
    case Method::mixed_integer:
        if (settings.get (IntSetting::integer_parallel) != KLV_OFF)
            set ("parallel", "on");
        break;
    }
}

// Only what differs from the default: an option is found by comparing all names.
void Session::set_plain_options ()
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

void Session::set_options ()
{
    const Parameters& settings = *job_.settings;
    set ("log_to_console", false);
    set_method ();
    set_plain_options ();

    const std::int32_t presolve = settings.get (IntSetting::presolve);
    presolved_ = job_.reformulate && presolve != KLV_PRESOLVE_OFF && (!job_.start || integers ());
    set ("presolve", !presolved_ ? "off" : presolve == KLV_PRESOLVE_ON ? "on" : "choose");
    const std::int32_t scaling = settings.get (IntSetting::scaling);
    if (!job_.reformulate || scaling != KLV_SCALING_AUTOMATIC)
        set ("simplex_scale_strategy", HighsInt{job_.reformulate ? scaling : KLV_SCALING_OFF});
    const HighsInt pricing = settings.get (IntSetting::simplex_pricing) - 1;    // ours start with "choose"
    set ("simplex_dual_edge_weight_strategy", pricing);
    // Its exact weights for the primal method print lines of their own on the process's standard output.
    set ("simplex_primal_edge_weight_strategy", std::min (pricing, HighsInt{KLV_PRICING_DEVEX - 1}));

    set ("threads", HighsInt{job_.threads});
    set ("random_seed", HighsInt{settings.get (IntSetting::random_seed)});
    if (job_.problem->smallest_entry <= default_smallest_entry)
        set ("small_matrix_value", smallest_entry);

    // The engine's tolerances are absolute and on the scaled problem: it is asked for more than is checked.
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

void Session::set_limits ()
{
    const Parameters& settings = *job_.settings;
    const auto limit = [&] (const char* option, IntSetting setting, std::int32_t smallest) {
        if (const std::int32_t value = settings.get (setting); value >= 0)
            set (option, HighsInt{std::max (value, smallest)});
    };
    if (job_.seconds < infinity)
        set ("time_limit", job_.seconds);
    if (integers ()) {
        limit ("mip_max_nodes", IntSetting::node_limit, 0);
        limit ("mip_max_improving_sols", IntSetting::solution_limit, 1);
    } else {
        limit ("simplex_iteration_limit", IntSetting::simplex_iteration_limit, 0);
        limit ("ipm_iteration_limit", IntSetting::interior_iteration_limit, 0);
    }
    // A worsening dual objective that passes the bound, or an integer point that reaches the target.
    if (const double objective = settings.get (RealSetting::objective_limit); std::isfinite (objective))
        set (integers () ? "objective_target" : "objective_bound",
             is_mirrored (job_) ? -objective : objective);
}

static std::vector<double> negated (std::vector<double> values)
{
    for (double& value : values)
        value = -value;
    return values;
}

bool Session::pass_problem ()
{
    const LinearProblem& lowered = *job_.problem;
    const ColumnMatrix& matrix = problem ().matrix;
    std::vector<HighsInt> types;
    if (integers ())
        types.assign (problem ().integer.begin (), problem ().integer.end ());
    const bool mirrored = is_mirrored (job_);
    const bool maximized = problem ().sense == KLV_SENSE_MAXIMIZE && !mirrored;
    const std::vector<double> mirrored_cost = mirrored ? negated (problem ().cost) : std::vector<double> ();
    return api ().passModel (
               handle_, problem ().variables (), problem ().constraints (),
               static_cast<HighsInt> (matrix.entries ()), 0, kHighsMatrixFormatColwise,
               kHighsHessianFormatTriangular, maximized ? kHighsObjSenseMaximize : kHighsObjSenseMinimize,
               mirrored ? -problem ().constant : problem ().constant,
               mirrored ? mirrored_cost.data () : problem ().cost.data (), lowered.columns.lower (),
               lowered.columns.upper (), lowered.rows.lower (), lowered.rows.upper (),
               matrix.starts ().data (), matrix.rows ().data (), matrix.values ().data (), nullptr, nullptr,
               nullptr, types.empty () ? nullptr : types.data ()) != kHighsStatusError;
}

// Nonbasic items find their place by themselves where the key does not say it.
static std::vector<HighsInt> statuses_from (const std::vector<std::int32_t>& keys)
{
    std::vector<HighsInt> statuses (keys.size ());
    std::ranges::transform (keys, statuses.begin (), [] (std::int32_t key) {
        return key == KLV_SK_BASIC   ? kHighsBasisStatusBasic
               : key == KLV_SK_LOWER ? kHighsBasisStatusLower
               : key == KLV_SK_UPPER ? kHighsBasisStatusUpper
                                     : kHighsBasisStatusNonbasic;
    });
    return statuses;
}

// The known values only: the engine would take a NaN for a value.
void Session::pass_known_values (const std::vector<double>& x)
{
    std::vector<HighsInt> index;
    std::vector<double> value;
    for (std::size_t j = 0; j < x.size (); ++j)
        if (!std::isnan (x[j])) {
            index.push_back (static_cast<HighsInt> (j));
            value.push_back (x[j]);
        }
    api ().setSparseSolution (handle_, static_cast<HighsInt> (index.size ()), index.data (), value.data ());
}

// What the engine makes of a start, or that it refuses it, is its own affair: the answer is checked.
void Session::pass_start ()
{
    if (!job_.start)
        return;
    StartPoint start = *job_.start;
    if (is_mirrored (job_)) {
        start.y = negated (std::move (start.y));
        start.reduced_cost = negated (std::move (start.reduced_cost));
    }
    const auto data = [] (const std::vector<double>& values) {
        return values.empty () ? nullptr : values.data ();
    };
    if (integers ())
        pass_known_values (start.x);
    else if (!start.column_key.empty ())
        api ().setBasis (handle_, statuses_from (start.column_key).data (),
                         statuses_from (start.row_key).data ());
    else
        api ().setSolution (handle_, data (start.x), data (start.activity), data (start.reduced_cost),
                            data (start.y));
}

std::int64_t Session::info (const char* name) const
{
    HighsInt value = 0;
    if (api ().getIntInfoValue (handle_, name, &value) == kHighsStatusOk)
        return value;
    std::int64_t long_value = 0;
    if (api ().getInt64InfoValue (handle_, name, &long_value) == kHighsStatusOk)
        return long_value;
    return 0;
}

Outcome Session::outcome (HighsInt model_status) const
{
    if (model_status == kHighsModelStatusOptimal)
        return Outcome::optimal;
    if (model_status == kHighsModelStatusInfeasible)
        return Outcome::infeasible;
    if (model_status == kHighsModelStatusUnbounded)
        return Outcome::unbounded;
    if (model_status == kHighsModelStatusUnboundedOrInfeasible)
        return Outcome::infeasible_or_unbounded;
    if (model_status == kHighsModelStatusObjectiveBound || model_status == kHighsModelStatusObjectiveTarget)
        return Outcome::objective_limit;
    if (model_status == kHighsModelStatusTimeLimit)
        return Outcome::time_limit;
    if (model_status == kHighsModelStatusIterationLimit)
        return Outcome::iteration_limit;
    if (model_status == kHighsModelStatusSolutionLimit) {
        // One status stands for the limits on nodes and on solutions.
        const std::int32_t most = job_.settings->get (IntSetting::solution_limit);
        return most >= 0 && listener_.solutions () >= most ? Outcome::solution_limit : Outcome::node_limit;
    }
    if (model_status == kHighsModelStatusInterrupt)
        return Outcome::stopped;
    return model_status == kHighsModelStatusUnknown ? Outcome::unknown : Outcome::failed;
}

Outcome Session::run ()
{
    api ().run (handle_);    // its answer adds nothing to the model status
    return outcome (api ().getModelStatus (handle_));
}

// After a stop the engine knows nothing of its point's quality, and where it has no point it hands out zeros.
void Session::take_point (Claims& claims) const
{
    const HighsInt status = static_cast<HighsInt> (info ("primal_solution_status"));
    if (integers () && status != kHighsSolutionStatusFeasible)
        return;
    claims.x.resize (static_cast<std::size_t> (problem ().variables ()));
    if (!integers ()) {
        claims.y.resize (static_cast<std::size_t> (problem ().constraints ()));
        claims.reduced_cost.resize (claims.x.size ());
    }
    const bool found =
        api ().getSolution (handle_, claims.x.data (),
                            claims.reduced_cost.empty () ? nullptr : claims.reduced_cost.data (), nullptr,
                            claims.y.empty () ? nullptr : claims.y.data ()) == kHighsStatusOk;
    const bool zeros = std::ranges::all_of (claims.x, [] (double value) { return value == 0; });
    if (!found || (status == kHighsSolutionStatusNone && zeros))
        claims.x = claims.y = claims.reduced_cost = {};
    if (is_mirrored (job_)) {
        claims.y = negated (std::move (claims.y));
        claims.reduced_cost = negated (std::move (claims.reduced_cost));
    }
}

static std::vector<std::int32_t> keys_from (const std::vector<HighsInt>& statuses, const Bounds& bounds)
{
    std::vector<std::int32_t> keys (statuses.size ());
    for (std::size_t i = 0; i < keys.size (); ++i) {
        const bool fixed = bounds.lower[i] == bounds.upper[i];
        keys[i] = statuses[i] == kHighsBasisStatusBasic   ? KLV_SK_BASIC
                  : fixed                                 ? KLV_SK_FIXED
                  : statuses[i] == kHighsBasisStatusLower ? KLV_SK_LOWER
                  : statuses[i] == kHighsBasisStatusUpper ? KLV_SK_UPPER
                                                          : KLV_SK_SUPERBASIC;
    }
    return keys;
}

void Session::take_basis (Claims& claims) const
{
    if (integers () || info ("basis_validity") != kHighsBasisValidityValid)
        return;
    std::vector<HighsInt> columns (static_cast<std::size_t> (problem ().variables ()));
    std::vector<HighsInt> rows (static_cast<std::size_t> (problem ().constraints ()));
    if (api ().getBasis (handle_, columns.data (), rows.data ()) != kHighsStatusOk)
        return;
    claims.column_key = keys_from (columns, problem ().variable);
    claims.row_key = keys_from (rows, problem ().constraint);
}

void Session::take_figures (Claims& claims) const
{
    claims.simplex_iterations = std::max<std::int64_t> (info ("simplex_iteration_count"), 0);
    claims.interior_iterations = std::max<std::int64_t> (info ("ipm_iteration_count"), 0);
    if (!integers ())
        return;
    claims.nodes = std::max<std::int64_t> (info ("mip_node_count"), 0);
    claims.solutions = listener_.solutions ();
    claims.has_best_bound =
        api ().getDoubleInfoValue (handle_, "mip_dual_bound", &claims.best_bound) == kHighsStatusOk;
}

// Rays are those of the dual simplex method on the problem as it was passed, its types left aside. The primal one leaves
// none of infeasibility.
void Session::look_for_ray (Claims& claims)
{
    const bool solved_so = !presolved_ && job_.method == Method::dual_simplex && !parallel_simplex () &&
                           claims.outcome != Outcome::infeasible_or_unbounded;
    Outcome answer = claims.outcome;
    if (!solved_so) {
        listener_.begin (KLV_CALLER_CERTIFICATE);
        set ("solver", "simplex");
        set ("simplex_strategy", HighsInt{1});
        set ("presolve", "off");
        if (integers ())
            set ("solve_relaxation", true);
        answer = run ();
        claims.simplex_iterations += std::max<std::int64_t> (info ("simplex_iteration_count"), 0);
    }

    HighsInt has_ray = 0;
    if (answer == Outcome::infeasible) {
        claims.outcome = Outcome::infeasible;
        claims.dual_ray.resize (static_cast<std::size_t> (problem ().constraints ()));
        if (api ().getDualRay (handle_, &has_ray, claims.dual_ray.data ()) == kHighsStatusError ||
            has_ray == 0)
            claims.dual_ray.clear ();
    } else if (answer == Outcome::unbounded) {
        claims.primal_ray.resize (static_cast<std::size_t> (problem ().variables ()));
        if (api ().getPrimalRay (handle_, &has_ray, claims.primal_ray.data ()) == kHighsStatusError ||
            has_ray == 0)
            claims.primal_ray.clear ();
        // An unbounded relaxation says nothing of a search that found no point.
        if (!integers () || claims.outcome != Outcome::infeasible)
            claims.outcome = Outcome::unbounded;
        else
            claims.primal_ray.clear ();
    } else if (!integers ()) {
        // The first answer was wrong, or this one was stopped: what came last is what there is.
        claims.outcome = answer;
        take_point (claims);
        take_basis (claims);
    }
}

Claims Session::solve ()
{
    Claims claims;
    listener_.begin (job_.finishes () ? KLV_CALLER_SIMPLEX_FINISH : KLV_CALLER_PRESOLVE);
    set_options ();
    claims.warning = warning_;
    if (refused_option_) {
        claims.outcome = Outcome::failed;
        claims.message = "the engine refused a setting";
        return claims;
    }
    api ().setCallback (handle_, Listener::called, &listener_);
    for (const HighsInt type :
         {kHighsCallbackLogging, kHighsCallbackSimplexInterrupt, kHighsCallbackIpmInterrupt,
          kHighsCallbackMipImprovingSolution, kHighsCallbackMipLogging, kHighsCallbackMipInterrupt})
        api ().startCallback (handle_, type);
    if (!pass_problem ()) {
        claims.outcome = Outcome::failed;
        claims.message = text ("the engine refused the problem: ", listener_.last_error ());
        return claims;
    }
    pass_start ();
    if (listener_.stopped ()) {
        claims.outcome = Outcome::stopped;
        return claims;
    }
    claims.outcome = run ();
    take_figures (claims);
    if (claims.outcome == Outcome::infeasible || claims.outcome == Outcome::unbounded ||
        claims.outcome == Outcome::infeasible_or_unbounded) {
        if (!listener_.stopped ())
            look_for_ray (claims);
    } else if (claims.outcome != Outcome::failed) {
        take_point (claims);
        take_basis (claims);
    } else
        claims.message = text ("the engine ended with an error: ", listener_.last_error ());
    return claims;
}

class Highs final : public Engine {
public:
    const char* name () const override { return "HiGHS 1.15.1"; }
    bool can (Method) const override { return true; }
    std::string load () override { return load_api (); }
    Claims run (const Job& job, const StopFlag& stop, EventChannel& channel) override
    {
        Session session (job, stop, channel);
        return session.solve ();
    }
};

std::shared_ptr<Engine> make_engine ()
{
    return std::make_shared<Highs> ();
}

}
