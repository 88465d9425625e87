#include "kalvo/verify/rays.h"

namespace klv {

Multipliers::Multipliers (const Problem& stated, std::span<const double> x) : problem (stated), x_ (x)
{
    const std::size_t affine = static_cast<std::size_t> (problem.affine_constraint.rows ());
    const std::size_t n = variables ();
    std::vector<std::size_t> own (problem.cone.count () > 0 ? n : 0);    // of members with bounds
    in_cone_.resize (own.size ());
    for (const std::int32_t member : problem.cone.member) {
        const auto j = static_cast<std::size_t> (member);
        in_cone_[j] = true;
        if (std::isfinite (problem.variable.lower[j]) || std::isfinite (problem.variable.upper[j])) {
            own[j] = constraints () + affine + bounded_.size ();
            bounded_.push_back (member);
            in_cone_[j] = false;
        }
    }
    entries_ = constraints () + affine + bounded_.size ();
    parts = affine_parts (problem, constraints (), true);
    for (std::int32_t k = 0; k < problem.cone.count (); ++k) {
        const ConeOfVariables here (problem, k);
        std::vector<std::size_t> places;
        for (const std::int32_t member : here.members ()) {
            const auto j = static_cast<std::size_t> (member);
            places.push_back (own[j] > 0 || !in_cone_[j] ? own[j] : entries_ + j);
        }
        parts.emplace_back (dual (here.shape ()), std::move (places));
    }
    add_matrix_parts (problem.semidefinite, entries_ + n, parts);
}

Direction::Direction (const Problem& stated) : problem (stated)
{
    parts = affine_parts (problem, entries () + constraints (), false);
    for (std::int32_t k = 0; k < problem.cone.count (); ++k) {
        const ConeOfVariables here (problem, k);
        parts.emplace_back (here.shape (),
                            std::vector<std::size_t> (here.members ().begin (), here.members ().end ()));
    }
    add_matrix_parts (problem.semidefinite, variables (), parts);
    products_ = constraints () + static_cast<std::size_t> (problem.affine_constraint.rows ());
    zero_.assign (products_, false);
    for (const ConePart& part : parts)
        for (const std::size_t place : part.places)
            if (part.type == KLV_DOMAIN_ZERO && place >= entries ())
                zero_[place - entries ()] = true;
    each_gradient ([&] (std::int64_t item, std::size_t j, std::size_t, double) {
        products_ += gradient_.try_emplace ({item, j}, products_).second ? 1 : 0;
    });
}

}
