// Items of a problem, as messages name them.
#pragma once

#include "kalvo/model/problem.h"

#include <cstdint>
#include <string>

namespace klv {

// "variable 3 (index 2, 'x3')": for people who count from 1 and for those who count from 0.
std::string describe (const char* item, std::int32_t index, const std::string& name);
std::string describe_variable (const Problem& problem, std::int32_t j);
std::string describe_constraint (const Problem& problem, std::int32_t i);

}
