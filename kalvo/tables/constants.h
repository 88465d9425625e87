// Symbolic constants: every value that has a name, response codes included.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace klv {

enum class Group {
    none,
    bound_key,
    sense,
    variable_type,
    cone_type,
    domain_type,
    solution,
    problem_status,
    solution_status,
    status_key,
    on_off,
    optimizer,
    presolve,
    worker,
    scaling,
    pricing,
    interior_method,
    newton_system,
    ordering,
    factorization,
    dualization,
    relaxation,
    file_format,
    parameter_kind,
    information_kind,
    conflict_kind,
    stream,
    caller,
    response,
    count
};

struct Constant {
    Group group;
    std::string_view name;    // "KLV_BK_LO"
    std::int32_t value;
    std::string_view description;
};

// All constants; constants of a group stand together, in the order of their values.
std::span<const Constant> constants ();
std::span<const Constant> constants (Group group);

const Constant* find_constant (std::string_view name);
const Constant* find_constant (Group group, std::int32_t value);

// The text of a status or key: its name without the prefix that all names of the group share.
std::string_view short_name (const Constant& constant);

}
