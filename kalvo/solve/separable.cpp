#include "kalvo/solve/separable.h"

#include <algorithm>
#include <cmath>

namespace klv {

static Point infeasible_row (const Problem& problem, std::size_t row)
{
    Point claims;
    claims.outcome = Outcome::infeasible;
    claims.dual_ray.assign (static_cast<std::size_t> (problem.constraints ()), 0);
    claims.dual_ray[row] = problem.constraint.lower[row] > 0 ? 1 : -1;
    return claims;
}

static Point unbounded_variable (const Problem& problem, std::size_t j, double towards)
{
    Point claims;
    claims.outcome = Outcome::unbounded;
    claims.primal_ray.assign (static_cast<std::size_t> (problem.variables ()), 0);
    claims.primal_ray[j] = towards;
    return claims;
}

Point solve_separable (const Problem& problem, bool integers, double tolerance)
{
    const Bounds& rows = problem.constraint;
    for (std::size_t i = 0; i < rows.key.size (); ++i)
        if (const double bound = std::max (rows.lower[i], -rows.upper[i]); bound > tolerance * (1 + bound))
            return infeasible_row (problem, i);

    Point claims;
    const double sign = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    const std::size_t n = static_cast<std::size_t> (problem.variables ());
    claims.x.assign (n, 0);
    claims.column_key.assign (n, KLV_SK_SUPERBASIC);
    std::size_t unbounded = n;
    for (std::size_t j = 0; j < n; ++j) {
        const double cost = sign * problem.cost[j];
        const bool whole = integers && problem.integer[j] == KLV_VAR_INTEGER;
        const double lower = whole ? std::ceil (problem.variable.lower[j]) : problem.variable.lower[j];
        const double upper = whole ? std::floor (problem.variable.upper[j]) : problem.variable.upper[j];
        if (whole && lower > upper) {
            claims = {};
            claims.outcome = Outcome::infeasible;
            return claims;
        }
        double& x = claims.x[j];
        if (cost > 0 || (cost == 0 && lower > 0))
            x = lower;
        else if (cost < 0 || (cost == 0 && upper < 0))
            x = upper;
        if (!std::isfinite (x)) {
            unbounded = std::min (unbounded, j);
            continue;
        }
        claims.column_key[j] = problem.variable.lower[j] == problem.variable.upper[j] ? KLV_SK_FIXED
                               : x == problem.variable.lower[j]                       ? KLV_SK_LOWER
                               : x == problem.variable.upper[j]                       ? KLV_SK_UPPER
                                                                                      : KLV_SK_SUPERBASIC;
    }
    if (unbounded < n)
        return unbounded_variable (problem, unbounded, sign * problem.cost[unbounded] > 0 ? -1 : 1);

    claims.outcome = Outcome::optimal;
    claims.row_key.assign (rows.key.size (), KLV_SK_BASIC);
    claims.y.assign (rows.key.size (), 0);
    claims.reduced_cost = problem.cost;
    return claims;
}

}
