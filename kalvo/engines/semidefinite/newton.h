// The equations of a direction: O dy + B du = r, B'dy = s, with the Schur matrix O.
#pragma once

#include "kalvo/engines/semidefinite/schur.h"

#include <algorithm>
#include <span>

namespace klv::semidefinite {

class Newton {
public:
    Newton (const Program& program, Watch& watch, const StopFlag& stop)
        : program_ (program),
          watch_ (watch),
          stop_ (stop),
          schur_ (program, watch),
          border_ (program.free_variables ())
    {}

    // From X and the inverse of Z. False: singular in the precision at hand.
    bool factor (std::span<const double> x, std::span<const double> w);
    double smallest_pivot () const
    {
        return std::min (schur_.get ().smallest_pivot (), border_.smallest_pivot ());
    }
    // Leaves out equations that follow from others, and free variables whose columns do.
    void drop (std::span<const std::int32_t> rows, std::span<const std::int32_t> free_variables)
    {
        schur_.get ().drop (rows);
        border_.drop (free_variables);
    }
    void solve (Vector& right, Vector& border_right) const;    // in place: dy, du

private:
    void weigh_border ();

    const Program& program_;
    Watch& watch_;
    const StopFlag& stop_;
    SchurMatrix schur_;
    Vector weight_;    // O + sum of weight_k b_k b_k' is factored, which has no null space that B lacks
    Vector solved_border_;       // O^-1 B
    PositiveDefinite border_;    // B'O^-1 B
};

}
