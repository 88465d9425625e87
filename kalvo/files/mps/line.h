// The fields of one line of an MPS file.
#pragma once

#include <string_view>

namespace klv {

enum class MpsSection {
    none,
    name,
    objsense,
    objname,
    rows,
    columns,
    rhs,
    ranges,
    bounds,
    quadobj,
    qmatrix,
    qsection,
    qcmatrix,
    endata
};

constexpr bool is_quadratic (MpsSection section)
{
    return section >= MpsSection::quadobj && section <= MpsSection::qcmatrix;
}

enum class MpsForm { free, fixed };

// Fields in the order of fixed form; fields that a line lacks are empty. A marker has the items mps_marker and its
// kind. In free form a line of BOUNDS with three fields has the last two in name and item[0], whatever they mean.
struct MpsFields {
    std::string_view key{};
    std::string_view name{};
    std::string_view item[2]{};
    std::string_view number[2]{};
};

constexpr std::string_view mps_marker = "'MARKER'";

// Throws FileFault when the line does not have the fields of a line of its section.
MpsFields split (MpsForm form, MpsSection section, std::string_view line);

// Whether a line fits the columns of fixed form with a blank inside a name, so that free form cannot mean it.
bool only_fixed (MpsSection section, std::string_view line);

// Whether free and fixed form read a line differently, both without a fault.
bool free_and_fixed_differ (MpsSection section, std::string_view line);

}
