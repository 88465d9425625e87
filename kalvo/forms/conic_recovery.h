// Takes claims on a conic form back to the stated problem.
#pragma once

#include "kalvo/forms/common.h"
#include "kalvo/forms/conic_rows.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace klv {

// A row of F of a quadratic constraint, in the rows of its cone.
struct FactorEntry {
    std::int32_t variable, row;
    double value;
};

class ConicRecovery final : public Recovery {
public:
    Point back (Point&& claimed) const override;
    std::shared_ptr<const Start> forth (std::shared_ptr<const Start>) const override { return nullptr; }

    double sign = 1;    // -1: a maximum was stated
    FixedVariables fixed;
    UsesOfParts uses;
    std::vector<double> column_factor, row_factor;
    Factors factors;
    std::vector<std::int32_t> orders;    // of the semidefinite variables
    std::int32_t matrix_columns = 0;     // and the columns of all their entries
    std::vector<FactorEntry> factor_entries;
    std::shared_ptr<const Problem> stated;

private:
    const Uses& of (Part part) const { return uses[static_cast<std::size_t> (part)]; }
    void take_columns (std::span<const double> columns, bool direction, std::vector<double>& x,
                       std::vector<double>& barx) const;
    void take_multipliers (std::span<const double> z, std::vector<double>& y, Point& point) const;
    std::vector<double> point_of_ray (std::span<const double> z, std::span<const double> y) const;
};

}
