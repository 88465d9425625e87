// Symmetric positive semidefinite matrix variables and their linear terms.
#pragma once

#include "kalvo/model/domain.h"
#include "kalvo/model/room.h"
#include "kalvo/model/terms.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv {

struct SemidefiniteVariables {
    std::vector<std::int32_t> order;
    std::vector<std::int32_t> end;    // of each variable's lower triangle, when all stand one after another
    SymmetricTerms objective, constraint, expression;    // by linear constraint, by affine expression

    std::int32_t count () const { return static_cast<std::int32_t> (order.size ()); }
    // Where the triangles of the variables from j on begin; for count (): the length of all.
    std::int32_t begin_of (std::int32_t j) const { return j > 0 ? end[static_cast<std::size_t> (j) - 1] : 0; }
    std::int32_t length () const { return begin_of (count ()); }
    // All triangles together must have a length that can be counted.
    void append (std::span<const std::int32_t> orders)
    {
        make_room (order, orders.size ());
        make_room (end, orders.size ());
        for (const std::int32_t each : orders) {
            end.push_back (length () + static_cast<std::int32_t> (packed_length (each)));
            order.push_back (each);
        }
    }
};

}
