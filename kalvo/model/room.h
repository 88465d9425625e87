// Room in a vector for more entries, so that adding them afterwards can't fail.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace klv {

// The first request gets exactly its size, later ones at least double the room: many small steps stay cheap.
template <class Value>
void make_room (std::vector<Value>& values, std::size_t more)
{
    if (values.capacity () - values.size () < more)
        values.reserve (std::max (values.size () + more, 2 * values.capacity ()));
}

}
