// The function that the crate in src/lib.rs exports, with the layout of its arguments there.
#pragma once

#include "kalvo/forms/form.h"

#include <cstddef>
#include <cstdint>

namespace klv::clarabel {

template <class Item>
struct Array {
    const Item* data;
    std::size_t size;
};

struct Matrix {
    Array<std::int32_t> starts, rows;
    Array<double> values;
};

struct Problem {
    Matrix quadratic;
    Array<double> cost;
    Matrix matrix;
    Array<double> right;
    Array<ElementaryCone> cones;
};

enum class Factorization : std::uint32_t { automatic, simplicial, supernodal };

// Residuals and certificates are relative to norms, the gap is absolute or relative.
struct Options {
    double gap, residual, certificate;    // tolerances aimed at
    double acceptance;        // and the factor up to which they are exceeded where the method can't go on
    double regularization;    // static, of the factorised matrix
    double shortest_step;     // before cones that are not symmetric are scaled by their dual only
    double seconds;
    std::uint32_t iterations, threads;
    Factorization factorization;
    bool equilibrates;
};

struct Iteration {
    std::uint32_t number;
    double primal_objective, dual_objective, primal_residual, dual_residual;
};

// Called on the thread that solves; nothing may be thrown.
struct Listener {
    void* receiver;
    bool (*iteration) (void* receiver, const Iteration* now);                // whether to go on
    void (*text) (void* receiver, const char* lines, std::size_t length);    // null: no log
};

enum class Status : int {
    failed = -1,
    unsolved,
    solved,
    primal_infeasible,
    dual_infeasible,
    almost_solved,
    almost_primal_infeasible,
    almost_dual_infeasible,
    iteration_limit,
    time_limit,
    numerical_error,
    insufficient_progress,
    stopped
};

struct Answer {
    double *x, *z;    // where to put them
    Status status;
    std::uint32_t iterations;
    char message[400];    // of a failure
};

extern "C" void clarabel_solve (const Problem* problem, const Options* options, const Listener* listener,
                                Answer* answer);

}
