#include "kalvo/files/text/text_writer.h"

#include <algorithm>
#include <cmath>

namespace klv {

void warn_of_huge_bounds (Task& task)
{
    const double huge = task.parameters.get (RealSetting::bound_infinity);
    std::int64_t count = 0;
    for (const Bounds* bounds : {&task.problem ().constraint, &task.problem ().variable})
        for (const std::vector<double>* values : {&bounds->lower, &bounds->upper})
            count += std::ranges::count_if (
                *values, [=] (double value) { return std::isfinite (value) && std::fabs (value) >= huge; });
    if (count > 0)
        task.warn (std::to_string (count) +
                   " bounds are written as numbers, and are read as no bounds while they "
                   "are beyond the bound infinity threshold");
}

}
