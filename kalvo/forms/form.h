// Forms: a problem's data as engines take them, made once and shared by all runs; and recoveries, which take an engine's claims
// on a form back to the problem as it was stated. Every form is a minimisation.
#pragma once

#include "kalvo/model/point.h"
#include "kalvo/model/problem.h"
#include "kalvo/sparse/columns.h"

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

// min 1/2 x'Px + c'x + constant, Ex = e, row bounds on Rx, column bounds on x. P is positive semidefinite: of its symmetric matrix
// the upper triangle, sorted, none twice. Every row of R has a finite bound, no lower bound is above the upper one, absent bounds
// are infinite. Claims: y are multipliers of the rows of E, then of R, the reduced costs are c + Px - E'y - R'y.
struct QuadraticForm {
    double sign = 1;    // the stated objective is this times the form's
    double constant = 0;
    std::vector<double> cost, lower, upper;
    SparseColumns quadratic;
    SparseColumns equality;
    std::vector<double> right;
    SparseColumns range;
    std::vector<double> range_lower, range_upper;

    std::int32_t columns () const { return static_cast<std::int32_t> (cost.size ()); }
    std::int32_t row_count () const
    {
        return static_cast<std::int32_t> (right.size () + range_lower.size ());
    }
    std::size_t size () const
    {
        return cost.size () + right.size () + range_lower.size () + quadratic.values.size () +
               equality.values.size () + range.values.size ();
    }
};

// The cones that engines know, with the order of their rows.
enum class ConeKind : std::uint8_t {
    zero,
    nonnegative,
    second_order,    // s0 >= |s1...|
    exponential,     // (r, s, t): s exp (r/s) <= t, s >= 0, or its closure
    power,           // s0^a s1^(1-a) >= |s2|, s0, s1 >= 0
    semidefinite    // the upper triangle of a matrix by columns, entries off the diagonal times the root of 2
};

struct ElementaryCone {
    ConeKind kind = ConeKind::zero;
    std::int32_t rows = 0;
    std::int32_t order = 0;    // of the matrix
    double exponent = 0;       // a
};

// min 1/2 x'Px + c'x + constant, Ax + s = b, s in a product of cones: P as above, A by columns with sorted rows, the cones in the
// order of their rows. Claims: x, and as y the vector z of the dual cones with c + Px + A'z = 0; primal_ray and dual_ray likewise.
struct ConicForm {
    double sign = 1;    // the stated objective is this times the form's
    double constant = 0;
    std::vector<double> cost;
    SparseColumns quadratic;
    SparseColumns matrix;
    std::vector<double> right;
    std::vector<ElementaryCone> cones;

    std::int32_t columns () const { return static_cast<std::int32_t> (cost.size ()); }
    std::int32_t row_count () const { return static_cast<std::int32_t> (right.size ()); }
    std::size_t size () const
    {
        return cost.size () + right.size () + quadratic.values.size () + matrix.values.size ();
    }
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
