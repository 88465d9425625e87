// The pair of problems that the method solves,
//
//     min <C, X> + f'u + 1/2 y'Py,   A(X) + Bu + Py = a,   X in K
//     max a'y - 1/2 y'Py,            A'(y) + Z = C,  B'y = f,   Z in K,
//
// and two ways to see a conic form as one: with its columns as y, or, where matrices are variables, with its cone rows as X. The
// number of components of y decides what an iteration costs.
#pragma once

#include "kalvo/engines/semidefinite/blocks.h"
#include "kalvo/forms/form.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv::semidefinite {

struct Program {
    Blocks blocks;
    SparseColumns constraints;    // A' by columns of length 1 in positions of dual vectors
    Vector right;                 // a
    Vector cost;                  // C, a dual vector
    SparseColumns border;         // B
    Vector border_cost;           // f
    SparseColumns quadratic;      // P, its upper triangle

    std::size_t rows () const { return right.size (); }
    std::size_t free_variables () const { return border_cost.size (); }
};

// y += factor Mx and, transposed, y += factor M'x.
void add_product (double factor, const SparseColumns& matrix, std::span<const double> x, std::span<double> y);
void add_transposed (double factor, const SparseColumns& matrix, std::span<const double> x,
                     std::span<double> y);
void add_symmetric (double factor, const SparseColumns& upper, std::span<const double> x,
                    std::span<double> y);

// Columns of a conic form with an entry in a cone row that has no other entry: the row's slack can stand for the column.
struct Matching {
    explicit Matching (const ConicForm& form);

    std::vector<std::int32_t> of_column;    // the row of each column; -1: none
    std::vector<bool> is_matched;           // rows, with a column
    std::vector<bool> in_cone;              // rows but those of the zero cone
    std::size_t zero_rows = 0, matched = 0;

    // Whether the form's columns are to be y, and of what size the program is.
    bool columns_are_y = true;
    std::size_t rows = 0, free_variables = 0;
};

// A point, or a direction; Z is C - A'(y), or -A'(y).
struct Iterate {
    Vector x, u, y;    // x: a primal vector
};

class Standard {
public:
    explicit Standard (const ConicForm& form);

    const Program& program () const { return program_; }

    // Columns and multipliers of the rows, as claims on the form have them.
    std::vector<double> columns (const Iterate& iterate, bool direction) const;
    std::vector<double> multipliers (const Iterate& iterate, bool direction) const;
    bool columns_are_y () const { return matching_.columns_are_y; }
    // The form's objective: of the columns where they are y, it is the dual one of the program.
    double objective (double of_program) const
    {
        return form_.constant + offset_ + (columns_are_y () ? -of_program : of_program);
    }

private:
    void lay_out_rows ();
    void take_columns_as_y ();
    void take_rows_as_x ();
    void normalise ();
    double primal_of (std::int32_t row, std::span<const double> x) const;
    double matched_value (std::size_t column) const;

    const ConicForm& form_;
    const Matching matching_;
    Program program_;
    double offset_ = 0;
    std::vector<std::int32_t> kept_rows_;    // rows of the form that are constraints, in the second way
    std::vector<std::int32_t>
        free_columns_;                       // columns of the form that are free variables, in the second way
    std::vector<std::int32_t> zero_rows_;    // of the form
    std::vector<std::uint32_t> primal_at_;    // of each row of the form in a cone, in primal vectors
    std::vector<std::int32_t> dual_at_;       // in dual vectors; -1: not in the pattern
    std::vector<bool> off_diagonal_;          // entries of matrices, scaled
    Vector row_length_, border_length_;       // by which rows of A and columns of B were divided
};

}
