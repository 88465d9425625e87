#include "kalvo/sparse/factor.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

static std::size_t at (std::int64_t index)
{
    return static_cast<std::size_t> (index);
}

class UpLooking final : public Factor {
public:
    UpLooking (const SparseColumns& upper, const Elimination& elimination)
        : matrix_ (elimination.arranged (upper, Triangle::upper)),
          parent_ (elimination.parent),
          starts_ (elimination.size () + 1),
          next_ (elimination.size ()),
          seen_ (elimination.size ()),
          pattern_ (elimination.size ()),
          row_ (elimination.size ())
    {
        for (std::size_t j = 0; j < elimination.size (); ++j)
            starts_[j + 1] = starts_[j] + elimination.counts[j];
        pivots.resize (elimination.size ());
    }

    bool compute (std::span<const double> values, double zero_pivot, const std::atomic<bool>* stop) override;

    std::span<const std::int32_t> rows_of (std::size_t column) const override
    {
        return std::span (rows_).subspan (at (starts_[column]), at (starts_[column + 1] - starts_[column]));
    }
    std::span<const double> values_of (std::size_t column) const override
    {
        return std::span (values_).subspan (at (starts_[column]), at (starts_[column + 1] - starts_[column]));
    }
    void solve_lower (std::span<double> right) const override;
    void solve_upper (std::span<double> right) const override;

private:
    std::size_t gather_row (std::size_t k, std::span<const double> values);

    Arranged matrix_;
    std::vector<std::int32_t> parent_;
    std::vector<std::int64_t> starts_;
    std::vector<std::int32_t> rows_;
    std::vector<double> values_;
    std::vector<std::int64_t> next_;              // where the next entry of a column goes
    std::vector<std::int32_t> seen_, pattern_;    // the last row that met a column; columns of a row of L
    std::vector<double> row_;                     // 0 outside of the row in work
};

// Puts row k of the matrix into row_, and the columns of row k of L at the end of pattern_, descendants before ancestors. Each
// entry's path to k in the tree is walked until it meets a column that an earlier path has met.
std::size_t UpLooking::gather_row (std::size_t k, std::span<const double> values)
{
    std::size_t top = pattern_.size ();
    seen_[k] = static_cast<std::int32_t> (k);
    for (auto p = at (matrix_.starts[k]); p < at (matrix_.starts[k + 1]); ++p) {
        std::int32_t column = matrix_.index[p];
        row_[at (column)] += values[at (matrix_.from[p])];
        std::size_t length = 0;
        for (; seen_[at (column)] != seen_[k]; column = parent_[at (column)]) {
            pattern_[length++] = column;
            seen_[at (column)] = seen_[k];
        }
        top -= length;
        std::copy_backward (pattern_.begin (), pattern_.begin () + static_cast<std::ptrdiff_t> (length),
                            pattern_.begin () + static_cast<std::ptrdiff_t> (top + length));
    }
    return top;
}

bool UpLooking::compute (std::span<const double> values, double zero_pivot, const std::atomic<bool>* stop)
{
    rows_.resize (at (starts_.back ()));
    values_.resize (rows_.size ());
    StopWatch watch (stop);
    std::copy (starts_.begin (), starts_.end () - 1, next_.begin ());
    std::ranges::fill (seen_, -1);
    std::ranges::fill (row_, 0);
    dropped = 0;
    for (std::size_t k = 0; k < pivots.size (); ++k) {
        std::size_t multiplications = 0;
        const std::size_t top = gather_row (k, values);
        double pivot = std::exchange (row_[k], 0);
        for (std::size_t t = top; t < pattern_.size (); ++t) {
            const auto i = at (pattern_[t]);
            const double product = std::exchange (row_[i], 0);    // of the entry and its pivot
            double entry = 0;
            if (pivots[i] != 0) {
                for (auto p = at (starts_[i]); p < at (next_[i]); ++p)
                    row_[at (rows_[p])] -= values_[p] * product;
                entry = product / pivots[i];
                pivot -= entry * product;
                multiplications += at (next_[i] - starts_[i]);
            } else if (std::isnan (product))
                return false;
            else
                dropped = std::max (dropped, std::abs (product));
            const auto to = at (next_[i]++);
            rows_[to] = static_cast<std::int32_t> (k);
            values_[to] = entry;
        }
        if (std::isnan (pivot) || watch.stopped (static_cast<double> (multiplications)))
            return false;
        pivots[k] = std::abs (pivot) <= zero_pivot ? 0 : pivot;
    }
    return true;
}

void UpLooking::solve_lower (std::span<double> right) const
{
    for (std::size_t j = 0; j < right.size (); ++j)
        for (auto p = at (starts_[j]); p < at (starts_[j + 1]); ++p)
            right[at (rows_[p])] -= values_[p] * right[j];
}

void UpLooking::solve_upper (std::span<double> right) const
{
    for (std::size_t j = right.size (); j-- > 0;) {
        double value = right[j];
        for (auto p = at (starts_[j]); p < at (starts_[j + 1]); ++p)
            value -= values_[p] * right[at (rows_[p])];
        right[j] = value;
    }
}

std::unique_ptr<Factor> make_up_looking (const SparseColumns& upper, const Elimination& elimination)
{
    return std::make_unique<UpLooking> (upper, elimination);
}

}
