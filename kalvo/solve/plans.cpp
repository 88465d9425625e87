#include "kalvo/solve/plans.h"

#include "kalvo/model/text.h"

#include <algorithm>
#include <utility>

namespace klv {

Method first_method (const Problem& problem, const Parameters& settings, bool integers)
{
    if (integers)
        return Method::mixed_integer;
    if (!problem.is_linear ())
        return has_linear_constraints (problem) ? Method::quadratic : Method::conic;
    switch (settings.get (IntSetting::optimizer)) {
    case KLV_OPTIMIZER_PRIMAL_SIMPLEX:
        return Method::primal_simplex;
    case KLV_OPTIMIZER_INTERIOR_POINT:
    case KLV_OPTIMIZER_CONIC:
        return Method::interior_point;
    default:
        return Method::dual_simplex;
    }
}

Tried try_again (Attempts& attempts, const Answer& failed, const Attempt& next)
{
    const std::string how =
        text (about (next.method).name, next.reformulate ? "" : ", without presolve and scaling",
              next.patient ? ", in shorter steps" : "");
    const std::string failure = failed.failure.empty () ? "" : text (" (", failed.failure, ")");
    attempts.task ().warn (text (failed.message.empty ()
                                     ? text ("An answer did not pass the check", failure)
                                     : text ("There is no answer yet (", failed.message, ")"),
                                 "; trying ", how, "."));
    add_one (attempts.task (), IntItem::presolve_rerun);
    return attempts.run (next, nullptr, "because the answer before it does not hold");
}

bool has_linear_constraints (const Problem& problem)
{
    constexpr Features linear_but_objective{Feature::integers, Feature::affine_expressions,
                                            Feature::quadratic_objective};
    return problem.features ().missing_in (linear_but_objective) == nullptr;
}

static int worth (const Answer& answer)
{
    if (answer.conclusive)
        return answer.has_basis ? 6 : 5;
    if (!answer.solution)
        return 0;
    switch (answer.solution->solution_status) {
    case KLV_SOLSTA_FEASIBLE:
        return 4;
    case KLV_SOLSTA_PRIMAL_FEASIBLE:
        return 3;
    case KLV_SOLSTA_DUAL_FEASIBLE:
        return 2;
    default:
        return 1;
    }
}

double error_of (const Solution& solution)
{
    const Violations& violations = solution.violations;
    return std::max ({violations.primal, violations.dual, violations.gap});
}

void keep_better (std::optional<Tried>& kept, Tried&& other)
{
    const auto is_better = [&] {
        const std::optional<Solution>&before = kept->answer.solution, &now = other.answer.solution;
        if (worth (other.answer) != worth (kept->answer) || other.answer.conclusive)
            return worth (other.answer) > worth (kept->answer);
        return before && now && before->has_dual && now->has_dual && error_of (*now) < error_of (*before);
    };
    if (!kept || is_better ())
        kept = std::move (other);
}

}
