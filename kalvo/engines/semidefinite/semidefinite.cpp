#include "kalvo/engines/semidefinite/semidefinite.h"

#include "kalvo/engines/semidefinite/interior_point.h"
#include "kalvo/task/memory.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv::semidefinite {

constexpr int most_iterations = 100;

static Aims aims_of (const Job& job)
{
    constexpr double share = 0.01;
    const Parameters& settings = *job.settings;
    const double accepted =
        std::min ({settings.get (RealSetting::gap_tolerance), settings.get (RealSetting::primal_tolerance),
                   settings.get (RealSetting::dual_tolerance)});
    const double gap = settings.get (RealSetting::interior_tolerance);
    const std::int32_t iterations = settings.get (IntSetting::interior_iteration_limit);
    return {.tolerance =
                std::clamp (gap > 0 ? std::min (gap, share * accepted) : share * accepted, 1e-12, 1e-4),
            .iterations = iterations >= 0 ? iterations : most_iterations};
}

static bool is_finite (const std::vector<double>& values)
{
    return std::ranges::all_of (values, [] (double value) { return std::isfinite (value); });
}

// A direction along which the linear function falls by 1; empty if it is none.
static std::vector<double> ray (const std::vector<double>& linear, std::vector<double>&& direction)
{
    const double change = dot (linear, direction);
    for (double& value : direction)
        value /= -change;
    if (!(change < 0) || !is_finite (direction))
        direction.clear ();
    return std::move (direction);
}

class Session final : public klv::Session {
public:
    explicit Session (std::shared_ptr<const Form> form)
        : whole_ (std::move (form)), form_ (std::get<ConicForm> (*whole_))
    {}

    Claims run (const Job& job, const StopFlag& stop, Events& events) override;

private:
    void report (const Standard& standard, int iteration, const Measures& measures, Progress& now,
                 Events& events) const;
    void take (const Standard& standard, Answer&& answer, const Job& job, Claims& claims) const;

    std::shared_ptr<const Form> whole_;
    const ConicForm& form_;
};

void Session::report (const Standard& standard, int iteration, const Measures& measures, Progress& now,
                      Events& events) const
{
    const bool swapped = standard.columns_are_y ();
    now.iterations = iteration;
    now.has_primal = now.has_dual = true;
    now.primal_objective = standard.objective (swapped ? measures.dual_objective : measures.primal_objective);
    now.dual_objective = standard.objective (swapped ? measures.primal_objective : measures.dual_objective);
    now.primal_violation = swapped ? measures.dual_residual : measures.primal_residual;
    now.dual_violation = swapped ? measures.primal_residual : measures.dual_residual;
    events.progress (now);
    events.step (now);
}

void Session::take (const Standard& standard, Answer&& answer, const Job& job, Claims& claims) const
{
    const Iterate& iterate = answer.iterate;
    claims.interior_iterations = answer.iterations;
    claims.outcome = answer.outcome;
    if (answer.outcome == Outcome::infeasible || answer.outcome == Outcome::unbounded) {
        const bool of_y = answer.outcome == Outcome::infeasible;
        if (of_y == standard.columns_are_y ()) {
            claims.outcome = Outcome::unbounded;
            claims.primal_ray = ray (form_.cost, standard.columns (iterate, true));
        } else {
            claims.outcome = Outcome::infeasible;
            claims.dual_ray = ray (form_.right, standard.multipliers (iterate, true));
        }
        if (claims.primal_ray.empty () && claims.dual_ray.empty ())
            claims.outcome = Outcome::unknown;
        return;
    }
    if (answer.outcome == Outcome::iteration_limit &&
        job.settings->get (IntSetting::interior_iteration_limit) < 0)
        claims.outcome = Outcome::unknown;    // the limit is ours, not the user's
    if (!answer.has_point)
        return;
    std::vector<double> x = standard.columns (iterate, false), y = standard.multipliers (iterate, false);
    if (!is_finite (x) || !is_finite (y))
        return;
    claims.x = std::move (x);
    claims.y = std::move (y);
    // A point that is nearly optimal is judged by what it is.
    constexpr double near_enough = 1e-5;
    if (claims.outcome == Outcome::unknown && answer.measures.largest () < near_enough)
        claims.outcome = Outcome::optimal;
}

Claims Session::run (const Job& job, const StopFlag& stop, Events& events)
{
    Claims claims;
    Progress now{.caller = about (job.method).phase,
                 .presolved = Sizes{form_.row_count (), form_.columns (),
                                    static_cast<std::int64_t> (form_.matrix.values.size ()), 0}};
    events.progress (now);
    Watch watch (stop, job.budget.deadline);
    try {
        const Standard standard (form_);
        const auto listener = [&] (int iteration, const Measures& measures) {
            report (standard, iteration, measures, now, events);
        };
        Answer answer = InteriorPoint (standard.program (), aims_of (job), watch, stop, listener).run ();
        take (standard, std::move (answer), job, claims);
    } catch (const Interrupted& interrupted) {
        claims.outcome = interrupted.outcome;
    }
    return claims;
}

// Seven matrices and a half for each block, the work of one more, the data and its copies; and the Schur matrix with its factor, were
// it dense. A sparse one takes less, but how much is not known before.
static double megabytes (const ConicForm& form)
{
    double entries = 0, largest = 0;
    for (const ElementaryCone& cone : form.cones)
        if (cone.kind == ConeKind::semidefinite) {
            const double order = cone.order;
            entries += order * order;
            largest = std::max (largest, order * order);
        }
    const Matching matching (form);
    const auto rows = static_cast<double> (matching.rows),
               others = static_cast<double> (matching.free_variables);
    return (8 * (7.5 * entries + 2 * largest + rows * rows + rows * others + others * others) +
            200.0 * static_cast<double> (form.size ())) /
           1e6;
}

class Semidefinite final : public Engine {
public:
    const char* name () const override { return "Kalvo's semidefinite method"; }
    bool has (Method method) const override { return method == Method::semidefinite; }
    Limits limits () const override
    {
        return {.infinite_bound = 1e20, .infinite_cost = 1e20, .largest_entry = 1e20};
    }
    std::string refuses (const Form& form, Method, const Budget&) const override
    {
        const auto* conic = std::get_if<ConicForm> (&form);
        if (conic == nullptr)
            return "it solves conic problems only";
        if (std::ranges::any_of (conic->cones, [] (const ElementaryCone& cone) {
                return cone.kind == ConeKind::exponential || cone.kind == ConeKind::power;
            }))
            return "it takes no exponential and no power cones";
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
    return std::make_shared<Semidefinite> ();
}

}
