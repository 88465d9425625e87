#include "kalvo/engines/highs/highs.h"

#include "kalvo/engines/highs/api.h"
#include "kalvo/engines/highs/listener.h"
#include "kalvo/engines/highs/options.h"
#include "kalvo/model/text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv::highs {

static_assert (sizeof (HighsInt) == sizeof (std::int32_t));

constexpr std::size_t largest_of_spares =
    10'000;    // entries, rows and columns: what is kept of a larger one is too much

// ---- One problem in the engine ---------------------------------------------------------------------------------------------

// An object that a session has left for the next one on its thread. Making one, and what the engine then makes for a thread, takes
// about as long as a small problem does. Objects for several threads are not left: the engine ties these to the first one.
class Spare {
public:
    Spare () = default;
    Spare (const Spare&) = delete;
    Spare& operator= (const Spare&) = delete;
    ~Spare ()
    {
        if (handle_ != nullptr)
            api ().destroy (handle_);
    }

    void* take ()
    {
        void* const handle = handle_ != nullptr ? std::exchange (handle_, nullptr) : api ().create ();
        return handle != nullptr ? handle : throw std::bad_alloc ();
    }
    void leave (void* handle, bool reusable)
    {
        if (reusable && handle != nullptr && handle_ == nullptr && api ().clear (handle) == kHighsStatusOk &&
            api ().zeroAllClocks (handle) == kHighsStatusOk)
            handle_ = handle;
        else
            api ().destroy (handle);
    }

private:
    void* handle_ = nullptr;
};

static thread_local Spare spare;

class Session final : public klv::Session {
public:
    explicit Session (std::shared_ptr<const Form> form)
        : whole_ (std::move (form)), form_ (std::get<LinearForm> (*whole_)), handle_ (spare.take ())
    {}
    ~Session () override
    {
        spare.leave (handle_, ended_well_ && most_threads_ == 1 && form_.size () < largest_of_spares);
    }

    Claims run (const Job& job, const StopFlag& stop, Events& events) override;

private:
    bool pass_problem (bool integers);
    void pass_start (const Job& job);
    void pass_known_values (const std::vector<double>& x);
    Outcome outcome (const Job& job, const Listener& listener) const;
    void take_answer (const Job& job, const Listener& listener, Claims& claims) const;
    void take_point (bool integers, Claims& claims) const;
    void take_basis (Claims& claims) const;
    void take_ray (Claims& claims) const;
    void take_figures (bool integers, Listener& listener, Claims& claims) const;
    std::int64_t info (const char* name) const;
    std::size_t columns () const { return static_cast<std::size_t> (form_.columns ()); }
    std::size_t rows () const { return static_cast<std::size_t> (form_.row_count ()); }

    std::shared_ptr<const Form> whole_;
    const LinearForm& form_;
    void* handle_;
    int most_threads_ = 1;
    bool passed_ = false;
    bool ended_well_ = false;    // the last run
    Search search_;    // figures of the last integer search, which the proof of its answer goes on reporting
};

// ---- Passing the problem -----------------------------------------------------------------------------------------------------------------------

bool Session::pass_problem (bool integers)
{
    const auto data = [] (const Values& values) { return values.get ().data (); };
    std::vector<HighsInt> types;
    if (integers)
        types.assign (form_.integer.begin (), form_.integer.end ());
    return api ().passModel (handle_, form_.columns (), form_.row_count (),
                             static_cast<HighsInt> (form_.entries.size ()), 0, kHighsMatrixFormatColwise,
                             kHighsHessianFormatTriangular, kHighsObjSenseMinimize, form_.constant,
                             data (form_.cost), data (form_.column_lower), data (form_.column_upper),
                             data (form_.row_lower), data (form_.row_upper), form_.starts.data (),
                             form_.rows.data (), form_.entries.data (), nullptr, nullptr, nullptr,
                             types.empty () ? nullptr : types.data ()) != kHighsStatusError;
}

// The engine itself chooses a bound for an item that is nonbasic without saying where.
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

// Passes known values only: the engine would take a NaN for a number.
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

// The engine may refuse a start or ignore it: the answer is checked either way.
void Session::pass_start (const Job& job)
{
    if (!job.start)
        return;
    const Start& start = *job.start;
    const auto data = [] (const std::vector<double>& values) {
        return values.empty () ? nullptr : values.data ();
    };
    if (job.method == Method::mixed_integer)
        pass_known_values (start.x);
    else if (!start.column_key.empty ())
        api ().setBasis (handle_, statuses_from (start.column_key).data (),
                         statuses_from (start.row_key).data ());
    else
        api ().setSolution (handle_, data (start.x), data (start.activity), data (start.reduced_cost),
                            data (start.y));
}

// ---- Taking the answer ----------------------------------------------------------------------------------------------------------------------

// The engine gives -1 for a count that the run did not use.
std::int64_t Session::info (const char* name) const
{
    HighsInt value = 0;
    api ().getIntInfoValue (handle_, name, &value);
    return std::max (value, 0);
}

Outcome Session::outcome (const Job& job, const Listener& listener) const
{
    switch (api ().getModelStatus (handle_)) {
    case kHighsModelStatusOptimal:
        return Outcome::optimal;
    case kHighsModelStatusInfeasible:
        return Outcome::infeasible;
    case kHighsModelStatusUnbounded:
        return Outcome::unbounded;
    case kHighsModelStatusUnboundedOrInfeasible:
        return Outcome::infeasible_or_unbounded;
    case kHighsModelStatusObjectiveBound:
    case kHighsModelStatusObjectiveTarget:
        return Outcome::objective_limit;
    case kHighsModelStatusTimeLimit:
        return Outcome::time_limit;
    case kHighsModelStatusIterationLimit:
        return is_interior (job.method) && job.settings->get (IntSetting::interior_iteration_limit) < 0
                   ? Outcome::unknown    // the limit is ours (most_interior_iterations), not the user's
                   : Outcome::iteration_limit;
    case kHighsModelStatusSolutionLimit: {
        // The engine has one status for the limits on nodes and on solutions.
        const std::int32_t most = job.settings->get (IntSetting::solution_limit);
        return most >= 0 && listener.solutions () >= most ? Outcome::solution_limit : Outcome::node_limit;
    }
    case kHighsModelStatusInterrupt:
        return Outcome::stopped;
    case kHighsModelStatusUnknown:
        return Outcome::unknown;
    default:
        return Outcome::failed;
    }
}

// After a stop the engine has no status for its point, and hands out zeros where it has no point.
void Session::take_point (bool integers, Claims& claims) const
{
    const auto status = static_cast<HighsInt> (info ("primal_solution_status"));
    if (integers && status != kHighsSolutionStatusFeasible)
        return;
    claims.x.resize (columns ());
    if (!integers) {
        claims.y.resize (rows ());
        claims.reduced_cost.resize (columns ());
    }
    const bool found =
        api ().getSolution (handle_, claims.x.data (),
                            claims.reduced_cost.empty () ? nullptr : claims.reduced_cost.data (), nullptr,
                            claims.y.empty () ? nullptr : claims.y.data ()) == kHighsStatusOk;
    const bool zeros = std::ranges::all_of (claims.x, [] (double value) { return value == 0; });
    const bool untouched = !integers &&
                           info ("simplex_iteration_count") + info ("ipm_iteration_count") == 0 &&
                           status != kHighsSolutionStatusFeasible;
    if (!found || (zeros && (status == kHighsSolutionStatusNone || untouched)))
        claims.x = claims.y = claims.reduced_cost = {};
}

static std::vector<std::int32_t> keys_from (const std::vector<HighsInt>& statuses, const Values& lower,
                                            const Values& upper)
{
    std::vector<std::int32_t> keys (statuses.size ());
    for (std::size_t i = 0; i < keys.size (); ++i) {
        const bool fixed = lower.get ()[i] == upper.get ()[i];
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
    if (info ("basis_validity") != kHighsBasisValidityValid)
        return;
    std::vector<HighsInt> of_columns (columns ()), of_rows (rows ());
    if (api ().getBasis (handle_, of_columns.data (), of_rows.data ()) != kHighsStatusOk)
        return;
    claims.column_key = keys_from (of_columns, form_.column_lower, form_.column_upper);
    claims.row_key = keys_from (of_rows, form_.row_lower, form_.row_upper);
}

// Only after dual simplex without presolve does the engine have a ray at hand; after any other run the query would solve the
// problem anew, which cannot be stopped.
void Session::take_ray (Claims& claims) const
{
    HighsInt has_ray = 0;
    const bool infeasible = claims.outcome == Outcome::infeasible;
    std::vector<double>& ray = infeasible ? claims.dual_ray : claims.primal_ray;
    ray.resize (infeasible ? rows () : columns ());
    const HighsInt status = infeasible ? api ().getDualRay (handle_, &has_ray, ray.data ())
                                       : api ().getPrimalRay (handle_, &has_ray, ray.data ());
    if (status == kHighsStatusError || has_ray == 0)
        ray.clear ();
}

void Session::take_figures (bool integers, Listener& listener, Claims& claims) const
{
    claims.simplex_iterations = info ("simplex_iteration_count");
    claims.interior_iterations = info ("ipm_iteration_count");
    claims.crossover_iterations = info ("crossover_iteration_count");
    std::int64_t nodes = 0;
    double bound = 0;
    if (integers) {
        api ().getInt64InfoValue (handle_, "mip_node_count", &nodes);
        listener.count_nodes (std::max<std::int64_t> (nodes, 0));
        if (api ().getDoubleInfoValue (handle_, "mip_dual_bound", &bound) == kHighsStatusOk)
            claims.bound = bound;
    }
    listener.end ();
}

// The primal method leaves none of infeasibility, and the parallel one none at all.
static bool leaves_ray (const Job& job, Outcome outcome)
{
    if (is_presolved (job) || !is_simplex (job.method))
        return false;
    return job.method == Method::dual_simplex
               ? job.goal == Goal::prove || !is_parallel_simplex (*job.settings, job.method)
               : outcome == Outcome::unbounded;
}

void Session::take_answer (const Job& job, const Listener& listener, Claims& claims) const
{
    const bool integers = job.method == Method::mixed_integer;
    switch (claims.outcome) {
    case Outcome::failed:
        claims.message = listener.last_error ().empty () ? std::string ("it gave no reason")
                                                         : text ("it said: ", listener.last_error ());
        return;
    case Outcome::infeasible:
    case Outcome::unbounded:
        if (leaves_ray (job, claims.outcome))
            take_ray (claims);
        return;
    case Outcome::infeasible_or_unbounded:
        return;
    default:
        take_point (integers, claims);
        if (!integers)
            take_basis (claims);
    }
}

Claims Session::run (const Job& job, const StopFlag& stop, Events& events)
{
    Claims claims;
    const auto failed = [&] (std::string why) {
        claims.outcome = Outcome::failed;
        claims.message = std::move (why);
        return std::move (claims);
    };
    const bool integers = job.method == Method::mixed_integer;
    ended_well_ = false;
    if (job.goal == Goal::optimise)
        search_ = {};
    Listener listener (job, stop, events, search_);
    listener.begin (job.goal == Goal::prove ? KLV_CALLER_CERTIFICATE : KLV_CALLER_PRESOLVE);
    if (passed_) {
        api ().resetOptions (handle_);
        api ().clearSolver (handle_);
        api ().zeroAllClocks (handle_);
    }
    // What an engine has made for one thread is of no use to several, and only a new object prints its version and licence.
    const bool needs_new = (job.budget.threads != 1 && most_threads_ == 1) ||
                           (!passed_ && job.settings->get (IntSetting::log_level) >= 3);
    if (needs_new) {
        api ().destroy (std::exchange (handle_, nullptr));
        handle_ = spare.take ();
        passed_ = false;
    }
    most_threads_ = std::max (most_threads_, job.budget.threads);
    const OptionsSet options = set_options (handle_, job);
    claims.warning = options.warning;
    claims.interior_method = options.interior_method;
    if (options.refused)
        return failed ("the engine refused a setting");
    api ().setCallback (handle_, Listener::called, &listener);
    for (const HighsInt type :
         {kHighsCallbackLogging, kHighsCallbackSimplexInterrupt, kHighsCallbackIpmInterrupt,
          kHighsCallbackMipImprovingSolution, kHighsCallbackMipLogging, kHighsCallbackMipInterrupt})
        api ().startCallback (handle_, type);
    if (!passed_ && !pass_problem (integers))
        return failed (text ("the engine refused the problem: ", listener.last_error ()));
    passed_ = true;
    pass_start (job);
    if (listener.stopped ()) {
        claims.outcome = Outcome::stopped;
        return claims;
    }
    api ().run (handle_);    // the code that it returns adds nothing to the model status
    claims.outcome = outcome (job, listener);
    take_figures (integers, listener, claims);
    search_ = listener.search ();
    take_answer (job, listener, claims);
    ended_well_ = claims.outcome != Outcome::failed;
    return claims;
}

class Highs final : public Engine {
public:
    const char* name () const override { return "HiGHS 1.15.1"; }
    bool has (Method method) const override { return is_linear (method); }
    Limits limits () const override
    {
        return {.infinite_bound = 1e20,
                .infinite_cost = 1e20,
                .largest_entry = 1e15,
                .smallest_entry = smallest_entry};
    }
    std::string refuses (const Form& form, Method, const Budget&) const override
    {
        return std::holds_alternative<LinearForm> (form) ? "" : "it solves linear problems only";
    }
    std::string load () override { return load_api (); }
    std::unique_ptr<klv::Session> begin (std::shared_ptr<const Form> form) override
    {
        return std::make_unique<Session> (std::move (form));
    }
};

std::shared_ptr<Engine> make_engine ()
{
    return std::make_shared<Highs> ();
}

}
