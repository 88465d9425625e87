// The C interface: solutions of a task.

#include "kalvo/interface/entry.h"
#include "kalvo/tables/constants.h"

#include <algorithm>

using namespace klv;

static std::string_view solution_name (std::int32_t which)
{
    static constexpr std::string_view names[] = {"interior", "basic", "integer"};
    return names[which];
}

static std::optional<Solution>& slot (Task& task, std::int32_t which)
{
    check_index (which, KLV_SOL_COUNT, "solution");
    return task.solutions[static_cast<std::size_t> (which)];
}

static const Solution& defined (Task& task, std::int32_t which)
{
    const std::optional<Solution>& solution = slot (task, which);
    if (!solution)
        refuse (KLV_RES_SOLUTION_UNDEFINED, "The task has no ", solution_name (which), " solution.");
    return *solution;
}

KLVrescode_t KLV_solutiondef (KLVtask_t task, int32_t which, int32_t* defined)
{
    return read (task, [&] (Task& t) { output (defined, "defined") = slot (t, which).has_value (); });
}

KLVrescode_t KLV_getprosta (KLVtask_t task, int32_t which, int32_t* status)
{
    return read (task, [&] (Task& t) { output (status, "status") = defined (t, which).problem_status; });
}

KLVrescode_t KLV_getsolsta (KLVtask_t task, int32_t which, int32_t* status)
{
    return read (task, [&] (Task& t) { output (status, "status") = defined (t, which).solution_status; });
}

static void check_duals (std::int32_t which)
{
    if (which == KLV_SOL_INT)
        refuse (KLV_RES_SOLUTION_UNDEFINED, "The integer solution has no dual values.");
}

KLVrescode_t KLV_getprimalobj (KLVtask_t task, int32_t which, double* value)
{
    return read (task, [&] (Task& t) { output (value, "value") = defined (t, which).primal_objective; });
}

KLVrescode_t KLV_getdualobj (KLVtask_t task, int32_t which, double* value)
{
    return read (task, [&] (Task& t) {
        const Solution& solution = defined (t, which);
        check_duals (which);
        output (value, "value") = solution.dual_objective;
    });
}

// ---- Slices ----------------------------------------------------------------------------------------------

enum class Side { primal, dual };

template <class Value>
static KLVrescode_t give_slice (KLVtask_t task, std::int32_t which, std::vector<Value> Solution::*member,
                                Side side, const char* item, std::int32_t first, std::int32_t last,
                                Value* places, const char* name)
{
    return read (task, [&] (Task& t) {
        const Solution& solution = defined (t, which);
        if (side == Side::dual)
            check_duals (which);
        const std::vector<Value>& values = solution.*member;
        check_slice (first, last, static_cast<std::int32_t> (values.size ()), item);
        const auto taken = array (places, last - first, name);
        std::copy_n (values.begin () + first, taken.size (), taken.begin ());
    });
}

KLVrescode_t KLV_getskcslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, int32_t* keys)
{
    return give_slice (task, which, &Solution::skc, Side::primal, "constraint", first, last, keys, "keys");
}

KLVrescode_t KLV_getskxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, int32_t* keys)
{
    return give_slice (task, which, &Solution::skx, Side::primal, "variable", first, last, keys, "keys");
}

KLVrescode_t KLV_getxcslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, double* values)
{
    return give_slice (task, which, &Solution::xc, Side::primal, "constraint", first, last, values, "values");
}

KLVrescode_t KLV_getxxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, double* values)
{
    return give_slice (task, which, &Solution::xx, Side::primal, "variable", first, last, values, "values");
}

KLVrescode_t KLV_getyslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, double* values)
{
    return give_slice (task, which, &Solution::y, Side::dual, "constraint", first, last, values, "values");
}

KLVrescode_t KLV_getslcslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, double* values)
{
    return give_slice (task, which, &Solution::slc, Side::dual, "constraint", first, last, values, "values");
}

KLVrescode_t KLV_getsucslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, double* values)
{
    return give_slice (task, which, &Solution::suc, Side::dual, "constraint", first, last, values, "values");
}

KLVrescode_t KLV_getslxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, double* values)
{
    return give_slice (task, which, &Solution::slx, Side::dual, "variable", first, last, values, "values");
}

KLVrescode_t KLV_getsuxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, double* values)
{
    return give_slice (task, which, &Solution::sux, Side::dual, "variable", first, last, values, "values");
}

// ---- Values that only the interior solution has ------------------------------------------------------------

// Entries of which nothing is known are 0.
template <class Value>
static void give_conic (const std::vector<Value>& values, std::int64_t first, std::int64_t last,
                        Value* places, const char* name)
{
    const auto taken = array (places, last - first, name);
    if (values.empty ())
        std::ranges::fill (taken, Value{0});
    else
        std::copy_n (values.begin () + first, taken.size (), taken.begin ());
}

KLVrescode_t KLV_getsnxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, double* values)
{
    return read (task, [&] (Task& t) {
        const Solution& solution = defined (t, which);
        check_duals (which);
        check_slice (first, last, t.problem ().variables (), "variable");
        give_conic (solution.snx, first, last, values, "values");
    });
}

KLVrescode_t KLV_getskn (KLVtask_t task, int32_t which, int32_t* keys)
{
    return read (task, [&] (Task& t) {
        give_conic (defined (t, which).skn, 0, t.problem ().cone.count (), keys, "keys");
    });
}

static KLVrescode_t give_matrices (KLVtask_t task, std::int32_t which, std::vector<double> Solution::*member,
                                   std::int32_t first, std::int32_t last, std::int64_t length, double* values)
{
    return read (task, [&] (Task& t) {
        const Solution& solution = defined (t, which);
        const SemidefiniteVariables& variables = t.problem ().semidefinite;
        check_slice (first, last, variables.count (), "semidefinite variable");
        const std::int32_t begin = variables.begin_of (first), end = variables.begin_of (last);
        check_room (length, end - begin, "entries of semidefinite variables");
        give_conic (solution.*member, begin, end, values, "values");
    });
}

KLVrescode_t KLV_getbarxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, int64_t length,
                               double* values)
{
    return give_matrices (task, which, &Solution::barx, first, last, length, values);
}

KLVrescode_t KLV_getbarsslice (KLVtask_t task, int32_t which, int32_t first, int32_t last, int64_t length,
                               double* values)
{
    return give_matrices (task, which, &Solution::bars, first, last, length, values);
}

KLVrescode_t KLV_getaccdotys (KLVtask_t task, int32_t which, double* values)
{
    return read (task, [&] (Task& t) {
        give_conic (defined (t, which).doty, 0, t.problem ().affine_constraint.rows (), values, "values");
    });
}
