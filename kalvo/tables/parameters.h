// The tables of parameters: a row holds all that is to be known of a parameter.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/tables/constants.h"
#include "kalvo/tables/settings.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace klv {

// A row that drives no setting is reserved: its parameter accepts the default only.
template <class Value, class Setting>
struct Parameter {
    std::int32_t number = 0;
    std::string_view name;
    Value fallback, smallest, largest;
    Group symbols = {};    // the constants that are the parameter's values, or none
    Setting drives;
    std::string_view description;

    constexpr bool reserved () const { return drives == Setting::count; }
};

using RealParameter = Parameter<double, RealSetting>;
using IntParameter = Parameter<std::int32_t, IntSetting>;

struct TextParameter {
    std::int32_t number;
    std::string_view name;
    std::string_view fallback;
    TextSetting drives;
    std::string_view description;

    constexpr bool reserved () const { return drives == TextSetting::count; }
};

extern const std::array<RealParameter, KLV_DOUBLE_PARAMETERS> real_parameters;
extern const std::array<IntParameter, KLV_INTEGER_PARAMETERS> int_parameters;
extern const std::array<TextParameter, KLV_STRING_PARAMETERS> text_parameters;

// The number of the parameter that drives a setting.
std::size_t parameter_number (RealSetting setting);
std::size_t parameter_number (IntSetting setting);
std::size_t parameter_number (TextSetting setting);

struct ParameterPlace {
    std::int32_t kind = KLV_PAR_NONE;
    std::int32_t number = -1;
};

ParameterPlace find_parameter (std::string_view name);

}
