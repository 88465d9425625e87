// The tables of information items: live items in the order of their enum, then reserved ones.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/tables/items.h"

#include <array>
#include <string_view>

namespace klv {

struct InformationRow {
    std::string_view name;
    std::string_view description;
};

extern const std::array<InformationRow, KLV_DOUBLE_INFORMATION> real_information;
extern const std::array<InformationRow, KLV_INTEGER_INFORMATION> int_information;

constexpr std::size_t information_number (RealItem item)
{
    return static_cast<std::size_t> (item);
}

constexpr std::size_t information_number (IntItem item)
{
    return static_cast<std::size_t> (item);
}

}
