// The engine's options, as the settings of a job ask for them.
#pragma once

#include "kalvo/engines/engine.h"

#include <string>

namespace klv::highs {

// Whether the engine presolves. A continuous problem with a start is never presolved, a tiny one only on request.
bool is_presolved (const Job& job);

struct OptionsSet {
    bool refused = false;    // the engine refused an option: it must not run
    std::string warning;     // tells the user of a method that was replaced; else empty
    std::int32_t interior_method = KLV_INTPNT_METHOD_AUTOMATIC;    // that an interior-point run uses
};
OptionsSet set_options (void* handle, const Job& job);

}
