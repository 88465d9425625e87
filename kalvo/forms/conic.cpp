#include "kalvo/forms/conic.h"

#include "kalvo/forms/common.h"
#include "kalvo/forms/conic_recovery.h"
#include "kalvo/forms/conic_rows.h"
#include "kalvo/forms/curvature.h"
#include "kalvo/forms/scaling.h"
#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace klv {

using std::numbers::sqrt2;

// What a fixed variable leaves of a quadratic term.
struct LinearTerm {
    std::int32_t variable, constraint;
    double value;
};

class ConicBuilder {
public:
    ConicBuilder (std::shared_ptr<const Problem> stated, double infinite_bound, bool scaled,
                  const Centre* centre)
        : stated_ (std::move (stated)),
          problem_ (*stated_),
          infinite_bound_ (infinite_bound),
          scaled_ (scaled),
          recovery_ (std::make_shared<ConicRecovery> ()),
          fixed_ (problem_),
          rows_ (centre)
    {}

    Lowered build ();

private:
    Interval bounds (const Bounds& stated, std::size_t item);
    Interval take_fixed_terms (std::int32_t constraint, TermRange range, Interval here);
    bool add_quadratic (std::int32_t constraint, TermRange terms, Interval here);
    void add_interval (Part part, std::size_t item, Interval here);
    void add_constraints ();
    void add_bounds ();
    void add_affine_constraints ();
    void add_cones ();
    void add_matrices ();

    void arrange_rows ();
    void fill_columns (ConicForm& form);
    void scale (ConicForm& form);

    std::shared_ptr<const Problem> stated_;
    const Problem& problem_;
    double infinite_bound_;
    bool scaled_;
    Lowered lowered_;
    std::shared_ptr<ConicRecovery> recovery_;
    FixedVariables fixed_;

    ConicRows rows_;
    std::vector<FactorEntry> factor_entries_;
    std::vector<LinearTerm> linear_terms_;
};

// ---- Rows of the stated problem ---------------------------------------------------------------------------------------------------------

Interval ConicBuilder::bounds (const Bounds& stated, std::size_t item)
{
    return within (stated.interval (item), infinite_bound_, lowered_.infinite_bounds);
}

void ConicBuilder::add_interval (Part part, std::size_t item, Interval here)
{
    const auto number = static_cast<std::int32_t> (item);
    if (here.lower == here.upper) {
        rows_.add_row (Group::zero, {{part, number, -here.lower}});
        return;
    }
    if (here.lower > -infinity)
        rows_.add_row (Group::nonnegative, {{part, number, -here.lower}});
    if (here.upper < infinity)
        rows_.add_row (Group::nonnegative, {{part, number, here.upper, -1}});
}

// Terms of fixed variables are linear, or constant: the latter are taken from the bounds.
Interval ConicBuilder::take_fixed_terms (std::int32_t constraint, TermRange range, Interval here)
{
    const SymmetricTerms& terms = problem_.quadratic_constraint;
    double constant = 0;
    for (std::size_t k = range.begin; k < range.end; ++k) {
        const std::size_t row = index (terms.row[k]), column = index (terms.column[k]);
        const bool fixed = fixed_.is_fixed (row);
        if (fixed && fixed_.is_fixed (column))
            constant +=
                (row == column ? 0.5 : 1) * terms.value[k] * fixed_.value (row) * fixed_.value (column);
        else if (fixed || fixed_.is_fixed (column))
            linear_terms_.push_back ({fixed ? terms.column[k] : terms.row[k], constraint,
                                      terms.value[k] * fixed_.value (fixed ? row : column)});
    }
    return {here.lower - constant, here.upper - constant};
}

// 1/2 x'Qx + a'x <= u as 2 r (u - a'x) / r >= |Fx|^2, for any positive r.
bool ConicBuilder::add_quadratic (std::int32_t constraint, TermRange terms, Interval here)
{
    if (here.lower == -infinity && here.upper == infinity)
        return true;
    const LocalMatrix matrix = matrix_of_constraint (problem_, terms, here, fixed_);
    lowered_.refused = refuse_constraint (constraint, matrix, here);
    if (lowered_.refused.item != Refused::Item::none)
        return false;
    here = take_fixed_terms (constraint, terms, here);
    const double direction = here.upper < infinity ? 1 : -1;
    if (matrix.variables.empty ()) {
        add_interval (Part::constraint, index (constraint), here);
        return true;
    }
    const double bound = direction > 0 ? here.upper : -here.lower;
    const Piece room{Part::constraint, constraint, bound, -direction};
    const double there = rows_.positive_at_centre (room);
    const double r = std::sqrt (there > 0 ? there : std::abs (bound) > 0 ? std::abs (bound) : 1);
    const Piece first{Part::auxiliary, 0, r, 0};
    rows_.add_row (Group::cone, {first.times (1 / sqrt2), room.times (1 / (r * sqrt2))});
    rows_.add_row (Group::cone, {first.times (1 / sqrt2), room.times (-1 / (r * sqrt2))});
    const SparseColumns factor = factor_semidefinite (matrix);
    for (std::size_t k = 0; k < index (factor.columns ()); ++k) {
        const std::int32_t row = rows_.add_row (Group::cone, {});
        const auto variables = factor.rows_of (k);
        const auto values = factor.values_of (k);
        for (std::size_t i = 0; i < variables.size (); ++i)
            factor_entries_.push_back ({variables[i], row, values[i]});
    }
    rows_.add_cone (ConeKind::second_order, factor.columns () + 2);
    return true;
}

void ConicBuilder::add_constraints ()
{
    const std::vector<std::int32_t>& items = problem_.quadratic_constraint.item;
    std::size_t next = 0;
    for (std::size_t i = 0; i < problem_.constraint.key.size (); ++i) {
        const Interval here = bounds (problem_.constraint, i);
        const auto constraint = static_cast<std::int32_t> (i);
        const std::size_t begin = next;
        while (next < items.size () && items[next] == constraint)
            ++next;
        if (begin == next)
            add_interval (Part::constraint, i, here);
        else if (!add_quadratic (constraint, {begin, next}, here))
            return;
    }
}

void ConicBuilder::add_bounds ()
{
    for (std::size_t j = 0; j < problem_.variable.key.size (); ++j)
        if (!fixed_.is_fixed (j))
            add_interval (Part::bound, j, bounds (problem_.variable, j));
}

void ConicBuilder::add_affine_constraints ()
{
    const AffineConstraints& all = problem_.affine_constraint;
    std::vector<Piece> pieces;
    for (std::size_t k = 0, row = 0; k < all.domain.size (); ++k) {
        pieces.clear ();
        for (; row < index (all.end[k]); ++row)
            pieces.push_back ({Part::affine_row, static_cast<std::int32_t> (row),
                               problem_.affine.g[index (all.expression[row])] - all.b[row]});
        const std::int32_t domain = all.domain[k];
        if (!pieces.empty ())
            rows_.add_domain (static_cast<KLVdomaintype> (problem_.domain.type[index (domain)]), pieces,
                              problem_.domain.exponents (domain));
    }
}

void ConicBuilder::add_cones ()
{
    const Cones& all = problem_.cone;
    std::vector<Piece> pieces;
    for (std::int32_t k = 0; k < all.count (); ++k) {
        pieces.clear ();
        for (const std::int32_t member : all.members (k))
            pieces.push_back ({Part::member, member});
        const double exponents[] = {all.parameter[index (k)], 1 - all.parameter[index (k)]};
        if (!pieces.empty ())
            rows_.add_domain (domain_of_cone[all.type[index (k)]], pieces, exponents);
    }
}

void ConicBuilder::add_matrices ()
{
    std::int32_t first = 0;
    for (const std::int32_t order : problem_.semidefinite.order) {
        const auto length = static_cast<std::int32_t> (packed_length (order));
        if (order == 1)
            rows_.add_nonnegative ({Part::matrix_entry, first});
        else if (order > 1) {
            for (std::int32_t entry = first; entry < first + length; ++entry)
                rows_.add_row (Group::cone, {{Part::matrix_entry, entry}});
            rows_.add_cone (ConeKind::semidefinite, length, order);
        }
        first += length;
    }
}

// ---- Columns ------------------------------------------------------------------------------------------------------------------------------
void ConicBuilder::arrange_rows ()
{
    const std::size_t counts[] = {problem_.constraint.key.size (), index (problem_.affine_constraint.rows ()),
                                  problem_.variable.key.size (), problem_.variable.key.size (),
                                  index (problem_.semidefinite.length ())};
    rows_.arrange (counts);
    for (FactorEntry& entry : factor_entries_)
        entry.row = rows_.arranged (entry.row);
}

// Adds up what a column has in each row.
class ColumnSums {
public:
    explicit ColumnSums (std::size_t rows) : place_ (rows, 0) {}

    void add (std::int32_t row, double value)
    {
        std::size_t& place = place_[index (row)];
        if (place == 0) {
            entries_.emplace_back (row, value);
            place = entries_.size ();
        } else
            entries_[place - 1].second += value;
    }
    // Calls the function with each row, in order, and its sum, and begins a new column.
    template <class Function>
    void take (const Function& function)
    {
        if (!std::ranges::is_sorted (entries_, {}, &Entry::first))
            std::ranges::sort (entries_, {}, &Entry::first);
        for (const auto& [row, value] : entries_) {
            place_[index (row)] = 0;
            if (value != 0)
                function (row, value);
        }
        entries_.clear ();
    }

private:
    using Entry = std::pair<std::int32_t, double>;
    std::vector<std::size_t> place_;    // of each row's entry, plus 1
    std::vector<Entry> entries_;
};

void ConicBuilder::fill_columns (ConicForm& form)
{
    form.right = rows_.constants ();
    ColumnSums sums (form.right.size ());
    const auto add_all = [&] (std::span<const Use> uses, double value) {
        for (const Use& use : uses)
            sums.add (use.row, value * use.factor);
    };
    const auto of = [&] (Part part, std::size_t number) { return rows_.uses_of (part, number); };
    const auto end_column = [&] {
        sums.take ([&] (std::int32_t row, double value) {
            form.matrix.rows.push_back (row);
            form.matrix.values.push_back (-value);
        });
        form.matrix.starts.push_back (static_cast<std::int32_t> (form.matrix.rows.size ()));
    };
    const AffineExpressions& affine = problem_.affine;
    const RowsOfExpressions rows_of (problem_.affine_constraint, affine.count ());
    const auto add_expression = [&] (std::int32_t expression, double value) {
        for (const std::int32_t row : rows_of (expression))
            add_all (of (Part::affine_row, index (row)), value);
    };
    std::ranges::stable_sort (factor_entries_, {}, &FactorEntry::variable);
    auto factor_entry = factor_entries_.begin ();
    std::ranges::stable_sort (linear_terms_, {}, &LinearTerm::variable);
    auto linear_term = linear_terms_.begin ();
    for (std::size_t j = 0; j < problem_.variable.key.size (); ++j) {
        const auto variable = static_cast<std::int32_t> (j);
        const Column column = problem_.matrix.column (variable);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            add_all (of (Part::constraint, index (column.rows[k])), column.values[k]);
        if (variable < affine.f.columns ()) {
            const Column expressions = affine.f.column (variable);
            for (std::size_t k = 0; k < expressions.rows.size (); ++k)
                add_expression (expressions.rows[k], expressions.values[k]);
        }
        add_all (of (Part::bound, j), 1);
        add_all (of (Part::member, j), 1);
        for (; factor_entry != factor_entries_.end () && factor_entry->variable == variable; ++factor_entry)
            sums.add (factor_entry->row, factor_entry->value);
        for (; linear_term != linear_terms_.end () && linear_term->variable == variable; ++linear_term)
            add_all (of (Part::constraint, index (linear_term->constraint)), linear_term->value);
        if (fixed_.is_fixed (j))
            sums.take ([&] (std::int32_t row, double value) {
                form.right[index (row)] += value * fixed_.value (j);
            });
        else
            end_column ();
    }

    // Semidefinite terms by the columns of their entries.
    const SemidefiniteVariables& bar = problem_.semidefinite;
    struct BarEntry {
        std::int32_t column, item;
        double value;
    };
    const auto column_of = [&] (const SymmetricTerms& terms, std::size_t k) {
        return bar.begin_of (terms.variable[k]) + static_cast<std::int32_t> (packed_length (terms.row[k])) +
               terms.column[k];
    };
    const auto value_of = [] (const SymmetricTerms& terms, std::size_t k) {
        return terms.row[k] == terms.column[k] ? terms.value[k] : sqrt2 * terms.value[k];
    };
    const auto by_column = [&] (const SymmetricTerms& terms) {
        std::vector<BarEntry> entries (terms.value.size ());
        for (std::size_t k = 0; k < entries.size (); ++k)
            entries[k] = {column_of (terms, k), terms.item[k], value_of (terms, k)};
        std::ranges::stable_sort (entries, {}, &BarEntry::column);
        return entries;
    };
    const std::vector<BarEntry> in_constraints = by_column (bar.constraint),
                                in_expressions = by_column (bar.expression);
    auto constraint = in_constraints.begin (), expression = in_expressions.begin ();
    for (std::int32_t column = 0; column < bar.length (); ++column) {
        for (; constraint != in_constraints.end () && constraint->column == column; ++constraint)
            add_all (of (Part::constraint, index (constraint->item)), constraint->value);
        for (; expression != in_expressions.end () && expression->column == column; ++expression)
            add_expression (expression->item, expression->value);
        add_all (of (Part::matrix_entry, index (column)), 1);
        end_column ();
    }
    for (std::size_t k = 0; k < rows_.auxiliaries (); ++k) {
        add_all (of (Part::auxiliary, k), 1);
        end_column ();
    }
    form.cost.resize (index (form.matrix.columns ()));
    form.quadratic.starts.resize (form.cost.size () + 1, form.quadratic.starts.back ());
    for (std::size_t k = 0; k < bar.objective.value.size (); ++k)
        form.cost[fixed_.columns () + index (column_of (bar.objective, k))] +=
            form.sign * value_of (bar.objective, k);
}

void ConicBuilder::scale (ConicForm& form)
{
    std::vector<std::int32_t> group (form.right.size ());
    std::size_t row = 0;
    for (const ElementaryCone& cone : form.cones) {
        const bool shared = cone.kind != ConeKind::zero && cone.kind != ConeKind::nonnegative;
        const std::size_t first = row;
        for (; row < first + index (cone.rows); ++row)
            group[row] = static_cast<std::int32_t> (shared ? first : row);
    }
    ScaledMatrix matrices[] = {{form.matrix, std::move (group), {}}};
    recovery_->column_factor = equilibrate (form.quadratic, matrices, form.cost.size ());
    recovery_->row_factor = std::move (matrices[0].row_factor);
    std::ranges::transform (form.cost, recovery_->column_factor, form.cost.begin (), std::multiplies{});
    std::ranges::transform (form.right, recovery_->row_factor, form.right.begin (), std::multiplies{});
    recovery_->factors = choose_units (form, largest_finite (form.right), 100);
    for (double& right : form.right)
        right /= recovery_->factors.point;
}

Lowered ConicBuilder::build ()
{
    const auto whole = std::make_shared<Form> (ConicForm ());
    auto& form = std::get<ConicForm> (*whole);
    form.sign = problem_.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    ObjectiveParts objective = lower_objective (problem_, fixed_);
    lowered_.refused = objective.refused;
    if (lowered_.refused.item == Refused::Item::none)
        add_constraints ();
    if (lowered_.refused.item != Refused::Item::none)
        return std::move (lowered_);
    add_bounds ();
    add_affine_constraints ();
    add_cones ();
    add_matrices ();
    arrange_rows ();
    lowered_.centred = rows_.depend_on_centre ();
    form.cones = rows_.cones ();
    form.constant = objective.constant;
    form.cost = std::move (objective.cost);
    form.quadratic = std::move (objective.quadratic);
    fill_columns (form);
    if (scaled_)
        scale (form);
    else {
        recovery_->column_factor.assign (form.cost.size (), 1.0);
        recovery_->row_factor.assign (form.right.size (), 1.0);
    }

    recovery_->sign = problem_.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    recovery_->uses = rows_.take_uses ();
    recovery_->orders = problem_.semidefinite.order;
    recovery_->matrix_columns = problem_.semidefinite.length ();
    recovery_->factor_entries = std::move (factor_entries_);
    recovery_->fixed = std::move (fixed_);
    recovery_->stated = stated_;
    lowered_.recovery = recovery_;
    lowered_.form = whole;
    return std::move (lowered_);
}

Lowered lower_conic (std::shared_ptr<const Problem> stated, double infinite_bound, bool scaled,
                     const Centre* centre)
{
    return ConicBuilder (std::move (stated), infinite_bound, scaled, centre).build ();
}

}
