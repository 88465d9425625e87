// A problem that is being read from a file: what readers of text formats do with columns, bounds and names. Throws
// FileFault for what no problem can have.
#pragma once

#include "kalvo/files/text/line_reader.h"
#include "kalvo/files/text/name_table.h"
#include "kalvo/files/text/traditions.h"

namespace klv {

class Draft {
public:
    Draft (Task& task, const std::string& path, const LineReader& lines)
        : task_ (task),
          path_ (path),
          lines_ (lines),
          huge_ (task.parameters.get (RealSetting::bound_infinity))
    {}

    // A bound on its own side and beyond the threshold is no bound; on the other side nothing could meet it.
    double lower_bound (double value, std::string_view item);
    double upper_bound (double value, std::string_view item);
    bool is_huge (double value) const;

    // A column has the bounds 0 and infinity until a file says more; a file may say each bound once.
    // False when another column has the name.
    bool append_column (std::string_view name);
    void set_lower (std::int32_t j, double value);
    void set_upper (std::int32_t j, double value);
    void fix (std::int32_t j, double value);
    void make_integer (std::int32_t j);
    void limit_to_binary (std::int32_t j);
    bool is_lower_said (std::int32_t j) const { return columns_[static_cast<std::size_t> (j)].lower_said; }
    bool is_upper_said (std::int32_t j) const { return columns_[static_cast<std::size_t> (j)].upper_said; }

    // A tradition met on the line at hand, or on the last line that named a column.
    void note (Tradition kind, std::string_view item) { warnings.note (kind, lines_.number (), item); }
    void note_column (Tradition kind, std::int32_t j);

    // Keys and names of the columns, when all their bounds were said.
    void finish_columns (Pacer& pacer);

    // The problem that was read; prints the warnings of its file.
    Problem take ();

    Problem problem;
    Warnings warnings;
    NameTable column_names;

private:
    struct Column {
        std::int64_t line;    // of the last bound, else of the first entry
        bool lower_said = false;
        bool upper_said = false;
        bool fixed = false;
    };

    void say (std::int32_t j, bool Column::*said, const char* side);

    Task& task_;
    const std::string& path_;
    const LineReader& lines_;
    double huge_;
    std::vector<Column> columns_;
};

// Gives the names of a table to items, in order; one number is left out, or none.
void name_items (Names& names, const NameTable& table, std::int32_t without, Pacer& pacer);

}
