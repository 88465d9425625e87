#include "kalvo/worker/in_process.h"

#include "kalvo/solve/optimize.h"
#include "kalvo/worker/watch.h"

namespace klv {

// All information items but the times of reading and writing belong to one optimisation.
static void forget_last_run (Information& information)
{
    const double read = information.get (RealItem::time_read);
    const double written = information.get (RealItem::time_write);
    information = {};
    information.set (RealItem::time_read, read);
    information.set (RealItem::time_write, written);
}

KLVrescode_t optimize_in_process (Task& task)
{
    forget_last_run (task.information);
    if (!task.problem ().matrix.packed ())
        task.edit_problem ().matrix.pack ();
    Watch watch (task);
    const KLVrescode_t code = optimize (task, watch);
    task.information.set (RealItem::time_optimize, watch.seconds ());
    task.information.set (IntItem::abandoned_workers, abandoned_workers ());
    return code;
}

}
