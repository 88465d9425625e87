// The engine's options, as the settings of a job ask for them.
#pragma once

#include "kalvo/engines/engine.h"

#include <string>

namespace klv::highs {

// Whether the engine presolves: never from a start of a continuous problem, and tiny ones only if it is asked for.
bool is_presolved (const Job& job);

struct OptionsSet {
    bool refused = false;    // by the engine: it must not run
    std::string warning;     // what a user who asked for something else should know; else empty
    std::int32_t interior_method = KLV_INTPNT_METHOD_AUTOMATIC;    // of an interior-point run: which it is
};
OptionsSet set_options (void* handle, const Job& job);

}
