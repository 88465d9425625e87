#include "kalvo/model/domain.h"

#include "kalvo/model/room.h"
#include "kalvo/model/text.h"

#include <cmath>

namespace klv {

static bool is_triangular (std::int64_t size)
{
    const auto order = static_cast<std::int32_t> ((std::sqrt (8.0 * static_cast<double> (size) + 1) - 1) / 2);
    return packed_length (order) == size || packed_length (order + 1) == size;
}

static std::optional<std::string> exponents_fault (std::int64_t size, std::span<const double> exponents)
{
    if (exponents.empty ())
        return "needs an exponent";
    if (std::ssize (exponents) > size)
        return text ("can't have ", exponents.size (), " exponents");
    for (std::size_t k = 0; k < exponents.size (); ++k)
        if (!(exponents[k] > 0 && std::isfinite (exponents[k])))
            return text ("can't have the exponent ", exponents[k], " (number ", k + 1,
                         "): exponents are positive and finite");
    return std::nullopt;
}

std::optional<std::string> domain_fault (std::int32_t type, std::int64_t size,
                                         std::span<const double> exponents)
{
    const DomainRow& row = domain_rows[static_cast<std::size_t> (type)];
    if (size < row.smallest || (row.only_size && size > row.smallest))
        return text ("can't be: its size is ", row.only_size ? "" : "at least ", row.smallest);
    if (size > std::numeric_limits<std::int32_t>::max ())
        return "has more entries than can be counted";
    if (type == KLV_DOMAIN_SEMIDEFINITE_CONE && !is_triangular (size))
        return "can't be: its size is n (n + 1) / 2 for matrices of order n";
    return row.has_exponents ? exponents_fault (size, exponents) : std::nullopt;
}

std::optional<std::string> cone_fault (std::int32_t type, double parameter, std::int64_t members)
{
    const KLVdomaintype domain = domain_of_cone[static_cast<std::size_t> (type)];
    const DomainRow& row = domain_rows[static_cast<std::size_t> (domain)];
    if (!std::isfinite (parameter))
        return text ("a ", row.name, " can't have the parameter ", parameter, ": parameters are finite");
    if (row.has_exponents && !(parameter > 0 && parameter < 1))
        return text ("a ", row.name, " can't have the parameter ", parameter, ": it is between 0 and 1");
    const double exponents[] = {parameter, 1 - parameter};
    if (const auto fault =
            domain_fault (domain, members, std::span (exponents).first (row.has_exponents ? 2 : 0)))
        return text ("a ", row.name, " of ", members, " members ", *fault);
    return std::nullopt;
}

std::span<const double> Domains::exponents (std::int32_t which) const
{
    const auto place = static_cast<std::size_t> (which);
    const auto begin = static_cast<std::size_t> (place > 0 ? exponents_end[place - 1] : 0);
    return std::span (exponent).subspan (begin, static_cast<std::size_t> (exponents_end[place]) - begin);
}

void Domains::append (std::int32_t new_type, std::int32_t new_size, std::span<const double> exponents)
{
    make_room (type, 1);
    make_room (size, 1);
    make_room (exponents_end, 1);
    make_room (exponent, exponents.size ());
    type.push_back (static_cast<std::uint8_t> (new_type));
    size.push_back (new_size);
    exponent.insert (exponent.end (), exponents.begin (), exponents.end ());
    exponents_end.push_back (static_cast<std::int32_t> (exponent.size ()));
}

}
