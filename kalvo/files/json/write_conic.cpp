#include "kalvo/files/json/conic.h"

#include "kalvo/model/text.h"

#include <utility>

namespace klv {

static void write_terms (JsonWriter& json, const char* name, const char* items, const SymmetricTerms& terms)
{
    if (terms.count () == 0)
        return;
    json.open (name);
    if (items != nullptr)
        json.integers (items, terms.item);
    if (!terms.variable.empty ())
        json.integers ("variables", terms.variable);
    json.integers ("rows", terms.row);
    json.integers ("columns", terms.column);
    json.numbers ("values", terms.value);
    json.close ();
}

static void write_expressions (JsonWriter& json, const Problem& problem)
{
    const AffineExpressions& affine = problem.affine;
    const auto for_each_column = [&] (const auto& put) {
        for (std::int32_t j = 0; j < problem.variables (); ++j)
            put (affine.f.column (j));
    };
    json.open ("affine_expressions");
    json.list ("counts", [&] (auto next) {
        for_each_column ([&] (Column column) { append (next (), column.rows.size ()); });
    });
    json.list ("expressions", [&] (auto next) {
        for_each_column ([&] (Column column) {
            for (const std::int32_t expression : column.rows)
                append (next (), expression);
        });
    });
    json.list ("values", [&] (auto next) {
        for_each_column ([&] (Column column) {
            for (const double value : column.values)
                append_number (next (), value);
        });
    });
    json.numbers ("constants", affine.g);
    json.close ();
}

// The sizes of parts that end where `ends` says.
static void write_counts (JsonWriter& json, const char* name, const std::vector<std::int32_t>& ends)
{
    json.list (name, [&] (auto next) {
        std::int32_t begin = 0;
        for (const std::int32_t end : ends)
            append (next (), end - std::exchange (begin, end));
    });
}

static void write_domains (JsonWriter& json, const Domains& domains)
{
    json.open ("domains");
    json.words ("types", Group::domain_type, domains.type);
    json.integers ("sizes", domains.size);
    write_counts (json, "exponent_counts", domains.exponents_end);
    json.numbers ("exponents", domains.exponent);
    json.close ();
}

static void write_constraints (JsonWriter& json, const Problem& problem)
{
    const AffineConstraints& constraints = problem.affine_constraint;
    json.open ("affine_constraints");
    json.integers ("domains", constraints.domain);
    json.integers ("expressions", constraints.expression);
    json.numbers ("b", constraints.b);
    json.names ("names", problem.affine_constraint_name, constraints.count ());
    json.close ();
}

static void write_cones (JsonWriter& json, const Problem& problem)
{
    json.open ("cones");
    json.words ("types", Group::cone_type, problem.cone.type);
    json.numbers ("parameters", problem.cone.parameter);
    write_counts (json, "counts", problem.cone.end);
    json.integers ("members", problem.cone.member);
    json.names ("names", problem.cone_name, problem.cone.count ());
    json.close ();
}

static void write_matrices (JsonWriter& json, const Problem& problem)
{
    const SemidefiniteVariables& matrices = problem.semidefinite;
    json.open ("semidefinite");
    json.integers ("orders", matrices.order);
    json.names ("names", problem.semidefinite_name, matrices.count ());
    write_terms (json, "objective", nullptr, matrices.objective);
    write_terms (json, "constraints", "constraints", matrices.constraint);
    write_terms (json, "expressions", "expressions", matrices.expression);
    json.close ();
}

bool has_conic_fields (const Problem& problem)
{
    return !problem.is_linear () || problem.affine.count () > 0 || problem.domain.count () > 0;
}

void write_conic (JsonWriter& json, const Problem& problem)
{
    write_terms (json, "quadratic_objective", nullptr, problem.quadratic_objective);
    write_terms (json, "quadratic_constraints", "constraints", problem.quadratic_constraint);
    if (problem.affine.count () > 0)
        write_expressions (json, problem);
    if (problem.domain.count () > 0)
        write_domains (json, problem.domain);
    if (problem.affine_constraint.count () > 0)
        write_constraints (json, problem);
    if (problem.cone.count () > 0)
        write_cones (json, problem);
    if (problem.semidefinite.count () > 0)
        write_matrices (json, problem);
}

}
