#include "kalvo/files/json/conic.h"
#include "kalvo/files/json/take.h"
#include "kalvo/model/text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace klv {

void JsonConic::add_terms (Terms& terms, bool semidefinite, std::vector<JsonField>& fields)
{
    fields.push_back (object (terms.path, false));
    if (terms.items_field != nullptr)
        fields.push_back (indices (terms.path + terms.items_field, terms.items));
    if (semidefinite)
        fields.push_back (indices (terms.path + ".variables", terms.variables));
    fields.push_back (indices (terms.path + ".rows", terms.rows));
    fields.push_back (indices (terms.path + ".columns", terms.columns));
    fields.push_back (numbers (terms.path + ".values", terms.values, Allowed::finite));
}

void JsonConic::add_to (std::vector<JsonField>& fields)
{
    const auto add = [&] (JsonField field) { fields.push_back (std::move (field)); };
    add_terms (quadratic_objective_, false, fields);
    add_terms (quadratic_constraints_, false, fields);

    add (object ("problem.affine_expressions", false));
    add (indices ("problem.affine_expressions.counts", counts_));
    add (indices ("problem.affine_expressions.expressions", expressions_));
    add (numbers ("problem.affine_expressions.values", coefficients_, Allowed::finite));
    add (numbers ("problem.affine_expressions.constants", constants_, Allowed::finite));

    add (object ("problem.domains", false));
    add (words ("problem.domains.types", Group::domain_type, domain_types_));
    add (indices ("problem.domains.sizes", domain_sizes_));
    add (indices ("problem.domains.exponent_counts", exponent_counts_));
    add (numbers ("problem.domains.exponents", exponents_, Allowed::finite));

    add (object ("problem.affine_constraints", false));
    add (indices ("problem.affine_constraints.domains", constraint_domains_));
    add (indices ("problem.affine_constraints.expressions", constraint_expressions_));
    add (numbers ("problem.affine_constraints.b", b_, Allowed::finite));
    add (names ("problem.affine_constraints.names", constraint_names_));

    add (object ("problem.cones", false));
    add (words ("problem.cones.types", Group::cone_type, cone_types_));
    add (numbers ("problem.cones.parameters", parameters_, Allowed::finite));
    add (indices ("problem.cones.counts", cone_counts_));
    add (indices ("problem.cones.members", members_));
    add (names ("problem.cones.names", cone_names_));

    add (object ("problem.semidefinite", false));
    add (indices ("problem.semidefinite.orders", orders_));
    add (names ("problem.semidefinite.names", matrix_names_));
    for (Terms* terms : {&objective_, &constraints_, &rows_})
        add_terms (*terms, true, fields);
}

// ---- Consistency of fields

static void check_index (const std::string& path, std::size_t place, std::int32_t index, std::int32_t count,
                         const char* item)
{
    if (index < 0 || index >= count)
        throw fault_at (path, place, text ("must be the index of ", item));
}

SymmetricTerms JsonConic::take_terms (const Terms& terms, std::int32_t items, bool semidefinite) const
{
    const std::size_t count = terms.values.size ();
    const auto check_list = [&] (const char* field, const auto& list, bool wanted) {
        if (wanted)
            check_length (terms.path + field, list.size (), count, "values");
    };
    check_countable (terms.path + ".values", count);
    check_list (terms.items_field != nullptr ? terms.items_field : "", terms.items,
                terms.items_field != nullptr);
    check_list (".variables", terms.variables, semidefinite);
    check_list (".rows", terms.rows, true);
    check_list (".columns", terms.columns, true);
    for (std::size_t k = 0; k < count; ++k) {
        std::int32_t order = problem_.variables ();
        if (terms.items_field != nullptr)
            check_index (terms.path + terms.items_field, k, terms.items[k], items, "an item");
        if (semidefinite) {
            check_index (terms.path + ".variables", k, terms.variables[k], problem_.semidefinite.count (),
                         "a semidefinite variable");
            order = problem_.semidefinite.order[static_cast<std::size_t> (terms.variables[k])];
        }
        check_index (terms.path + ".rows", k, terms.rows[k], order, "a row");
        if (terms.columns[k] < 0 || terms.columns[k] > terms.rows[k])
            throw fault_at (terms.path + ".columns", k, "must be an index up to the row's");
    }
    SymmetricTerms taken = add_up ({terms.items, terms.variables, terms.rows, terms.columns, terms.values});
    if (!std::ranges::all_of (taken.value, [] (double value) { return std::isfinite (value); }))
        throw syntax (terms.path + ".values: entries of one place add up to more than a number holds");
    return taken;
}

// Calls take (place, begin, count) for each part of a list of `length` entries that consists of parts of these counts.
static void for_each_part (const std::string& path, const std::vector<std::int32_t>& counts,
                           std::size_t length, const auto& take)
{
    std::size_t begin = 0;
    for (std::size_t place = 0; place < counts.size (); ++place) {
        const auto count = static_cast<std::size_t> (counts[place]);
        if (counts[place] < 0 || count > length - begin)
            throw fault_at (path, place, "counts entries that are not there");
        take (place, begin, count);
        begin += count;
    }
    if (begin != length)
        throw syntax (text (path, ": ", length - begin, " entries belong to no part"));
}

void JsonConic::finish_expressions ()
{
    const std::string path = "problem.affine_expressions";
    check_countable (path + ".constants", constants_.size ());
    const auto count = static_cast<std::int32_t> (constants_.size ());
    AffineExpressions& affine = problem_.affine;
    affine.append (count, problem_.variables ());
    if (count == 0 && counts_.empty () && expressions_.empty () && coefficients_.empty ())
        return;
    check_length (path + ".counts", counts_.size (), problem_.variable.key.size (), "variables");
    check_length (path + ".values", coefficients_.size (), expressions_.size (), "expressions");
    RepeatedRows repeated;
    for_each_part (path + ".counts", counts_, expressions_.size (),
                   [&] (std::size_t j, std::size_t begin, std::size_t size) {
                       const std::span<const std::int32_t> rows (expressions_.data () + begin, size);
                       for (std::size_t k = 0; k < size; ++k)
                           check_index (path + ".expressions", begin + k, rows[k], count, "an expression");
                       if (const std::int64_t again = repeated.find (rows, count); again >= 0)
                           throw fault_at (path + ".expressions", begin + static_cast<std::size_t> (again),
                                           "the variable has this expression twice");
                       if (size > 0)
                           affine.f.put (static_cast<std::int32_t> (j), rows,
                                         {coefficients_.data () + begin, size});
                   });
    affine.g = std::move (constants_);
}

void JsonConic::finish_domains ()
{
    const std::string path = "problem.domains";
    const std::size_t count = domain_types_.size ();
    check_countable (path + ".types", count);
    check_countable (path + ".exponents", exponents_.size ());
    check_length (path + ".sizes", domain_sizes_.size (), count, "domains");
    check_length (path + ".exponent_counts", exponent_counts_.size (), count, "domains");
    for_each_part (path + ".exponent_counts", exponent_counts_, exponents_.size (),
                   [&] (std::size_t k, std::size_t begin, std::size_t size) {
                       const std::span<const double> exponents (exponents_.data () + begin, size);
                       const DomainRow& row = domain_rows[static_cast<std::size_t> (domain_types_[k])];
                       if (size > 0 && !row.has_exponents)
                           throw fault_at (path + ".exponent_counts", k, text ("a ", row.name, " has none"));
                       if (const auto fault = domain_fault (row.type, domain_sizes_[k], exponents))
                           throw fault_at (path + ".sizes", k,
                                           text ("a ", row.name, " of this size ", *fault));
                       problem_.domain.append (row.type, domain_sizes_[k], exponents);
                   });
}

void JsonConic::finish_constraints ()
{
    const std::string path = "problem.affine_constraints";
    const std::size_t rows = constraint_expressions_.size ();
    check_countable (path + ".domains", constraint_domains_.size ());
    check_countable (path + ".expressions", rows);
    check_length (path + ".b", b_.size (), rows, "expressions");
    for (std::size_t k = 0; k < rows; ++k)
        check_index (path + ".expressions", k, constraint_expressions_[k], problem_.affine.count (),
                     "an expression");
    AffineConstraints& constraints = problem_.affine_constraint;
    std::size_t end = 0;
    for (std::size_t k = 0; k < constraint_domains_.size (); ++k) {
        check_index (path + ".domains", k, constraint_domains_[k], problem_.domain.count (), "a domain");
        end += static_cast<std::size_t> (
            problem_.domain.size[static_cast<std::size_t> (constraint_domains_[k])]);
        if (end > rows)
            throw fault_at (path + ".domains", k, "has more rows than there are expressions");
        constraints.end.push_back (static_cast<std::int32_t> (end));
    }
    if (end != rows)
        throw syntax (text (path, ".expressions: ", rows - end, " entries belong to no constraint"));
    constraints.domain = std::move (constraint_domains_);
    constraints.expression = std::move (constraint_expressions_);
    constraints.b = std::move (b_);
    take_names (path + ".names", std::move (constraint_names_), constraints.count (), "affine constraints",
                problem_.affine_constraint_name);
}

void JsonConic::finish_cones ()
{
    const std::string path = "problem.cones";
    const std::size_t count = cone_types_.size ();
    check_countable (path + ".types", count);
    check_length (path + ".parameters", parameters_.size (), count, "cones");
    check_length (path + ".counts", cone_counts_.size (), count, "cones");
    const auto append = [&] (std::size_t k, std::size_t begin, std::size_t size) {
        const std::span<const std::int32_t> members (members_.data () + begin, size);
        if (const auto fault = cone_fault (cone_types_[k], parameters_[k], static_cast<std::int64_t> (size)))
            throw fault_at (path + ".types", k, *fault);
        for (std::size_t i = 0; i < size; ++i)
            check_index (path + ".members", begin + i, members[i], problem_.variables (), "a variable");
        if (const std::int64_t again = problem_.cone.prepare (members, problem_.variables ()); again >= 0)
            throw fault_at (path + ".members", begin + static_cast<std::size_t> (again),
                            "the variable is in a cone already");
        problem_.cone.append (cone_types_[k], parameters_[k], members);
    };
    for_each_part (path + ".counts", cone_counts_, members_.size (), append);
    take_names (path + ".names", std::move (cone_names_), problem_.cone.count (), "cones",
                problem_.cone_name);
}

void JsonConic::finish_matrices ()
{
    const std::string path = "problem.semidefinite";
    std::int64_t entries = 0;
    for (std::size_t j = 0; j < orders_.size (); ++j) {
        if (orders_[j] < 0)
            throw fault_at (path + ".orders", j, "must not be negative");
        entries += packed_length (orders_[j]);
        if (entries > std::numeric_limits<std::int32_t>::max () ||
            j >= static_cast<std::size_t> (std::numeric_limits<std::int32_t>::max ()))
            throw fault_at (path + ".orders", j, "more entries of matrices than a task can hold");
    }
    SemidefiniteVariables& matrices = problem_.semidefinite;
    matrices.append (orders_);
    take_names (path + ".names", std::move (matrix_names_), matrices.count (), "semidefinite variables",
                problem_.semidefinite_name);
    matrices.objective = take_terms (objective_, 0, true);
    matrices.constraint = take_terms (constraints_, problem_.constraints (), true);
    matrices.expression = take_terms (rows_, problem_.affine.count (), true);
}

void JsonConic::finish ()
{
    problem_.quadratic_objective = take_terms (quadratic_objective_, 0, false);
    problem_.quadratic_constraint = take_terms (quadratic_constraints_, problem_.constraints (), false);
    finish_expressions ();
    finish_domains ();
    finish_constraints ();
    finish_cones ();
    finish_matrices ();
}

}
