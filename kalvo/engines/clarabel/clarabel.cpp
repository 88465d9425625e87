#include "kalvo/engines/clarabel/clarabel.h"

#include "kalvo/engines/clarabel/shim/shim.h"
#include "kalvo/model/text.h"
#include "kalvo/task/memory.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv::clarabel {

constexpr std::int32_t most_iterations = 200;

class Reports {
public:
    Reports (const Job& job, const ConicForm& form, const Options& options, const StopFlag& stop,
             Events& events)
        : stop_ (stop),
          gap_ (options.acceptance * options.gap),
          residual_ (options.acceptance * options.residual),
          events_ (events),
          constant_ (form.constant),
          passes_text_on_ (job.settings->get (IntSetting::log_level) >= 3)
    {
        now_.caller = about (job.method).phase;
        now_.presolved = {form.row_count (), form.columns (),
                          static_cast<std::int64_t> (form.matrix.values.size ()), 0};
        events_.progress (now_);
    }

    // Whether the method was ended at a point that is to be accepted.
    bool is_at_best () const { return at_best_; }

    Listener listener () { return {this, take_iteration, passes_text_on_ ? take_text : nullptr}; }

private:
    static bool take_iteration (void* reports, const Iteration* now) noexcept
    {
        Reports& self = *static_cast<Reports*> (reports);
        self.now_.iterations = now->number;
        self.now_.has_primal = self.now_.has_dual = true;
        self.now_.primal_objective = now->primal_objective + self.constant_;
        self.now_.dual_objective = now->dual_objective + self.constant_;
        self.now_.primal_violation = now->primal_residual;
        self.now_.dual_violation = now->dual_residual;
        self.events_.progress (self.now_);
        self.events_.step (self.now_);
        self.at_best_ = self.falls_back (*now);
        return !self.at_best_ && !self.stop_.load (std::memory_order_relaxed);
    }

    // Near to singular, steps that close the gap further leave residuals that are worse each time.
    bool falls_back (const Iteration& now)
    {
        constexpr double much = 10;
        const double residual = std::max (now.primal_residual, now.dual_residual);
        const double gap = std::abs (now.primal_objective - now.dual_objective);
        least_residual_ = std::min (least_residual_, residual);
        return residual > much * least_residual_ && residual <= residual_ &&
               gap <= gap_ * std::max (1.0, std::abs (now.primal_objective));
    }

    static void take_text (void* reports, const char* lines, std::size_t length) noexcept
    {
        static_cast<Reports*> (reports)->events_.text ({lines, length});
    }

    const StopFlag& stop_;
    const double gap_, residual_;    // of a point that is to be accepted
    double least_residual_ = infinity;
    bool at_best_ = false;
    Events& events_;
    const double constant_;
    const bool passes_text_on_;
    Progress now_;
};

// ---- Passing the problem ------------------------------------------------------------------------------------------------

template <class Item>
static Array<Item> array (const std::vector<Item>& items)
{
    return {items.data (), items.size ()};
}

static Matrix matrix (const SparseColumns& columns)
{
    return {array (columns.starts), array (columns.rows), array (columns.values)};
}

// Finer tolerances than the check's make up for their being relative to norms.
static Options options_of (const Job& job)
{
    constexpr double acceptance = 1000;
    const Parameters& settings = *job.settings;
    const auto aim = [] (double accepted) { return std::clamp (accepted, 1e-12, 1e-2) / acceptance; };
    const double gap = settings.get (RealSetting::interior_tolerance);
    const double residual =
        std::min (settings.get (RealSetting::primal_tolerance), settings.get (RealSetting::dual_tolerance));
    const double regularization = settings.get (RealSetting::interior_regularization);
    const std::int32_t iterations = settings.get (IntSetting::interior_iteration_limit);
    return {.gap = aim (gap > 0 ? gap : 0.01 * settings.get (RealSetting::gap_tolerance)),
            .residual = aim (0.01 * residual),
            .certificate = aim (0.1 * residual),
            .acceptance = acceptance,
            .regularization = regularization > 0 ? regularization
                              : job.reformulate  ? 1e-8
                                                 : 1e-7,
            .shortest_step = job.patient ? 1e-3 : 0.1,
            .seconds = job.budget.deadline ? seconds_between (Clock::now (), *job.budget.deadline) : infinity,
            .iterations = static_cast<std::uint32_t> (iterations >= 0 ? iterations : most_iterations),
            .threads = static_cast<std::uint32_t> (std::max (job.budget.threads, 1)),
            .factorization = static_cast<Factorization> (settings.get (IntSetting::interior_factorization)),
            .equilibrates = job.reformulate};
}

// ---- Taking the answer ---------------------------------------------------------------------------------------------------

static Outcome outcome (Status status, const Job& job)
{
    switch (status) {
    case Status::solved:
    case Status::almost_solved:
        return Outcome::optimal;
    case Status::primal_infeasible:
    case Status::almost_primal_infeasible:
        return Outcome::infeasible;
    case Status::dual_infeasible:
    case Status::almost_dual_infeasible:
        return Outcome::unbounded;
    case Status::iteration_limit:
        return job.settings->get (IntSetting::interior_iteration_limit) < 0
                   ? Outcome::unknown    // the limit is ours, not the user's
                   : Outcome::iteration_limit;
    case Status::time_limit:
        return Outcome::time_limit;
    case Status::stopped:
        return Outcome::stopped;
    case Status::failed:
        return Outcome::failed;
    default:
        return Outcome::unknown;
    }
}

// A direction along which the linear function falls by 1; empty if it is none.
static std::vector<double> ray (const std::vector<double>& linear, std::vector<double>&& direction)
{
    double most = 0, change = 0;
    for (const double value : direction)
        most = std::max (most, std::abs (value));
    for (std::size_t i = 0; i < direction.size (); ++i)
        change += linear[i] * (direction[i] /= most);
    for (double& value : direction)
        value /= -change;
    if (!(change < 0) ||
        !std::ranges::all_of (direction, [] (double value) { return std::isfinite (value); }))
        direction.clear ();
    return std::move (direction);
}

static void take_answer (const ConicForm& form, std::vector<double>&& x, std::vector<double>&& z,
                         Claims& claims)
{
    const auto finite = [] (const std::vector<double>& values) {
        return std::ranges::all_of (values, [] (double value) { return std::isfinite (value); });
    };
    if (claims.outcome == Outcome::infeasible) {
        claims.dual_ray = ray (form.right, std::move (z));
        if (claims.dual_ray.empty ())
            claims.outcome = Outcome::unknown;
    } else if (claims.outcome == Outcome::unbounded) {
        claims.primal_ray = ray (form.cost, std::move (x));
        if (claims.primal_ray.empty ())
            claims.outcome = Outcome::unknown;
    } else if (finite (x) && finite (z)) {
        claims.x = std::move (x);
        claims.y = std::move (z);
    }
}

class Session final : public klv::Session {
public:
    explicit Session (std::shared_ptr<const Form> form)
        : whole_ (std::move (form)), form_ (std::get<ConicForm> (*whole_))
    {}

    Claims run (const Job& job, const StopFlag& stop, Events& events) override
    {
        Claims claims;
        if (stop.load (std::memory_order_relaxed)) {
            claims.outcome = Outcome::stopped;
            return claims;
        }
        const Options options = options_of (job);
        Reports reports (job, form_, options, stop, events);
        std::vector<double> x (form_.cost.size ()), z (form_.right.size ());
        const Problem problem{matrix (form_.quadratic), array (form_.cost), matrix (form_.matrix),
                              array (form_.right), array (form_.cones)};
        const Listener listener = reports.listener ();
        Answer answer{
            .x = x.data (), .z = z.data (), .status = Status::failed, .iterations = 0, .message = {}};
        clarabel_solve (&problem, &options, &listener, &answer);
        claims.outcome = reports.is_at_best () ? Outcome::optimal : outcome (answer.status, job);
        claims.interior_iterations = answer.iterations;
        if (claims.outcome == Outcome::failed)
            claims.message = text ("it said: ", answer.message);
        else
            take_answer (form_, std::move (x), std::move (z), claims);
        return claims;
    }

private:
    std::shared_ptr<const Form> whole_;
    const ConicForm& form_;
};

// A semidefinite cone of order n is a dense block of about n^2/2 rows. What the factorisation fills in elsewhere is not known before:
// the rest is what the matrices take without any.
static double megabytes (const ConicForm& form)
{
    double bytes = 200.0 * static_cast<double> (form.size ());
    for (const ElementaryCone& cone : form.cones)
        if (cone.kind == ConeKind::semidefinite)
            bytes += 13 * std::pow (cone.order, 4);
    return bytes / 1e6;
}

class Clarabel final : public Engine {
public:
    const char* name () const override { return "Clarabel 0.11.1"; }
    bool has (Method method) const override { return method == Method::conic; }
    Limits limits () const override
    {
        return {.infinite_bound = 1e20, .infinite_cost = 1e20, .largest_entry = 1e20};
    }
    std::string refuses (const Form& form, Method, const Budget&) const override
    {
        const auto* conic = std::get_if<ConicForm> (&form);
        if (conic == nullptr)
            return "it solves conic problems only";
        return lack_of_memory (megabytes (*conic));
    }
    std::string load () override { return ""; }
    std::unique_ptr<klv::Session> begin (std::shared_ptr<const Form> form) override
    {
        return std::make_unique<Session> (std::move (form));
    }
};

std::shared_ptr<Engine> make_engine ()
{
    return std::make_shared<Clarabel> ();
}

}
