// Names of a problem's items in messages.
#pragma once

#include "kalvo/model/problem.h"

#include <cstdint>
#include <string>

namespace klv {

// "variable 3 (index 2, 'x3')": users count from 1, the C interface from 0.
std::string describe (const char* item, std::int32_t index, const std::string& name);
std::string describe_variable (const Problem& problem, std::int32_t j);
std::string describe_constraint (const Problem& problem, std::int32_t i);

}
