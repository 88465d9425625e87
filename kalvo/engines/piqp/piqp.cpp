#include "kalvo/engines/piqp/piqp.h"

#include "kalvo/engines/piqp/library.h"
#include "kalvo/engines/piqp/newton.h"
#include "kalvo/model/text.h"
#include "kalvo/sparse/index.h"
#include "kalvo/task/memory.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

namespace klv::piqp {

constexpr std::int32_t most_iterations = 250;

// Tells of iterations, and when to end.
class Reports {
public:
    Reports (const Job& job, const QuadraticForm& form, Events& events)
        : deadline_ (job.budget.deadline), events_ (events), constant_ (form.constant)
    {
        now_.caller = about (job.method).phase;
        now_.presolved = {
            form.row_count (), form.columns (),
            static_cast<std::int64_t> (form.equality.values.size () + form.range.values.size ()), 0};
        events_.progress (now_);
    }

    bool goes_on (const Iteration& iteration)
    {
        timed_out_ = deadline_ && Clock::now () >= *deadline_;
        if (iteration.number > now_.iterations)
            report (iteration);
        return !timed_out_;
    }
    void report (const Iteration& iteration)
    {
        now_.iterations = iteration.number;
        now_.has_primal = now_.has_dual = true;
        now_.primal_objective = iteration.primal_objective + constant_;
        now_.dual_objective = iteration.dual_objective + constant_;
        now_.primal_violation = iteration.primal_residual;
        now_.dual_violation = iteration.dual_residual;
        events_.progress (now_);
        events_.step (now_);
    }
    bool timed_out () const { return timed_out_; }

private:
    const std::optional<Clock::time_point> deadline_;
    Events& events_;
    const double constant_;
    Progress now_;
    bool timed_out_ = false;
};

// Below costs of 1 the absolute tolerance follows them.
static double tolerance_unit (const QuadraticForm& form)
{
    double largest = 0;
    for (const std::vector<double>* values : {&form.cost, &form.quadratic.values})
        for (const double value : *values)
            largest = std::max (largest, std::abs (value));
    return std::clamp (largest, 1e-4, 1.0);
}

static Options options_of (const Job& job, const QuadraticForm& form)
{
    const double tolerance = job.settings->get (RealSetting::interior_tolerance);
    const std::int32_t iterations = job.settings->get (IntSetting::interior_iteration_limit);
    return {.tolerance = (tolerance > 0 ? std::clamp (tolerance, 1e-12, 1e-2) : 1e-8) * tolerance_unit (form),
            .iterations = iterations >= 0 ? iterations : most_iterations,
            .least_regularization = job.settings->get (RealSetting::interior_regularization),
            .scales = job.reformulate};
}

static Outcome outcome_of (const Answer& answer, const Reports& reports, const Job& job, const StopFlag& stop)
{
    switch (answer.status) {
    case Status::solved:
        return Outcome::optimal;
    case Status::infeasible:
        return Outcome::infeasible;
    case Status::unbounded:
        return Outcome::unbounded;
    case Status::iteration_limit:
        return job.settings->get (IntSetting::interior_iteration_limit) < 0
                   ? Outcome::unknown    // the limit is ours, not the user's
                   : Outcome::iteration_limit;
    case Status::broke_down:
        return stop.load (std::memory_order_relaxed) ? Outcome::stopped
               : reports.timed_out ()                ? Outcome::time_limit
                                                     : Outcome::unknown;
    case Status::refused:
        break;
    }
    return Outcome::failed;
}

static void take_answer (Answer&& answer, Claims& claims)
{
    std::vector<double> y = std::move (answer.equality);
    y.insert (y.end (), answer.range.begin (), answer.range.end ());
    const auto finite = [] (const std::vector<double>& values) {
        return std::ranges::all_of (values, [] (double value) { return std::isfinite (value); });
    };
    if (!finite (answer.x) || !finite (y) || !finite (answer.reduced_cost))
        return;
    if (claims.outcome == Outcome::infeasible)
        claims.dual_ray = std::move (y);
    else if (claims.outcome == Outcome::unbounded)
        claims.primal_ray = std::move (answer.x);
    else {
        claims.x = std::move (answer.x);
        claims.y = std::move (y);
        claims.reduced_cost = std::move (answer.reduced_cost);
    }
}

class Session final : public klv::Session {
public:
    explicit Session (std::shared_ptr<const Form> form)
        : whole_ (std::move (form)), form_ (std::get<QuadraticForm> (*whole_))
    {}

    Claims run (const Job& job, const StopFlag& stop, Events& events) override
    {
        Claims claims;
        claims.interior_method = KLV_INTPNT_METHOD_FACTORIZATION;
        const auto ends_as = [&] (Outcome outcome) {
            claims.outcome = outcome;
            return std::move (claims);
        };
        if (stop.load (std::memory_order_relaxed))
            return ends_as (Outcome::stopped);
        if (claims.message = fault_of (form_); !claims.message.empty ())
            return ends_as (Outcome::failed);
        const Options options = options_of (job, form_);
        if (options.iterations == 0)
            return ends_as (Outcome::iteration_limit);
        if (!system_)
            system_.emplace (form_, static_cast<KLVfactorization> (
                                        job.settings->get (IntSetting::interior_factorization)));
        Reports reports (job, form_, events);
        Answer answer = solve (form_, *system_, options, stop,
                               [&] (const Iteration& now) { return reports.goes_on (now); });
        claims.outcome = outcome_of (answer, reports, job, stop);
        claims.interior_iterations = answer.last.number;
        if (answer.status == Status::broke_down && claims.outcome == Outcome::unknown)
            claims.message = "a matrix of its iterations could not be factored";
        if (answer.status == Status::refused)
            claims.message = "it refused the problem";
        else if (answer.status != Status::broke_down)
            reports.report (answer.last);
        take_answer (std::move (answer), claims);
        return claims;
    }

private:
    std::shared_ptr<const Form> whole_;
    const QuadraticForm& form_;
    std::optional<NewtonSystem> system_;
};

class Piqp final : public Engine {
public:
    const char* name () const override { return "PIQP 0.7.0"; }
    bool has (Method method) const override { return method == Method::quadratic; }
    Limits limits () const override
    {
        return {.infinite_bound = 1e20, .infinite_cost = 1e20, .largest_entry = 1e20};
    }
    std::string refuses (const Form& form, Method, const Budget&) const override
    {
        const auto* quadratic = std::get_if<QuadraticForm> (&form);
        if (quadratic == nullptr)
            return "it solves convex quadratic problems with linear constraints only";
        if (!fault_of (*quadratic).empty ())
            return "";    // a run tells
        // Where there is room for a full factor, the order of elimination need not be known yet.
        const double size = static_cast<double> (quadratic->cost.size ()) + quadratic->row_count ();
        const double most = NewtonSystem::megabytes_of_factor (size * (size + 1) / 2);
        constexpr double little = 100;    // not worth asking the machine
        if (most <= little || lack_of_memory (most).empty ())
            return "";
        try {
            return lack_of_memory (NewtonSystem (*quadratic).megabytes ());
        } catch (const std::length_error&) {
            return "the matrix of its iterations has too many entries";
        }
    }
    std::string load () override { return ""; }
    std::unique_ptr<klv::Session> begin (std::shared_ptr<const Form> form) override
    {
        return std::make_unique<Session> (std::move (form));
    }
};

std::shared_ptr<Engine> make_engine ()
{
    return std::make_shared<Piqp> ();
}

}
