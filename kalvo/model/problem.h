// The problem as the user stated it: tasks store it, answers are checked on it, forms are made from it.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/model/affine.h"
#include "kalvo/model/cones.h"
#include "kalvo/model/domain.h"
#include "kalvo/model/features.h"
#include "kalvo/model/matrix.h"
#include "kalvo/model/semidefinite.h"
#include "kalvo/model/terms.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace klv {

constexpr double infinity = std::numeric_limits<double>::infinity ();

struct Interval {
    double lower, upper;
};

// Bounds of variables or constraints. An absent bound is infinite here, whatever value came with its key.
struct Bounds {
    std::vector<std::uint8_t> key;
    std::vector<double> lower;
    std::vector<double> upper;

    std::int32_t count () const { return static_cast<std::int32_t> (key.size ()); }

    // The interval that an item has to lie in. Bounds crossed by too little to be a contradiction are swapped.
    Interval interval (std::size_t item) const
    {
        return {std::min (lower[item], upper[item]), std::max (lower[item], upper[item])};
    }
};

// The key of a pair of bounds, of which infinite ones are absent.
std::uint8_t key_of (double lower, double upper);

// Names of one kind of item; without memory while no item has a name.
class Names {
public:
    void put (std::int32_t item, std::int32_t count, std::string name);
    const std::string& get (std::int32_t item) const;
    bool any () const { return !names_.empty (); }
    std::size_t longest () const;

private:
    std::vector<std::string> names_;
};

// An operation that throws leaves the problem as it was.
struct Problem {
    std::int32_t sense = KLV_SENSE_MINIMIZE;
    double constant = 0;
    std::vector<double> cost;
    Bounds variable;
    Bounds constraint;
    std::vector<std::uint8_t> integer;    // one a variable: KLVvartype
    std::int32_t integers = 0;
    ColumnMatrix matrix;

    SymmetricTerms quadratic_objective;    // Q of the term 1/2 x'Qx
    SymmetricTerms quadratic_constraint;
    AffineExpressions affine;
    Domains domain;
    AffineConstraints affine_constraint;
    Cones cone;
    SemidefiniteVariables semidefinite;

    std::string name;
    std::string objective_name;
    Names variable_name;
    Names constraint_name;
    Names affine_constraint_name;
    Names cone_name;
    Names semidefinite_name;

    std::int32_t variables () const { return variable.count (); }
    std::int32_t constraints () const { return constraint.count (); }

    Features features () const;
    // Whether variables, integers among them, only have bounds and linear terms.
    bool is_linear () const;
    // Whether the matrix has no entries, so that every row and every variable is a problem of its own.
    bool is_separable () const { return matrix.entries () == 0; }

    void append_variables (std::int32_t count);      // continuous, free, without cost and entries
    void append_constraints (std::int32_t count);    // free
};

}
