#include "kalvo/engines/engine.h"

#include <utility>

namespace klv {

static bool lacks_ray (const Claims& claims)
{
    return (claims.outcome == Outcome::infeasible && claims.dual_ray.empty ()) ||
           (claims.outcome == Outcome::unbounded && claims.primal_ray.empty ()) ||
           claims.outcome == Outcome::infeasible_or_unbounded;
}

// A ray belongs to the relaxation of an integer problem: where a search found no point, an unbounded relaxation proves nothing.
static void add_to_search (Claims&& proof, Claims& search)
{
    const bool says_more = proof.outcome == Outcome::infeasible ||
                           (proof.outcome == Outcome::unbounded && search.outcome != Outcome::infeasible);
    if (!says_more)
        return;
    search.outcome = proof.outcome;
    search.dual_ray = std::move (proof.dual_ray);
    search.primal_ray = std::move (proof.primal_ray);
}

Claims run_with_proof (Session& session, const Job& job, const StopFlag& stop, Events& events)
{
    Claims claims = session.run (job, stop, events);
    if (job.goal != Goal::optimise || !lacks_ray (claims) || stop)
        return claims;
    Job proving = job;
    proving.goal = Goal::prove;
    proving.start.reset ();
    Claims proof;
    // The dual method leaves rays of both kinds, but for some unbounded forms only the primal one ends.
    for (const Method method : {Method::dual_simplex, Method::primal_simplex}) {
        proving.method = method;
        proof = session.run (proving, stop, events);
        claims.simplex_iterations += proof.simplex_iterations;
        const bool undecided = proof.outcome == Outcome::unknown || proof.outcome == Outcome::failed;
        if (stop || !(undecided || lacks_ray (proof)))
            break;
    }
    if (job.method == Method::mixed_integer) {
        add_to_search (std::move (proof), claims);
        return claims;
    }
    // The second run's outcome counts even when it contradicts the first one's, or was stopped.
    proof.simplex_iterations = claims.simplex_iterations;
    proof.interior_iterations = claims.interior_iterations;
    proof.crossover_iterations = claims.crossover_iterations;
    proof.interior_method = claims.interior_method;
    proof.warning = std::move (claims.warning);
    return proof;
}

}
