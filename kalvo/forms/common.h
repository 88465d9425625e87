// What quadratic and conic forms have in common.
#pragma once

#include "kalvo/forms/form.h"
#include "kalvo/forms/linear.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv {

// Variables whose bounds are one value have no column.
class FixedVariables {
public:
    FixedVariables () = default;
    explicit FixedVariables (const Problem& problem);

    bool is_fixed (std::size_t variable) const { return !column_.empty () && column_[variable] < 0; }
    double value (std::size_t variable) const { return value_[variable]; }
    std::size_t columns () const { return columns_; }
    std::int32_t column_of (std::size_t variable) const
    {
        return column_.empty () ? static_cast<std::int32_t> (variable) : column_[variable];
    }
    // From columns to variables; a direction leaves fixed ones where they are.
    std::vector<double> spread (std::span<const double> columns, bool direction) const;

private:
    std::size_t columns_ = 0;
    std::vector<std::int32_t> column_;    // of each variable, -1: fixed; empty: none is fixed
    std::vector<double> value_;
};

// The interval without bounds from `infinite_bound` on, which are counted.
Interval within (Interval stated, double infinite_bound, std::int64_t& left_out);

// The objective as a minimum over the columns, as every form has it. Refused: not convex.
struct ObjectiveParts {
    double constant = 0;
    std::vector<double> cost;
    SparseColumns quadratic;
    Refused refused = {};
};
ObjectiveParts lower_objective (const Problem& problem, const FixedVariables& fixed);

double largest_finite (std::span<const double> values);

// Factors of points and objectives, powers of two: the form's point times `point` is the stated one's, likewise the objective.
struct Factors {
    double point = 1, objective = 1;
};

// Changes units so that right-hand sides and costs have magnitudes that engines are made for. `largest_bound` is the largest
// magnitude of bounds and right-hand sides, which the caller divides by the point's factor so that none is beyond `most`; costs become
// no smaller than `least_cost`.
template <class SomeForm>
Factors choose_units (SomeForm& form, double largest_bound, double most, double least_cost = 1);

}
