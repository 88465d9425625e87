// The primal-dual interior-point method for the pair of problems in program.h: the HKM direction, a predictor and a corrector
// (Mehrotra, On the implementation of a primal-dual interior point method), from a point that needs not be feasible.
#pragma once

#include "kalvo/engines/semidefinite/newton.h"
#include "kalvo/engines/semidefinite/program.h"

#include <functional>

namespace klv::semidefinite {

// What is known of an iterate: residuals relative to the norms of a, C and f, and the objectives.
struct Measures {
    double primal_residual = 0, dual_residual = 0;
    double primal_objective = 0, dual_objective = 0;
    double gap = 0, complementarity = 0;    // relative to the objectives
    double mu = 0;

    double largest () const;
};

struct Answer {
    Outcome outcome = Outcome::
        unknown;    // of the program: infeasible means that y is a ray, unbounded that X and u are one
    Iterate iterate;
    Measures measures;
    bool has_point = false;
    int iterations = 0;
};

struct Aims {
    double tolerance = 1e-8;
    int iterations = 100;
};

class InteriorPoint {
public:
    using Listener = std::function<void (int iteration, const Measures& now)>;

    InteriorPoint (const Program& program, const Aims& aims, Watch& watch, const StopFlag& stop,
                   Listener listener);
    Answer run ();

private:
    // Begins at multiples of the identity.
    void begin ();
    void measure ();
    void keep_best ();
    std::optional<Outcome> ray () const;
    bool is_stagnant ();

    bool factor_iterate ();
    // Where the first matrix is nearly singular: drops what follows from other equations, or finds a proof of contradiction.
    std::optional<Outcome> look_for_dependence ();
    // Changes dx and so on to a direction to the point of the path with such a mu; the corrector takes the present direction into
    // account.
    void direct (double mu, bool corrector);
    void refine ();
    double primal_step ();
    double dual_step ();
    bool move (double primal, double dual);
    bool iterate ();
    Iterate take_best ();

    // A(M) of a dual vector, added to r.
    void add_constraints (double factor, std::span<const double> dual, std::span<double> r) const
    {
        add_transposed (factor, program_.constraints, dual, r);
    }
    // Calls the function with each block.
    template <class Function>
    void each_block (const Function& function) const
    {
        for (const Block& block : program_.blocks.all)
            function (block);
    }

    const Program& program_;
    const Aims aims_;
    Watch& watch_;
    const StopFlag& stop_;
    const Listener listener_;
    Newton newton_;
    Room room_;

    Vector x_, u_, y_, z_;              // the iterate
    Vector factor_x_, factor_z_, w_;    // Cholesky factors; the inverse of Z
    Vector dx_, du_, dy_, dz_;
    Vector product_;    // a product of matrices
    Vector primal_residual_, dual_residual_, border_residual_;
    Vector dual_work_, row_work_, border_work_;
    Vector a_of_w_, a_of_residual_;    // A (W), A ({X, dual residual, W})
    bool dual_feasible_ = false;       // to rounding
    double norm_a_ = 0, norm_c_ = 0, norm_f_ = 0;
    Measures now_;
    int iteration_ = 0;

    Vector best_x_, best_u_, best_y_;    // X: lower triangles
    Measures best_;
    int best_iteration_ = -1;
    int last_progress_ = 0;
    double least_residual_ = infinity, least_mu_ = infinity, least_error_ = infinity;
};

}
