// Numbers of rows, columns and items, which are 32 bits wide, as positions in arrays.
#pragma once

#include <cstddef>
#include <cstdint>

namespace klv {

constexpr std::size_t index (std::int32_t number)
{
    return static_cast<std::size_t> (number);
}

}
