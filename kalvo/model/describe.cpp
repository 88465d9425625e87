#include "kalvo/model/describe.h"

#include "kalvo/model/text.h"

namespace klv {

std::string describe (const char* item, std::int32_t index, const std::string& name)
{
    const std::string place = text (item, " ", std::int64_t{index} + 1, " (index ", index);
    return name.empty () ? text (place, ")") : text (place, ", '", name, "')");
}

std::string describe_variable (const Problem& problem, std::int32_t j)
{
    return describe ("variable", j, problem.variable_name.get (j));
}

std::string describe_constraint (const Problem& problem, std::int32_t i)
{
    return describe ("constraint", i, problem.constraint_name.get (i));
}

}
