#include "kalvo/verify/refinement.h"

#include "kalvo/forms/curvature.h"
#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <tuple>

namespace klv {

constexpr double shift = 1e-13;    // beside rows whose magnitudes add up to 1

// The upper triangle of [1 B'; B -shift]. Rows without entries are left out: the others get their places in it.
SparseColumns LeastChange::equations ()
{
    std::ranges::sort (entries_, {}, [] (const Entry& entry) { return std::tie (entry.row, entry.unknown); });
    if (entries_.size () + unknowns_ + rows_ > std::numeric_limits<std::int32_t>::max ())
        throw std::length_error ("too many entries");
    SparseColumns upper;
    const auto put = [&] (std::int32_t row, double value) {
        if (index (upper.starts.back ()) < upper.rows.size () && upper.rows.back () == row)
            upper.values.back () += value;
        else {
            upper.rows.push_back (row);
            upper.values.push_back (value);
        }
    };
    const auto end_column = [&] (double diagonal) {
        put (upper.columns (), diagonal);
        upper.starts.push_back (static_cast<std::int32_t> (upper.rows.size ()));
    };
    for (std::size_t k = 0; k < unknowns_; ++k)
        end_column (1);
    for (std::size_t k = 0; k < entries_.size (); ++k) {
        const bool last = k + 1 == entries_.size () || entries_[k + 1].row != entries_[k].row;
        put (entries_[k].unknown, static_cast<double> (entries_[k].value));
        entries_[k].row = upper.columns ();
        if (last)
            end_column (-shift);
    }
    return upper;
}

// Steps x += B' (B B' + shift)^-1 (-B (1 + x)), by factors in double and residuals in long double: each one leaves about
// shift / (s^2 + shift) of the residual along a singular value s.
std::vector<long double> LeastChange::solve ()
try {
    constexpr int most_steps = 30;
    constexpr double most_flops = 2e9;
    constexpr long double gain = 0.7L, small = 1e-19L;
    const SparseColumns upper = equations ();
    Ldl ldl = make_ldl (upper);
    if (ldl.flops () > most_flops || !ldl.factor (upper.values))
        return {};
    std::vector<long double> x (unknowns_), residual (index (upper.columns ()));
    std::vector<double> right (residual.size ());
    long double before = std::numeric_limits<long double>::infinity ();
    for (int step = 0; step < most_steps; ++step) {
        std::ranges::fill (residual, 0.0L);
        for (const Entry& entry : entries_)
            residual[index (entry.row)] -= entry.value * (1 + x[index (entry.unknown)]);
        long double largest = 0;
        for (const long double value : residual)
            largest = std::max (largest, std::abs (value));
        if (!(largest > small && largest < gain * before))
            break;
        before = largest;
        for (std::size_t k = 0; k < right.size (); ++k)
            right[k] = static_cast<double> (residual[k] / largest);
        ldl.solve (right);
        for (std::size_t k = 0; k < unknowns_; ++k)
            x[k] += largest * right[k];
    }
    return x;
} catch (const std::length_error&) {
    return {};
}

}
