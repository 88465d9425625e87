// Affine expressions, and constraints that put some of them into a domain.
#pragma once

#include "kalvo/model/matrix.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv {

// The expressions F x + g. Semidefinite terms of expressions are with the semidefinite variables.
struct AffineExpressions {
    ColumnMatrix f;    // a row for each expression; without columns while there are no expressions
    std::vector<double> g;

    std::int32_t count () const { return static_cast<std::int32_t> (g.size ()); }
    void append (std::int32_t more, std::int32_t variables);
    // Sees to it that f has a column for each variable, and maybe further ones without entries.
    void cover (std::int32_t variables);
};

// Constraint k says that its rows, each an expression minus its b, lie in a domain. The rows of all constraints stand one after
// another.
struct AffineConstraints {
    std::vector<std::int32_t> domain;
    std::vector<std::int32_t> end;    // of each constraint's rows
    std::vector<std::int32_t> expression;
    std::vector<double> b;

    std::int32_t count () const { return static_cast<std::int32_t> (domain.size ()); }
    std::int32_t rows () const { return static_cast<std::int32_t> (expression.size ()); }
    // Consecutive expressions. An empty b is zeros.
    void append (std::int32_t new_domain, std::int32_t first, std::int32_t size,
                 std::span<const double> new_b);
};

// The rows that each expression is in.
class RowsOfExpressions {
public:
    RowsOfExpressions (const AffineConstraints& constraints, std::int32_t expressions);
    std::span<const std::int32_t> operator() (std::int32_t expression) const;

private:
    std::vector<std::int32_t> start_, row_;
};

}
