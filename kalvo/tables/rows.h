// Shared by the tables of names: reserved rows, and look-up by name.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace klv {

// PREFIX000, PREFIX001 ...: as many digits as the largest number has.
template <std::size_t count>
using ReservedNames = std::array<std::array<char, 32>, count>;

template <std::size_t count>
consteval ReservedNames<count> reserved_names (std::string_view prefix)
{
    ReservedNames<count> names{};
    for (std::size_t number = 0; number < count; ++number) {
        std::size_t end = prefix.size ();
        std::copy (prefix.begin (), prefix.end (), names[number].begin ());
        for (std::size_t unit = count > 100 ? 100 : 10; unit > 0; unit /= 10)
            names[number][end++] = static_cast<char> ('0' + number / unit % 10);
    }
    return names;
}

// Row numbers in the order of the rows' names. A name that occurs twice does not compile.
template <std::size_t count, class Rows>
consteval std::array<std::uint16_t, count> order_by_name (const Rows& rows)
{
    std::array<std::uint16_t, count> order{};
    for (std::size_t i = 0; i < count; ++i)
        order[i] = static_cast<std::uint16_t> (i);
    std::sort (order.begin (), order.end (), [&] (auto a, auto b) { return rows[a].name < rows[b].name; });
    for (std::size_t i = 1; i < count; ++i)
        if (rows[order[i - 1]].name == rows[order[i]].name)
            throw "a name occurs twice";
    return order;
}

template <std::size_t count, class Rows>
std::optional<std::int32_t> find_by_name (const std::array<std::uint16_t, count>& order, const Rows& rows,
                                          std::string_view name)
{
    const auto place =
        std::lower_bound (order.begin (), order.end (), name,
                          [&] (auto row, std::string_view wanted) { return rows[row].name < wanted; });
    if (place == order.end () || rows[*place].name != name)
        return std::nullopt;
    return *place;
}

}
