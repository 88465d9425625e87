// The reader of LP files: expressions, relations and lists of names, section by section.
#pragma once

#include "kalvo/files/lp/scan.h"
#include "kalvo/files/text/draft.h"
#include "kalvo/files/text/quadratic.h"

namespace klv {

class LpReader {
public:
    LpReader (Task& task, const std::string& path, Pacer& pacer)
        : lines_ (path, pacer),
          pacer_ (pacer),
          draft_ (task, path, lines_),
          scanner_ (lines_, draft_.column_names)
    {}

    // Prints the warnings. Throws FileFault with the line of the fault.
    Problem read ();

private:
    // A side of a relation: its terms are appended to the entries, its numbers without a variable are added up.
    struct Side {
        bool has_terms = false;
        bool has_constant = false;
        double constant = 0;
        std::int64_t line = 0;    // of the last number
    };

    // The bounds that the relations of a constraint state.
    struct RowBounds {
        std::string label;
        double lower = -infinity;
        double upper = infinity;
        bool lower_said = false;
        bool upper_said = false;
        bool equal = false;
    };

    bool at (LpToken::Kind kind) { return scanner_.token ().kind == kind; }
    [[noreturn]] void refuse (const char* wanted);

    void section ();
    void objective ();
    void constraint ();
    void bound ();
    void type ();

    Side side (bool behind_number = false);
    double take_signs ();
    void check_behind_number (bool is_behind);
    void term (double coefficient);
    void bracket (double sign);
    void quadratic_term (double sign);
    char relation ();
    double signed_number ();
    void begin_statement (const char* what);
    std::string take_label ();
    std::int32_t known_column ();
    std::int32_t column_of (std::string_view name);

    void say (RowBounds& row, char relation, double number);
    void put_row (const RowBounds& row);
    void put_bound (std::int32_t j, char relation, double number);
    void finish ();
    void finish_matrix ();
    void finish_quadratic ();

    LineReader lines_;
    Pacer& pacer_;
    Draft draft_;
    LpScanner scanner_;
    LpSection section_ = LpSection::none;
    bool constraints_seen_ = false;

    NameTable row_names_;                  // the objective's name too
    std::vector<std::int64_t> row_end_;    // the end of each row in the entries
    std::vector<std::int32_t> entry_columns_;
    std::vector<double> entry_values_;
    std::vector<std::int64_t> last_entry_;    // of each column
    std::vector<std::int32_t> binaries_;
    std::vector<QuadraticTerm> quadratic_;
};

}
