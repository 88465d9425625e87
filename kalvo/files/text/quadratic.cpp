#include "kalvo/files/text/quadratic.h"

#include "kalvo/files/text/fault.h"
#include "kalvo/files/text/name_rules.h"
#include "kalvo/files/text/numbers.h"

#include <cmath>

namespace klv {

void sort (std::vector<QuadraticTerm>& terms)
{
    if (!std::ranges::is_sorted (terms, {}, &QuadraticTerm::place))
        std::ranges::stable_sort (terms, {}, &QuadraticTerm::place);
}

void store (Problem& problem, std::span<const QuadraticTerm> terms)
{
    const auto append = [] (SymmetricTerms& to, std::span<const QuadraticTerm> from, bool with_item) {
        to.item.reserve (with_item ? from.size () : 0);
        to.column.reserve (from.size ());
        to.row.reserve (from.size ());
        to.value.reserve (from.size ());
        for (const QuadraticTerm& term : from) {
            if (with_item)
                to.item.push_back (term.item);
            to.column.push_back (term.column ());
            to.row.push_back (term.row ());
            to.value.push_back (term.value);
        }
    };
    const auto constraints =
        std::ranges::upper_bound (terms, QuadraticTerm::objective, {}, &QuadraticTerm::item);
    const auto of_objective = static_cast<std::size_t> (constraints - terms.begin ());
    append (problem.quadratic_objective, terms.first (of_objective), false);
    append (problem.quadratic_constraint, terms.subspan (of_objective), true);
}

static bool is_exact (double value, double factor)
{
    return std::isfinite (value * factor) && same_bits (value * factor / factor, value);
}

double entry_of (double number, double factor)
{
    if (!is_exact (number, factor))
        throw syntax ("a quadratic term whose " + std::string (factor < 1 ? "half" : "double") +
                      " is beyond the numbers of double precision");
    return number * factor;
}

std::string unfit_term (const Problem& problem, QuadraticFactor factor)
{
    const ItemNames variables = variable_names (problem);
    const auto unfit_in = [&] (const SymmetricTerms& terms, bool of_objective) -> std::string {
        for (std::size_t k = 0; k < terms.value.size (); ++k)
            if (const double f = factor (of_objective, terms.row[k] == terms.column[k]);
                !is_exact (terms.value[k], 1 / f)) {
                const std::string first = quote (variables (terms.column[k]));
                return "the quadratic term of " + first + " and " + quote (variables (terms.row[k])) +
                       " in " +
                       (of_objective
                            ? "the objective"
                            : describe_item ("constraint", constraint_names (problem), terms.item[k])) +
                       ", whose " + (f < 1 ? "double" : "half") + " no number of double precision is";
            }
        return {};
    };
    const std::string objective = unfit_in (problem.quadratic_objective, true);
    return objective.empty () ? unfit_in (problem.quadratic_constraint, false) : objective;
}

}
