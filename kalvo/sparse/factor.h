// Two ways to compute L and D of a symmetric matrix whose elimination is known.
#pragma once

#include "kalvo/sparse/elimination.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace klv {

class Factor {
public:
    Factor () = default;
    Factor (const Factor&) = delete;
    Factor& operator= (const Factor&) = delete;
    virtual ~Factor () = default;

    // Takes the memory for L, on the first call. `values` are those of the upper triangle as given.
    virtual bool compute (std::span<const double> values, double zero_pivot,
                          const std::atomic<bool>* stop) = 0;
    virtual std::span<const std::int32_t> rows_of (std::size_t column) const = 0;
    virtual std::span<const double> values_of (std::size_t column) const = 0;
    // Of a vector in the order of elimination: by L, then by its transpose.
    virtual void solve_lower (std::span<double> right) const = 0;
    virtual void solve_upper (std::span<double> right) const = 0;

    std::vector<double> pivots;
    double dropped = 0;
};

// Row after row. Best for a factor with short columns.
std::unique_ptr<Factor> make_up_looking (const SparseColumns& upper, const Elimination& elimination);

// Columns of like structure together, as dense blocks.
std::unique_ptr<Factor> make_supernodal (const SparseColumns& upper, const Elimination& elimination);

// Looks at a stop flag once in a while.
class StopWatch {
public:
    explicit StopWatch (const std::atomic<bool>* stop) : stop_ (stop) {}

    bool stopped (double multiplications)
    {
        constexpr double between_looks = 2e6;
        done_ += multiplications;
        if (done_ < between_looks)
            return false;
        done_ = 0;
        return stop_ != nullptr && stop_->load (std::memory_order_relaxed);
    }

private:
    const std::atomic<bool>* stop_;
    double done_ = 0;
};

}
