// Bounds that contradict each other.
#pragma once

#include "kalvo/include/kalvo.h"

#include <cstdint>
#include <vector>

namespace klv {

struct ConflictMember {
    std::uint8_t kind = 0;    // KLVconflictkind
    std::int32_t item = 0;

    bool operator== (const ConflictMember&) const = default;

    bool is_variable () const
    {
        return kind == KLV_CONFLICT_VARIABLE_LOWER || kind == KLV_CONFLICT_VARIABLE_UPPER;
    }
    bool is_upper () const
    {
        return kind == KLV_CONFLICT_CONSTRAINT_UPPER || kind == KLV_CONFLICT_VARIABLE_UPPER;
    }
};

// Constraints and variables in their order. Irreducible: without any one member the others can hold together.
struct Conflict {
    std::vector<ConflictMember> members;
    bool irreducible = false;
    bool by_search = false;    // that they contradict is the word of an integer search
    bool relaxed = false;      // all this holds for a relaxation, with integers taken as continuous
};

}
