// P A P' = L D L' of a sparse symmetric matrix, with a diagonal D of any signs: for semidefinite and quasidefinite matrices, which
// have such factors in every order.
#pragma once

#include "kalvo/sparse/columns.h"
#include "kalvo/sparse/factor.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace klv {

class Ldl {
public:
    // Multiplications for a column of L from which dense blocks pay. A factor of many small cliques has fewer, however many they
    // are for an entry.
    static constexpr double blocks_pay = 3000;

    // `upper` is the upper triangle, sorted, no entry twice. Finds the order of elimination and the size of the factor, for which
    // the first factorisation takes memory. Throws std::length_error when there are too many entries.
    explicit Ldl (const SparseColumns& upper, double blocks_from = blocks_pay);

    std::int64_t factor_entries () const { return entries_; }    // of L without its diagonal
    double flops () const { return flops_; }                     // sum of squared column counts
    bool in_blocks () const { return in_blocks_; }

    // Pivots of at most zero_pivot in magnitude are taken as 0, and their columns of L as 0: a semidefinite matrix has nothing else
    // there. False: stopped, or a pivot is NaN; the factor is then of no use.
    bool factor (std::span<const double> upper_values, double zero_pivot = 0,
                 const std::atomic<bool>* stop = nullptr);

    // The results of the last factorisation; columns in the order of elimination, L without its unit diagonal.
    std::span<const double> pivots () const { return factor_->pivots; }
    double dropped () const { return factor_->dropped; }    // largest magnitude taken as 0 below zero pivots
    std::span<const std::int32_t> rows_of (std::size_t column) const { return factor_->rows_of (column); }
    std::span<const double> values_of (std::size_t column) const { return factor_->values_of (column); }

    std::span<const std::int32_t> order () const
    {
        return order_;
    }    // order[k]: the row of A that is eliminated k-th

    void solve (std::span<double> right) const;    // in place; components of zero pivots become 0

private:
    std::vector<std::int32_t> order_;
    std::int64_t entries_ = 0;
    double flops_ = 0;
    bool in_blocks_ = false;
    std::unique_ptr<Factor> factor_;
    mutable std::vector<double> ordered_;    // work of a solve
};

}
