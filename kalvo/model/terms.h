// Entries of symmetric matrices: quadratic terms, and the coefficients of semidefinite variables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace klv {

// Entries as they are given: in either triangle, in any order. `item` is the constraint or affine expression that an entry belongs
// to, empty for the objective; `variable` is the semidefinite variable, empty for quadratic terms.
struct GivenTerms {
    std::span<const std::int32_t> item, variable, row, column;
    std::span<const double> value;
};

struct TermRange {
    std::size_t begin, end;
};

// Entries in lower triangles by item, variable, column and row, none twice.
struct SymmetricTerms {
    std::vector<std::int32_t> item, variable, row, column;
    std::vector<double> value;

    std::int64_t count () const { return static_cast<std::int64_t> (value.size ()); }
    TermRange of_item (std::int32_t which) const;
};

// Entries that are given several times, in whichever triangle, add up in the order given; what rounding leaves of 0 is 0.
SymmetricTerms add_up (const GivenTerms& given);

}
