#include "kalvo/sparse/factor.h"

#include <Eigen/Core>

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

using Stride = Eigen::OuterStride<>;
using Block = Eigen::Map<Eigen::MatrixXd, 0, Stride>;
using ConstantBlock = Eigen::Map<const Eigen::MatrixXd, 0, Stride>;
using Vector = Eigen::Map<Eigen::VectorXd>;
using Eigen::Index;

static std::size_t at (std::int64_t index)
{
    return static_cast<std::size_t> (index);
}

// A supernode is a range of columns, each the only parent of the one before; its block is dense, with a row for each of its columns
// and for each entry of L below the last one. Left-looking: a supernode takes the updates of all descendants, then is factored.
class Supernodal final : public Factor {
public:
    Supernodal (const SparseColumns& upper, const Elimination& elimination)
        : matrix_ (elimination.arranged (upper, Triangle::lower)), supernode_of_ (elimination.size ())
    {
        merge_columns (elimination);
        find_rows (elimination);
        pivots.resize (elimination.size ());
    }

    bool compute (std::span<const double> values, double zero_pivot, const std::atomic<bool>* stop) override;
    std::span<const std::int32_t> rows_of (std::size_t column) const override
    {
        const auto s = at (supernode_of_[column]);
        return rows (s).subspan (column - at (first_[s]) + 1);
    }
    std::span<const double> values_of (std::size_t column) const override
    {
        const auto s = at (supernode_of_[column]), height = rows (s).size (), j = column - at (first_[s]);
        return std::span (values_).subspan (at (values_at_[s]) + j * height, height).subspan (j + 1);
    }
    void solve_lower (std::span<double> right) const override;
    void solve_upper (std::span<double> right) const override;

private:
    static constexpr Index chunk = 64;    // columns that a descendant updates at a time
    static constexpr Index narrow = 8;    // columns of a descendant up to which plain loops pay
    static constexpr Index panel = 48;    // columns of a block that are factored at a time

    void merge_columns (const Elimination& elimination);
    void find_rows (const Elimination& elimination);
    void take_entries (std::size_t s, std::span<const double> values);
    bool update (std::size_t s, std::size_t descendant, StopWatch& watch);
    bool factor_block (std::size_t s, double zero_pivot, StopWatch& watch);
    bool factor_triangle (Block triangle, Vector diagonal, double zero_pivot);
    bool divide_by_pivots (Block below, const Vector& diagonal);
    void queue (std::size_t s, Index row);

    std::size_t supernodes () const { return first_.size () - 1; }
    Index width (std::size_t s) const { return first_[s + 1] - first_[s]; }
    std::span<const std::int32_t> rows (std::size_t s) const
    {
        return std::span (rows_).subspan (at (rows_at_[s]), at (rows_at_[s + 1] - rows_at_[s]));
    }
    Index height (std::size_t s) const { return rows_at_[s + 1] - rows_at_[s]; }
    double* block_at (std::size_t s) { return values_.data () + values_at_[s]; }
    Block block (std::size_t s) { return {block_at (s), height (s), width (s), Stride (height (s))}; }
    ConstantBlock block (std::size_t s) const
    {
        return {values_.data () + values_at_[s], height (s), width (s), Stride (height (s))};
    }

    Arranged matrix_;
    std::vector<std::int32_t> supernode_of_;    // each column
    std::vector<std::int32_t> first_;           // column of each supernode; and the end
    std::vector<std::int64_t> rows_at_ = {0}, values_at_ = {0};
    std::vector<std::int32_t> rows_;    // of the blocks, ascending
    std::vector<double> values_;        // of the blocks, by columns
    // Work of a factorisation. A supernode waits in the queue of that which has the first row not used yet.
    std::vector<std::int32_t> queue_, next_in_queue_;
    std::vector<Index> used_;             // rows of a supernode that ancestors have used
    std::vector<std::int32_t> place_;     // of a row in the block in work
    std::vector<std::int32_t> target_;    // of a descendant's rows there
    Eigen::MatrixXd product_, scaled_;
    mutable Eigen::VectorXd below_;    // of a solve
};

// Merges a supernode into its parent right after it where the zeros that this puts into the block cost less than another block.
void Supernodal::merge_columns (const Elimination& elimination)
{
    const auto worth_it = [] (double width, double zeros, double size) {
        return zeros == 0 || width <= 4 || zeros < (width <= 16 ? 0.8 : width <= 48 ? 0.1 : 0.05) * size;
    };
    std::vector<double> zeros;    // in the blocks so far
    for (std::size_t j = 0; j < elimination.size (); ++j) {
        auto begin = static_cast<std::int32_t> (j);
        const double below = elimination.counts[j];
        double inside = 0;
        while (begin > 0 && elimination.parent[at (begin - 1)] == begin) {
            const double width_of_child = begin - first_.back (),
                         width_of_parent = static_cast<double> (j) + 1 - begin,
                         width = width_of_child + width_of_parent;
            const double merged =
                zeros.back () + inside +
                width_of_child * (width_of_parent + below - elimination.counts[at (begin - 1)]);
            if (!worth_it (width, merged, width * (width + 1) / 2 + width * below))
                break;
            inside = merged;
            begin = first_.back ();
            first_.pop_back ();
            zeros.pop_back ();
        }
        first_.push_back (begin);
        zeros.push_back (inside);
    }
    first_.push_back (static_cast<std::int32_t> (elimination.size ()));
    for (std::size_t s = 0; s < supernodes (); ++s)
        std::fill (supernode_of_.begin () + first_[s], supernode_of_.begin () + first_[s + 1],
                   static_cast<std::int32_t> (s));
}

// The rows of a supernode are its columns, and below them those of the matrix and of its children.
void Supernodal::find_rows (const Elimination& elimination)
{
    for (std::size_t s = 0; s < supernodes (); ++s) {
        rows_at_.push_back (rows_at_[s] + width (s) + elimination.counts[at (first_[s + 1] - 1)]);
        values_at_.push_back (values_at_[s] + height (s) * width (s));
    }
    rows_.resize (at (rows_at_.back ()));
    std::vector<std::int32_t> seen (elimination.size (), -1), child (supernodes (), -1), sibling (child);
    for (std::size_t s = 0; s < supernodes (); ++s) {
        auto to = at (rows_at_[s]);
        const auto add = [&] (std::int32_t row) {
            if (row >= first_[s] && std::exchange (seen[at (row)], static_cast<std::int32_t> (s)) !=
                                        static_cast<std::int32_t> (s))
                rows_[to++] = row;
        };
        for (auto j = first_[s]; j < first_[s + 1]; ++j)
            add (j);
        for (auto p = at (matrix_.starts[at (first_[s])]); p < at (matrix_.starts[at (first_[s + 1])]); ++p)
            add (matrix_.index[p]);
        for (auto c = child[s]; c != -1; c = sibling[at (c)])
            std::ranges::for_each (rows (at (c)), add);
        const auto below = at (rows_at_[s] + width (s));
        std::sort (rows_.begin () + static_cast<std::ptrdiff_t> (below),
                   rows_.begin () + static_cast<std::ptrdiff_t> (to));
        if (below < to) {
            const auto parent = at (supernode_of_[at (rows_[below])]);
            sibling[s] = std::exchange (child[parent], static_cast<std::int32_t> (s));
        }
    }
}

void Supernodal::take_entries (std::size_t s, std::span<const double> values)
{
    const auto rows_here = rows (s);
    for (std::size_t i = 0; i < rows_here.size (); ++i)
        place_[at (rows_here[i])] = static_cast<std::int32_t> (i);
    Block here = block (s);
    here.setZero ();
    for (Index j = 0; j < width (s); ++j)
        for (auto p = at (matrix_.starts[at (first_[s] + j)]);
             p < at (matrix_.starts[at (first_[s] + j + 1)]); ++p)
            here (place_[at (matrix_.index[p])], j) += values[at (matrix_.from[p])];
}

// Subtracts L D L' of a descendant's rows from the columns of s that these rows reach.
bool Supernodal::update (std::size_t s, std::size_t descendant, StopWatch& watch)
{
    const auto rows_there = rows (descendant);
    const ConstantBlock there = std::as_const (*this).block (descendant);
    const Index depth = width (descendant), end = height (descendant), begin = used_[descendant];
    const Eigen::Map<const Eigen::VectorXd> diagonal (pivots.data () + first_[descendant], depth);
    Block here = block (s);
    Index last = begin;
    while (last < end && rows_there[at (last)] < first_[s + 1])
        ++last;
    for (Index i = begin; i < end; ++i)
        target_[at (i)] = place_[at (rows_there[at (i)])];
    const auto subtract = [&] (Index c, const double* change) {
        double* const column = &here (0, target_[at (c)]);
        for (Index i = c; i < end; ++i)
            column[target_[at (i)]] -= change[i - c];
    };
    if (depth <= narrow || last - begin == 1) {
        for (Index c = begin; c < last; ++c) {
            auto change = product_.col (0).head (end - c);
            change = there.col (0).segment (c, end - c) * (there (c, 0) * diagonal[0]);
            for (Index d = 1; d < depth; ++d)
                change += there.col (d).segment (c, end - c) * (there (c, d) * diagonal[d]);
            subtract (c, product_.data ());
        }
        queue (descendant, last);
        return !watch.stopped (static_cast<double> ((end - begin) * (last - begin) * depth));
    }
    for (Index from = begin; from < last; from += chunk) {
        const Index columns = std::min (chunk, last - from), below = end - from;
        auto scaled = scaled_.topLeftCorner (columns, depth);
        auto product = product_.topLeftCorner (below, columns);
        scaled.noalias () = there.middleRows (from, columns) * diagonal.asDiagonal ();
        product.noalias () = there.bottomRows (below) * scaled.transpose ();
        for (Index c = 0; c < columns; ++c)
            subtract (from + c, &product (c, c));
        if (watch.stopped (static_cast<double> (below * columns * depth)))
            return false;
    }
    queue (descendant, last);
    return true;
}

// Lets a supernode wait for the one that its row belongs to.
void Supernodal::queue (std::size_t s, Index row)
{
    used_[s] = row;
    if (row < height (s)) {
        const auto user = at (supernode_of_[at (rows (s)[at (row)])]);
        next_in_queue_[s] = std::exchange (queue_[user], static_cast<std::int32_t> (s));
    }
}

// Pivots of a small dense triangle. What is below a zero pivot is dropped.
bool Supernodal::factor_triangle (Block triangle, Vector diagonal, double zero_pivot)
{
    for (Index j = 0; j < diagonal.size (); ++j) {
        const double pivot = triangle (j, j);
        if (std::isnan (pivot))
            return false;
        diagonal[j] = std::abs (pivot) <= zero_pivot ? 0 : pivot;
        triangle (j, j) = 1;
        const Index below = diagonal.size () - j - 1;
        if (!divide_by_pivots (Block (&triangle (j, j) + 1, below, 1, Stride (1)), Vector (&diagonal[j], 1)))
            return false;
        auto column = triangle.col (j).tail (below);
        for (Index k = j + 1; k < diagonal.size () && diagonal[j] != 0; ++k)
            triangle.col (k).tail (diagonal.size () - k) -=
                triangle (k, j) * diagonal[j] * column.tail (diagonal.size () - k);
    }
    return true;
}

bool Supernodal::divide_by_pivots (Block below, const Vector& diagonal)
{
    for (Index j = 0; j < diagonal.size (); ++j) {
        if (diagonal[j] != 0) {
            below.col (j) /= diagonal[j];
            continue;
        }
        for (Index i = 0; i < below.rows (); ++i) {
            if (std::isnan (below (i, j)))
                return false;
            dropped = std::max (dropped, std::abs (below (i, j)));
        }
        below.col (j).setZero ();
    }
    return true;
}

bool Supernodal::factor_block (std::size_t s, double zero_pivot, StopWatch& watch)
{
    Block whole = block (s);
    const Index columns = whole.cols (), rows = whole.rows ();
    for (Index begin = 0; begin < columns; begin += panel) {
        const Index size = std::min (panel, columns - begin), end = begin + size, below = rows - end;
        Block triangle (&whole (begin, begin), size, size, Stride (rows));
        Vector diagonal (pivots.data () + first_[s] + begin, size);
        if (!factor_triangle (triangle, diagonal, zero_pivot))
            return false;
        if (below == 0)
            break;
        Block rest (&whole (begin, begin) + size, below, size, Stride (rows));
        triangle.triangularView<Eigen::UnitLower> ().transpose ().solveInPlace<Eigen::OnTheRight> (rest);
        auto undivided = product_.topLeftCorner (columns - end, size);
        undivided = rest.topRows (columns - end);
        if (!divide_by_pivots (rest, diagonal))
            return false;
        for (Index from = end; from < columns; from += chunk) {
            const Index width = std::min (chunk, columns - from);
            whole.block (from, from, rows - from, width).noalias () -=
                rest.bottomRows (rows - from) * undivided.middleRows (from - end, width).transpose ();
            if (watch.stopped (static_cast<double> ((rows - from) * width * size)))
                return false;
        }
    }
    return true;
}

bool Supernodal::compute (std::span<const double> values, double zero_pivot, const std::atomic<bool>* stop)
{
    Index highest = 0, widest = 0;
    for (std::size_t s = 0; s < supernodes (); ++s) {
        highest = std::max (highest, height (s));
        widest = std::max (widest, width (s));
    }
    values_.resize (at (values_at_.back ()));
    product_.resize (highest, chunk);
    scaled_.resize (chunk, widest);
    below_.resize (highest);
    place_.resize (pivots.size ());
    target_.resize (at (highest));
    queue_.assign (supernodes (), -1);
    next_in_queue_.resize (supernodes ());
    used_.resize (supernodes ());
    dropped = 0;

    StopWatch watch (stop);
    for (std::size_t s = 0; s < supernodes (); ++s) {
        take_entries (s, values);
        for (std::int32_t descendant = queue_[s]; descendant != -1;) {
            const std::int32_t next = next_in_queue_[at (descendant)];
            if (!update (s, at (descendant), watch))
                return false;
            descendant = next;
        }
        if (!factor_block (s, zero_pivot, watch))
            return false;
        queue (s, width (s));
    }
    return true;
}

void Supernodal::solve_lower (std::span<double> right) const
{
    for (std::size_t s = 0; s < supernodes (); ++s) {
        const ConstantBlock here = block (s);
        const Index columns = here.cols (), under = here.rows () - columns;
        Vector top (right.data () + first_[s], columns);
        here.topRows (columns).triangularView<Eigen::UnitLower> ().solveInPlace (top);
        auto below = below_.head (under);
        below.noalias () = here.bottomRows (under) * top;
        for (Index i = 0; i < under; ++i)
            right[at (rows (s)[at (columns + i)])] -= below[i];
    }
}

void Supernodal::solve_upper (std::span<double> right) const
{
    for (std::size_t s = supernodes (); s-- > 0;) {
        const ConstantBlock here = block (s);
        const Index columns = here.cols (), under = here.rows () - columns;
        Vector top (right.data () + first_[s], columns);
        auto below = below_.head (under);
        for (Index i = 0; i < under; ++i)
            below[i] = right[at (rows (s)[at (columns + i)])];
        top.noalias () -= here.bottomRows (under).transpose () * below;
        here.topRows (columns).triangularView<Eigen::UnitLower> ().transpose ().solveInPlace (top);
    }
}

std::unique_ptr<Factor> make_supernodal (const SparseColumns& upper, const Elimination& elimination)
{
    return std::make_unique<Supernodal> (upper, elimination);
}

}
