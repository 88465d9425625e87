// When an interior-point run is given up: the engine's method knows no end of its own on some problems.
#pragma once

#include "kalvo/engines/events.h"

#include <cstddef>
#include <cstdint>
#include <limits>

namespace klv {

class Stagnation {
public:
    // `size`: entries, rows and columns of the form.
    explicit Stagnation (std::size_t size);

    // Takes the newest state of a run that is `seconds` old; true: the run gets nowhere.
    bool note (const Progress& now, double seconds);

private:
    double most_seconds_;
    double best_ =
        std::numeric_limits<double>::infinity ();    // of the larger violation and the relative gap
    double best_at_seconds_ = 0;
    std::int64_t best_at_iteration_ = 0;
};

}
