// A problem that is being read from a file: columns, bounds and names, for readers of text formats. Throws FileFault for numbers
// and bounds that no problem can have.
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

    // A lower bound below minus the threshold, or an upper one above it, is no bound. On the other side it is refused: no value
    // could meet it.
    double lower_bound (double value, std::string_view item);
    double upper_bound (double value, std::string_view item);
    bool is_huge (double value) const;

    // Adds a column with bounds 0 and infinity; the file may then state each bound once. False when another column has the name.
    bool append_column (std::string_view name);
    void set_lower (std::int32_t j, double value);
    void set_upper (std::int32_t j, double value);
    void fix (std::int32_t j, double value);
    void make_integer (std::int32_t j);
    void limit_to_binary (std::int32_t j);
    bool is_lower_said (std::int32_t j) const { return columns_[static_cast<std::size_t> (j)].lower_said; }
    bool is_upper_said (std::int32_t j) const { return columns_[static_cast<std::size_t> (j)].upper_said; }

    // Counts a tradition that was met on the current line, or on the last line that named a column.
    void note (Tradition kind, std::string_view item) { warnings.note (kind, lines_.number (), item); }
    void note_column (Tradition kind, std::int32_t j);

    // Sets keys and names of the columns, once all bounds are read.
    void finish_columns (Pacer& pacer);

    // Hands the problem out; prints the warnings.
    Problem take ();

    Problem problem;
    Warnings warnings;
    NameTable column_names;

private:
    struct Column {
        std::int64_t line;    // of the column's last bound, else of its first entry
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

// The names of a table for items, in order; the number `without`, if any, is left out.
void name_items (Names& names, const NameTable& table, std::int32_t without, Pacer& pacer);

}
