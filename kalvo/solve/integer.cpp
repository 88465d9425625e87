// Mixed-integer linear problems: one search by the engine, from the known values, and a second one if the first one's answer does
// not hold.

#include "kalvo/solve/plans.h"
#include "kalvo/solve/start.h"

#include "kalvo/model/text.h"

#include <utility>

namespace klv {

Found solve_integer (Attempts& attempts, const Solutions& earlier)
{
    constexpr Attempt search{Method::mixed_integer}, plain{Method::mixed_integer, false};
    Task& task = attempts.task ();
    const std::int32_t integers = attempts.problem ().integers;
    const std::string why = text (integers, integers == 1 ? " integer variable" : " integer variables");

    // Until the search tells a bound there is none.
    const double none = task.problem ().sense == KLV_SENSE_MAXIMIZE ? infinity : -infinity;
    task.information.set (RealItem::mip_bound, none);
    task.information.set (RealItem::mip_absolute_gap, infinity);
    task.information.set (RealItem::mip_relative_gap, infinity);

    // With far bounds an engine's search may find no point, or a wrong one, and there is only its word.
    const bool near = attempts.leave_out_far_bounds ();
    std::optional<Tried> best;
    if (const std::shared_ptr<const Start> start = find_start (earlier, true)) {
        task.information.set (IntItem::start, 3);
        best = attempts.run (search, start, why + ", from given values");
        if (!attempts.settles (best->answer)) {
            task.warn ("From the solution that was given no answer was found that passes the check; trying "
                       "without it.");
            task.information.set (IntItem::start, 0);
            keep_better (best, attempts.run (search, nullptr, why));
        }
    } else
        best = attempts.run (search, nullptr, why);
    if (!attempts.settles (best->answer))
        keep_better (best, try_again (attempts, best->answer, plain));
    if (near && !attempts.settles (best->answer)) {
        attempts.take_back_far_bounds ();
        keep_better (best, attempts.run (search, nullptr, why));
    }
    return {.integer = std::move (best)};
}

}
