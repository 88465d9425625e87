// Parameter values and information values of a task.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/model/refusal.h"
#include "kalvo/tables/information.h"
#include "kalvo/tables/parameters.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>

namespace klv {

// Parameters start with their defaults. The C interface uses their numbers (values are checked by the table row), the rest of the
// library their settings.
class Parameters {
public:
    Parameters ()
    {
        std::ranges::transform (real_parameters, doubles.begin (), &RealParameter::fallback);
        std::ranges::transform (int_parameters, integers.begin (), &IntParameter::fallback);
        std::ranges::transform (text_parameters, texts.begin (), &TextParameter::fallback);
    }

    double get (RealSetting setting) const { return doubles[parameter_number (setting)]; }
    std::int32_t get (IntSetting setting) const { return integers[parameter_number (setting)]; }
    const std::string& get (TextSetting setting) const { return texts[parameter_number (setting)]; }

    std::array<double, KLV_DOUBLE_PARAMETERS> doubles{};
    std::array<std::int32_t, KLV_INTEGER_PARAMETERS> integers{};
    std::array<std::string, KLV_STRING_PARAMETERS> texts;
};

// Items are 0 until they are set. Integer items beyond 32 bits are held at the limit.
class Information {
public:
    void set (RealItem item, double value) { doubles[information_number (item)] = value; }

    void set (IntItem item, std::int64_t value)
    {
        using Whole = std::numeric_limits<std::int32_t>;
        integers[information_number (item)] =
            static_cast<std::int32_t> (std::clamp<std::int64_t> (value, Whole::min (), Whole::max ()));
    }

    double get (RealItem item) const { return doubles[information_number (item)]; }
    std::int32_t get (IntItem item) const { return integers[information_number (item)]; }

    std::array<double, KLV_DOUBLE_INFORMATION> doubles{};
    std::array<std::int32_t, KLV_INTEGER_INFORMATION> integers{};
};

// Whether the parameter of a row takes a value.
template <class Row, class Value>
void check_value (const Row& row, Value value)
{
    if (row.reserved () && value != row.fallback)
        refuse (KLV_RES_PARAMETER_RESERVED, row.name, " is reserved: it accepts ", row.fallback,
                " only, not ", value, ".");
    if (!(value >= row.smallest && value <= row.largest))
        refuse (KLV_RES_PARAMETER_RANGE, row.name, " must be between ", row.smallest, " and ", row.largest,
                ", not ", value, ".");
}

}
