#include "kalvo/forms/conic.h"

#include "kalvo/forms/common.h"
#include "kalvo/forms/curvature.h"
#include "kalvo/forms/scaling.h"
#include "kalvo/sparse/index.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <numeric>
#include <utility>

namespace klv {

using std::numbers::sqrt2;

// ---- Rows -------------------------------------------------------------------------------------------------------------------------

// What a row of the form is made of: linear parts of the stated problem, semidefinite terms included, and columns of the form.
enum class Part : std::uint8_t {
    constraint,
    affine_row,      // of the affine conic constraints, without its constant
    bound,           // a variable, in rows for its bounds
    member,          // a variable, in rows for its cone
    matrix_entry,    // an entry of a semidefinite variable, off the diagonal times the root of 2
    auxiliary,       // a variable that only the form has
    count
};

// Rows of one group stand together: those of equations, of inequalities, of cones.
enum class Group : std::uint8_t { zero, nonnegative, cone, count };

// A part of a row, times a factor.
struct Use {
    std::int32_t part, row;
    double factor;
};

// The uses of each part of one kind.
class Uses {
public:
    void add (std::int32_t part, std::int32_t row, double factor) { given_.push_back ({part, row, factor}); }

    // Uses are looked up by part from then on.
    void arrange (std::size_t parts)
    {
        start_.assign (parts + 1, 0);
        for (const Use& use : given_)
            ++start_[index (use.part) + 1];
        std::partial_sum (start_.begin (), start_.end (), start_.begin ());
        std::vector<Use> sorted (given_.size ());
        std::vector<std::size_t> next (start_.begin (), start_.end () - 1);
        for (const Use& use : given_)
            sorted[next[index (use.part)]++] = use;
        given_ = std::move (sorted);
    }
    std::span<const Use> of (std::size_t part) const
    {
        return std::span (given_).subspan (start_[part], start_[part + 1] - start_[part]);
    }
    template <class Function>
    void each (const Function& function)
    {
        for (Use& use : given_)
            function (use);
    }

    // What the multipliers z of the rows give each part.
    std::vector<double> multipliers (std::span<const double> z) const
    {
        std::vector<double> sums (start_.size () - 1);
        for (const Use& use : given_)
            sums[index (use.part)] += use.factor * z[index (use.row)];
        return sums;
    }

private:
    std::vector<std::size_t> start_;
    std::vector<Use> given_;
};

// A member of a block that lies in a domain: a part, its factor, and a constant.
struct Piece {
    Part part;
    std::int32_t number;
    double constant = 0;
    double factor = 1;

    Piece times (double by) const { return {part, number, by * constant, by * factor}; }
};

// A row of F of a quadratic constraint, in the rows of its cone.
struct FactorEntry {
    std::int32_t variable, row;
    double value;
};

// What a fixed variable leaves of a quadratic term.
struct LinearTerm {
    std::int32_t variable, constraint;
    double value;
};

// ---- Recovery -----------------------------------------------------------------------------------------------------------------------

class ConicRecovery final : public Recovery {
public:
    Point back (Point&& claimed) const override;
    std::shared_ptr<const Start> forth (std::shared_ptr<const Start>) const override { return nullptr; }

    double sign = 1;    // -1: a maximum was stated
    FixedVariables fixed;
    std::array<Uses, static_cast<std::size_t> (Part::count)> uses;
    std::vector<double> column_factor, row_factor;
    Factors factors;
    std::vector<std::int32_t> orders;    // of the semidefinite variables
    std::int32_t matrix_columns = 0;     // and the columns of all their entries
    std::vector<FactorEntry> factor_entries;
    std::shared_ptr<const Problem> stated;

private:
    const Uses& of (Part part) const { return uses[static_cast<std::size_t> (part)]; }
    void take_columns (std::span<const double> columns, bool direction, std::vector<double>& x,
                       std::vector<double>& barx) const;
    void take_multipliers (std::span<const double> z, std::vector<double>& y, Point& point) const;
    std::vector<double> point_of_ray (std::span<const double> z, std::span<const double> y) const;
};

void ConicRecovery::take_columns (std::span<const double> columns, bool direction, std::vector<double>& x,
                                  std::vector<double>& barx) const
{
    std::vector<double> values (columns.begin (), columns.end ());
    for (std::size_t j = 0; j < values.size (); ++j)
        values[j] *= column_factor[j] * (direction ? 1 : factors.point);
    x = fixed.spread (std::span (values).first (fixed.columns ()), direction);
    barx.resize (index (matrix_columns));
    std::size_t first = 0;
    for (const std::int32_t order : orders) {
        std::size_t to = first;
        for (std::int32_t column = 0; column < order; ++column)
            for (std::int32_t row = column; row < order; ++row) {
                const double entry =
                    values[fixed.columns () + first + index (row) * index (row + 1) / 2 + index (column)];
                barx[to++] = row == column ? entry : entry / sqrt2;
            }
        first = to;
    }
}

void ConicRecovery::take_multipliers (std::span<const double> z, std::vector<double>& y, Point& point) const
{
    y = of (Part::constraint).multipliers (z);
    point.doty = of (Part::affine_row).multipliers (z);
    point.snx = of (Part::member).multipliers (z);
    for (std::vector<double>* values : {&y, &point.doty, &point.snx})
        for (double& value : *values)
            value = sign * value + 0.0;
}

// The x with sum of y_i Q_i x equal to what the multipliers of the factors' rows give: there the ray's gradients are taken.
std::vector<double> ConicRecovery::point_of_ray (std::span<const double> z, std::span<const double> y) const
{
    if (stated->quadratic_constraint.count () == 0)
        return {};
    std::vector<double> weights, right (index (stated->variables ())), local;
    for (const double multiplier : y)
        weights.push_back (-sign * multiplier);
    for (const FactorEntry& entry : factor_entries)
        right[index (entry.variable)] -= entry.value * z[index (entry.row)];
    const SemidefiniteEquations equations (stated->quadratic_constraint, weights, fixed);
    for (const std::int32_t variable : equations.variables ())
        local.push_back (right[index (variable)]);
    equations.solve (local);
    std::vector<double> x = fixed.spread (std::vector<double> (fixed.columns ()), false);
    for (std::size_t k = 0; k < local.size (); ++k)
        x[index (equations.variables ()[k])] = local[k];
    return x;
}

Point ConicRecovery::back (Point&& claimed) const
{
    Point point{.outcome = claimed.outcome, .message = std::move (claimed.message)};
    const std::size_t columns = column_factor.size (), rows = row_factor.size ();
    const auto scaled = [&] (std::span<const double> z, double factor) {
        std::vector<double> values (z.begin (), z.end ());
        for (std::size_t i = 0; i < values.size (); ++i)
            values[i] *= row_factor[i] * factor;
        return values;
    };
    // An empty form has a point and multipliers too: only the outcome tells whether they are claimed.
    const bool has_point = claimed.outcome != Outcome::infeasible && claimed.outcome != Outcome::unbounded;
    if (claimed.outcome == Outcome::infeasible && claimed.dual_ray.size () == rows) {
        const std::vector<double> z = scaled (claimed.dual_ray, 1);
        take_multipliers (z, point.dual_ray, point);
        point.x = point_of_ray (z, point.dual_ray);
    }
    if (claimed.outcome == Outcome::unbounded && claimed.primal_ray.size () == columns)
        take_columns (claimed.primal_ray, true, point.primal_ray, point.barx);
    if (has_point && claimed.x.size () == columns && (columns > 0 || claimed.outcome == Outcome::optimal))
        take_columns (claimed.x, false, point.x, point.barx);
    if (has_point && claimed.y.size () == rows && (rows > 0 || claimed.outcome == Outcome::optimal))
        take_multipliers (scaled (claimed.y, factors.objective / factors.point), point.y, point);
    return point;
}

// ---- The form -----------------------------------------------------------------------------------------------------------------------

class ConicBuilder {
public:
    ConicBuilder (std::shared_ptr<const Problem> stated, double infinite_bound, bool scaled)
        : stated_ (std::move (stated)),
          problem_ (*stated_),
          infinite_bound_ (infinite_bound),
          scaled_ (scaled),
          recovery_ (std::make_shared<ConicRecovery> ()),
          fixed_ (problem_)
    {}

    Lowered build ();

private:
    Interval bounds (const Bounds& stated, std::size_t item);
    std::int32_t add_row (Group group, std::initializer_list<Piece> pieces);
    void add_nonnegative (const Piece& piece) { add_row (Group::nonnegative, {piece}); }
    void add_cone (ConeKind kind, std::int32_t rows, std::int32_t order = 0, double exponent = 0);
    void add_second_order (std::span<const Piece> pieces);
    void add_rotated (const Piece& first, const Piece& second, std::span<const Piece> rest);
    void add_power (std::span<const Piece> factors, std::span<const double> weights,
                    std::span<const Piece> rest);
    void add_semidefinite (std::span<const Piece> lower_by_columns);
    Piece add_auxiliary () { return {Part::auxiliary, auxiliaries_++}; }
    void add_domain (KLVdomaintype type, std::span<const Piece> pieces, std::span<const double> exponents);

    Interval take_fixed_terms (std::int32_t constraint, TermRange range, Interval here);
    bool add_quadratic (std::int32_t constraint, TermRange terms, Interval here);
    void add_interval (Part part, std::size_t item, Interval here);
    void add_constraints ();
    void add_bounds ();
    void add_affine_constraints ();
    void add_cones ();
    void add_matrices ();

    void number_rows ();
    void fill_columns (ConicForm& form);
    void scale (ConicForm& form);

    std::shared_ptr<const Problem> stated_;
    const Problem& problem_;
    double infinite_bound_;
    bool scaled_;
    Lowered lowered_;
    std::shared_ptr<ConicRecovery> recovery_;
    FixedVariables fixed_;

    std::array<std::vector<double>, static_cast<std::size_t> (Group::count)>
        constants_;    // of rows, by group
    std::array<Uses, static_cast<std::size_t> (Part::count)> uses_;
    std::vector<FactorEntry> factor_entries_;
    std::vector<LinearTerm> linear_terms_;
    std::vector<ElementaryCone> cones_;    // of the third group
    std::int32_t auxiliaries_ = 0;
};

// ---- Rows of domains ------------------------------------------------------------------------------------------------------------------

// Rows are numbered within their groups: those of later groups are told by large numbers, and get their own when all are known.
constexpr std::int32_t rows_of_a_group = 1 << 29;

std::int32_t ConicBuilder::add_row (Group group, std::initializer_list<Piece> pieces)
{
    std::vector<double>& constants = constants_[static_cast<std::size_t> (group)];
    const auto number =
        static_cast<std::int32_t> (constants.size ()) + rows_of_a_group * static_cast<std::int32_t> (group);
    double constant = 0;
    for (const Piece& piece : pieces) {
        constant += piece.constant;
        if (piece.factor != 0)
            uses_[static_cast<std::size_t> (piece.part)].add (piece.number, number, piece.factor);
    }
    constants.push_back (constant);
    return number;
}

void ConicBuilder::add_cone (ConeKind kind, std::int32_t rows, std::int32_t order, double exponent)
{
    cones_.push_back ({kind, rows, order, exponent});
}

void ConicBuilder::add_second_order (std::span<const Piece> pieces)
{
    if (pieces.size () == 1)
        return add_nonnegative (pieces.front ());
    for (const Piece& piece : pieces)
        add_row (Group::cone, {piece});
    add_cone (ConeKind::second_order, static_cast<std::int32_t> (pieces.size ()));
}

void ConicBuilder::add_rotated (const Piece& first, const Piece& second, std::span<const Piece> rest)
{
    if (rest.empty ()) {
        add_nonnegative (first);
        return add_nonnegative (second);
    }
    add_row (Group::cone, {first.times (1 / sqrt2), second.times (1 / sqrt2)});
    add_row (Group::cone, {first.times (1 / sqrt2), second.times (-1 / sqrt2)});
    for (const Piece& piece : rest)
        add_row (Group::cone, {piece});
    add_cone (ConeKind::second_order, static_cast<std::int32_t> (rest.size ()) + 2);
}

// A chain of three-dimensional cones: the weighted mean of the first factors, then of that mean and the next factor, and so on.
void ConicBuilder::add_power (std::span<const Piece> factors, std::span<const double> weights,
                              std::span<const Piece> rest)
{
    constexpr double negligible = 1e-15;
    if (rest.empty ()) {
        for (const Piece& factor : factors)
            add_nonnegative (factor);
        return;
    }
    Piece mean = factors.front ();
    double weight = weights.front ();
    for (std::size_t k = 1; k < factors.size (); ++k) {
        weight += weights[k];
        const bool last = k + 1 == factors.size () && rest.size () == 1;
        const Piece next = last ? rest.front () : add_auxiliary ();
        const double share = weights[k] / weight;
        if (share <= negligible || share >= 1) {
            const bool keeps_mean = share <= negligible;
            add_nonnegative (keeps_mean ? factors[k] : mean);
            add_second_order (std::array{keeps_mean ? mean : factors[k], next});
        } else {
            add_row (Group::cone, {mean});
            add_row (Group::cone, {factors[k]});
            add_row (Group::cone, {next});
            add_cone (ConeKind::power, 3, 0, 1 - share);
        }
        mean = next;
        if (last)
            return;
    }
    std::vector<Piece> block{mean};
    block.insert (block.end (), rest.begin (), rest.end ());
    add_second_order (block);
}

void ConicBuilder::add_semidefinite (std::span<const Piece> lower_by_columns)
{
    std::int32_t order = 0;
    while (packed_length (order) < std::ssize (lower_by_columns))
        ++order;
    if (order == 1)
        return add_nonnegative (lower_by_columns.front ());
    for (std::int32_t row = 0; row < order; ++row)    // columns of the upper triangle
        for (std::int32_t column = 0; column <= row; ++column) {
            const std::int64_t place = column * (2 * std::int64_t{order} - column - 1) / 2 + row;
            add_row (Group::cone, {lower_by_columns[static_cast<std::size_t> (place)]});
        }
    add_cone (ConeKind::semidefinite, static_cast<std::int32_t> (lower_by_columns.size ()), order);
}

void ConicBuilder::add_domain (KLVdomaintype type, std::span<const Piece> pieces,
                               std::span<const double> exponents)
{
    const auto add_each = [&] (Group group, double factor) {
        for (const Piece& piece : pieces)
            add_row (group, {piece.times (factor)});
    };
    // The dual cone of a power cone is one too, its factors divided by their weights.
    const auto add_weighted = [&] (std::size_t count, std::span<const double> given, bool dual) {
        std::vector<Piece> factors (pieces.begin (), pieces.begin () + static_cast<std::ptrdiff_t> (count));
        std::vector<double> weights (given.begin (), given.end ());
        weights.resize (count, 1.0);
        const double sum = std::accumulate (weights.begin (), weights.end (), 0.0);
        for (std::size_t k = 0; k < count; ++k) {
            weights[k] /= sum;
            if (dual)
                factors[k] = factors[k].times (1 / weights[k]);
        }
        add_power (factors, weights, pieces.subspan (count));
    };
    switch (type) {
    case KLV_DOMAIN_FREE:
        return;
    case KLV_DOMAIN_ZERO:
        return add_each (Group::zero, 1);
    case KLV_DOMAIN_NONNEGATIVE:
        return add_each (Group::nonnegative, 1);
    case KLV_DOMAIN_NONPOSITIVE:
        return add_each (Group::nonnegative, -1);
    case KLV_DOMAIN_QUADRATIC_CONE:
        return add_second_order (pieces);
    case KLV_DOMAIN_ROTATED_QUADRATIC_CONE:
        return add_rotated (pieces[0], pieces[1], pieces.subspan (2));
    case KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE:
        add_row (Group::cone, {pieces[2]});
        add_row (Group::cone, {pieces[1]});
        add_row (Group::cone, {pieces[0]});
        return add_cone (ConeKind::exponential, 3);
    case KLV_DOMAIN_DUAL_EXPONENTIAL_CONE:
        add_row (Group::cone, {pieces[2], pieces[1].times (-1)});
        add_row (Group::cone, {pieces[2].times (-1)});
        add_row (Group::cone, {pieces[0]});
        return add_cone (ConeKind::exponential, 3);
    case KLV_DOMAIN_PRIMAL_POWER_CONE:
    case KLV_DOMAIN_DUAL_POWER_CONE:
        return add_weighted (exponents.size (), exponents, type == KLV_DOMAIN_DUAL_POWER_CONE);
    case KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE:
    case KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE:
        return add_weighted (pieces.size () - 1, {}, type == KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE);
    case KLV_DOMAIN_SEMIDEFINITE_CONE:
        return add_semidefinite (pieces);
    default:
        return;
    }
}

// ---- Rows of the stated problem ---------------------------------------------------------------------------------------------------------

Interval ConicBuilder::bounds (const Bounds& stated, std::size_t item)
{
    return within (stated.interval (item), infinite_bound_, lowered_.infinite_bounds);
}

void ConicBuilder::add_interval (Part part, std::size_t item, Interval here)
{
    const auto number = static_cast<std::int32_t> (item);
    if (here.lower == here.upper) {
        add_row (Group::zero, {{part, number, -here.lower}});
        return;
    }
    if (here.lower > -infinity)
        add_row (Group::nonnegative, {{part, number, -here.lower}});
    if (here.upper < infinity)
        add_row (Group::nonnegative, {{part, number, here.upper, -1}});
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
    const double r = std::sqrt (std::abs (bound) > 0 ? std::abs (bound) : 1.0);
    const Piece first{Part::auxiliary, 0, r, 0};
    const Piece second{Part::constraint, constraint, bound / r, -direction / r};
    add_row (Group::cone, {first.times (1 / sqrt2), second.times (1 / sqrt2)});
    add_row (Group::cone, {first.times (1 / sqrt2), second.times (-1 / sqrt2)});
    const SparseColumns factor = factor_semidefinite (matrix);
    for (std::size_t k = 0; k < index (factor.columns ()); ++k) {
        const std::int32_t row = add_row (Group::cone, {});
        const auto variables = factor.rows_of (k);
        const auto values = factor.values_of (k);
        for (std::size_t i = 0; i < variables.size (); ++i)
            factor_entries_.push_back ({variables[i], row, values[i]});
    }
    add_cone (ConeKind::second_order, factor.columns () + 2);
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
            add_domain (static_cast<KLVdomaintype> (problem_.domain.type[index (domain)]), pieces,
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
            add_domain (domain_of_cone[all.type[index (k)]], pieces, exponents);
    }
}

void ConicBuilder::add_matrices ()
{
    std::int32_t first = 0;
    for (const std::int32_t order : problem_.semidefinite.order) {
        const auto length = static_cast<std::int32_t> (packed_length (order));
        if (order == 1)
            add_nonnegative ({Part::matrix_entry, first});
        else if (order > 1) {
            for (std::int32_t entry = first; entry < first + length; ++entry)
                add_row (Group::cone, {{Part::matrix_entry, entry}});
            add_cone (ConeKind::semidefinite, length, order);
        }
        first += length;
    }
}

// ---- Columns ------------------------------------------------------------------------------------------------------------------------------

void ConicBuilder::number_rows ()
{
    std::array<std::int32_t, static_cast<std::size_t> (Group::count)> first{};
    for (std::size_t group = 1; group < first.size (); ++group)
        first[group] = first[group - 1] + static_cast<std::int32_t> (constants_[group - 1].size ());
    const auto number = [&] (std::int32_t& row) {
        row = first[index (row / rows_of_a_group)] + row % rows_of_a_group;
    };
    for (Uses& uses : uses_)
        uses.each ([&] (Use& use) { number (use.row); });
    for (FactorEntry& entry : factor_entries_)
        number (entry.row);
    const SemidefiniteVariables& bar = problem_.semidefinite;
    const std::size_t counts[] = {problem_.constraint.key.size (), index (problem_.affine_constraint.rows ()),
                                  problem_.variable.key.size (),   problem_.variable.key.size (),
                                  index (bar.length ()),           index (auxiliaries_)};
    for (std::size_t part = 0; part < uses_.size (); ++part)
        uses_[part].arrange (counts[part]);
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

// Entries by column, without order within one.
template <class Entry>
static std::vector<std::size_t> starts_of (const std::vector<Entry>& entries, std::size_t columns)
{
    std::vector<std::size_t> starts (columns + 1, 0);
    for (const Entry& entry : entries)
        ++starts[index (entry.column) + 1];
    std::partial_sum (starts.begin (), starts.end (), starts.begin ());
    return starts;
}

void ConicBuilder::fill_columns (ConicForm& form)
{
    for (const std::vector<double>& constants : constants_)
        form.right.insert (form.right.end (), constants.begin (), constants.end ());
    ColumnSums sums (form.right.size ());
    const auto add_all = [&] (std::span<const Use> uses, double value) {
        for (const Use& use : uses)
            sums.add (use.row, value * use.factor);
    };
    const auto of = [&] (Part part, std::size_t number) {
        return uses_[static_cast<std::size_t> (part)].of (number);
    };
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
    for (std::size_t k = 0; k < index (auxiliaries_); ++k) {
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
    recovery_->factors = choose_units (form, largest_finite (form.right));
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
    number_rows ();
    const auto rows_in = [&] (Group group) {
        return static_cast<std::int32_t> (constants_[static_cast<std::size_t> (group)].size ());
    };
    form.cones.push_back ({ConeKind::zero, rows_in (Group::zero)});
    form.cones.push_back ({ConeKind::nonnegative, rows_in (Group::nonnegative)});
    form.cones.insert (form.cones.end (), cones_.begin (), cones_.end ());
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
    recovery_->uses = std::move (uses_);
    recovery_->orders = problem_.semidefinite.order;
    recovery_->matrix_columns = problem_.semidefinite.length ();
    recovery_->factor_entries = std::move (factor_entries_);
    recovery_->fixed = std::move (fixed_);
    recovery_->stated = stated_;
    lowered_.recovery = recovery_;
    lowered_.form = whole;
    return std::move (lowered_);
}

Lowered lower_conic (std::shared_ptr<const Problem> stated, double infinite_bound, bool scaled)
{
    return ConicBuilder (std::move (stated), infinite_bound, scaled).build ();
}

}
