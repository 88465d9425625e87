// Makes the linear form. Rows without bounds are left out: some methods of engines can't bear them.
#pragma once

#include "kalvo/forms/form.h"

#include <memory>
#include <string>

namespace klv {

struct Lowered {
    std::shared_ptr<const Form> form;
    std::shared_ptr<const Recovery> recovery;
    std::int64_t infinite_bounds = 0;    // finite bounds that the engine would take as infinite
    std::int64_t dropped_entries = 0;    // matrix entries that the engine drops as too small
    std::string refused = {};            // what the engine does not take: there is no form then
};

// The stated problem's matrix must be packed. `integers`: whether integer variables must be whole.
Lowered lower_linear (std::shared_ptr<const Problem> stated, const Limits& limits, bool integers);

}
