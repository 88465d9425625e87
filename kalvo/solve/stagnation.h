// When an interior-point run is given up: on some problems the engine's method never ends by itself.
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

    // Takes the newest state of a run, `seconds` after its start; true when the run is to be given up.
    bool note (const Progress& now, double seconds);

private:
    double most_seconds_;
    // The smallest so far of the largest of violations and relative gap.
    double best_ = std::numeric_limits<double>::infinity ();
    double best_at_seconds_ = 0;
    std::int64_t best_at_iteration_ = 0;
};

}
