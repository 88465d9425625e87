#include "kalvo/report/summary.h"

#include "kalvo/model/text.h"
#include "kalvo/report/log.h"
#include "kalvo/tables/constants.h"
#include "kalvo/tables/phases.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

static const char* slot_name (std::size_t slot)
{
    static constexpr const char* names[] = {"interior", "basic", "integer"};
    return names[slot];
}

static std::string_view status_text (Group group, std::int32_t status)
{
    const Constant* constant = find_constant (group, status);
    return constant != nullptr ? short_name (*constant) : "?";
}

static bool is_certificate (const Solution& solution)
{
    return solution.solution_status == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE ||
           solution.solution_status == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE;
}

static std::string residuals (const Solution& solution, std::size_t slot)
{
    const Violations& found = solution.violations;
    if (is_certificate (solution)) {
        const double noise = std::max (found.primal_absolute, found.dual_absolute);
        return noise == 0
                   ? "  the certificate is exact"
                   : formatted ("  the certificate is exact but for rounding: it reaches as far as %.1e",
                                1 / noise);
    }
    if (slot == KLV_SOL_INT)
        return formatted ("  checked: primal violation %.1e, distance from whole numbers %.1e", found.primal,
                          found.integer);
    return formatted ("  checked: primal violation %.1e, dual violation %.1e, gap %.1e, complementarity %.1e",
                      found.primal, found.dual, found.gap, found.complementarity);
}

// Of the violations above, those of cones and matrices.
static std::string conic_residuals (const Problem& problem, const Violations& found)
{
    std::string words;
    const auto add = [&] (bool any, const char* items, double primal, double dual) {
        if (any)
            words += text (words.empty () ? "  of them, of " : "; of ", items,
                           formatted (": primal %.1e, dual %.1e", primal, dual));
    };
    add (problem.affine_constraint.count () + problem.cone.count () > 0, "cones", found.primal_cone,
         found.dual_cone);
    add (problem.semidefinite.count () > 0, "matrices", found.primal_matrix, found.dual_matrix);
    return words;
}

static void print_slot (Task& task, std::int32_t stream, std::size_t slot, const Solution& solution)
{
    const auto say = [&] (std::string_view line) { task.streams.print_on (stream, line); };
    say (text ("The ", slot_name (slot),
               " solution: ", status_text (Group::solution_status, solution.solution_status),
               "; the problem: ", status_text (Group::problem_status, solution.problem_status)));
    if (solution.problem_status == KLV_PRO_INFEASIBLE_BY_SEARCH)
        say ("  infeasible by search, not certified");
    if (solution.solution_status == KLV_SOLSTA_UNKNOWN && (slot == KLV_SOL_INT || !solution.has_primal)) {
        if (solution.problem_status == KLV_PRO_UNKNOWN)
            say ("  no point was found");
        return;
    }
    if (is_certificate (solution)) {
        say (residuals (solution, slot));
        return;
    }
    if (slot == KLV_SOL_INT) {
        const Information& information = task.information;
        const double bound = information.get (RealItem::mip_bound);
        say (std::isfinite (bound)
                 ? formatted (
                       "  objective %.10e, bound %.10e, gap %.2f%% (the bound is the optimiser's word)",
                       solution.primal_objective, bound, 100 * information.get (RealItem::mip_relative_gap))
                 : formatted ("  objective %.10e, no bound", solution.primal_objective));
    } else
        say (formatted ("  primal objective %.10e, dual objective %.10e", solution.primal_objective,
                        solution.dual_objective));
    say (residuals (solution, slot));
    if (const std::string words = conic_residuals (task.problem (), solution.violations);
        slot == KLV_SOL_ITR && !words.empty ())
        say (words);
}

static bool is_wanted (const Task& task, std::int32_t stream)
{
    return task.parameters.get (IntSetting::log_level) >= 1 && task.streams.anyone_listens_on (stream);
}

KLVrescode_t solution_summary (Task& task, std::int32_t stream)
{
    if (!is_wanted (task, stream))
        return KLV_RES_OK;
    bool any = false;
    for (std::size_t slot = 0; slot < task.solutions.size (); ++slot)
        if (task.solutions[slot]) {
            // A copy of the basic solution in the interior slot has no summary of its own.
            const bool copied =
                slot == KLV_SOL_ITR && task.solutions[KLV_SOL_BAS] &&
                task.information.get (IntItem::interior_source) ==
                    task.information.get (IntItem::basic_source) &&
                task.information.get (IntItem::interior_source) != KLV_OPTIMIZER_INTERIOR_POINT + 1;
            if (!copied)
                print_slot (task, stream, slot, *task.solutions[slot]);
            any = true;
        }
    if (!any)
        task.streams.print_on (stream, "There is no solution.");
    return KLV_RES_OK;
}

KLVrescode_t optimizer_summary (Task& task, std::int32_t stream)
{
    if (!is_wanted (task, stream))
        return KLV_RES_OK;
    const Information& information = task.information;
    std::string line = formatted ("Time: %.2f s", information.get (RealItem::time_optimize));
    std::string phases;
    const RealItem* told = nullptr;
    for (const PhaseRow& phase : phase_rows) {
        if (told != nullptr && *told == phase.time)
            continue;
        told = &phase.time;
        if (const double seconds = information.get (phase.time); seconds >= 0.005)
            phases += formatted ("%s%s %.2f", phases.empty () ? "" : ", ", phase.title, seconds);
    }
    if (!phases.empty ())
        line += " (" + phases + ")";
    struct Count {
        IntItem item;
        const char *one, *many;
    };
    for (const auto& [item, one, many] :
         {Count{IntItem::simplex_iterations, "simplex iteration", "simplex iterations"},
          {IntItem::interior_iterations, "interior-point iteration", "interior-point iterations"},
          {IntItem::crossover_iterations, "crossover iteration", "crossover iterations"},
          {IntItem::nodes, "node", "nodes"},
          {IntItem::improving_solutions, "improving point", "improving points"}})
        if (const std::int32_t value = information.get (item))
            line += text (", ", value, " ", value == 1 ? one : many);
    task.streams.print_on (stream, line);
    return KLV_RES_OK;
}

}
