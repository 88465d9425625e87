// The constraint matrix as it is put and changed.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <vector>

namespace klv {

// One column of the constraint matrix, in the order in which it was put.
struct Column {
    std::span<const std::int32_t> rows;
    std::span<const double> values;
};

// The constraint matrix by columns, in one pair of arrays. Columns may be put in any order and again: a column
// that no longer fits its place moves to the end, and holes are closed when they are half of the arrays, so
// that the cost stays proportional to the entries that are put. Put in order, the arrays are the compressed columns
// that engines take. Entries are counted in 32 bits, as engines count them; a column that moves counts twice until
// it has moved.
//
// An operation that throws leaves the matrix as it was: std::bad_alloc, or the Refusal of put.
class ColumnMatrix {
public:
    ColumnMatrix () = default;
    explicit ColumnMatrix (std::int64_t most_entries) : most_entries_ (most_entries) {}

    // A packed matrix whose entries are somebody else's, kept by `owner`; it is only read.
    ColumnMatrix (std::span<const std::int32_t> starts, std::span<const std::int32_t> rows,
                  std::span<const double> values, std::shared_ptr<const void> owner);

    void append_columns (std::int32_t count);
    void reserve (std::int64_t entries);
    // Refuses a column whose entries are more than can be counted.
    void put (std::int32_t j, std::span<const std::int32_t> rows, std::span<const double> values);

    std::int32_t columns () const { return static_cast<std::int32_t> (count_.size ()); }
    std::int64_t entries () const { return entries_; }
    Column column (std::int32_t j) const;

    // Closes holes and puts columns in order; rows () and values () are then the compressed columns, and
    // starts () has columns () + 1 entries. Costs one pass over columns that were put in order.
    void pack ();
    bool packed () const { return packed_; }
    std::span<const std::int32_t> starts () const { return start_; }
    std::span<const std::int32_t> rows () const { return owner_ ? outside_.rows : row_; }
    std::span<const double> values () const { return owner_ ? outside_.values : value_; }

private:
    bool in_order () const;
    void move_together ();
    void copy_in_order ();

    std::vector<std::int32_t> start_{0};
    std::vector<std::int32_t> count_;
    std::vector<std::int32_t> row_;
    std::vector<double> value_;
    Column outside_;    // all entries, where they have an owner of their own
    std::shared_ptr<const void> owner_;
    std::int64_t most_entries_ = std::numeric_limits<std::int32_t>::max ();
    std::int64_t entries_ = 0;
    bool packed_ = true;
};

// Looks for a row that a column names twice, in time proportional to the column.
class RepeatedRows {
public:
    // The position of the second occurrence, or -1. Rows are less than `constraints`.
    std::int64_t find (std::span<const std::int32_t> rows, std::int32_t constraints);

private:
    std::vector<std::uint32_t> last_seen_;
    std::uint32_t search_ = 0;
};

}
