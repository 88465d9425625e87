// Which names a text format can hold.
#pragma once

#include "kalvo/files/text/item_names.h"

#include <string>
#include <string_view>

namespace klv {

// Why a name cannot stand in a file, or null.
using WhyNot = const char* (*)(std::string_view name);

struct NameRules {
    WhyNot of_row;    // constraints and the objective
    WhyNot of_variable;
};

// Three names of this length fit into the longest line that is read.
constexpr std::size_t longest_name = std::size_t{1} << 16;

bool has_control_character (std::string_view name);

// 'constraint 3 "x"'
std::string describe_item (const char* kind, const ItemNames& names, std::int32_t i);

// For messages: the first item whose name the rules refuse or another item of its kind has, or the problem when a line cannot
// hold its name: 'constraint 3 "a b", whose name has a blank'. Empty when all names are fit.
std::string unfit_name (const Problem& problem, const NameRules& rules);

}
