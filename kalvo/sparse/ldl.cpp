#include "kalvo/sparse/ldl.h"

#include <utility>

namespace klv {

Ldl::Ldl (const SparseColumns& upper, double blocks_from)
{
    Elimination elimination = eliminate (upper);
    for (const std::int32_t count : elimination.counts) {
        entries_ += count;
        flops_ += static_cast<double> (count) * count;
    }
    in_blocks_ = flops_ > blocks_from * static_cast<double> (elimination.size ());
    factor_ = in_blocks_ ? make_supernodal (upper, elimination) : make_up_looking (upper, elimination);
    ordered_.resize (elimination.size ());
    order_ = std::move (elimination.order);
}

bool Ldl::factor (std::span<const double> upper_values, double zero_pivot, const std::atomic<bool>* stop)
{
    return factor_->compute (upper_values, zero_pivot, stop);
}

void Ldl::solve (std::span<double> right) const
{
    for (std::size_t k = 0; k < order_.size (); ++k)
        ordered_[k] = right[static_cast<std::size_t> (order_[k])];
    factor_->solve_lower (ordered_);
    for (std::size_t k = 0; k < order_.size (); ++k)
        ordered_[k] = factor_->pivots[k] != 0 ? ordered_[k] / factor_->pivots[k] : 0;
    factor_->solve_upper (ordered_);
    for (std::size_t k = 0; k < order_.size (); ++k)
        right[static_cast<std::size_t> (order_[k])] = ordered_[k];
}

}
