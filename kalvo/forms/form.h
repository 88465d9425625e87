// Forms: a problem's data as engines take them, made once and shared by all runs; and recoveries, which take an engine's claims
// on a form back to the problem as it was stated. Every form is a minimisation.
#pragma once

#include "kalvo/model/point.h"
#include "kalvo/model/problem.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace klv {

// Magnitudes at which an engine takes bounds and costs as infinite, and beyond which it refuses a matrix entry; entries up to
// smallest_entry are dropped.
struct Limits {
    double infinite_bound = infinity, infinite_cost = infinity;
    double largest_entry = infinity, smallest_entry = 0;
};

// Numbers of the stated problem, copied only when the form changes one.
class Values {
public:
    Values () = default;
    explicit Values (std::span<const double> stated) : stated_ (stated) {}

    std::span<const double> get () const { return changed_.empty () ? stated_ : changed_; }
    std::vector<double>& change ()
    {
        if (changed_.empty ())
            changed_.assign (stated_.begin (), stated_.end ());
        return changed_;
    }

private:
    std::span<const double> stated_;
    std::vector<double> changed_;
};

// min c'x + constant, row bounds on Ax, column bounds on x. Lower bounds do not exceed upper ones, a bound that the engine would
// take as infinite is infinite, and every row has a bound.
struct LinearForm {
    double sign = 1;    // -1: a maximum was stated
    double constant = 0;
    Values cost, column_lower, column_upper, row_lower, row_upper;
    std::span<const std::int32_t> starts, rows;    // the matrix by columns
    std::span<const double> entries;
    double smallest_entry = infinity;         // smallest magnitude but zero
    std::span<const std::uint8_t> integer;    // KLVvartype; empty: all columns are continuous
    std::int32_t integers = 0;

    std::shared_ptr<const Problem> stated;             // the spans point into the stated problem,
    std::vector<std::int32_t> own_starts, own_rows;    // or into these where rows were left out
    std::vector<double> own_entries;

    std::int32_t columns () const { return static_cast<std::int32_t> (cost.get ().size ()); }
    std::int32_t row_count () const { return static_cast<std::int32_t> (row_lower.get ().size ()); }
    std::size_t size () const { return entries.size () + cost.get ().size () + row_lower.get ().size (); }
};

struct QuadraticForm {    // a quadratic objective, linear constraints
    double sign = 1;
};

struct ConicForm {    // a quadratic objective, elementary cones
    double sign = 1;
};

using Form = std::variant<LinearForm, QuadraticForm, ConicForm>;

// An engine's answer to a job, in terms of the form.
struct Claims : Point {
    std::int64_t simplex_iterations = 0, interior_iterations = 0, crossover_iterations = 0;
    std::int32_t interior_method = 0;    // KLVinteriormethod that was used
    std::string warning = {};            // a sentence that tells what was not done as asked
};

// Takes claims from a form back to the stated problem, and a start forth to the form.
class Recovery {
public:
    Recovery () = default;
    Recovery (const Recovery&) = delete;
    Recovery& operator= (const Recovery&) = delete;
    virtual ~Recovery () = default;

    virtual Point back (Point&& claimed) const = 0;
    virtual std::shared_ptr<const Start> forth (std::shared_ptr<const Start> stated) const = 0;
};

}
