#include "kalvo/worker/optimize.h"

#include "kalvo/solve/optimize.h"
#include "kalvo/worker/in_process.h"
#include "kalvo/worker/remote.h"

#include <utility>

namespace klv {

#ifdef KALVO_SANITIZED
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

// All information items but those of reading, writing and repair belong to one optimisation.
static void forget_last_run (Information& information)
{
    const Information before = information;
    information = {};
    for (const RealItem item :
         {RealItem::time_read, RealItem::time_write, RealItem::repair_sum, RealItem::repair_bound})
        information.set (item, before.get (item));
    information.set (IntItem::repaired_bounds, before.get (IntItem::repaired_bounds));
}

// Sanitizers see nothing of another process.
static bool wants_worker (const Task& task)
{
    const std::int32_t asked = task.parameters.get (IntSetting::worker);
    return !worker_file ().empty () &&
           (asked == KLV_WORKER_ON || (asked == KLV_WORKER_AUTOMATIC && !sanitized));
}

KLVrescode_t optimize_task (Task& task, std::function<void ()> on_death)
{
    forget_last_run (task.information);
    if (!task.problem ().matrix.packed () || !task.problem ().affine.f.packed ()) {
        Problem& problem = task.edit_problem ();
        problem.matrix.pack ();
        problem.affine.f.pack ();
    }
    Log (task).header ();
    Call call (task);
    std::unique_ptr<Solver> solver;
    if (wants_worker (task))
        solver = std::make_unique<Remote> (task, call, std::move (on_death));
    else
        solver = std::make_unique<InProcess> (task, call);
    const KLVrescode_t code = optimize (task, call, *solver);
    task.information.set (RealItem::time_optimize, call.seconds ());
    return code;
}

}
