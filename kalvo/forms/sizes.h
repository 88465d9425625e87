// Sizes of forms, for logs and information items.
#pragma once

#include "kalvo/forms/form.h"

#include <cstdint>
#include <string>

namespace klv {

struct FormSizes {
    std::int64_t columns = 0, rows = 0, entries = 0, quadratic_entries = 0;
    std::int64_t second_order = 0, exponential = 0, power = 0,
                 matrices = 0;                                    // cones with more than one row
    std::int32_t largest_second_order = 0, largest_matrix = 0;    // rows; order
};

FormSizes sizes_of (const Form& form);

// "12 columns, 20 rows, 50 entries, 3 second-order cones (largest 5), ..."
std::string describe (const FormSizes& sizes);

}
