#include "kalvo/engines/semidefinite/schur.h"

#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <stdexcept>

namespace klv::semidefinite {

using std::numbers::sqrt2;

// ---- Dense or sparse -----------------------------------------------------------------------------------------------------------------

// Calls the function with each set of constraints of which every two have an entry of the Schur matrix.
template <class Function>
static void each_clique (const Program& program, const Function& function)
{
    const SparseColumns& constraints = program.constraints;
    const Blocks& blocks = program.blocks;
    // Members by position for numbers, by block for cones.
    std::vector<std::vector<std::int32_t>> members (blocks.dual_size + blocks.all.size ());
    std::vector<std::size_t> clique_of (blocks.dual_size);
    for (std::size_t b = 0; b < blocks.all.size (); ++b) {
        const Block& block = blocks.all[b];
        for (std::size_t k = block.dual_begin; k < block.dual_begin + block.dual_size; ++k)
            clique_of[k] = block.kind == ConeKind::nonnegative ? k : blocks.dual_size + b;
    }
    for (std::size_t i = 0; i < program.rows (); ++i)
        for (const std::int32_t position : constraints.rows_of (i)) {
            std::vector<std::int32_t>& clique = members[clique_of[index (position)]];
            if (clique.empty () || clique.back () != static_cast<std::int32_t> (i))
                clique.push_back (static_cast<std::int32_t> (i));
        }
    for (const std::vector<std::int32_t>& clique : members)
        function (std::span<const std::int32_t> (clique));
    for (std::size_t k = 0; k < program.free_variables (); ++k)
        function (program.border.rows_of (k));
    for (std::size_t i = 0; i < program.rows (); ++i)
        for (const std::int32_t j : program.quadratic.rows_of (i)) {
            const std::int32_t pair[] = {j, static_cast<std::int32_t> (i)};
            function (std::span<const std::int32_t> (pair));
        }
}

PositiveDefinite SchurMatrix::choose (const Program& program, Watch& watch)
{
    constexpr std::size_t small = 100;
    constexpr double dense_enough = 0.3, sparse_costs = 4;
    const std::size_t rows = program.rows ();
    const double size = static_cast<double> (rows);
    double pairs = 0;
    each_clique (program,
                 [&] (std::span<const std::int32_t> clique) { pairs += std::pow (clique.size (), 2); });
    if (rows <= small || pairs > dense_enough * size * size)
        return PositiveDefinite (rows);
    // Of each constraint those before it, once.
    std::vector<std::vector<std::int32_t>> before (rows);
    each_clique (program, [&] (std::span<const std::int32_t> clique) {
        for (std::size_t k = 0; k < clique.size (); ++k) {
            std::vector<std::int32_t>& here = before[index (clique[k])];
            here.insert (here.end (), clique.begin (), clique.begin () + static_cast<std::ptrdiff_t> (k));
        }
        watch.look (std::pow (clique.size (), 2));
    });
    SparseColumns upper;
    for (std::size_t i = 0; i < rows; ++i) {
        std::ranges::sort (before[i]);
        const auto repeated = std::ranges::unique (before[i]);
        upper.rows.insert (upper.rows.end (), before[i].begin (), repeated.begin ());
        upper.rows.push_back (static_cast<std::int32_t> (i));
        upper.starts.push_back (static_cast<std::int32_t> (upper.rows.size ()));
        before[i] = {};
        watch.look (static_cast<double> (upper.rows.size ()) / size);
    }
    upper.values.resize (upper.rows.size ());
    try {
        Ldl ldl (upper);
        if (sparse_costs * ldl.flops () < size * size * size / 3)
            return PositiveDefinite (std::move (upper), std::move (ldl));
    } catch (const std::length_error&) {    // too many entries for the ordering
    }
    return PositiveDefinite (rows);
}

// ---- Parts ---------------------------------------------------------------------------------------------------------------------------

SchurMatrix::SchurMatrix (const Program& program, Watch& watch)
    : program_ (program), matrix_ (choose (program, watch))
{
    find_parts ();
}

void SchurMatrix::find_parts ()
{
    const Blocks& blocks = program_.blocks;
    std::vector<std::size_t> block_of (blocks.dual_size);
    for (std::size_t b = 0; b < blocks.all.size (); ++b)
        std::fill_n (block_of.begin () + static_cast<std::ptrdiff_t> (blocks.all[b].dual_begin),
                     blocks.all[b].dual_size, b);
    std::vector<Matrices> matrices (blocks.all.size ());
    uses_.resize (blocks.dual_size);
    for (std::size_t i = 0; i < program_.rows (); ++i) {
        const auto positions = program_.constraints.rows_of (i);
        const auto values = program_.constraints.values_of (i);
        const auto constraint = static_cast<std::int32_t> (i);
        for (std::size_t k = 0; k < positions.size (); ++k) {
            const std::size_t position = index (positions[k]), b = block_of[position];
            if (blocks.all[b].kind != ConeKind::semidefinite) {
                uses_[position].push_back ({constraint, values[k]});
                continue;
            }
            std::vector<Part>& parts = matrices[b].parts;
            if (parts.empty () || parts.back ().constraint != constraint)
                parts.push_back ({constraint, elements_.size (), elements_.size (), 0});
            const auto [row, column] = blocks.places[position];
            elements_.push_back ({row, column, row == column ? values[k] : values[k] / sqrt2});
            parts.back ().end = elements_.size ();
            parts.back ().weight += row == column ? 1 : 2;
        }
    }
    std::int32_t largest = 0;
    for (std::size_t b = 0; b < matrices.size (); ++b) {
        std::vector<Part>& parts = matrices[b].parts;
        if (parts.empty ())
            continue;
        matrices[b].block = &blocks.all[b];
        std::ranges::stable_sort (parts, std::ranges::greater{}, &Part::weight);
        matrices[b].weight_from.assign (parts.size () + 1, 0.0);
        for (std::size_t k = parts.size (); k-- > 0;)
            matrices[b].weight_from[k] = matrices[b].weight_from[k + 1] + parts[k].weight;
        largest = std::max (largest, blocks.all[b].order);
        matrices_.push_back (std::move (matrices[b]));
    }
    place_of_row_.assign (index (largest), -1);
    line_weight_.resize (blocks.dual_size);
}

// ---- Assembly ------------------------------------------------------------------------------------------------------------------------

void SchurMatrix::assemble (std::span<const double> x, std::span<const double> w, Watch& watch)
{
    matrix_.clear ();
    add_lines (x, w, watch);
    for (const Matrices& matrices : matrices_)
        add_matrices (matrices, matrices.block->primal (x).data (), matrices.block->primal (w).data (),
                      watch);
    for (std::size_t i = 0; i < program_.rows (); ++i) {
        const auto rows = program_.quadratic.rows_of (i);
        for (std::size_t k = 0; k < rows.size (); ++k)
            matrix_.add (rows[k], static_cast<std::int32_t> (i), program_.quadratic.values_of (i)[k]);
    }
}

// Of numbers xw, and of second-order cones the part - (x'Jw) J.
void SchurMatrix::add_lines (std::span<const double> x, std::span<const double> w, Watch& watch)
{
    for (const Block& block : program_.blocks.all) {
        if (block.kind == ConeKind::semidefinite)
            continue;
        const std::span<const double> xb = block.primal (x), wb = block.primal (w);
        const std::span<double> weight = block.dual (line_weight_);
        if (block.kind == ConeKind::nonnegative)
            std::ranges::transform (xb, wb, weight.begin (), std::multiplies{});
        else {
            const double reflected = 2 * xb[0] * wb[0] - dot (xb, wb);
            std::ranges::fill (weight, reflected);
            weight[0] = -reflected;
            add_second_order (block, xb, wb);
        }
        for (std::size_t k = 0; k < weight.size (); ++k) {
            const std::vector<Use>& uses = uses_[block.dual_begin + k];
            for (std::size_t i = 0; i < uses.size (); ++i)
                for (std::size_t j = 0; j <= i; ++j)
                    matrix_.add (uses[j].constraint, uses[i].constraint,
                                 weight[k] * uses[i].value * uses[j].value);
            watch.look (std::pow (uses.size (), 2));
        }
    }
}

// Ax (Aw)' + Aw (Ax)'.
void SchurMatrix::add_second_order (const Block& block, std::span<const double> x, std::span<const double> w)
{
    struct Image {
        std::int32_t constraint;
        double x, w;
    };
    std::vector<Image> terms;
    for (std::size_t k = 0; k < x.size (); ++k)
        for (const Use& use : uses_[block.dual_begin + k])
            terms.push_back ({use.constraint, use.value * x[k], use.value * w[k]});
    std::ranges::stable_sort (terms, {}, &Image::constraint);
    std::vector<Image> images;
    for (const Image& term : terms)
        if (!images.empty () && images.back ().constraint == term.constraint) {
            images.back ().x += term.x;
            images.back ().w += term.w;
        } else
            images.push_back (term);
    for (std::size_t i = 0; i < images.size (); ++i)
        for (std::size_t j = 0; j <= i; ++j)
            matrix_.add (images[j].constraint, images[i].constraint,
                         images[i].x * images[j].w + images[i].w * images[j].x);
}

// The rows in which a matrix has entries, and their places among them.
void SchurMatrix::find_rows (std::span<const Element> elements)
{
    for (const std::int32_t row : rows_)
        place_of_row_[index (row)] = -1;
    rows_.clear ();
    for (const Element& element : elements)
        for (const std::int32_t row : {element.row, element.column})
            if (place_of_row_[index (row)] < 0) {
                place_of_row_[index (row)] = static_cast<std::int32_t> (rows_.size ());
                rows_.push_back (row);
            }
}

// Three ways for each constraint with all that have no more entries (Fujisawa, Kojima and Nakata, Exploiting sparsity in primal-dual
// interior-point methods for semidefinite programming).
void SchurMatrix::add_matrices (const Matrices& matrices, const double* x, const double* w, Watch& watch)
{
    constexpr double cost_in_product = 0.12, cost_of_look_up = 4;    // beside a multiplication made by itself
    const std::vector<Part>& parts = matrices.parts;
    const int order = matrices.block->order;
    const std::size_t n = index (order);
    for (std::size_t k = 0; k < parts.size (); ++k) {
        const Part& part = parts[k];
        const std::span<const Element> here = elements (part);
        const std::span<const Part> others = std::span (parts).subspan (k);
        find_rows (here);
        const std::size_t depth = rows_.size ();
        const double size = static_cast<double> (n), height = static_cast<double> (depth),
                     rest = matrices.weight_from[k];
        const double whole =
            2 * part.weight * size + cost_in_product * 2 * size * size * height + cost_of_look_up * rest;
        const double by_rows = 2 * part.weight * size + 2 * size * height + (height + 3) * rest;
        const double by_entries = (2 * part.weight + 1) * rest;
        watch.look (std::min ({whole, by_rows, by_entries}));
        if (by_entries <= whole && by_entries <= by_rows) {
            for (const Part& other : others) {
                double sum = 0;
                for (const auto& [p, q, outer] : elements (other)) {
                    const double *xp = x + n * index (p), *xq = x + n * index (q), *wp = w + n * index (p),
                                 *wq = w + n * index (q);
                    double inner = 0;
                    for (const auto& [row, column, value] : here) {
                        const std::size_t r = index (row), c = index (column);
                        double term = xp[r] * wq[c];
                        if (r != c)
                            term += xp[c] * wq[r];
                        if (p != q)
                            term += xq[r] * wp[c] + (r != c ? xq[c] * wp[r] : 0);
                        inner += value * term;
                    }
                    sum += outer * inner;
                }
                matrix_.add (part.constraint, other.constraint, sum);
            }
            continue;
        }
        // The rows of A_i W that aren't zero.
        product_.assign (depth * n, 0.0);
        for (const auto& [row, column, value] : here) {
            const auto add_row = [&, by = value] (std::int32_t to, std::int32_t from) {
                double* const target = product_.data () + place_of_row_[index (to)];
                const double* const source = w + n * index (from);
                for (std::size_t j = 0; j < n; ++j)
                    target[depth * j] += by * source[j];
            };
            add_row (row, column);
            if (row != column)
                add_row (column, row);
        }
        rows_of_x_.resize (depth * n);
        if (whole <= by_rows) {
            image_.resize (n * n);
            for (std::size_t r = 0; r < depth; ++r)
                std::memcpy (&rows_of_x_[n * r], x + n * index (rows_[r]), n * sizeof (double));
            multiply ({order, order, static_cast<int> (depth)}, rows_of_x_.data (), product_.data (), 0,
                      image_.data (), watch);
            for (const Part& other : others) {
                double sum = 0;
                for (const auto& [p, q, value] : elements (other)) {
                    const double one = image_[index (p) + n * index (q)];
                    sum += value * (p == q ? one : one + image_[index (q) + n * index (p)]);
                }
                matrix_.add (part.constraint, other.constraint, sum);
            }
            continue;
        }
        for (std::size_t j = 0; j < n; ++j)
            for (std::size_t r = 0; r < depth; ++r)
                rows_of_x_[depth * j + r] = x[n * j + index (rows_[r])];
        for (const Part& other : others) {
            double sum = 0;
            for (const auto& [p, q, value] : elements (other)) {
                const double *xp = &rows_of_x_[depth * index (p)], *xq = &rows_of_x_[depth * index (q)],
                             *tp = &product_[depth * index (p)], *tq = &product_[depth * index (q)];
                double one = 0, mirrored = 0;
                for (std::size_t r = 0; r < depth; ++r)
                    one += xp[r] * tq[r];
                if (p != q)
                    for (std::size_t r = 0; r < depth; ++r)
                        mirrored += xq[r] * tp[r];
                sum += value * (one + mirrored);
            }
            matrix_.add (part.constraint, other.constraint, sum);
        }
    }
}

}
