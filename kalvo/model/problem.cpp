#include "kalvo/model/problem.h"

#include "kalvo/model/room.h"

#include <algorithm>
#include <cmath>

namespace klv {

void Names::put (std::int32_t item, std::int32_t count, std::string name)
{
    if (names_.size () < static_cast<std::size_t> (count)) {
        if (name.empty () && names_.empty ())
            return;
        names_.resize (static_cast<std::size_t> (count));
    }
    names_[static_cast<std::size_t> (item)] = std::move (name);
}

const std::string& Names::get (std::int32_t item) const
{
    static const std::string none;
    const auto place = static_cast<std::size_t> (item);
    return place < names_.size () ? names_[place] : none;
}

std::size_t Names::longest () const
{
    std::size_t length = 0;
    for (const std::string& name : names_)
        length = std::max (length, name.size ());
    return length;
}

std::uint8_t key_of (double lower, double upper)
{
    if (std::isinf (lower))
        return std::isinf (upper) ? KLV_BK_FR : KLV_BK_UP;
    return std::isinf (upper) ? KLV_BK_LO : KLV_BK_RA;
}

static void make_room (Bounds& bounds, std::size_t more)
{
    klv::make_room (bounds.key, more);
    klv::make_room (bounds.lower, more);
    klv::make_room (bounds.upper, more);
}

static void append_free (Bounds& bounds, std::size_t more)
{
    const std::size_t count = bounds.key.size () + more;
    bounds.key.resize (count, KLV_BK_FR);
    bounds.lower.resize (count, -infinity);
    bounds.upper.resize (count, infinity);
}

Features Problem::features () const
{
    Features used;
    if (integers > 0)
        used.add (Feature::integers);
    if (quadratic_objective.count () > 0)
        used.add (Feature::quadratic_objective);
    if (quadratic_constraint.count () > 0)
        used.add (Feature::quadratic_constraints);
    if (affine.count () > 0)
        used.add (Feature::affine_expressions);
    if (affine_constraint.count () > 0)
        used.add (Feature::affine_constraints);
    if (cone.count () > 0)
        used.add (Feature::cones);
    if (semidefinite.count () > 0)
        used.add (Feature::semidefinite_variables);
    return used;
}

bool Problem::is_linear () const
{
    return features ().missing_in (linear_features) == nullptr;
}

void Problem::append_variables (std::int32_t count)
{
    const auto more = static_cast<std::size_t> (count);
    make_room (variable, more);
    make_room (cost, more);
    make_room (integer, more);
    affine.cover (variables () + count);
    matrix.append_columns (count);

    append_free (variable, more);
    cost.resize (cost.size () + more, 0.0);
    integer.resize (integer.size () + more, KLV_VAR_CONTINUOUS);
}

void Problem::append_constraints (std::int32_t count)
{
    make_room (constraint, static_cast<std::size_t> (count));
    append_free (constraint, static_cast<std::size_t> (count));
}

}
