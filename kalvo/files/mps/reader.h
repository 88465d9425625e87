// The reader of MPS files: one pass over the lines, each section's lines by a function of its own.
#pragma once

#include "kalvo/files/mps/line.h"
#include "kalvo/files/mps/mps.h"
#include "kalvo/files/text/draft.h"
#include "kalvo/files/text/quadratic.h"

#include <limits>

namespace klv {

struct MpsHeader;    // of a section

class MpsReader {
public:
    MpsReader (Task& task, const std::string& path, MpsForm form, bool guessed, Pacer& pacer)
        : lines_ (path, pacer), pacer_ (pacer), form_ (form), guessed_ (guessed), draft_ (task, path, lines_)
    {}

    // Prints the warnings. Throws FileFault with the line of the fault.
    Problem read ();

    // After a fault in free form: whether the line is meant for fixed form.
    bool fault_shows_fixed_form () const
    {
        return lines_.line ().starts_with (' ') && only_fixed (section_, lines_.line ());
    }

private:
    struct Row {
        char kind;
        bool has_side = false;
        bool has_range = false;
        bool is_quadratic = false;
        double side = 0;
    };

    struct Range {
        std::int32_t row;
        long double value;
        std::int64_t line;
    };

    // The set of RHS, RANGES or BOUNDS that is used: the first one that is named, and all lines without a name.
    class Set {
    public:
        bool uses (std::string_view name)
        {
            if (name_.empty ())
                name_ = name;
            return name.empty () || name == name_;
        }

    private:
        std::string name_;
    };

    void header_line ();
    void data_line ();
    void enter (const MpsHeader& header);
    void leave_section ();

    void sense_line (std::string_view word);
    void objective_name_line (std::string_view name);
    void row_line (const MpsFields& fields);
    void column_line (const MpsFields& fields);
    void pairs_line (const MpsFields& fields, Set& set, const auto& parse, const auto& put);
    void side_line (const MpsFields& fields);
    void range_line (const MpsFields& fields);
    void settle_set (MpsFields& fields, bool needs_value) const;
    void bound_line (MpsFields fields);
    void begin_quadratic (std::string_view row);
    void quadratic_line (const MpsFields& fields);

    void prefetch_row_ahead () const;
    void marker_line (std::string_view kind);
    void begin_column (std::string_view name);
    void end_column ();
    void put_entry (std::string_view row, double value);
    void put_side (std::int32_t row, double value);
    void put_range (std::int32_t row, long double value);
    void put_bound (std::string_view key, std::int32_t j, double value);

    void finish ();
    void finish_sides ();
    void finish_ranges ();
    void finish_columns ();
    void merge_triangles ();
    void finish_quadratic ();
    FileFault quadratic_fault (const char* what, const QuadraticTerm& term) const;

    bool has_objective () const { return objective_ < row_names_.size (); }
    std::size_t place_of (std::int32_t row) const;    // the number of the constraint
    std::int32_t known_row (std::string_view name) const;
    std::int32_t known_column (std::string_view name) const;

    LineReader lines_;
    Pacer& pacer_;
    MpsForm form_;
    bool guessed_;    // the form: a line that the other form reads differently is refused
    Draft draft_;

    MpsSection section_ = MpsSection::none;
    std::uint32_t seen_ = 0;    // a bit for each section
    bool sense_given_ = false;

    NameTable row_names_;
    std::vector<Row> rows_;
    std::vector<Range> ranges_;
    // The objective's row, or a number above all rows.
    std::int32_t objective_ = std::numeric_limits<std::int32_t>::max ();
    Set sides_, range_set_, bound_set_;

    std::int32_t column_ = -1;
    std::vector<std::int32_t> minus_infinity_;    // columns with a bound of type MI
    bool integers_begun_ = false;
    std::vector<std::int32_t> last_column_;    // the last column with an entry, for each row
    std::vector<std::int32_t> entry_rows_;
    std::vector<double> entry_values_;

    std::int32_t quadratic_item_ = QuadraticTerm::objective;    // of the section
    bool objective_is_quadratic_ = false;
    std::vector<QuadraticTerm> triangles_, both_triangles_;
};

}
