// Continuous convex problems beyond linear ones: the quadratic interior-point method where it can, the conic one for all else and
// for what the first one leaves open. A convex problem has one optimum, so that the first answer that holds settles it.

#include "kalvo/solve/plans.h"

#include "kalvo/model/text.h"
#include "kalvo/solve/correct.h"

#include <algorithm>
#include <utility>

namespace klv {

// Bounds beyond these spoil the numbers of methods that keep points between all bounds; few problems have solutions there.
constexpr double far_for_quadratic = 1e7, far_for_conic = 1e9;

class ConvexPlan {
public:
    explicit ConvexPlan (Attempts& attempts) : attempts_ (attempts) {}

    std::variant<Found, Failure> run ();

private:
    bool settled () const { return best_ && attempts_.settles (best_->answer); }
    bool refused () const { return failure_ && failure_->refused.item != Refused::Item::none; }
    void attempt (const Attempt& attempt, const char* why);
    void correct (Answer& answer);
    bool go_through (Method method, double far, const char* why);
    void go_through_patiently ();
    void go_through_unscaled ();

    Attempts& attempts_;
    std::optional<Tried> best_;
    std::optional<Solution> latest_;
    std::optional<Failure> failure_;    // of the last engine that could not be prepared
};

// Numbers far from 1, and cones made of quadratic terms, leave more than tolerances of what is little to an engine.
void ConvexPlan::correct (Answer& answer)
{
    constexpr double near = 1e-3;
    if (answer.conclusive || !answer.solution || !answer.solution->has_primal || !answer.solution->has_dual ||
        answer.solution->violations.gap > near)
        return;
    std::optional<Point> claim = corrected (attempts_.problem (), *answer.solution);
    if (!claim)
        return;
    Answer better = attempts_.judge (std::move (*claim));
    if (better.conclusive || (better.solution && error_of (*better.solution) < error_of (*answer.solution)))
        answer = std::move (better);
}

void ConvexPlan::attempt (const Attempt& attempt, const char* why)
{
    Tried tried =
        best_ ? try_again (attempts_, best_->answer, attempt) : attempts_.run (attempt, nullptr, why);
    correct (tried.answer);
    latest_ = tried.answer.solution;
    keep_better (best_, std::move (tried));
}

// Attempts with one engine: without far bounds and, where the point lies beyond them or none was found, with them. False: none was made.
bool ConvexPlan::go_through (Method method, double far, const char* why)
{
    if (settled () || refused ())
        return false;
    if (std::optional<Failure> failure = attempts_.prepare (method, far)) {
        failure_ = std::move (failure);
        return false;
    }
    attempt ({method}, why);
    if (!settled () && attempts_.is_without_far_bounds ()) {
        attempts_.take_back_far_bounds ();
        attempt ({method}, why);
    }
    return true;
}

// A point that is not the solution yet tells of what magnitude the members of the solution's cones are.
void ConvexPlan::go_through_patiently ()
{
    constexpr int most = 6;
    const Attempt patient{.method = Method::conic, .patient = true};
    if (best_ && !settled () && attempts_.has_asymmetric_cones ())
        attempt (patient, "");
    double error = infinity;
    for (int k = 0; k < most && best_ && !settled () && latest_ && error_of (*latest_) < error / 2; ++k) {
        error = error_of (*latest_);
        if (!attempts_.centre (*latest_))
            return;
        attempt (patient, "");
    }
}

// What is as well as singular for one scaling is sometimes not for another.
void ConvexPlan::go_through_unscaled ()
{
    if (settled () || !best_ || attempts_.prepare (Method::conic, far_for_conic, false))
        return;
    for (const bool reformulate : {true, false})
        if (!settled ())
            attempt ({Method::conic, reformulate}, "");
}

static std::int32_t largest_matrix (const Problem& problem)
{
    std::int32_t order = 0;
    for (const std::int32_t each : problem.semidefinite.order)
        order = std::max (order, each);
    for (const std::int32_t domain : problem.affine_constraint.domain) {
        const auto which = static_cast<std::size_t> (domain);
        if (problem.domain.type[which] == KLV_DOMAIN_SEMIDEFINITE_CONE)
            while (packed_length (order) < problem.domain.size[which])
                ++order;
    }
    return order;
}

std::variant<Found, Failure> ConvexPlan::run ()
{
    const bool linear_constraints = has_linear_constraints (attempts_.problem ());
    if (linear_constraints)
        go_through (Method::quadratic, far_for_quadratic, "quadratic objective, linear constraints");
    // From this order on the method that takes matrices as a whole is the faster one.
    constexpr std::int32_t large = 5;
    const std::int32_t order = largest_matrix (attempts_.problem ());
    if (order >= large)
        go_through (Method::semidefinite, far_for_conic, "semidefinite matrices");
    if (go_through (Method::conic, far_for_conic,
                    linear_constraints ? "quadratic objective, linear constraints" : "cones"))
        go_through_patiently ();
    go_through_unscaled ();
    if (order > 1 && order < large)
        go_through (Method::semidefinite, far_for_conic, "semidefinite matrices");
    if (best_)
        return Found{.interior = std::move (best_)};
    return std::move (*failure_);
}

std::variant<Found, Failure> solve_convex (Attempts& attempts)
{
    return ConvexPlan (attempts).run ();
}

}
