#include "kalvo/engines/semidefinite/dense.h"

#include <algorithm>
#include <cmath>
#include <limits>

// The routines of BLAS and LAPACK as Fortran compilers call them, with the lengths of character arguments at the end.
// NOLINTBEGIN(readability-identifier-naming)
extern "C" {
using Length = std::size_t;
void dgemm_ (const char*, const char*, const int*, const int*, const int*, const double*, const double*,
             const int*, const double*, const int*, const double*, double*, const int*, Length, Length);
void dsyrk_ (const char*, const char*, const int*, const int*, const double*, const double*, const int*,
             const double*, double*, const int*, Length, Length);
void dtrsm_ (const char*, const char*, const char*, const char*, const int*, const int*, const double*,
             const double*, const int*, double*, const int*, Length, Length, Length, Length);
void dtrmm_ (const char*, const char*, const char*, const char*, const int*, const int*, const double*,
             const double*, const int*, double*, const int*, Length, Length, Length, Length);
void dtrsv_ (const char*, const char*, const char*, const int*, const double*, const int*, double*,
             const int*, Length, Length, Length);
void dtrtri_ (const char*, const char*, const int*, double*, const int*, int*, Length, Length);
void dlauum_ (const char*, const int*, double*, const int*, int*, Length);
void dsymv_ (const char*, const int*, const double*, const double*, const int*, const double*, const int*,
             const double*, double*, const int*, Length);
void dpotrf_ (const char*, const int*, double*, const int*, int*, Length);
void dsygst_ (const int*, const char*, const int*, double*, const int*, const double*, const int*, int*,
              Length);
void dsyev_ (const char*, const char*, const int*, double*, const int*, double*, double*, const int*, int*,
             Length, Length);
void dsteqr_ (const char*, const int*, double*, double*, double*, const int*, double*, int*, Length);
}
// NOLINTEND(readability-identifier-naming)

namespace klv::semidefinite {

constexpr int one = 1;
constexpr double unit = 1, minus_unit = -1, nothing = 0;

static std::size_t at (int row, int column, int stride)
{
    return static_cast<std::size_t> (row) +
           static_cast<std::size_t> (column) * static_cast<std::size_t> (stride);
}

// ---- Vectors ---------------------------------------------------------------------------------------------------------------------

double dot (std::span<const double> x, std::span<const double> y)
{
    double sums[4] = {};
    std::size_t i = 0;
    for (; i + 4 <= x.size (); i += 4)
        for (std::size_t k = 0; k < 4; ++k)
            sums[k] += x[i + k] * y[i + k];
    for (; i < x.size (); ++i)
        sums[0] += x[i] * y[i];
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

double norm (std::span<const double> x)
{
    return std::sqrt (dot (x, x));
}

void add (double factor, std::span<const double> x, std::span<double> y)
{
    for (std::size_t i = 0; i < x.size (); ++i)
        y[i] += factor * x[i];
}

// ---- Products and factors ----------------------------------------------------------------------------------------------------------

// Columns, of so many at most, of a piece of work with so many multiplications for each.
static int piece (double for_a_column, int least, int most)
{
    constexpr double multiplications = 1e8;
    return std::min (
        most,
        std::max (least, static_cast<int> (std::min (multiplications / std::max (for_a_column, 1.0), 1e9))));
}

void multiply (Shape shape, const double* a, const double* b, double keep, double* c, Watch& watch)
{
    const double for_a_column = static_cast<double> (shape.m) * shape.k;
    const int width = piece (for_a_column, 48, shape.n);
    for (int from = 0; from < shape.n; from += width) {
        const int columns = std::min (width, shape.n - from);
        dgemm_ ("N", "N", &shape.m, &columns, &shape.k, &unit, a, &shape.m, b + at (0, from, shape.k),
                &shape.k, &keep, c + at (0, from, shape.m), &shape.m, 1, 1);
        watch.look (for_a_column * columns);
    }
}

// Columns that are worked on by one call of LAPACK.
static int panel_of (int n)
{
    return n <= 1000 ? std::max (n, 1) : 192;
}

// Right-looking, panel by panel (Golub and Van Loan, Matrix Computations, 4.2.6).
bool cholesky (int n, double* a, int stride, Watch& watch)
{
    const int panel = panel_of (n);
    for (int from = 0; from < n; from += panel) {
        const int size = std::min (panel, n - from), below = n - from - size;
        int info = 0;
        dpotrf_ ("L", &size, a + at (from, from, stride), &stride, &info, 1);
        if (info != 0)
            return false;
        double* const rest = a + at (from + size, from, stride);
        if (below > 0)
            dtrsm_ ("R", "L", "T", "N", &below, &size, &unit, a + at (from, from, stride), &stride, rest,
                    &stride, 1, 1, 1, 1);
        watch.look (static_cast<double> (size) * size * (below + size / 3.0));
        for (int column = 0, width = 0; column < below; column += width) {
            width = piece (static_cast<double> (below - column) * size, 48, below - column);
            const int tail = below - column - width;
            double* const corner = a + at (from + size + column, from + size + column, stride);
            dsyrk_ ("L", "N", &width, &size, &minus_unit, rest + column, &stride, &unit, corner, &stride, 1,
                    1);
            if (tail > 0)
                dgemm_ ("N", "T", &tail, &width, &size, &minus_unit, rest + column + width, &stride,
                        rest + column, &stride, &unit, corner + width, &stride, 1, 1);
            watch.look (static_cast<double> (below - column) * size * width);
        }
    }
    return true;
}

// The inverse of L panel by panel from the last one on, then its product with its transpose, like LAPACK's dtrtri and dlauum.
void invert (int n, double* l, Watch& watch)
{
    const int panel = panel_of (n), last = (n - 1) / panel * panel;
    int info = 0;
    for (int from = last; from >= 0; from -= panel) {
        const int size = std::min (panel, n - from), end = from + size, below = n - end;
        double* const corner = l + at (from, from, n);
        if (below > 0) {
            dtrmm_ ("L", "L", "N", "N", &below, &size, &unit, l + at (end, end, n), &n, corner + size, &n, 1,
                    1, 1, 1);
            watch.look (static_cast<double> (below) * below * size / 2);
            dtrsm_ ("R", "L", "N", "N", &below, &size, &minus_unit, corner, &n, corner + size, &n, 1, 1, 1,
                    1);
        }
        dtrtri_ ("L", "N", &size, corner, &n, &info, 1, 1);
        watch.look (static_cast<double> (size) * size * (below / 2.0 + size / 6.0));
    }
    for (int from = 0; from < n; from += panel) {
        const int size = std::min (panel, n - from), end = from + size, below = n - end;
        double *const corner = l + at (from, from, n), *const left = l + from;
        if (from > 0)
            dtrmm_ ("L", "L", "T", "N", &size, &from, &unit, corner, &n, left, &n, 1, 1, 1, 1);
        dlauum_ ("L", &size, corner, &n, &info, 1);
        watch.look (static_cast<double> (size) * size * (from / 2.0 + size / 6.0));
        if (below == 0)
            continue;
        if (from > 0)
            dgemm_ ("T", "N", &size, &from, &below, &unit, corner + size, &n, l + end, &n, &unit, left, &n, 1,
                    1);
        watch.look (static_cast<double> (size) * from * below);
        dsyrk_ ("L", "T", &size, &below, &unit, corner + size, &n, &unit, corner, &n, 1, 1);
        watch.look (static_cast<double> (size) * size * below / 2);
    }
}

void solve_lower (bool transposed, int n, const double* l, int stride, int columns, double* b, Watch& watch)
{
    const double for_a_column = static_cast<double> (n) * n / 2;
    const int width = piece (for_a_column, 16, columns);
    for (int from = 0; from < columns; from += width) {
        const int here = std::min (width, columns - from);
        if (here == 1)
            dtrsv_ ("L", transposed ? "T" : "N", "N", &n, l, &stride, b + at (0, from, n), &one, 1, 1, 1);
        else
            dtrsm_ ("L", "L", transposed ? "T" : "N", "N", &n, &here, &unit, l, &stride, b + at (0, from, n),
                    &n, 1, 1, 1, 1);
        watch.look (for_a_column * here);
    }
}

void multiply_symmetric (bool lower, int n, const double* a, int stride, const double* x, double* y)
{
    dsymv_ (lower ? "L" : "U", &n, &unit, a, &stride, x, &one, &nothing, y, &one, 1);
}

// ---- Halves ----------------------------------------------------------------------------------------------------------------------

// Calls the function with both places of each pair below the diagonal, tile by tile.
template <class Function>
static void each_pair (int n, const Function& function)
{
    constexpr int tile = 32;
    for (int columns = 0; columns < n; columns += tile)
        for (int rows = columns; rows < n; rows += tile)
            for (int j = columns; j < std::min (n, columns + tile); ++j)
                for (int i = std::max (rows, j + 1); i < std::min (n, rows + tile); ++i)
                    function (at (i, j, n), at (j, i, n));
}

void copy_lower_to_upper (int n, double* a)
{
    each_pair (n, [a] (std::size_t lower, std::size_t upper) { a[upper] = a[lower]; });
}

void symmetrise (int n, double* a)
{
    each_pair (
        n, [a] (std::size_t lower, std::size_t upper) { a[lower] = a[upper] = 0.5 * (a[lower] + a[upper]); });
}

void transpose (int n, double* a)
{
    each_pair (n, [a] (std::size_t lower, std::size_t upper) { std::swap (a[lower], a[upper]); });
}

// ---- Eigenvalues -------------------------------------------------------------------------------------------------------------------

double SmallestEigenvalue::of (int n, const double* l, double* symmetric, Watch& watch)
{
    constexpr int small = 50;
    if (n > small)
        return by_lanczos (n, l, symmetric, watch);
    watch.look (4 * std::pow (n, 3));
    return directly (n, l, symmetric);
}

double SmallestEigenvalue::directly (int n, const double* l, double* symmetric)
{
    const int room = 34 * n;
    int info = 0;
    values_.resize (static_cast<std::size_t> (n));
    work_.resize (static_cast<std::size_t> (room));
    dsygst_ (&one, "L", &n, symmetric, &n, l, &n, &info, 1);
    dsyev_ ("N", "L", &n, symmetric, &n, values_.data (), work_.data (), &room, &info, 1, 1);
    return info == 0 ? values_[0] : -std::numeric_limits<double>::infinity ();
}

// Toh, A note on the calculation of step-lengths in interior-point methods for semidefinite programming: the smallest Ritz value less
// its residual, with complete reorthogonalisation.
double SmallestEigenvalue::by_lanczos (int n, const double* l, const double* symmetric, Watch& watch)
{
    constexpr int most_steps = 60, between_tests = 5;
    constexpr double exact = 1e-12, near_enough = 0.02, harmless = -0.1;
    const auto size = static_cast<std::size_t> (n);
    basis_.clear ();
    diagonal_.clear ();
    below_.clear ();
    image_.resize (size);
    swap_.resize (size);
    const auto vector = [&] (std::size_t k) { return std::span (basis_).subspan (k * size, size); };
    basis_.resize (size);
    for (std::size_t i = 0; i < size; ++i)    // no direction is special
        basis_[i] = std::sin (1.0 + 37.0 * static_cast<double> (i));
    const double length = norm (basis_);
    for (double& value : basis_)
        value /= length;
    for (int k = 0;; ++k) {
        const auto here = static_cast<std::size_t> (k);
        std::ranges::copy (vector (here), swap_.begin ());
        solve_lower (true, n, l, n, 1, swap_.data (), watch);
        multiply_symmetric (true, n, symmetric, n, swap_.data (), image_.data ());
        solve_lower (false, n, l, n, 1, image_.data (), watch);
        watch.look (static_cast<double> (n) * n);
        diagonal_.push_back (dot (vector (here), image_));
        for (int sweep = 0; sweep < 2; ++sweep)
            for (std::size_t j = 0; j <= here; ++j)
                add (-dot (vector (j), image_), vector (j), image_);
        const double beta = norm (image_);
        const bool last = k + 1 == std::min (n, most_steps) || !(beta > exact);
        if (last || k % between_tests == between_tests - 1) {
            const int steps = k + 1;
            int info = 0;
            values_ = diagonal_;
            off_ = below_;
            off_.push_back (0);
            vectors_.resize (diagonal_.size () * diagonal_.size ());
            work_.resize (2 * diagonal_.size () + 2);
            dsteqr_ ("I", &steps, values_.data (), off_.data (), vectors_.data (), &steps, work_.data (),
                     &info, 1);
            if (info != 0 || std::isnan (beta))
                return -std::numeric_limits<double>::infinity ();
            const double error = beta * std::abs (vectors_[here]), lower = values_[0] - error;
            if (last || error < near_enough * std::abs (values_[0]) || lower > harmless)
                return lower;
        }
        below_.push_back (beta);
        for (double& value : image_)
            value /= beta;
        basis_.insert (basis_.end (), image_.begin (), image_.end ());
    }
}

}
