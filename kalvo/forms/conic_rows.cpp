#include "kalvo/forms/conic_rows.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace klv {

using std::numbers::sqrt2;

// Rows are numbered within their groups: those of later groups are told by large numbers, and get their own when all are known.
constexpr std::int32_t rows_of_a_group = 1 << 29;

std::int32_t ConicRows::add_row (Group group, std::span<const Piece> pieces)
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

void ConicRows::add_second_order (std::span<const Piece> pieces)
{
    if (pieces.size () == 1)
        return add_nonnegative (pieces.front ());
    for (const Piece& piece : pieces)
        add_row (Group::cone, {piece});
    add_cone (ConeKind::second_order, static_cast<std::int32_t> (pieces.size ()));
}

double ConicRows::value_at_centre (const Piece& piece) const
{
    const std::vector<double>& values = piece.part == Part::auxiliary    ? auxiliary_at_centre_
                                        : piece.part == Part::affine_row ? centre_->affine_rows
                                        : piece.part == Part::constraint ? centre_->constraints
                                                                         : centre_->variables;
    return piece.constant + piece.factor * values[index (piece.number)];
}

double ConicRows::positive_at_centre (const Piece& piece)
{
    const double value = centre_ == nullptr ? 0 : std::max (value_at_centre (piece), 0.0);
    depend_on_centre_ = depend_on_centre_ || value > 0;
    return value;
}

// A power of two near to the one value divided by the other; 1 where there is no centre inside the cone.
double ConicRows::ratio_at_centre (const Piece& first, const Piece& second)
{
    constexpr double least = 0x1p-100, most = 0x1p100;
    if (centre_ == nullptr)
        return 1;
    const double one = value_at_centre (first), other = value_at_centre (second);
    if (!(one > 0 && other > 0))
        return 1;
    const double ratio = std::exp2 (std::round (std::log2 (std::clamp (one / other, least, most))));
    depend_on_centre_ = depend_on_centre_ || ratio != 1;
    return ratio;
}

// (first, second, rest) -> (first / s, second s, rest)
void ConicRows::add_rotated (const Piece& first, const Piece& second, std::span<const Piece> rest)
{
    if (rest.empty ()) {
        add_nonnegative (first);
        return add_nonnegative (second);
    }
    const double s = std::exp2 (std::round (0.5 * std::log2 (ratio_at_centre (first, second))));
    add_row (Group::cone, {first.times (1 / (s * sqrt2)), second.times (s / sqrt2)});
    add_row (Group::cone, {first.times (1 / (s * sqrt2)), second.times (-s / sqrt2)});
    for (const Piece& piece : rest)
        add_row (Group::cone, {piece});
    add_cone (ConeKind::second_order, static_cast<std::int32_t> (rest.size ()) + 2);
}

// scale exp (exponent / scale) <= bound: (exponent, scale, bound) -> (exponent - k scale, scale, e^-k bound)
void ConicRows::add_exponential (std::vector<Piece>&& exponent, const Piece& scale, const Piece& bound)
{
    const double power = ratio_at_centre (bound, scale);
    if (power != 1)
        exponent.push_back (scale.times (-std::log (power)));
    add_row (Group::cone, exponent);
    add_row (Group::cone, {scale});
    add_row (Group::cone, {bound.times (1 / power)});
    add_cone (ConeKind::exponential, 3);
}

// A variable for the largest weighted geometric mean of two factors.
Piece ConicRows::add_mean (const Piece& first, const Piece& second, double share)
{
    if (centre_ != nullptr)
        auxiliary_at_centre_.push_back (std::pow (std::max (value_at_centre (first), 0.0), share) *
                                        std::pow (std::max (value_at_centre (second), 0.0), 1 - share));
    return {Part::auxiliary, static_cast<std::int32_t> (auxiliaries_++)};
}

// first^share second^(1-share) >= |mean|: (first, second, mean) -> (first / s, s second, s^(1-2 share) mean)
void ConicRows::add_power_of_two_factors (const Piece& first, const Piece& second, const Piece& mean,
                                          double share)
{
    const double s = std::exp2 (std::round (0.5 * std::log2 (ratio_at_centre (first, second))));
    add_row (Group::cone, {first.times (1 / s)});
    add_row (Group::cone, {second.times (s)});
    add_row (Group::cone, {mean.times (std::pow (s, 1 - 2 * share))});
    add_cone (ConeKind::power, 3, 0, share);
}

// A chain of three-dimensional cones: the weighted mean of the first factors, then of that mean and the next factor, and so on.
void ConicRows::add_power (std::span<const Piece> factors, std::span<const double> weights,
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
        const double share = weights[k] / weight;
        const Piece next = last ? rest.front () : add_mean (mean, factors[k], 1 - share);
        if (share <= negligible || share >= 1) {
            const bool keeps_mean = share <= negligible;
            add_nonnegative (keeps_mean ? factors[k] : mean);
            add_second_order (std::array{keeps_mean ? mean : factors[k], next});
        } else
            add_power_of_two_factors (mean, factors[k], next, 1 - share);
        mean = next;
        if (last)
            return;
    }
    std::vector<Piece> block{mean};
    block.insert (block.end (), rest.begin (), rest.end ());
    add_second_order (block);
}

void ConicRows::add_semidefinite (std::span<const Piece> lower_by_columns)
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

void ConicRows::add_domain (KLVdomaintype type, std::span<const Piece> pieces,
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
        return add_exponential ({pieces[2]}, pieces[1], pieces[0]);
    case KLV_DOMAIN_DUAL_EXPONENTIAL_CONE:
        return add_exponential ({pieces[2], pieces[1].times (-1)}, pieces[2].times (-1), pieces[0]);
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

std::int32_t ConicRows::arranged (std::int32_t row) const
{
    const std::int32_t group = row / rows_of_a_group;
    std::int32_t first = 0;
    for (std::int32_t before = 0; before < group; ++before)
        first += count (static_cast<Group> (before));
    return first + row % rows_of_a_group;
}

void ConicRows::arrange (std::span<const std::size_t> counts)
{
    for (std::size_t part = 0; part < uses_.size (); ++part) {
        uses_[part].each ([&] (Use& use) { use.row = arranged (use.row); });
        uses_[part].arrange (part < counts.size () ? counts[part] : auxiliaries_);
    }
}

std::vector<double> ConicRows::constants () const
{
    std::vector<double> all;
    for (const std::vector<double>& constants : constants_)
        all.insert (all.end (), constants.begin (), constants.end ());
    return all;
}

std::vector<ElementaryCone> ConicRows::cones () const
{
    std::vector<ElementaryCone> all{{ConeKind::zero, count (Group::zero)},
                                    {ConeKind::nonnegative, count (Group::nonnegative)}};
    all.insert (all.end (), cones_.begin (), cones_.end ());
    return all;
}

}
