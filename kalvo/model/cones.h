// Cones that variables lie in.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace klv {

// No variable is a member of two cones, or twice of one.
struct Cones {
    std::vector<std::uint8_t> type;    // KLVconetype
    std::vector<double> parameter;
    std::vector<std::int32_t> end;    // of each cone's members
    std::vector<std::int32_t> member;
    std::vector<std::int32_t> cone_of;    // of each variable that was there with the last cone; -1: none

    std::int32_t count () const { return static_cast<std::int32_t> (type.size ()); }
    std::span<const std::int32_t> members (std::int32_t cone) const;
    // The first of these variables that is in a cone already, or twice among them, by its position; -1: none.
    // Makes room for append, which then can't fail.
    std::int64_t prepare (std::span<const std::int32_t> members, std::int32_t variables);
    void append (std::int32_t new_type, double new_parameter, std::span<const std::int32_t> members);
};

}
