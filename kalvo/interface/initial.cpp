// The C interface: solutions from which an optimisation starts.

#include "kalvo/interface/entry.h"
#include "kalvo/verify/given.h"

#include <algorithm>
#include <cmath>
#include <utility>

using namespace klv;

static std::vector<std::int32_t> given_keys (const std::int32_t* keys, std::int32_t count, const char* name)
{
    if (keys == nullptr)
        return {};
    const auto given = array (keys, count, name);
    for (std::size_t i = 0; i < given.size (); ++i)
        if (given[i] < KLV_SK_UNKNOWN || given[i] > KLV_SK_INFEASIBLE)
            refuse (KLV_RES_STATUS_KEY_UNKNOWN, "Entry ", i + 1, " of ", name, " is ", given[i],
                    ", which is no status key.");
    return {given.begin (), given.end ()};
}

static std::vector<double> given_values (const double* values, std::int64_t count, const char* name)
{
    if (values == nullptr)
        return {};
    const auto given = array (values, count, name);
    for (std::size_t i = 0; i < given.size (); ++i)
        if (std::isinf (given[i]))
            refuse (KLV_RES_VALUE_NOT_FINITE, "Entry ", i + 1, " of ", name, " is ", given[i],
                    "; it must be finite, or NaN where it is unknown.");
    return {given.begin (), given.end ()};
}

KLVrescode_t KLV_putsolutionnew (KLVtask_t task, int32_t which, const int32_t* skc, const int32_t* skx,
                                 const int32_t* skn, const double* xc, const double* xx, const double* y,
                                 const double* slc, const double* suc, const double* slx, const double* sux,
                                 const double* snx, const double* doty)
{
    return change (task, [&] (Task& t) {
        check_index (which, KLV_SOL_COUNT, "solution");
        const std::int32_t m = t.problem ().constraints (), n = t.problem ().variables ();
        GivenSolution given;
        given.skc = given_keys (skc, m, "skc");
        given.skx = given_keys (skx, n, "skx");
        given.xc = given_values (xc, m, "xc");
        given.xx = given_values (xx, n, "xx");
        if (which != KLV_SOL_INT) {
            given.y = given_values (y, m, "y");
            given.slc = given_values (slc, m, "slc");
            given.suc = given_values (suc, m, "suc");
            given.slx = given_values (slx, n, "slx");
            given.sux = given_values (sux, n, "sux");
        }
        if (which == KLV_SOL_ITR) {
            given.skn = given_keys (skn, t.problem ().cone.count (), "skn");
            given.snx = given_values (snx, n, "snx");
            given.doty = given_values (doty, t.problem ().affine_constraint.rows (), "doty");
        }
        Solution solution =
            complete (std::move (given), t.share_problem (), t.parameters, static_cast<KLVsoltype> (which));
        t.solutions[static_cast<std::size_t> (which)] = std::move (solution);
    });
}

static GivenSolution as_given (const Solution& solution)
{
    return {.skc = solution.skc,
            .skx = solution.skx,
            .xx = solution.xx,
            .xc = solution.xc,
            .y = solution.y,
            .slc = solution.slc,
            .suc = solution.suc,
            .slx = solution.slx,
            .sux = solution.sux,
            .skn = solution.skn,
            .snx = solution.snx,
            .barx = solution.barx,
            .bars = solution.bars,
            .doty = solution.doty};
}

// Whether measuring has left the values as they were given.
static bool agree (const Solution& given, const Solution& measured)
{
    constexpr double rounding = 1e-9;
    for (const auto member :
         {&Solution::xx, &Solution::y, &Solution::slx, &Solution::sux, &Solution::snx, &Solution::doty}) {
        const std::vector<double>&before = given.*member, &after = measured.*member;
        for (std::size_t i = 0; i < before.size (); ++i)
            if (!(std::abs (before[i] - (i < after.size () ? after[i] : 0)) <=
                  rounding * (1 + std::abs (before[i]))))
                return false;
    }
    return true;
}

static KLVrescode_t put_matrix (KLVtask_t task, std::int32_t which, std::int32_t j,
                                std::vector<double> Solution::*member, const double* values)
{
    return change (task, [&] (Task& t) {
        check_index (which, KLV_SOL_COUNT, "solution");
        const SemidefiniteVariables& variables = t.problem ().semidefinite;
        check_index (j, variables.count (), "semidefinite variable");
        std::optional<Solution>& solution = t.solutions[static_cast<std::size_t> (which)];
        if (!solution)
            refuse (KLV_RES_SOLUTION_UNDEFINED, "The task has no such solution to put a matrix into.");
        const std::int64_t length = packed_length (variables.order[static_cast<std::size_t> (j)]);
        array (values, length, "values");
        if (which != KLV_SOL_ITR)
            return;
        const std::vector<double> given = given_values (values, length, "values");
        std::vector<double>& all = (*solution).*member;
        all.resize (static_cast<std::size_t> (variables.length ()), 0.0);
        std::ranges::copy (given, all.begin () + variables.begin_of (j));
        solution->problem_status = KLV_PRO_UNKNOWN;
        solution->solution_status = KLV_SOLSTA_UNKNOWN;
        if (j + 1 < variables.count ())
            return;
        // Measured with the last matrix. More duals may follow those that were put so far.
        std::vector<double> bars = solution->bars;
        Solution measured = complete (as_given (*solution), t.share_problem (), t.parameters, KLV_SOL_ITR);
        if (!agree (*solution, measured))
            return;
        solution = std::move (measured);
        if (member == &Solution::barx && !bars.empty ())
            solution->bars = std::move (bars);
    });
}

KLVrescode_t KLV_putbarxj (KLVtask_t task, int32_t which, int32_t j, const double* values)
{
    return put_matrix (task, which, j, &Solution::barx, values);
}

KLVrescode_t KLV_putbarsj (KLVtask_t task, int32_t which, int32_t j, const double* values)
{
    return put_matrix (task, which, j, &Solution::bars, values);
}
