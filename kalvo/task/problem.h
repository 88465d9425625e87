// The problem as the user stated it: what a task stores, what answers are checked on, what engines read.
#pragma once

#include "kalvo.h"

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace klv {

constexpr double infinity = std::numeric_limits<double>::infinity ();

// Bounds of variables or constraints. An absent bound is infinite here, whatever value came with its key.
struct Bounds {
    std::vector<std::uint8_t> key;
    std::vector<double> lower;
    std::vector<double> upper;

    std::int32_t count () const { return static_cast<std::int32_t> (key.size ()); }
};

// One column of the constraint matrix, in the order in which it was put.
struct Column {
    std::span<const std::int32_t> rows;
    std::span<const double> values;
};

// The constraint matrix by columns, in one pair of arrays. Columns may be put in any order and again: one that no longer
// fits its place moves to the end, and holes are closed when they are half of the arrays, so that the cost stays
// proportional to what is put. Put in order, the arrays are the compressed columns that engines take.
class ColumnMatrix {
public:
    void append_columns (std::int32_t count);
    void reserve (std::int64_t entries);
    void put (std::int32_t j, std::span<const std::int32_t> rows, std::span<const double> values);

    std::int32_t columns () const { return static_cast<std::int32_t> (count_.size ()); }
    std::int64_t entries () const { return entries_; }
    Column column (std::int32_t j) const;

    // Closes holes and puts columns in order; rows () and values () are then the compressed columns.
    void pack ();
    bool packed () const;
    std::span<const std::int64_t> starts () const { return start_; }
    std::span<const std::int32_t> rows () const { return row_; }
    std::span<const double> values () const { return value_; }

private:
    std::vector<std::int64_t> start_;
    std::vector<std::int32_t> count_;
    std::vector<std::int32_t> row_;
    std::vector<double> value_;
    std::int64_t entries_ = 0;
};

// Names of one kind of item; takes no room while none has a name.
class Names {
public:
    void put (std::int32_t item, std::int32_t count, std::string name);
    const std::string& get (std::int32_t item) const;
    bool any () const { return !names_.empty (); }
    std::size_t longest () const;

private:
    std::vector<std::string> names_;
};

struct Problem {
    std::int32_t sense = KLV_SENSE_MINIMIZE;
    double constant = 0;
    std::vector<double> cost;
    Bounds variable;
    Bounds constraint;
    std::vector<std::uint8_t> integer;      // one a variable: KLVvartype
    std::int32_t integers = 0;
    ColumnMatrix matrix;

    std::string name;
    std::string objective_name;
    Names variable_name;
    Names constraint_name;

    std::int32_t variables () const { return variable.count (); }
    std::int32_t constraints () const { return constraint.count (); }
    void append_variables (std::int32_t count);
    void append_constraints (std::int32_t count);
};

}
