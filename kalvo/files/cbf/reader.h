// The reader of CBF files: sections that declare variables and rows, then sections of coordinates.
#pragma once

#include "kalvo/files/cbf/cbf.h"
#include "kalvo/files/text/draft.h"
#include "kalvo/files/text/entries.h"
#include "kalvo/files/text/fields.h"

#include <span>
#include <utility>

namespace klv {

struct CbfSection;

class CbfReader {
public:
    CbfReader (Task& task, const std::string& path, Pacer& pacer)
        : lines_ (path, pacer), draft_ (task, path, lines_)
    {}

    // Prints the warnings. Throws FileFault with the line of the fault.
    Problem read ();

private:
    friend struct CbfSection;

    using Exponents = std::vector<std::vector<double>>;    // of the power cones that are declared

    // Variables or rows that lie in one domain.
    struct Part {
        KLVdomaintype domain;
        std::int32_t begin, size;
        std::span<const double> exponents = {};
        std::int32_t order = 0;    // of a matrix
        std::int32_t place = 0;    // of the first row among linear constraints or expressions
    };
    struct Vector {
        std::int32_t size = 0;
        std::vector<Part> parts = {};
    };

    bool next_line ();
    void need_line ();
    std::int32_t count_line ();
    void section ();

    void version ();
    void sense ();
    void primal_power_cones () { power_cones (primal_exponents_); }
    void dual_power_cones () { power_cones (dual_exponents_); }
    void power_cones (Exponents& exponents);
    void variables () { vector (variable_); }
    void rows () { vector (row_); }
    void vector (Vector& items);
    Part cone (std::int32_t begin);
    void integers ();
    void matrix_variables ();
    void matrix_rows ();

    void objective_matrices ();
    void objective_costs ();
    void objective_constant ();
    void row_matrices ();
    void row_entries ();
    void row_constants ();
    void matrix_row_entries ();
    void matrix_row_constants ();

    void coordinates (const auto& line);
    std::int32_t variable_index () { return fields_.index ("a variable", variable_.size); }
    const Part& part_of_row (std::int32_t row);
    const Part& matrix_row ();
    void matrix_entry (TermEntries& to);
    void matrix_row_entry (const Part& part, const auto& put);
    double bound (KLVdomaintype domain, std::int32_t row, double constant);

    bool needs_expressions () const;
    void settle ();
    void finish ();
    void finish_variables ();
    void finish_constraints ();
    void finish_cones ();

    LineReader lines_;
    Draft draft_;
    Fields fields_;
    std::string_view section_;
    std::uint32_t seen_ = 0;    // a bit for each section
    bool settled_ = false;      // what is declared; coordinates follow

    Exponents primal_exponents_, dual_exponents_;
    Vector variable_, row_;
    std::vector<std::int32_t> integer_, orders_;
    std::vector<Part> matrix_rows_;
    bool expressions_needed_ = false;
    std::int32_t constraints_ = 0, expressions_ = 0;
    std::size_t last_part_ = 0;    // in which a row was found

    VectorEntries cost_, bound_, constant_;
    MatrixEntries linear_, affine_;
    TermEntries objective_terms_, constraint_terms_, expression_terms_;
};

}
