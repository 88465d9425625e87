// The Schur matrix of the HKM direction (Helmberg, Rendl, Vanderbei and Wolkowicz, An interior-point method for semidefinite
// programming): <A_i, {X, A_j, W}> with W the inverse of Z, plus P.
#pragma once

#include "kalvo/engines/semidefinite/program.h"
#include "kalvo/engines/semidefinite/symmetric.h"

#include <span>
#include <vector>

namespace klv::semidefinite {

class SchurMatrix {
public:
    SchurMatrix (const Program& program, Watch& watch);

    PositiveDefinite& get () { return matrix_; }
    const PositiveDefinite& get () const { return matrix_; }
    void assemble (std::span<const double> x, std::span<const double> w, Watch& watch);

private:
    // Non-zero entries of one constraint in one semidefinite block, a pair of mirror images as one.
    struct Part {
        std::int32_t constraint;
        std::size_t begin, end;
        double weight;    // number of entries of the whole matrix
    };
    struct Element {
        std::int32_t row, column;
        double value;
    };
    struct Matrices {
        const Block* block;
        std::vector<Part> parts;            // those with most entries first
        std::vector<double> weight_from;    // of the parts from each one on
    };
    // A constraint's value in a position of dual vectors.
    struct Use {
        std::int32_t constraint;
        double value;
    };

    static PositiveDefinite choose (const Program& program, Watch& watch);
    void find_parts ();
    void add_lines (std::span<const double> x, std::span<const double> w, Watch& watch);
    void add_second_order (const Block& block, std::span<const double> x, std::span<const double> w);
    void add_matrices (const Matrices& matrices, const double* x, const double* w, Watch& watch);
    std::span<const Element> elements (const Part& part) const
    {
        return std::span (elements_).subspan (part.begin, part.end - part.begin);
    }
    void find_rows (std::span<const Element> elements);

    const Program& program_;
    PositiveDefinite matrix_;
    std::vector<Matrices> matrices_;
    std::vector<Element> elements_;
    std::vector<std::vector<Use>> uses_;    // of each position outside semidefinite blocks
    Vector line_weight_;
    std::vector<std::int32_t> rows_, place_of_row_;    // of the matrix in work
    Vector rows_of_x_, product_, image_;               // of the matrix in work
};

}
