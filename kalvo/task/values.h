// Parameter values and information values of a task.
#pragma once

#include "kalvo.h"
#include "kalvo/tables/items.h"
#include "kalvo/tables/settings.h"

#include <array>
#include <cstdint>
#include <string>

namespace klv {

// Starts with every default. Values by number for the C interface (checked by its table row), by setting for everyone else.
class Parameters {
public:
    Parameters ();
    double get (RealSetting setting) const;
    std::int32_t get (IntSetting setting) const;
    const std::string& get (TextSetting setting) const;

    std::array<double, KLV_DOUBLE_PARAMETERS> doubles;
    std::array<std::int32_t, KLV_INTEGER_PARAMETERS> integers;
    std::array<std::string, KLV_STRING_PARAMETERS> texts;
};

// Items are 0 until something sets them. Integer items beyond 32 bits are held at the limit.
class Information {
public:
    void set (RealItem item, double value);
    void set (IntItem item, std::int64_t value);
    double get (RealItem item) const;
    std::int32_t get (IntItem item) const;

    std::array<double, KLV_DOUBLE_INFORMATION> doubles {};
    std::array<std::int32_t, KLV_INTEGER_INFORMATION> integers {};
};

}
