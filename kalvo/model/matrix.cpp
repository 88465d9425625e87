#include "kalvo/model/matrix.h"

#include "kalvo/model/refusal.h"
#include "kalvo/model/room.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace klv {

ColumnMatrix::ColumnMatrix (std::span<const std::int32_t> starts, std::span<const std::int32_t> rows,
                            std::span<const double> values, std::shared_ptr<const void> owner)
    : start_ (starts.begin (), starts.end ()),
      count_ (starts.size () - 1),
      outside_{rows, values},
      owner_ (std::move (owner)),
      entries_ (std::ssize (values))
{
    for (std::size_t j = 0; j < count_.size (); ++j)
        count_[j] = start_[j + 1] - start_[j];
}

void ColumnMatrix::append_columns (std::int32_t count)
{
    const auto more = static_cast<std::size_t> (count);
    make_room (start_, more);
    make_room (count_, more);
    start_.resize (start_.size () + more, static_cast<std::int32_t> (entries_));
    count_.resize (count_.size () + more, 0);
}

void ColumnMatrix::reserve (std::int64_t entries)
{
    row_.reserve (static_cast<std::size_t> (entries));
    value_.reserve (static_cast<std::size_t> (entries));
}

void ColumnMatrix::put (std::int32_t j, std::span<const std::int32_t> rows, std::span<const double> values)
{
    const auto column = static_cast<std::size_t> (j);
    const auto size = static_cast<std::int32_t> (rows.size ());
    if (size > count_[column]) {
        if (entries_ + size > most_entries_)
            refuse (KLV_RES_TOO_LARGE, "The matrix has ", entries_, " entries; the ", size, " of column ",
                    std::int64_t{j} + 1, " are more than can be counted.");
        // Closing holes costs time by the length of the arrays, of which most was put since holes were last closed.
        const auto length = static_cast<std::int64_t> (row_.size ());
        if (length > 2 * entries_ + columns () || length + size > most_entries_)
            pack ();
        make_room (row_, rows.size ());
        make_room (value_, rows.size ());
        start_[column] = static_cast<std::int32_t> (row_.size ());
        row_.insert (row_.end (), rows.begin (), rows.end ());
        value_.insert (value_.end (), values.begin (), values.end ());
    } else {
        std::ranges::copy (rows, row_.begin () + start_[column]);
        std::ranges::copy (values, value_.begin () + start_[column]);
    }
    packed_ = packed_ && size == count_[column];
    entries_ += size - count_[column];
    count_[column] = size;
}

Column ColumnMatrix::column (std::int32_t j) const
{
    const auto column = static_cast<std::size_t> (j);
    const auto start = static_cast<std::size_t> (start_[column]);
    const auto size = static_cast<std::size_t> (count_[column]);
    return {rows ().subspan (start, size), values ().subspan (start, size)};
}

void ColumnMatrix::pack ()
{
    if (packed_)
        return;
    if (in_order ())
        move_together ();
    else
        copy_in_order ();
    std::int32_t start = 0;
    for (std::size_t j = 0; j < count_.size (); ++j) {
        start_[j] = start;
        start += count_[j];
    }
    start_.back () = start;
    packed_ = true;
}

// Whether the columns stand in order, with or without holes; an empty column has no place.
bool ColumnMatrix::in_order () const
{
    std::int32_t end = 0;
    for (std::size_t j = 0; j < count_.size (); ++j) {
        if (count_[j] == 0)
            continue;
        if (start_[j] < end)
            return false;
        end = start_[j] + count_[j];
    }
    return true;
}

void ColumnMatrix::move_together ()
{
    if (static_cast<std::int64_t> (row_.size ()) == entries_)
        return;
    std::int32_t end = 0;
    for (std::size_t j = 0; j < count_.size (); ++j) {
        if (count_[j] > 0 && start_[j] != end) {
            std::copy_n (row_.begin () + start_[j], count_[j], row_.begin () + end);
            std::copy_n (value_.begin () + start_[j], count_[j], value_.begin () + end);
        }
        end += count_[j];
    }
    row_.resize (static_cast<std::size_t> (end));
    value_.resize (static_cast<std::size_t> (end));
}

void ColumnMatrix::copy_in_order ()
{
    std::vector<std::int32_t> row;
    std::vector<double> value;
    row.reserve (static_cast<std::size_t> (entries_));
    value.reserve (static_cast<std::size_t> (entries_));
    for (std::int32_t j = 0; j < columns (); ++j) {
        const Column source = column (j);
        row.insert (row.end (), source.rows.begin (), source.rows.end ());
        value.insert (value.end (), source.values.begin (), source.values.end ());
    }
    row_ = std::move (row);
    value_ = std::move (value);
}

std::int64_t RepeatedRows::find (std::span<const std::int32_t> rows, std::int32_t constraints)
{
    if (std::ranges::adjacent_find (rows, std::greater_equal{}) == rows.end ())
        return -1;    // rows increase: none is named twice
    if (last_seen_.size () < static_cast<std::size_t> (constraints))
        last_seen_.resize (static_cast<std::size_t> (constraints), 0);
    if (++search_ == 0) {
        std::ranges::fill (last_seen_, 0);
        search_ = 1;
    }
    for (std::size_t k = 0; k < rows.size (); ++k) {
        std::uint32_t& seen = last_seen_[static_cast<std::size_t> (rows[k])];
        if (seen == search_)
            return static_cast<std::int64_t> (k);
        seen = search_;
    }
    return -1;
}

}
