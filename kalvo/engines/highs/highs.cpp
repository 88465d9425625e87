#include "kalvo/engines/highs/highs.h"

#include "kalvo/engines/highs/api.h"
#include "kalvo/engines/highs/listener.h"
#include "kalvo/engines/highs/options.h"
#include "kalvo/model/text.h"

#include <algorithm>
#include <cmath>

namespace klv::highs {

static_assert (sizeof (HighsInt) == sizeof (std::int32_t));

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
    bool pass_problem ();
    void pass_start ();
    void pass_known_values (const std::vector<double>& x);
    Outcome run ();
    Outcome outcome (HighsInt model_status) const;
    void take_point (Claims& claims) const;
    void take_basis (Claims& claims) const;
    void take_figures (Claims& claims);
    void look_for_ray (Claims& claims);
    std::int64_t info (const char* name) const;

    const Job& job_;
    Listener listener_;
    void* handle_;
};

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

// Counts that a run did not use are -1.
std::int64_t Session::info (const char* name) const
{
    HighsInt value = 0;
    api ().getIntInfoValue (handle_, name, &value);
    return std::max (value, 0);
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

void Session::take_figures (Claims& claims)
{
    claims.simplex_iterations = info ("simplex_iteration_count");
    claims.interior_iterations = info ("ipm_iteration_count");
    std::int64_t nodes = 0;
    if (integers ())
        api ().getInt64InfoValue (handle_, "mip_node_count", &nodes);
    listener_.end (std::max<std::int64_t> (nodes, 0));
    if (!integers ())
        return;
    claims.has_best_bound =
        api ().getDoubleInfoValue (handle_, "mip_dual_bound", &claims.best_bound) == kHighsStatusOk;
}

// Rays are those of the dual simplex method on the problem as it was passed, its types left aside. The primal one leaves
// none of infeasibility.
void Session::look_for_ray (Claims& claims)
{
    const bool solved_so = !is_presolved (job_) && job_.method == Method::dual_simplex &&
                           !is_parallel_simplex (*job_.settings, job_.method) &&
                           claims.outcome != Outcome::infeasible_or_unbounded;
    Outcome answer = claims.outcome;
    if (!solved_so) {
        listener_.begin (KLV_CALLER_CERTIFICATE);
        set_options_for_ray (handle_, integers ());
        answer = run ();
        claims.simplex_iterations += info ("simplex_iteration_count");
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
    const OptionsSet options = set_options (handle_, job_);
    claims.warning = options.warning;
    claims.interior_method = options.interior_method;
    if (options.refused) {
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
