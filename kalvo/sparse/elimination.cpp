#include "kalvo/sparse/elimination.h"

#include <Eigen/OrderingMethods>
#include <Eigen/SparseCore>

#include <algorithm>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace klv {

using Indices = std::vector<std::int32_t>;

static std::size_t at (std::int32_t index)
{
    return static_cast<std::size_t> (index);
}

static std::int32_t as_index (std::size_t number)
{
    return static_cast<std::int32_t> (number);
}

// The ordering works on both triangles, with a fifth more and two entries for each column as elbow room, in 32 bits.
static Indices minimum_degree_order (const SparseColumns& upper)
{
    const auto columns = at (upper.columns ()), entries = upper.rows.size ();
    if (entries / 5 * 12 + 2 * columns + 12 > std::numeric_limits<std::int32_t>::max ())
        throw std::length_error ("a matrix has too many entries to be ordered");
    const Eigen::Map<const Eigen::SparseMatrix<double>> matrix (
        upper.columns (), upper.columns (), static_cast<Eigen::Index> (entries), upper.starts.data (),
        upper.rows.data (), upper.values.data ());
    Eigen::PermutationMatrix<Eigen::Dynamic, Eigen::Dynamic, std::int32_t> order;
    if (columns > 0)
        Eigen::AMDOrdering<std::int32_t> () (matrix.selfadjointView<Eigen::Upper> (), order);
    return {order.indices ().data (), order.indices ().data () + columns};
}

static Indices inverse (const Indices& order)
{
    Indices place (order.size ());
    for (std::size_t k = 0; k < order.size (); ++k)
        place[at (order[k])] = as_index (k);
    return place;
}

Arranged Elimination::arranged (const SparseColumns& upper, Triangle triangle) const
{
    const Indices place = inverse (order);
    Arranged made{Indices (size () + 1), Indices (upper.rows.size ()), Indices (upper.rows.size ())};
    const auto visit = [&] (auto&& use) {
        for (std::size_t j = 0; j < size (); ++j)
            for (auto p = at (upper.starts[j]); p < at (upper.starts[j + 1]); ++p) {
                const auto [first, last] = std::minmax ({place[j], place[at (upper.rows[p])]});
                if (triangle == Triangle::upper)
                    use (at (last), first, p);
                else
                    use (at (first), last, p);
            }
    };
    visit ([&] (std::size_t column, std::int32_t, std::size_t) { ++made.starts[column + 1]; });
    std::partial_sum (made.starts.begin (), made.starts.end (), made.starts.begin ());
    Indices next (made.starts.begin (), made.starts.end () - 1);
    visit ([&] (std::size_t column, std::int32_t row, std::size_t p) {
        const auto to = at (next[column]++);
        made.index[to] = row;
        made.from[to] = as_index (p);
    });
    return made;
}

// The parent of a column is the row of the first entry below the diagonal of L: Liu's algorithm, with shortened paths to the roots
// of the subtrees made so far.
static Indices elimination_tree (const Arranged& upper)
{
    const std::size_t size = upper.starts.size () - 1;
    Indices parent (size, -1), towards_root (size, -1);
    for (std::size_t k = 0; k < size; ++k)
        for (auto p = at (upper.starts[k]); p < at (upper.starts[k + 1]); ++p)
            for (std::int32_t i = upper.index[p]; i != -1 && at (i) < k;) {
                const std::int32_t next = std::exchange (towards_root[at (i)], as_index (k));
                if (next == -1)
                    parent[at (i)] = as_index (k);
                i = next;
            }
    return parent;
}

// An order of the columns in which each subtree is contiguous and ends with its root.
static Indices postorder (const Indices& parent)
{
    const std::size_t size = parent.size ();
    Indices descendants (size, 1), order (size);
    for (std::size_t j = 0; j < size; ++j)    // children come before their parents
        if (parent[j] != -1)
            descendants[at (parent[j])] += descendants[j];
    std::int32_t roots_end = 0;
    Indices end (size);    // where the free places of a column's subtree begin, from the front
    Indices place (size);
    for (std::size_t j = size; j-- > 0;) {    // parents first
        std::int32_t& front = parent[j] == -1 ? roots_end : end[at (parent[j])];
        end[j] = front;
        front += descendants[j];
        place[j] = front - 1;
    }
    for (std::size_t j = 0; j < size; ++j)
        order[at (place[j])] = as_index (j);
    return order;
}

static std::int32_t root_of (Indices& towards_root, std::int32_t node)
{
    std::int32_t root = node;
    while (towards_root[at (root)] != root)
        root = towards_root[at (root)];
    while (node != root)
        node = std::exchange (towards_root[at (node)], root);
    return root;
}

// Row i of L is the part of the tree between i and the entries of row i of the matrix. So a column's count is the sum over its
// subtree of: one for each row that has a leaf of its part there, less one for each meeting of two leaves' paths, less one for each
// part that ends there (Gilbert, Ng and Peyton).
static Indices column_counts (const Arranged& lower, const Indices& parent)
{
    const std::size_t size = parent.size ();
    Indices first (size, -1), counts (size), last_leaf (size, -1), towards_root (size);
    for (std::size_t j = 0; j < size; ++j) {
        counts[j] = first[j] == -1;
        if (first[j] == -1)
            first[j] = as_index (j);
        if (parent[j] != -1 && first[at (parent[j])] == -1)
            first[at (parent[j])] = first[j];
    }
    std::iota (towards_root.begin (), towards_root.end (), 0);
    for (std::size_t j = 0; j < size; ++j) {
        for (auto p = at (lower.starts[j]); p < at (lower.starts[j + 1]); ++p) {
            const auto i = at (lower.index[p]);
            if (i == j || first[j] <= last_leaf[i])
                continue;
            ++counts[j];
            if (last_leaf[i] != -1)
                --counts[at (root_of (towards_root, last_leaf[i]))];
            last_leaf[i] = as_index (j);
        }
        if (parent[j] != -1) {
            --counts[at (parent[j])];
            towards_root[j] = parent[j];
        }
    }
    for (std::size_t j = 0; j < size; ++j)
        if (parent[j] != -1)
            counts[at (parent[j])] += counts[j];
    for (std::int32_t& count : counts)
        --count;    // the diagonal
    return counts;
}

Elimination eliminate (const SparseColumns& upper)
{
    Elimination made;
    made.order = minimum_degree_order (upper);
    const Indices tree = elimination_tree (made.arranged (upper, Triangle::upper));
    const Indices sequence = postorder (tree), place = inverse (sequence);
    Indices order (made.size ());
    made.parent.resize (made.size ());
    for (std::size_t k = 0; k < made.size (); ++k) {
        const auto old = at (sequence[k]);
        order[k] = made.order[old];
        made.parent[k] = tree[old] == -1 ? -1 : place[at (tree[old])];
    }
    made.order = std::move (order);
    made.counts = column_counts (made.arranged (upper, Triangle::lower), made.parent);
    return made;
}

}
