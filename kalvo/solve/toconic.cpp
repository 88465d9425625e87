#include "kalvo/solve/toconic.h"

#include "kalvo/forms/curvature.h"
#include "kalvo/forms/linear.h"
#include "kalvo/model/refusal.h"
#include "kalvo/model/room.h"
#include "kalvo/sparse/index.h"

#include <algorithm>
#include <limits>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace klv {

// Everything that changes, made beside the problem, which is changed when all is there.
class ConicParts {
public:
    explicit ConicParts (const Problem& problem)
        : problem_ (problem),
          affine_constraint_ (problem.affine_constraint),
          domain_ (problem.domain),
          semidefinite_ (problem.semidefinite.expression),
          g_ (problem.affine.g),
          rows_ (problem.constraint.key.size ())
    {}

    void make ();
    void put (Problem& problem);    // throws std::bad_alloc before the first change

private:
    // The expression that a row with quadratic terms becomes; the row's terms are multiplied by the factor.
    struct Row {
        std::int32_t expression = -1;
        double factor = 0;
    };
    struct Entry {
        std::int32_t variable, expression;
        double value;
    };

    void insist_on_convexity (const Refused& refused) const
    {
        if (refused.item != Refused::Item::none)
            refuse (KLV_RES_NOT_CONVEX, "There is no conic form: ", describe (problem_, refused), ".");
    }
    std::int32_t add_expressions (KLVdomaintype type, std::int64_t size, std::span<const double> exponents);
    std::int32_t add_quadratic_cone (const LocalMatrix& matrix);
    void add_objective ();
    void add_constraint (std::int32_t constraint, TermRange terms);
    void add_constraints ();
    void add_cones ();
    void fill_columns ();

    const Problem& problem_;
    AffineConstraints affine_constraint_;
    Domains domain_;
    SymmetricTerms semidefinite_;    // of expressions
    std::vector<double> g_;
    std::vector<Row> rows_;
    std::vector<Entry> entries_;
    ColumnMatrix f_;
    std::int32_t more_variables_ = 0;
    bool has_cones_ = false;    // instead of the quadratic terms
};

// An affine conic constraint on new expressions, without constants so far. Gives the first of them.
std::int32_t ConicParts::add_expressions (KLVdomaintype type, std::int64_t size,
                                          std::span<const double> exponents)
{
    const auto first = static_cast<std::int32_t> (g_.size ());
    const std::int32_t most = std::numeric_limits<std::int32_t>::max ();
    if (size > most - std::max (first, affine_constraint_.rows ()))
        refuse (KLV_RES_TOO_LARGE, "The conic form has more affine expressions than can be counted.");
    const auto count = static_cast<std::int32_t> (size);
    domain_.append (type, count, exponents);
    affine_constraint_.append (domain_.count () - 1, first, count, {});
    make_room (g_, index (count));
    g_.resize (g_.size () + index (count), 0.0);
    return first;
}

// 2 e 1 >= |Fx|^2, F'F being the matrix. Gives the expression e, which has no terms yet.
std::int32_t ConicParts::add_quadratic_cone (const LocalMatrix& matrix)
{
    const SparseColumns factor = factor_semidefinite (matrix);
    const std::int32_t first =
        add_expressions (KLV_DOMAIN_ROTATED_QUADRATIC_CONE, std::int64_t{factor.columns ()} + 2, {});
    g_[index (first) + 1] = 1;
    make_room (entries_, factor.values.size ());
    for (std::int32_t k = 0; k < factor.columns (); ++k) {
        const auto variables = factor.rows_of (index (k));
        const auto values = factor.values_of (index (k));
        for (std::size_t i = 0; i < variables.size (); ++i)
            entries_.push_back ({variables[i], first + 2 + k, values[i]});
    }
    has_cones_ = true;
    return first;
}

void ConicParts::add_objective ()
{
    const SymmetricTerms& terms = problem_.quadratic_objective;
    const double sign = problem_.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    const LocalMatrix matrix = gather (terms, {0, terms.value.size ()}, sign);
    if (matrix.variables.empty ())
        return;
    insist_on_convexity (refuse_objective (problem_, {}));
    if (problem_.variables () == std::numeric_limits<std::int32_t>::max ())
        refuse (KLV_RES_TOO_LARGE, "The conic form has more variables than can be counted.");
    more_variables_ = 1;
    const std::int32_t expression = add_quadratic_cone (matrix);
    entries_.push_back ({problem_.variables (), expression, 1});
}

// 1/2 x'Qx + a'x <= u as e = u - a'x, and 1/2 x'Qx + a'x >= l as e = a'x - l.
void ConicParts::add_constraint (std::int32_t constraint, TermRange terms)
{
    const Interval here = problem_.constraint.interval (index (constraint));
    const bool above = here.upper<infinity, below = here.lower> - infinity;
    if (!above && !below)
        return;
    const LocalMatrix matrix = matrix_of_constraint (problem_, terms, here, {});
    if (matrix.variables.empty ())
        return;
    insist_on_convexity (refuse_constraint (constraint, matrix, here));

    const Row row{add_quadratic_cone (matrix), above ? -1.0 : 1.0};
    rows_[index (constraint)] = row;
    g_[index (row.expression)] = above ? here.upper : -here.lower;
    const SymmetricTerms& bar = problem_.semidefinite.constraint;
    const TermRange range = bar.of_item (constraint);
    for (std::size_t k = range.begin; k < range.end; ++k) {
        semidefinite_.item.push_back (row.expression);
        semidefinite_.variable.push_back (bar.variable[k]);
        semidefinite_.row.push_back (bar.row[k]);
        semidefinite_.column.push_back (bar.column[k]);
        semidefinite_.value.push_back (row.factor * bar.value[k]);
    }
}

void ConicParts::add_constraints ()
{
    const std::vector<std::int32_t>& items = problem_.quadratic_constraint.item;
    for (std::size_t begin = 0, end = 0; begin < items.size (); begin = end) {
        while (end < items.size () && items[end] == items[begin])
            ++end;
        add_constraint (items[begin], {begin, end});
    }
}

void ConicParts::add_cones ()
{
    const Cones& cones = problem_.cone;
    for (std::int32_t k = 0; k < cones.count (); ++k) {
        const KLVdomaintype type = domain_of_cone[cones.type[index (k)]];
        const double exponents[] = {cones.parameter[index (k)], 1 - cones.parameter[index (k)]};
        const bool has_exponents = domain_rows[static_cast<std::size_t> (type)].has_exponents;
        const auto members = cones.members (k);
        std::int32_t expression =
            add_expressions (type, std::ssize (members), std::span (exponents).first (has_exponents ? 2 : 0));
        for (const std::int32_t member : members)
            entries_.push_back ({member, expression++, 1});
    }
}

// The columns of all expressions: the stated ones, those that were rows, then the entries.
void ConicParts::fill_columns ()
{
    const ColumnMatrix& stated = problem_.affine.f;
    std::ranges::sort (entries_, {}, [] (const Entry& e) { return std::pair (e.variable, e.expression); });
    f_.append_columns (problem_.variables () + more_variables_);
    f_.reserve (stated.entries () + std::ssize (entries_));
    std::vector<std::int32_t> expressions;
    std::vector<double> values;
    const auto add = [&] (std::int32_t expression, double value) {
        expressions.push_back (expression);
        values.push_back (value);
    };
    auto entry = entries_.begin ();
    for (std::int32_t j = 0; j < f_.columns (); ++j) {
        expressions.clear ();
        values.clear ();
        if (j < stated.columns ()) {
            const Column column = stated.column (j);
            expressions.assign (column.rows.begin (), column.rows.end ());
            values.assign (column.values.begin (), column.values.end ());
        }
        if (j < problem_.variables ()) {
            const Column column = problem_.matrix.column (j);
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                if (const Row& row = rows_[index (column.rows[k])]; row.expression >= 0)
                    add (row.expression, row.factor * column.values[k]);
        }
        for (; entry != entries_.end () && entry->variable == j; ++entry)
            add (entry->expression, entry->value);
        f_.put (j, expressions, values);
    }
}

void ConicParts::make ()
{
    try {
        add_objective ();
        add_constraints ();
    } catch (const std::length_error&) {
        refuse (KLV_RES_TOO_LARGE,
                "The factors of the quadratic terms have more entries than can be counted.");
    }
    if (has_cones_) {
        add_cones ();
        fill_columns ();
    }
}

void ConicParts::put (Problem& problem)
{
    problem.append_variables (more_variables_);
    if (more_variables_ > 0)
        problem.cost.back () = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    for (std::size_t i = 0; i < rows_.size (); ++i)
        if (rows_[i].expression >= 0) {
            problem.constraint.key[i] = KLV_BK_FR;
            problem.constraint.lower[i] = -infinity;
            problem.constraint.upper[i] = infinity;
        }
    problem.quadratic_objective = {};
    problem.quadratic_constraint = {};
    if (has_cones_) {
        problem.affine.f = std::move (f_);
        problem.affine.g = std::move (g_);
        problem.affine_constraint = std::move (affine_constraint_);
        problem.domain = std::move (domain_);
        problem.semidefinite.expression = std::move (semidefinite_);
        problem.cone = {};
        problem.cone_name = {};
    }
}

void convert_to_conic (Task& task)
{
    const Problem& problem = task.problem ();
    if (problem.quadratic_objective.count () == 0 && problem.quadratic_constraint.count () == 0)
        return;
    ConicParts parts (problem);
    parts.make ();
    parts.put (task.edit_problem ());
    task.drop_solutions ();
}

}
