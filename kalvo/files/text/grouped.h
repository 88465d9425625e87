// Turns entries from rows to columns and back: LP files have the matrix by rows, problems by columns.
#pragma once

#include <cstdint>
#include <numeric>
#include <span>
#include <vector>

namespace klv {

// Entries grouped by one of their two indices, in each group in the order in which they came.
class Grouped {
public:
    Grouped () = default;

    // for_each (visit) must call visit (group, other, value) for every entry. It is called twice.
    template <class ForEach>
    Grouped (std::int32_t groups, std::int64_t entries, const ForEach& for_each)
        : begin_ (static_cast<std::size_t> (groups) + 2, 0),
          others_ (static_cast<std::size_t> (entries)),
          values_ (others_.size ())
    {
        for_each ([&] (std::int32_t group, std::int32_t, double) {
            ++begin_[static_cast<std::size_t> (group) + 2];
        });
        std::partial_sum (begin_.begin (), begin_.end (), begin_.begin ());
        // While entries are put, begin_[group + 1] moves from the begin of the group to its end.
        for_each ([&] (std::int32_t group, std::int32_t other, double value) {
            const std::size_t at = begin_[static_cast<std::size_t> (group) + 1]++;
            others_[at] = other;
            values_[at] = value;
        });
    }

    std::span<const std::int32_t> others (std::int32_t group) const { return part (others_, group); }
    std::span<const double> values (std::int32_t group) const { return part (values_, group); }

private:
    template <class Value>
    std::span<const Value> part (const std::vector<Value>& all, std::int32_t group) const
    {
        const auto at = static_cast<std::size_t> (group);
        return std::span (all).subspan (begin_[at], begin_[at + 1] - begin_[at]);
    }

    std::vector<std::size_t> begin_;
    std::vector<std::int32_t> others_;
    std::vector<double> values_;
};

}
