#include "kalvo/solve/stagnation.h"

#include <algorithm>
#include <cmath>

namespace klv {

constexpr std::int64_t most_idle_iterations = 100;
constexpr double least_idle_seconds = 0.2;
constexpr double gain = 0.9;

// A factorisation takes at most about 1e-9 s times the cube of its order. A limit of 1e-6 s times the square of the size leaves
// time for hundreds of factorisations to a small problem, and days to one of a million entries.
Stagnation::Stagnation (std::size_t size)
    : most_seconds_ (0.2 + 1e-6 * static_cast<double> (size) * static_cast<double> (size))
{}

bool Stagnation::note (const Progress& now, double seconds)
{
    if (seconds > most_seconds_)
        return true;
    if (now.caller != KLV_CALLER_INTERIOR_POINT || !now.has_primal || !now.has_dual) {
        best_at_seconds_ = seconds;
        best_at_iteration_ = now.iterations;
        return false;
    }
    const double p = now.primal_objective, d = now.dual_objective;
    const double left = std::max (
        {now.primal_violation, now.dual_violation, std::abs (p - d) / (1 + std::abs (p) + std::abs (d))});
    if (left <= gain * best_) {
        best_ = left;
        best_at_seconds_ = seconds;
        best_at_iteration_ = now.iterations;
    }
    return now.iterations - best_at_iteration_ > most_idle_iterations &&
           seconds - best_at_seconds_ > least_idle_seconds;
}

}
