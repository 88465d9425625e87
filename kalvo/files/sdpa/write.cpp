#include "kalvo/files/sdpa/sdpa.h"
#include "kalvo/files/text/numbers.h"
#include "kalvo/files/text/text_writer.h"
#include "kalvo/model/text.h"

#include <algorithm>

namespace klv {

// Only the dual of a file's pair is written: the problem in x has entries times the root of 2, which need not be those of any file.
std::string unfit_for_sdpa (const Problem& problem)
{
    if (problem.sense != KLV_SENSE_MAXIMIZE)
        return "an objective that is minimised";
    if (!is_plain_zero (problem.constant))
        return "a constant of the objective";
    if (!problem.name.empty () || !problem.objective_name.empty () || problem.variable_name.any () ||
        problem.constraint_name.any () || problem.semidefinite_name.any ())
        return "names";
    for (std::size_t j = 0; j < problem.variable.key.size (); ++j)
        if (problem.variable.key[j] != KLV_BK_LO || problem.variable.lower[j] != 0)
            return text ("variable ", j + 1, ", whose bounds are not 0 and infinity");
    for (std::size_t i = 0; i < problem.constraint.key.size (); ++i)
        if (problem.constraint.key[i] != KLV_BK_FX)
            return text ("constraint ", i + 1, ", which is no equality");
    for (std::size_t j = 0; j < problem.semidefinite.order.size (); ++j)
        if (problem.semidefinite.order[j] < 2)
            return text ("semidefinite variable ", j + 1, ", of order below 2");
    return {};
}

// Entries of F0, then of F1, F2, ... by block: the semidefinite variables, then all others as one diagonal block.
void write_sdpa (Task& task, OutputFile& file)
{
    const Problem& problem = task.problem ();
    const SemidefiniteVariables& matrices = problem.semidefinite;
    const std::int32_t scalar_block = matrices.count () + 1;
    const auto put = [&] (const auto& value) {
        if constexpr (std::is_same_v<std::decay_t<decltype (value)>, double>)
            file.put (NumberText (value));
        else
            file.put (text (value));
    };
    const auto line = [&] (const auto&... fields) {
        ((put (fields), file.put (" ")), ...);
        file.put ("\n");
    };
    line (problem.constraints ());
    line (matrices.count () + (problem.variables () > 0 ? 1 : 0));
    for (const std::int32_t order : matrices.order)
        file.put (text (order, " "));
    line (problem.variables () > 0 ? text (-problem.variables ()) : "");
    for (const double c : problem.constraint.lower) {
        put (c);
        file.put ("\n");
    }
    const auto term = [&] (std::int32_t matrix, const SymmetricTerms& terms, std::size_t k) {
        line (matrix, terms.variable[k] + 1, terms.column[k] + 1, terms.row[k] + 1, terms.value[k]);
    };
    for (std::size_t k = 0; k < matrices.objective.value.size (); ++k)
        term (0, matrices.objective, k);
    for (std::size_t k = 0; k < matrices.constraint.value.size (); ++k)
        term (matrices.constraint.item[k] + 1, matrices.constraint, k);
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        if (const double cost = problem.cost[static_cast<std::size_t> (j)]; !is_plain_zero (cost))
            line (0, scalar_block, j + 1, j + 1, cost);
        const Column column = problem.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            line (column.rows[k] + 1, scalar_block, j + 1, j + 1, column.values[k]);
    }
    warn_of_huge_bounds (task);
}

}
