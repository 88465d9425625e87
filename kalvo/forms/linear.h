// Makes the linear form. Rows without bounds are left out: some methods of engines can't bear them.
#pragma once

#include "kalvo/forms/form.h"

#include <memory>
#include <string>

namespace klv {

// An item of the stated problem whose number no engine takes.
struct Refused {
    enum class Item {
        none,
        cost,
        entry,
        variable_bound,
        constraint_bound,
        objective_curvature,    // not convex: the value is the curvature, the variable the one that moves most along it
        constraint_curvature
    };

    Item item = Item::none;
    std::int32_t variable = 0, constraint = 0;
    double value = 0, limit = 0;
};

std::string describe (const Problem& problem, const Refused& refused);

struct Lowered {
    std::shared_ptr<const Form> form;
    std::shared_ptr<const Recovery> recovery;
    std::int64_t infinite_bounds = 0;    // finite bounds that the engine would take as infinite
    std::int64_t dropped_entries = 0;    // matrix entries that the engine drops as too small
    Refused refused = {};                // there is no form then
    bool centred = false;                // the form would be another one without its centre
};

// The stated problem's matrix must be packed. `integers`: whether integer variables must be whole.
Lowered lower_linear (std::shared_ptr<const Problem> stated, const Limits& limits, bool integers);

}
