#include "kalvo/model/cones.h"

#include "kalvo/model/room.h"

namespace klv {

std::span<const std::int32_t> Cones::members (std::int32_t cone) const
{
    const auto place = static_cast<std::size_t> (cone);
    const auto begin = static_cast<std::size_t> (place > 0 ? end[place - 1] : 0);
    return std::span (member).subspan (begin, static_cast<std::size_t> (end[place]) - begin);
}

std::int64_t Cones::prepare (std::span<const std::int32_t> members, std::int32_t variables)
{
    make_room (type, 1);
    make_room (parameter, 1);
    make_room (end, 1);
    make_room (member, members.size ());
    cone_of.resize (static_cast<std::size_t> (variables), -1);
    std::int64_t again = -1;
    std::size_t marked = 0;
    for (; marked < members.size () && again < 0; ++marked) {
        std::int32_t& cone = cone_of[static_cast<std::size_t> (members[marked])];
        if (cone >= 0)
            again = static_cast<std::int64_t> (marked);
        else
            cone = count ();
    }
    // Marks of a cone that is not there yet go.
    for (std::size_t k = 0; k < marked; ++k)
        if (std::int32_t& cone = cone_of[static_cast<std::size_t> (members[k])]; cone == count ())
            cone = -1;
    return again;
}

void Cones::append (std::int32_t new_type, double new_parameter, std::span<const std::int32_t> members)
{
    for (const std::int32_t variable : members)
        cone_of[static_cast<std::size_t> (variable)] = count ();
    type.push_back (static_cast<std::uint8_t> (new_type));
    parameter.push_back (new_parameter);
    member.insert (member.end (), members.begin (), members.end ());
    end.push_back (static_cast<std::int32_t> (member.size ()));
}

}
