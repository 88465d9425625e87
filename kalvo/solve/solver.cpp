#include "kalvo/solve/solver.h"

#include "kalvo/model/text.h"

#include <system_error>
#include <utility>
#include <variant>

namespace klv {

Solved solve_by_plan (Attempts& attempts, const Solutions& earlier, bool integers)
{
    Solved solved;
    try {
        if (!attempts.problem ().is_linear ()) {
            auto found = solve_convex (attempts);
            if (auto* failure = std::get_if<Failure> (&found))
                solved.failure = std::move (*failure);
            else
                solved.found = std::move (std::get<Found> (found));
            return solved;
        }
        solved.failure =
            attempts.prepare (first_method (attempts.problem (), attempts.settings (), integers));
        if (solved.failure)
            return solved;
        solved.separable = !attempts.has_entries ();
        if (!solved.separable)
            solved.found = integers ? solve_integer (attempts, earlier) : solve_linear (attempts, earlier);
    } catch (const std::system_error& error) {
        solved.failure =
            Failure{KLV_RES_THREAD_FAILED, text ("No thread can be started: ", error.what (), "."), {}};
    }
    return solved;
}

}
