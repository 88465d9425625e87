// The C interface: files, optimisation, analysis and summaries.

#include "kalvo/files/files.h"
#include "kalvo/interface/entry.h"
#include "kalvo/report/analysis.h"
#include "kalvo/report/summary.h"
#include "kalvo/solve/conflict.h"
#include "kalvo/solve/repair.h"
#include "kalvo/solve/supported.h"
#include "kalvo/solve/toconic.h"
#include "kalvo/worker/optimize.h"

#include <utility>
#include <vector>

using namespace klv;

// Runs an operation that takes time: the item progress_time counts from here.
template <class Operation>
static KLVrescode_t run (KLVtask_t task, const Operation& operation,
                         const std::source_location& where = std::source_location::current ())
{
    return change (
        task,
        [&] (Task& t) {
            t.begin_timing ();
            return operation (t);
        },
        where);
}

KLVrescode_t KLV_readdata (KLVtask_t task, const char* filename)
{
    return run (task, [&] (Task& t) {
        const std::string path = filename != nullptr ? filename : t.parameters.get (TextSetting::data_file);
        if (path.empty ())
            refuse (KLV_RES_FILE_NAME_MISSING, "No problem file to read was named.");
        return read_problem (t, path.c_str ());
    });
}

KLVrescode_t KLV_writedata (KLVtask_t task, const char* filename)
{
    return run (task, [&] (Task& t) {
        if (given_text (filename, "filename").empty ())
            refuse (KLV_RES_FILE_NAME_MISSING, "No problem file to write was named.");
        return write_problem (t, filename);
    });
}

// Writes the task to where a parameter asks for it. An error of writing is told and forgotten: the optimisation goes on.
static void keep_replay (Task& task)
{
    const std::string& path = task.parameters.get (TextSetting::replay_file);
    if (path.empty ())
        return;
    std::int32_t& format = task.parameters.integers[parameter_number (IntSetting::file_format)];
    const std::int32_t asked = std::exchange (format, KLV_FILE_JSON);
    const KLVrescode_t code = write_problem (task, path.c_str ());
    format = asked;
    if (code == KLV_RES_OK)
        task.say (text ("What ended the process can be repeated from the file '", path, "'."));
}

// An optimisation whose worker's end leaves no file to repeat it from.
static KLVrescode_t optimize_inner (Task& task)
{
    check_supported (task.problem (), task.parameters);
    return optimize_task (task, [] {});
}

KLVrescode_t KLV_optimize (KLVtask_t task)
{
    return run (task, [&] (Task& t) {
        check_supported (t.problem (), t.parameters);
        const KLVrescode_t code = optimize_task (t, [&] { keep_replay (t); });
        return code == KLV_RES_OK ? find_conflict (t, KLV_STREAM_MESSAGES, optimize_inner) : code;
    });
}

KLVrescode_t KLV_getnumconflict (KLVtask_t task, int32_t* count)
{
    return read (task, [&] (Task& t) {
        output (count, "count") = static_cast<std::int32_t> (t.conflict.members.size ());
    });
}

KLVrescode_t KLV_getconflict (KLVtask_t task, int32_t room, int32_t* kinds, int32_t* items)
{
    return read (task, [&] (Task& t) {
        const auto count = std::ssize (t.conflict.members);
        check_room (room, count, "members");
        const std::span<std::int32_t> kind = array (kinds, count, "kinds"),
                                      item = array (items, count, "items");
        for (std::size_t k = 0; k < t.conflict.members.size (); ++k) {
            kind[k] = t.conflict.members[k].kind;
            item[k] = t.conflict.members[k].item;
        }
    });
}

KLVrescode_t KLV_toconic (KLVtask_t task)
{
    return run (task, [] (Task& t) { convert_to_conic (t); });
}

// A copy of weights that are given.
static std::vector<double> given_weights (const double* weights, std::int32_t count, const char* name)
{
    if (weights == nullptr)
        return {};
    const std::span<const double> given = array (weights, count, name);
    if (const auto fault = not_finite (given))
        refuse (KLV_RES_ARGUMENT, "The weight ", name, "[", *fault, "] is ", given[*fault], ".");
    return {given.begin (), given.end ()};
}

KLVrescode_t KLV_primalrepair (KLVtask_t task, const double* wlc, const double* wuc, const double* wlx,
                               const double* wux)
{
    return run (task, [&] (Task& t) {
        const std::int32_t m = t.problem ().constraints (), n = t.problem ().variables ();
        return repair_problem (t, {given_weights (wlc, m, "wlc"), given_weights (wuc, m, "wuc")},
                               {given_weights (wlx, n, "wlx"), given_weights (wux, n, "wux")},
                               optimize_inner);
    });
}

// ---- Reports on a stream ---------------------------------------------------------------------------------

static KLVrescode_t report (KLVtask_t task, std::int32_t stream, KLVrescode_t (*print) (Task&, std::int32_t),
                            const std::source_location& where = std::source_location::current ())
{
    return run (
        task,
        [&] (Task& t) {
            check_stream (stream);
            return print (t, stream);
        },
        where);
}

KLVrescode_t KLV_readsummary (KLVtask_t task, int32_t stream)
{
    return report (task, stream, problem_summary);
}

KLVrescode_t KLV_analyzeproblem (KLVtask_t task, int32_t stream)
{
    return report (task, stream, [] (Task& t, std::int32_t where) {
        const KLVrescode_t code = analyze_problem (t, where);
        return code == KLV_RES_OK ? analyze_feasibility (t, where, optimize_inner) : code;
    });
}

KLVrescode_t KLV_solutionsummary (KLVtask_t task, int32_t stream)
{
    return report (task, stream, solution_summary);
}

KLVrescode_t KLV_optimizersummary (KLVtask_t task, int32_t stream)
{
    return report (task, stream, optimizer_summary);
}
