// The linear form: without rows that bind nothing, which some methods of engines can't bear, and always a minimum.
#pragma once

#include "kalvo/forms/form.h"

#include <memory>
#include <string>

namespace klv {

struct Lowered {
    std::shared_ptr<const Form> form;
    std::shared_ptr<const Recovery> recovery;
    std::int64_t infinite_bounds = 0;    // finite ones that the engine would take as infinite
    std::int64_t dropped_entries = 0;    // so small that the engine leaves them out
    std::string refused = {};            // what the engine does not take; then there is no form
};

// The stated problem's matrix is packed. `integers`: whether integer variables are to be whole.
Lowered lower_linear (std::shared_ptr<const Problem> stated, const Limits& limits, bool integers);

}
