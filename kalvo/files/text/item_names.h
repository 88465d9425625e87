// The names of a problem's items in a file: their own, or invented ones for items without a name.
#pragma once

#include "kalvo/model/problem.h"

#include <string>
#include <string_view>

namespace klv {

class ItemNames {
public:
    // An item without a name is called by the prefix and its number; "_" is added to the prefix until other items have no such
    // name.
    ItemNames (const Names& names, std::int32_t count, const char* prefix);

    // Valid until the next call for an item without a name.
    std::string_view operator() (std::int32_t item) const;
    std::int32_t count () const { return count_; }

    // Starts to fetch a name from memory.
    void prefetch (std::int32_t item) const { __builtin_prefetch (&names_.get (item)); }

private:
    const Names& names_;
    std::int32_t count_;
    std::string prefix_;
    mutable std::string made_;
};

inline ItemNames constraint_names (const Problem& problem)
{
    return {problem.constraint_name, problem.constraints (), "R"};
}

inline ItemNames variable_names (const Problem& problem)
{
    return {problem.variable_name, problem.variables (), "C"};
}

// The wanted name, with "_" appended until it differs from all others.
std::string unused_name (const char* wanted, const ItemNames& others);

}
