// Rows of a conic form, made from members of the stated problem's cones: every domain becomes rows of elementary cones.
#pragma once

#include "kalvo/forms/conic.h"
#include "kalvo/sparse/index.h"

#include <array>
#include <cstdint>
#include <initializer_list>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

namespace klv {

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

using UsesOfParts = std::array<Uses, static_cast<std::size_t> (Part::count)>;

// A member of a block that lies in a domain: a part, its factor, and a constant.
struct Piece {
    Part part;
    std::int32_t number;
    double constant = 0;
    double factor = 1;

    Piece times (double by) const { return {part, number, by * constant, by * factor}; }
};

class ConicRows {
public:
    explicit ConicRows (const Centre* centre) : centre_ (centre) {}

    // The number that the row is known by until the rows are arranged.
    std::int32_t add_row (Group group, std::span<const Piece> pieces);
    std::int32_t add_row (Group group, std::initializer_list<Piece> pieces)
    {
        return add_row (group, std::span (pieces.begin (), pieces.size ()));
    }
    void add_nonnegative (const Piece& piece) { add_row (Group::nonnegative, {piece}); }
    // After its rows.
    void add_cone (ConeKind kind, std::int32_t rows, std::int32_t order = 0, double exponent = 0)
    {
        cones_.push_back ({kind, rows, order, exponent});
    }
    void add_domain (KLVdomaintype type, std::span<const Piece> pieces, std::span<const double> exponents);

    // The value of what makes a row, if there is a centre and it is positive there; else 0. The row then depends on the centre.
    double positive_at_centre (const Piece& piece);

    // Numbers all rows in the order of their groups. `counts`: the parts of each kind but auxiliary ones.
    void arrange (std::span<const std::size_t> counts);
    std::int32_t arranged (std::int32_t row) const;

    std::vector<double> constants () const;
    std::vector<ElementaryCone> cones () const;
    std::span<const Use> uses_of (Part part, std::size_t number) const
    {
        return uses_[static_cast<std::size_t> (part)].of (number);
    }
    std::size_t auxiliaries () const { return auxiliaries_; }
    bool depend_on_centre () const { return depend_on_centre_; }
    UsesOfParts&& take_uses () { return std::move (uses_); }

private:
    std::int32_t count (Group group) const
    {
        return static_cast<std::int32_t> (constants_[static_cast<std::size_t> (group)].size ());
    }
    double value_at_centre (const Piece& piece) const;
    double ratio_at_centre (const Piece& first, const Piece& second);
    Piece add_mean (const Piece& first, const Piece& second, double share);
    void add_second_order (std::span<const Piece> pieces);
    void add_rotated (const Piece& first, const Piece& second, std::span<const Piece> rest);
    void add_exponential (std::vector<Piece>&& exponent, const Piece& scale, const Piece& bound);
    void add_power_of_two_factors (const Piece& first, const Piece& second, const Piece& mean, double share);
    void add_power (std::span<const Piece> factors, std::span<const double> weights,
                    std::span<const Piece> rest);
    void add_semidefinite (std::span<const Piece> lower_by_columns);

    const Centre* centre_;
    bool depend_on_centre_ = false;
    std::vector<double> auxiliary_at_centre_;
    std::array<std::vector<double>, static_cast<std::size_t> (Group::count)>
        constants_;    // of rows, by group
    UsesOfParts uses_;
    std::vector<ElementaryCone> cones_;    // of the third group
    std::size_t auxiliaries_ = 0;
};

}
