// Room in a vector for more entries, so that adding them afterwards can't fail.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace klv {

// Exactly as much as is needed at first, then at least twice as much as before: many small steps stay cheap.
template <class Value>
void make_room (std::vector<Value>& values, std::size_t more)
{
    if (values.capacity () - values.size () < more)
        values.reserve (std::max (values.size () + more, 2 * values.capacity ()));
}

}
