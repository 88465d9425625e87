// Dense matrices by columns, by BLAS and LAPACK, in pieces between which a stop is looked for. Symmetric matrices are stored whole
// unless a function says otherwise.
#pragma once

#include "kalvo/engines/semidefinite/watch.h"

#include <cstddef>
#include <span>
#include <vector>

namespace klv::semidefinite {

using Vector = std::vector<double>;

double dot (std::span<const double> x, std::span<const double> y);
double norm (std::span<const double> x);
void add (double factor, std::span<const double> x, std::span<double> y);    // y += factor x

// C = A B + keep C, with A of m rows, B of k rows and n columns.
struct Shape {
    int m, n, k;
};
void multiply (Shape shape, const double* a, const double* b, double keep, double* c, Watch& watch);

// A = LL', in the lower triangle, of columns `stride` apart. False: A isn't positive definite.
bool cholesky (int n, double* a, int stride, Watch& watch);
// The lower triangle of A, where A = LL', from L in the same place.
void invert (int n, double* l, Watch& watch);
// X with LX = B or, transposed, L'X = B, in place of B.
void solve_lower (bool transposed, int n, const double* l, int stride, int columns, double* b, Watch& watch);
// y = A x from one triangle.
void multiply_symmetric (bool lower, int n, const double* a, int stride, const double* x, double* y);

void copy_lower_to_upper (int n, double* a);
void symmetrise (int n, double* a);    // (A + A')/2
void transpose (int n, double* a);

// The smallest eigenvalue of L^-1 D L^-T or, for orders that make this costly, a lower bound near to it.
class SmallestEigenvalue {
public:
    // `symmetric` is D, whole; it may be changed.
    double of (int n, const double* l, double* symmetric, Watch& watch);

private:
    double directly (int n, const double* l, double* symmetric);
    double by_lanczos (int n, const double* l, const double* symmetric, Watch& watch);

    Vector basis_, diagonal_, below_, values_, off_, vectors_, work_, image_, swap_;
};

}
