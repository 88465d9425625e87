// A product of nonnegative orthants, second-order and semidefinite cones, and the two kinds of vectors on it.
//
// Primal vectors have semidefinite blocks as whole matrices by columns. Dual vectors, like the data, have of a semidefinite block
// only the entries of its pattern: those that some constraint or the objective has, and the diagonal, in the lower triangle, off
// the diagonal times the root of 2. Inner products of dual vectors are those of the matrices.
#pragma once

#include "kalvo/engines/semidefinite/dense.h"
#include "kalvo/forms/form.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv::semidefinite {

// An entry of the pattern of a matrix.
struct Place {
    std::int32_t row, column;
};

struct Block {
    ConeKind kind = ConeKind::nonnegative;
    std::int32_t order = 0;                       // of the matrix, or the number of components
    std::size_t dual_begin = 0, dual_size = 0;    // of its part of dual vectors
    std::size_t primal_begin = 0, primal_size = 0;
    bool sparse = false;    // so few entries in the pattern that products with them are made one by one

    template <class Whole>
    auto dual (Whole&& vector) const
    {
        return std::span (vector).subspan (dual_begin, dual_size);
    }
    template <class Whole>
    auto primal (Whole&& vector) const
    {
        return std::span (vector).subspan (primal_begin, primal_size);
    }
};

struct Blocks {
    std::vector<Block> all;
    std::vector<Place> places;    // of the positions of dual vectors; of semidefinite blocks only
    std::size_t dual_size = 0, primal_size = 0;
    double degree = 0;    // inner product of X and Z where XZ is the identity

    void append (ConeKind kind, std::int32_t order, std::span<const Place> pattern);
    std::span<const Place> pattern (const Block& block) const
    {
        return std::span (places).subspan (block.dual_begin, block.dual_size);
    }
};

// Work shared by the operations below.
struct Room {
    Vector matrix;
    SmallestEigenvalue eigenvalue;
};

// Parts of a dual vector as a whole matrix, and of a primal vector on the pattern.
void spread (const Blocks& blocks, const Block& block, std::span<const double> dual, double* matrix);
void gather (const Blocks& blocks, std::span<const double> primal, std::span<double> dual);

// Factors of a block; false: it isn't inside its cone. For semidefinite blocks the Cholesky factor in the lower triangle, for others
// nothing.
bool factor_primal (const Block& block, std::span<const double> primal, std::span<double> factor,
                    Watch& watch);
bool factor_dual (const Blocks& blocks, const Block& block, std::span<const double> dual,
                  std::span<double> factor, Watch& watch);
// The inverse in the algebra of the cone, from the block and its factor.
void invert (const Block& block, std::span<const double> dual, std::span<const double> factor,
             std::span<double> inverse, Watch& watch);

// out += x d, of semidefinite blocks only.
void add_product (const Blocks& blocks, const Block& block, std::span<const double> x,
                  std::span<const double> d, std::span<double> out, Room& room, Watch& watch);
// The products {x, d, w}: (XDW + WDX)/2 of matrices, xdw of numbers, and what corresponds in the algebra of the second-order cone.
// Of semidefinite blocks from the product XD, which it destroys.
void triple_product (const Block& block, std::span<const double> x, std::span<const double> d,
                     std::span<const double> w, std::span<double> out);
void close_product (const Block& block, std::span<double> xd, std::span<const double> w,
                    std::span<double> out, Watch& watch);
// The same on the pattern.
void gather_product (const Blocks& blocks, const Block& block, std::span<double> xd,
                     std::span<const double> w, std::span<double> dual, Room& room, Watch& watch);

// The longest step from a point along a direction within the cone. Of semidefinite blocks `scratch` takes a matrix.
double longest_primal_step (const Block& block, std::span<const double> point, std::span<const double> factor,
                            std::span<const double> direction, std::span<double> scratch, Room& room,
                            Watch& watch);
double longest_dual_step (const Blocks& blocks, const Block& block, std::span<const double> point,
                          std::span<const double> factor, std::span<const double> direction,
                          std::span<double> scratch, Room& room, Watch& watch);

}
